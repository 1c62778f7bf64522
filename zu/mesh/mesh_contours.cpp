#include "zu/mesh/mesh_contours.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <utility>

namespace {

constexpr double kMostPieces = 5e7;
constexpr double kMostSteps = 4503599627370496.0;  // 2^52: numbers of steps are exact

using Edge = std::pair<int, int>;  // the smaller index first

// A line through a triangle at a level, from edge to edge.
struct ContourPiece {
  std::int64_t iLevel;
  Edge from, to;
};

class ContourTracer {
 public:
  ContourTracer(const ZuPlaneMesh& mesh, double dStep) : m_mesh(mesh), m_dStep(dStep) {}

  eZuMeshStatus Trace(std::vector<ZuMeshContour>* pContours) {
    if (!CutTriangles()) return eZuMeshTooMany;
    std::stable_sort(m_pieces.begin(), m_pieces.end(),
                     [](const auto& a, const auto& b) { return a.iLevel < b.iLevel; });
    pContours->clear();
    for (size_t u = 0; u < m_pieces.size();) {
      size_t uEnd = u;
      while (uEnd < m_pieces.size() && m_pieces[uEnd].iLevel == m_pieces[u].iLevel) ++uEnd;
      JoinLevel(u, uEnd, pContours);
      u = uEnd;
    }
    return eZuMeshOk;
  }

 private:
  double Height(int i) const { return m_mesh.Vertices()[static_cast<size_t>(i)].dHeight; }
  double Level(std::int64_t iLevel) const { return static_cast<double>(iLevel) * m_dStep; }

  bool CutTriangles() {
    double dPieces = 0.0;
    for (const int iRun : {0, 1}) {
      for (const ZuPlaneMesh::Triangle& t : m_mesh.Triangles()) {
        const auto [low, high] = std::minmax({Height(t[0]), Height(t[1]), Height(t[2])});
        const double dFirst = std::floor(low / m_dStep), dLast = std::ceil(high / m_dStep);
        if (!(std::fabs(dFirst) < kMostSteps && std::fabs(dLast) < kMostSteps)) return false;
        if (iRun == 0) {
          dPieces += dLast - dFirst + 1.0;
          if (dPieces > kMostPieces) return false;
          continue;
        }
        for (auto i = static_cast<std::int64_t>(dFirst); i <= static_cast<std::int64_t>(dLast);
             ++i) {
          CutTriangle(t, i);
        }
      }
    }
    return true;
  }

  void CutTriangle(const ZuPlaneMesh::Triangle& t, std::int64_t iLevel) {
    const double dLevel = Level(iLevel);
    int iAbove = 0;
    for (const int i : t) iAbove += Height(i) >= dLevel ? 1 : 0;
    if (iAbove == 0 || iAbove == 3) return;
    size_t uAlone = 0;  // the corner on its side of the level
    while ((Height(t[uAlone]) >= dLevel) != (iAbove == 1)) ++uAlone;
    const int a = t[uAlone];
    Edge from = std::minmax(a, t[(uAlone + 1) % 3]), to = std::minmax(a, t[(uAlone + 2) % 3]);
    if (iAbove == 2) std::swap(from, to);
    m_pieces.push_back({iLevel, from, to});
  }

  ZuPoint2d Point(const Edge& edge, double dLevel) const {
    const ZuMeshVertex& a = m_mesh.Vertices()[static_cast<size_t>(edge.first)];
    const ZuMeshVertex& b = m_mesh.Vertices()[static_cast<size_t>(edge.second)];
    if (a.dHeight == dLevel) return a.place;
    if (b.dHeight == dLevel) return b.place;
    return a.place + (dLevel - a.dHeight) / (b.dHeight - a.dHeight) * (b.place - a.place);
  }

  void JoinLevel(size_t uBegin, size_t uEnd, std::vector<ZuMeshContour>* pContours) {
    std::map<Edge, size_t> next;  // the piece that begins at an edge
    std::map<Edge, int> ends;
    for (size_t u = uBegin; u < uEnd; ++u) {
      next[m_pieces[u].from] = u;
      ends[m_pieces[u].to] = 1;
    }
    for (const bool bClosed : {false, true}) {
      for (size_t u = uBegin; u < uEnd; ++u) {
        const Edge start = m_pieces[u].from;
        if (next.count(start) == 0 || (!bClosed && ends.count(start) != 0)) continue;
        ZuMeshContour contour;
        contour.dLevel = Level(m_pieces[u].iLevel);
        contour.bClosed = bClosed;
        Edge at = start;
        AddPoint(at, &contour);
        for (auto it = next.find(at); it != next.end(); it = next.find(at)) {
          at = m_pieces[it->second].to;
          next.erase(it);
          if (at != start) AddPoint(at, &contour);
        }
        while (bClosed && contour.line.size() > 1 &&
               contour.line.front().Distance2(contour.line.back()) == 0.0) {
          contour.line.pop_back();
        }
        if (contour.line.size() > 1) pContours->push_back(std::move(contour));
      }
    }
  }

  // Edges that meet in a vertex at the level give one point.
  void AddPoint(const Edge& edge, ZuMeshContour* pContour) const {
    const ZuPoint2d p = Point(edge, pContour->dLevel);
    if (pContour->line.empty() || p.Distance2(pContour->line.back()) > 0.0) {
      pContour->line.push_back(p);
    }
  }

  const ZuPlaneMesh& m_mesh;
  double m_dStep;
  std::vector<ContourPiece> m_pieces;
};

}  // namespace

double ZuMeshContour::Length() const {
  double dLength = 0.0;
  for (size_t k = 1; k < line.size(); ++k) dLength += line[k - 1].Distance(line[k]);
  if (bClosed && line.size() > 1) dLength += line.back().Distance(line.front());
  return dLength;
}

eZuMeshStatus ZuCalcContours(const ZuPlaneMesh& mesh, double dStep,
                             std::vector<ZuMeshContour>* pContours) {
  if (!std::isfinite(dStep) || !(dStep > 0.0)) return eZuMeshBadOption;
  return ContourTracer(mesh, dStep).Trace(pContours);
}
