// The order of a network's reduced unknowns, and which of them meet in the equations.
#include <algorithm>

#include "zu/adjust/internal/band_order.h"
#include "zu/adjust/internal/network_model.h"

namespace zu::internal {

namespace {

constexpr int kTile = 64;     // unknowns of a tile at most
constexpr int kSmall = 384;   // unknowns that no order is sought for
constexpr int kHolders = 16;  // photos that hold the free motions

double SquaredDistance(const Vec3& a, const Vec3& b) {
  double d = 0.0;
  for (size_t k = 0; k < 3; ++k) d += (a[k] - b[k]) * (a[k] - b[k]);
  return d;
}

}  // namespace

// Offsets of the reduced unknowns that a group has a part of.
std::vector<int> NetworkModel::OffsetsOf(const NetworkObservation& o) const {
  std::vector<int> offsets;
  const auto add = [&](int iOffset) {
    if (iOffset >= 0) offsets.push_back(iOffset);
  };
  const auto addPoint = [&](int i) {
    if (FreeAxes(i) > 0) add(m_pointOffset[Index(i)]);
  };
  const auto addCamera = [&](int i) {
    if (!m_parameters[Index(i)].empty()) add(m_cameraOffset[Index(i)]);
  };
  const size_t i = Index(o.iIndex);
  switch (o.eKind) {
    case ZuNetworkKind::Image:
      addCamera(m_network.photos[Index(m_network.images[i].iPhoto)].iCamera);
      add(m_photoOffset[Index(m_network.images[i].iPhoto)]);
      addPoint(m_network.images[i].iPoint);
      break;
    case ZuNetworkKind::Control:
      addPoint(o.iIndex);
      break;
    case ZuNetworkKind::Centre:
      add(m_photoOffset[i]);
      break;
    case ZuNetworkKind::Distance:
      addPoint(m_network.distances[i].iFrom);
      addPoint(m_network.distances[i].iTo);
      break;
    case ZuNetworkKind::Difference:
      addPoint(m_network.differences[i].iFrom);
      addPoint(m_network.differences[i].iTo);
      break;
    case ZuNetworkKind::Plane:
      add(m_planeOffset[i]);
      addPoint(m_network.planes[i].points[Index(o.iSub)]);
      break;
    case ZuNetworkKind::Parameter:
      addCamera(o.iIndex);
      break;
  }
  return offsets;
}

// Nodes are photos, tied points, planes and cameras; those that an eliminated point ties, or
// another observation, are neighbours of each other.
std::vector<std::vector<int>> NetworkModel::Neighbours(const std::vector<int>& nodeOf,
                                                       size_t uNodes) const {
  std::vector<std::vector<int>> cliques;
  const auto collect = [&](const std::vector<int>& observations, std::vector<int>* pClique) {
    for (const int i : observations) {
      for (const int iOffset : OffsetsOf(m_observations[Index(i)])) {
        pClique->push_back(nodeOf[Index(iOffset)]);
      }
    }
    std::sort(pClique->begin(), pClique->end());
    pClique->erase(std::unique(pClique->begin(), pClique->end()), pClique->end());
  };
  for (const std::vector<int>& ofPoint : m_ofPoint) collect(ofPoint, &cliques.emplace_back());
  for (const int i : m_others) collect({i}, &cliques.emplace_back());
  std::vector<std::vector<int>> cliquesOf(uNodes), neighbours(uNodes);
  for (size_t c = 0; c < cliques.size(); ++c) {
    for (const int i : cliques[c]) cliquesOf[Index(i)].push_back(static_cast<int>(c));
  }
  std::vector<int> marks(uNodes, -1);
  for (int i = 0; i < static_cast<int>(uNodes); ++i) {
    for (const int c : cliquesOf[Index(i)]) {
      for (const int k : cliques[Index(c)]) {
        if (k == i || marks[Index(k)] == i) continue;
        marks[Index(k)] = i;
        neighbours[Index(i)].push_back(k);
      }
    }
    std::sort(neighbours[Index(i)].begin(), neighbours[Index(i)].end());
  }
  return neighbours;
}

// Photos far from each other: what moves all of them moves the network.
std::vector<int> NetworkModel::Holders() const {
  std::vector<int> holders;
  std::vector<double> distances(m_start.photos.size(), 1e300);
  for (size_t i = 0; i < distances.size(); ++i) {
    if (m_photoOffset[i] < 0) distances[i] = -1.0;
  }
  while (holders.size() < kHolders) {
    const auto farthest = std::max_element(distances.begin(), distances.end());
    if (farthest == distances.end() || !(*farthest >= 0.0)) break;
    const size_t u = static_cast<size_t>(farthest - distances.begin());
    holders.push_back(static_cast<int>(u));
    for (size_t i = 0; i < distances.size(); ++i) {
      distances[i] =
          std::min(distances[i], SquaredDistance(m_start.photos[i].x0, m_start.photos[u].x0));
    }
    distances[u] = -1.0;
  }
  return holders;
}

void NetworkModel::OrderForSolution(bool bHold) {
  struct Node {
    int* piOffset;
    int n;
  };
  std::vector<Node> nodes;
  const auto add = [&](int* piOffset, int n) {
    if (*piOffset >= 0 && n > 0) nodes.push_back({piOffset, n});
  };
  for (int& iOffset : m_photoOffset) add(&iOffset, 6);
  for (size_t i = 0; i < m_pointOffset.size(); ++i) {
    add(&m_pointOffset[i], FreeAxes(static_cast<int>(i)));
  }
  for (int& iOffset : m_planeOffset) add(&iOffset, 3);
  for (size_t i = 0; i < m_cameraOffset.size(); ++i) {
    add(&m_cameraOffset[i], static_cast<int>(m_parameters[i].size()));
  }
  const size_t uNodes = nodes.size();
  const bool bSmall = m_iReduced <= kSmall;
  std::vector<int> order(uNodes);
  std::vector<std::vector<int>> neighbours;
  std::vector<char> held(uNodes, 0);
  if (bSmall) {
    for (size_t u = 0; u < uNodes; ++u) order[u] = static_cast<int>(u);
  } else {
    std::vector<int> nodeOf(Index(m_iReduced), -1);
    for (size_t u = 0; u < uNodes; ++u) nodeOf[Index(*nodes[u].piOffset)] = static_cast<int>(u);
    neighbours = Neighbours(nodeOf, uNodes);
    if (bHold) {
      for (const int i : Holders()) held[Index(nodeOf[Index(m_photoOffset[Index(i)])])] = 1;
    }
    order = BandOrder(neighbours, held);
  }
  m_iHeldFrom = bSmall ? 0 : m_iReduced;
  m_tileStarts = {0};
  std::vector<int> tileOf(uNodes);
  int iOffset = 0;
  for (const int i : order) {
    const Node& node = nodes[Index(i)];
    if (held[Index(i)]) m_iHeldFrom = std::min(m_iHeldFrom, iOffset);
    if (iOffset + node.n > m_tileStarts.back() + kTile) m_tileStarts.push_back(iOffset);
    tileOf[Index(i)] = static_cast<int>(m_tileStarts.size()) - 1;
    *node.piOffset = iOffset;
    iOffset += node.n;
  }
  const size_t uTiles = m_tileStarts.size();
  m_tileStarts.push_back(iOffset);
  m_coupled.assign(uTiles * uTiles, bSmall);
  const auto couple = [&](size_t a, size_t b) {
    m_coupled[std::max(a, b) * uTiles + std::min(a, b)] = 1;
  };
  for (size_t u = 0; u < neighbours.size(); ++u) {
    for (const int k : neighbours[u]) couple(Index(tileOf[u]), Index(tileOf[Index(k)]));
    for (size_t v = 0; held[u] && v < uNodes; ++v) {
      if (held[v]) couple(Index(tileOf[u]), Index(tileOf[v]));
    }
  }
}

}  // namespace zu::internal
