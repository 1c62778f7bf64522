#include "zu/mesh/plane_mesh.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <numeric>
#include <unordered_map>
#include <utility>

#include "zu/cad/cad_fit.h"
#include "zu/mesh/internal/triangulate.h"

namespace {

constexpr double kLargest = 1e100;  // squares of areas stay finite

bool IsMeshable(double d) { return std::fabs(d) <= kLargest; }

// Finds places that are one, in cells of the size of that distance.
class PlaceGrid {
 public:
  PlaceGrid(const ZuPoint2d& low, double dSame) : m_low(low), m_dSame(dSame) {}

  // The index of a place kept before within the distance; else keeps this one and gives -1.
  int FindOrKeep(const std::vector<ZuMeshVertex>& kept, const ZuPoint2d& place) {
    const Cell cell = CellOf(place);
    for (std::int64_t i = m_dSame > 0.0 ? -1 : 0; i <= (m_dSame > 0.0 ? 1 : 0); ++i) {
      for (std::int64_t k = m_dSame > 0.0 ? -1 : 0; k <= (m_dSame > 0.0 ? 1 : 0); ++k) {
        const auto [first, last] = m_cells.equal_range(Key({cell.first + i, cell.second + k}));
        for (auto it = first; it != last; ++it) {
          if (kept[static_cast<size_t>(it->second)].place.Distance(place) <= m_dSame) {
            return it->second;
          }
        }
      }
    }
    m_cells.emplace(Key(cell), static_cast<int>(kept.size()));
    return -1;
  }

 private:
  using Cell = std::pair<std::int64_t, std::int64_t>;

  Cell CellOf(const ZuPoint2d& place) const {
    const auto of = [this](double d) {
      if (m_dSame > 0.0) return static_cast<std::int64_t>(std::min(d / m_dSame, 1e18));
      return static_cast<std::int64_t>(std::hash<double>()(d) >> 1);
    };
    return {of(place.x - m_low.x), of(place.y - m_low.y)};
  }
  static std::uint64_t Key(const Cell& cell) {
    return static_cast<std::uint64_t>(cell.first) * 0x9E3779B97F4A7C15u ^
           (static_cast<std::uint64_t>(cell.second) * 0xC2B2AE3D27D4EB4Fu >> 1);
  }

  ZuPoint2d m_low;
  double m_dSame;
  std::unordered_multimap<std::uint64_t, int> m_cells;
};

}  // namespace

class ZuMeshBuilder {
 public:
  ZuMeshBuilder(const std::vector<ZuPoint3d>& points, const ZuCadPlane& plane,
                const ZuMeshOptions& options)
      : m_points(points), m_options(options) {
    m_mesh.m_plane = plane;
  }

  eZuMeshStatus Build(const std::vector<std::vector<size_t>>& breaklines) {
    if (m_points.size() >= INT_MAX / 8) return eZuMeshTooMany;
    for (const double d : {m_options.dMaxEdge, m_options.dSamePlace}) {
      if (!IsMeshable(d)) return eZuMeshBadOption;
    }
    if (m_options.dMaxEdge < 0.0) return eZuMeshBadOption;
    if (!Project()) return eZuMeshNotFinite;
    const eZuMeshStatus eSpread = CheckSpread();
    if (eSpread != eZuMeshOk) return eSpread;
    std::vector<std::pair<int, int>> segments;
    if (!SegmentsOf(breaklines, &segments)) return eZuMeshBadBreakline;
    segments = ThroughPlacesOnTheWay(segments);
    std::vector<ZuPoint2d> places;
    places.reserve(m_mesh.m_vertices.size());
    for (const ZuMeshVertex& vertex : m_mesh.m_vertices) places.push_back(vertex.place);
    ZuTriangulation result = ZuTriangulatePlaces(places, segments);
    AddCrossings(result);
    TakeTriangles(&result.triangles);
    return eZuMeshOk;
  }

  ZuPlaneMesh m_mesh;

 private:
  bool Project() {
    std::vector<ZuMeshVertex> all;
    all.reserve(m_points.size());
    ZuPoint2d low(kLargest, kLargest), high(-kLargest, -kLargest);
    for (size_t u = 0; u < m_points.size(); ++u) {
      ZuMeshVertex vertex;
      vertex.point = m_points[u];
      for (const double d : {vertex.point.x, vertex.point.y, vertex.point.z}) {
        m_dLargest = std::max(m_dLargest, std::fabs(d));
      }
      vertex.place = m_mesh.m_plane.ToPlane(vertex.point, &vertex.dHeight);
      vertex.iSource = static_cast<int>(u);
      if (!IsMeshable(vertex.place.x) || !IsMeshable(vertex.place.y) ||
          !IsMeshable(vertex.dHeight)) {
        return false;
      }
      low = ZuPoint2d(std::min(low.x, vertex.place.x), std::min(low.y, vertex.place.y));
      high = ZuPoint2d(std::max(high.x, vertex.place.x), std::max(high.y, vertex.place.y));
      all.push_back(vertex);
    }
    m_dExtent = all.empty() ? 0.0 : std::max(high.x - low.x, high.y - low.y);
    KeepApart(all, low);
    return true;
  }

  void KeepApart(const std::vector<ZuMeshVertex>& all, const ZuPoint2d& low) {
    m_vertexOf.resize(all.size());
    PlaceGrid grid(low,
                   m_options.dSamePlace < 0.0 ? kZuCadSmall * m_dExtent : m_options.dSamePlace);
    for (size_t u = 0; u < all.size(); ++u) {
      const int iFound = grid.FindOrKeep(m_mesh.m_vertices, all[u].place);
      m_vertexOf[u] = iFound >= 0 ? iFound : static_cast<int>(m_mesh.m_vertices.size());
      if (iFound < 0) {
        m_mesh.m_vertices.push_back(all[u]);
        continue;
      }
      const ZuMeshVertex& kept = m_mesh.m_vertices[static_cast<size_t>(iFound)];
      m_mesh.m_doubles.push_back(
          {static_cast<int>(u), kept.iSource, all[u].dHeight - kept.dHeight});
    }
  }

  eZuMeshStatus CheckSpread() const {
    const std::vector<ZuMeshVertex>& all = m_mesh.m_vertices;
    if (all.size() < 3) return eZuMeshTooFew;
    const ZuPoint2d& first = all.front().place;
    const auto far = std::max_element(all.begin(), all.end(), [&](const auto& a, const auto& b) {
      return a.place.Distance2(first) < b.place.Distance2(first);
    });
    const ZuVector2d way = far->place - first;
    for (const ZuMeshVertex& vertex : all) {
      const ZuVector2d d = vertex.place - first;
      if (std::fabs(way.x * d.y - way.y * d.x) > kZuCadSmall * (way * way)) return eZuMeshOk;
    }
    return eZuMeshCollinear;
  }

  bool SegmentsOf(const std::vector<std::vector<size_t>>& breaklines,
                  std::vector<std::pair<int, int>>* pSegments) const {
    for (const std::vector<size_t>& line : breaklines) {
      if (line.size() < 2) return false;
      for (const size_t u : line) {
        if (u >= m_vertexOf.size()) return false;
      }
      for (size_t k = 1; k < line.size(); ++k) {
        const int iFrom = m_vertexOf[line[k - 1]], iTo = m_vertexOf[line[k]];
        if (iFrom != iTo) pSegments->emplace_back(iFrom, iTo);
      }
    }
    return true;
  }

  // Each segment in pieces between the places that stand on it as far as rounding tells. Places are
  // walked in the order of the coordinate in which the segment is shorter.
  std::vector<std::pair<int, int>> ThroughPlacesOnTheWay(
      const std::vector<std::pair<int, int>>& segments) const {
    std::vector<std::pair<int, int>> pieces;
    if (segments.empty()) return pieces;
    const auto value = [this](int i, bool bX) { return bX ? Place(i).x : Place(i).y; };
    std::vector<int> orders[2];
    for (const bool bX : {false, true}) {
      std::vector<int>& order = orders[bX ? 1 : 0];
      order.resize(m_mesh.m_vertices.size());
      std::iota(order.begin(), order.end(), 0);
      std::sort(order.begin(), order.end(),
                [&](int i, int k) { return value(i, bX) < value(k, bX); });
    }
    const double dOff = kOnLine * m_dLargest;
    std::vector<std::pair<double, int>> onTheWay;
    for (const auto& [iFrom, iTo] : segments) {
      const ZuPoint2d &from = Place(iFrom), &to = Place(iTo);
      const ZuVector2d way = to - from;
      const bool bX = std::fabs(way.x) < std::fabs(way.y);
      const double dFrom = bX ? from.x : from.y, dTo = bX ? to.x : to.y;
      const std::vector<int>& order = orders[bX ? 1 : 0];
      auto it = std::lower_bound(order.begin(), order.end(), std::min(dFrom, dTo) - dOff,
                                 [&](int i, double d) { return value(i, bX) < d; });
      const double dLength = way.Norm();
      onTheWay.clear();
      for (; it != order.end() && value(*it, bX) <= std::max(dFrom, dTo) + dOff; ++it) {
        const ZuVector2d d = Place(*it) - from;
        const double dAlong = d * way / dLength;
        if (*it == iFrom || *it == iTo || !(dAlong > 0.0) || !(dAlong < dLength)) continue;
        if (std::fabs(way.x * d.y - way.y * d.x) > dOff * dLength) continue;
        onTheWay.emplace_back(dAlong, *it);
      }
      std::sort(onTheWay.begin(), onTheWay.end());
      int iLast = iFrom;
      for (const auto& place : onTheWay) {
        pieces.emplace_back(iLast, place.second);
        iLast = place.second;
      }
      pieces.emplace_back(iLast, iTo);
    }
    return pieces;
  }

  void AddCrossings(const ZuTriangulation& result) {
    m_mesh.m_iCrossings = static_cast<int>(result.crossings.size());
    for (const ZuBreakCrossing& crossing : result.crossings) {
      ZuMeshVertex vertex;
      vertex.place = crossing.place;
      double dLow = kLargest, dHigh = -kLargest;
      for (const ZuBreakCrossing::Share& share : crossing.shares) {
        const double h0 = m_mesh.m_vertices[static_cast<size_t>(share.iFrom)].dHeight;
        const double h1 = m_mesh.m_vertices[static_cast<size_t>(share.iTo)].dHeight;
        const double dHeight = h0 + share.dShare * (h1 - h0);
        dLow = std::min(dLow, dHeight);
        dHigh = std::max(dHigh, dHeight);
        vertex.dHeight += dHeight / static_cast<double>(crossing.shares.size());
      }
      if (dHigh > dLow) m_mesh.m_dCrossingGap = std::max(m_mesh.m_dCrossingGap, dHigh - dLow);
      vertex.point = m_mesh.m_plane.ToSpace(vertex.place, vertex.dHeight);
      m_mesh.m_vertices.push_back(vertex);
    }
  }

  // What rounding makes of points in a line at the rim is no triangle: those that are as flat go,
  // from outside inwards. Inside the mesh they close it.
  void PeelSlivers(std::vector<ZuPlaneMesh::Triangle>* pTriangles) const {
    std::vector<char> flat(pTriangles->size(), 0);
    std::vector<size_t> open;
    for (size_t u = 0; u < flat.size(); ++u) {
      const ZuPlaneMesh::Triangle& t = (*pTriangles)[u];
      const double dLongest = LongestEdge(t);
      const ZuVector2d a = Place(t[1]) - Place(t[0]), b = Place(t[2]) - Place(t[0]);
      flat[u] = a.x * b.y - a.y * b.x <= kSliver * dLongest * dLongest;
      if (flat[u] != 0) open.push_back(u);
    }
    if (open.empty()) return;
    std::map<std::pair<int, int>, size_t> edges;
    for (size_t u = 0; u < flat.size(); ++u) {
      const ZuPlaneMesh::Triangle& t = (*pTriangles)[u];
      for (size_t k = 0; k < 3; ++k) edges[{t[k], t[(k + 1) % 3]}] = u;
    }
    std::vector<char> gone(flat.size(), 0);
    while (!open.empty()) {
      const size_t u = open.back();
      open.pop_back();
      const ZuPlaneMesh::Triangle& t = (*pTriangles)[u];
      const auto twin = [&](size_t k) { return edges.find({t[(k + 1) % 3], t[k]}); };
      if (gone[u] != 0 ||
          (twin(0) != edges.end() && twin(1) != edges.end() && twin(2) != edges.end())) {
        continue;
      }
      gone[u] = 1;
      for (size_t k = 0; k < 3; ++k) {
        edges.erase({t[k], t[(k + 1) % 3]});
        if (twin(k) != edges.end() && flat[twin(k)->second] != 0) open.push_back(twin(k)->second);
      }
    }
    size_t uKept = 0;
    for (size_t u = 0; u < flat.size(); ++u) {
      if (gone[u] == 0) (*pTriangles)[uKept++] = (*pTriangles)[u];
    }
    pTriangles->resize(uKept);
  }

  void TakeTriangles(std::vector<ZuPlaneMesh::Triangle>* pTriangles) {
    PeelSlivers(pTriangles);
    for (ZuPlaneMesh::Triangle& t : *pTriangles) {
      if (m_options.dMaxEdge > 0.0 && LongestEdge(t) > m_options.dMaxEdge) {
        ++m_mesh.m_iLong;
        continue;
      }
      std::rotate(t.begin(), std::min_element(t.begin(), t.end()), t.end());
      m_mesh.m_triangles.push_back(t);
    }
    std::sort(m_mesh.m_triangles.begin(), m_mesh.m_triangles.end());
  }

  double LongestEdge(const ZuPlaneMesh::Triangle& t) const {
    return std::max({Place(t[0]).Distance(Place(t[1])), Place(t[1]).Distance(Place(t[2])),
                     Place(t[2]).Distance(Place(t[0]))});
  }
  const ZuPoint2d& Place(int i) const { return m_mesh.m_vertices[static_cast<size_t>(i)].place; }

  static constexpr double kSliver = 1e-14;  // height over longest edge [-]
  // Distance from a breakline over the largest coordinate of a point that stands on it: what
  // rounding of the points and of their places in the plane may have left [-].
  static constexpr double kOnLine = 8.0 * std::numeric_limits<double>::epsilon();

  const std::vector<ZuPoint3d>& m_points;
  const ZuMeshOptions& m_options;
  double m_dExtent = 0.0;
  double m_dLargest = 0.0;      // coordinate of a point
  std::vector<int> m_vertexOf;  // of a point
};

const char* ZuMeshStatusText(eZuMeshStatus eStatus) {
  switch (eStatus) {
    case eZuMeshOk:
      return "ok";
    case eZuMeshTooFew:
      return "fewer than 3 points that are apart in the plane";
    case eZuMeshCollinear:
      return "the points stand in a line of the plane";
    case eZuMeshNotFinite:
      return "a coordinate is not finite, or beyond 1e100";
    case eZuMeshBadBreakline:
      return "a breakline names no point, or has fewer than 2";
    case eZuMeshBadOption:
      return "a length or step is not finite, or below 0";
    case eZuMeshTooMany:
      return "too many points or contours";
  }
  return "unknown";
}

eZuMeshStatus ZuMakePlaneMesh(const std::vector<ZuPoint3d>& points, const ZuCadPlane& plane,
                              const std::vector<std::vector<size_t>>& breaklines,
                              const ZuMeshOptions& options, ZuPlaneMesh* pMesh) {
  ZuMeshBuilder builder(points, plane, options);
  const eZuMeshStatus eStatus = builder.Build(breaklines);
  if (eStatus == eZuMeshOk) *pMesh = std::move(builder.m_mesh);
  return eStatus;
}
