// Areas, volumes and rims of a mesh.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>

#include "zu/mesh/plane_mesh.h"

namespace {

// The part of A (h0 + h1 + h2) / 3 that lies above 0. The corner that stands alone on its side is
// cut off at (h / (h - h')) of its two edges.
double VolumeAbove(double dArea, double h0, double h1, double h2) {
  double h[] = {h0, h1, h2};
  std::sort(h, h + 3);
  if (h[0] >= 0.0) return dArea * (h[0] + h[1] + h[2]) / 3.0;
  if (h[2] <= 0.0) return 0.0;
  if (h[1] <= 0.0) {  // the highest alone
    return dArea * (h[2] / (h[2] - h[0])) * (h[2] / (h[2] - h[1])) * h[2] / 3.0;
  }
  const double dBelow = dArea * (h[0] / (h[0] - h[1])) * (h[0] / (h[0] - h[2])) * -h[0] / 3.0;
  return dArea * (h[0] + h[1] + h[2]) / 3.0 + dBelow;
}

std::uint64_t EdgeKey(int iFrom, int iTo) {
  return static_cast<std::uint64_t>(iFrom) << 32 | static_cast<std::uint32_t>(iTo);
}

}  // namespace

ZuMeshFigures ZuPlaneMesh::Figures() const {
  ZuMeshFigures figures;
  for (const Triangle& t : m_triangles) {
    const ZuMeshVertex& v0 = m_vertices[static_cast<size_t>(t[0])];
    const ZuMeshVertex& v1 = m_vertices[static_cast<size_t>(t[1])];
    const ZuMeshVertex& v2 = m_vertices[static_cast<size_t>(t[2])];
    const ZuVector2d a = v1.place - v0.place, b = v2.place - v0.place;
    const double da = v1.dHeight - v0.dHeight, db = v2.dHeight - v0.dHeight;
    const double dTwice = a.x * b.y - a.y * b.x;
    figures.dArea += 0.5 * dTwice;
    figures.dSurface += 0.5 * std::hypot(dTwice, a.y * db - da * b.y, da * b.x - a.x * db);
    const double dAbove = VolumeAbove(0.5 * dTwice, v0.dHeight, v1.dHeight, v2.dHeight);
    figures.dVolumeAbove += dAbove;
    figures.dVolumeBelow += VolumeAbove(0.5 * dTwice, -v0.dHeight, -v1.dHeight, -v2.dHeight);
    figures.dLongestEdge = std::max({figures.dLongestEdge, a.Norm(), b.Norm(), (b - a).Norm()});
  }
  return figures;
}

std::vector<ZuMeshRim> ZuPlaneMesh::Rims() const {
  std::unordered_map<std::uint64_t, int> apex;  // of the triangle left of an edge
  apex.reserve(3 * m_triangles.size());
  for (const Triangle& t : m_triangles) {
    for (size_t k = 0; k < 3; ++k) apex[EdgeKey(t[k], t[(k + 1) % 3])] = t[(k + 2) % 3];
  }
  const auto isRim = [&apex](int iFrom, int iTo) { return apex.count(EdgeKey(iTo, iFrom)) == 0; };
  std::unordered_map<std::uint64_t, bool> seen;
  std::vector<ZuMeshRim> rims;
  for (const Triangle& t : m_triangles) {
    for (size_t k = 0; k < 3; ++k) {
      int iFrom = t[k], iTo = t[(k + 1) % 3];
      if (!isRim(iFrom, iTo) || seen.count(EdgeKey(iFrom, iTo)) != 0) continue;
      ZuMeshRim rim;
      while (!seen[EdgeKey(iFrom, iTo)]) {
        seen[EdgeKey(iFrom, iTo)] = true;
        rim.vertices.push_back(iFrom);
        // Round the end, through the triangles there, to the next edge without a neighbour.
        int iNext = apex.at(EdgeKey(iFrom, iTo));
        while (!isRim(iTo, iNext)) iNext = apex.at(EdgeKey(iNext, iTo));
        iFrom = iTo;
        iTo = iNext;
      }
      const ZuPoint2d& origin = m_vertices[static_cast<size_t>(rim.vertices[0])].place;
      for (size_t i = 0; i < rim.vertices.size(); ++i) {
        const int iEnd = rim.vertices[(i + 1) % rim.vertices.size()];
        const ZuVector2d p = m_vertices[static_cast<size_t>(rim.vertices[i])].place - origin;
        const ZuVector2d q = m_vertices[static_cast<size_t>(iEnd)].place - origin;
        rim.dArea += 0.5 * (p.x * q.y - p.y * q.x);
      }
      rims.push_back(std::move(rim));
    }
  }
  return rims;
}
