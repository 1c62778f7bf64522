// A mesh over a plane: the scan conversion of points to triangles.
//
// Points are projected into the plane and triangulated there, so that the circle about a triangle
// holds no other point (B. Delaunay, "Sur la sphere vide", 1934) but where breaklines, which are
// edges always, stand between (L. P. Chew, "Constrained Delaunay triangulations", Algorithmica 4,
// 1989); heights stay as they are (T. Luhmann, Nahbereichsphotogrammetrie, on surface models). A
// surface with an overhang cannot be told over this plane; another plane may do.
//
//   ZuPlaneMesh mesh;
//   if (ZuMakePlaneMesh(points, ZuCadPlane::XY(0.0), {}, {}, &mesh) == eZuMeshOk) {
//     const ZuMeshFigures figures = mesh.Figures();      // areas, volumes, holes
//   }
//
// Whether places lie left of, right of or on a line or circle is decided exactly. The same input
// gives the same mesh.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "zu/cad/cad_plane.h"
#include "zu/mesh/export.h"
#include "zu/numerics/point3d.h"

enum eZuMeshStatus : int {
  eZuMeshOk = 0,
  eZuMeshTooFew = 1,        // fewer than 3 points that are apart in the plane
  eZuMeshCollinear = 2,     // all of them in a line of the plane
  eZuMeshNotFinite = 3,     // a coordinate is not finite, or beyond 1e100
  eZuMeshBadBreakline = 4,  // a breakline names no point, or has fewer than 2
  eZuMeshBadOption = 5,     // a length or step that is not finite, or below 0
  eZuMeshTooMany = 6,       // points for an int, or contours
};

// "ok", "the points stand in a line of the plane", ...; static text.
ZU_MESH_API const char* ZuMeshStatusText(eZuMeshStatus eStatus);

struct ZuMeshOptions {
  // Triangles with an edge that is longer in the plane are dropped; 0: none.
  double dMaxEdge = 0.0;
  // Places this far apart in the plane are one; below 0: 1e-10 of the extent.
  double dSamePlace = -1.0;
};

struct ZuMeshVertex {
  static constexpr int kCrossing = -1;

  ZuPoint3d point;          // in space
  ZuPoint2d place;          // in the plane
  double dHeight = 0.0;     // over it
  int iSource = kCrossing;  // index of the point, from 0; kCrossing where breaklines cross
};

// A point that stands where another one does, in the plane. The first of them is kept.
struct ZuMeshDouble {
  int iDropped, iKept;  // indices of points
  double dHeight;       // of the one dropped less that of the one kept
};

// A closed line of edges that one triangle has, the mesh to its left.
struct ZuMeshRim {
  std::vector<int> vertices;
  double dArea = 0.0;  // in the plane; below 0 round a hole
  bool IsHole() const { return dArea < 0.0; }
};

struct ZuMeshFigures {
  double dArea = 0.0;         // over the plane
  double dSurface = 0.0;      // in space
  double dVolumeAbove = 0.0;  // between plane and mesh where the mesh is above
  double dVolumeBelow = 0.0;  // where it is below; not below 0 itself
  double dLongestEdge = 0.0;  // in the plane
  double dVolume() const { return dVolumeAbove - dVolumeBelow; }
};

class ZU_MESH_API ZuPlaneMesh {
 public:
  using Triangle = std::array<int, 3>;  // indices of vertices, from 0

  const ZuCadPlane& Plane() const { return m_plane; }
  // The points kept in their order, then crossings.
  const std::vector<ZuMeshVertex>& Vertices() const { return m_vertices; }
  // Anticlockwise for who looks against the normal, in the order of their indices.
  const std::vector<Triangle>& Triangles() const { return m_triangles; }
  const std::vector<ZuMeshDouble>& Doubles() const { return m_doubles; }
  // Triangles with a longer edge than allowed.
  int LongTriangles() const { return m_iLong; }
  // Places where breaklines cross, and the largest difference of their heights there. The height
  // of the mesh is the mean.
  int Crossings() const { return m_iCrossings; }
  double CrossingGap() const { return m_dCrossingGap; }

  // Triangles are cut at the plane exactly: the volumes are those of the mesh.
  ZuMeshFigures Figures() const;
  // Outer ones and those of holes. A hole that meets the outer rim in a vertex is a part of that.
  std::vector<ZuMeshRim> Rims() const;

 private:
  friend class ZuMeshBuilder;

  ZuCadPlane m_plane;
  std::vector<ZuMeshVertex> m_vertices;
  std::vector<Triangle> m_triangles;
  std::vector<ZuMeshDouble> m_doubles;
  int m_iLong = 0;
  int m_iCrossings = 0;
  double m_dCrossingGap = 0.0;
};

// Breaklines are indices of points, from 0, in the order of the line; they may cross, share points
// and be closed. One that is named by its ends alone passes through the points that stand on the
// way, to 8 epsilon (1.8e-15) of the largest coordinate. *pMesh is
// untouched unless the status is good; there may be no triangle left where all had a long edge.
ZU_MESH_API eZuMeshStatus ZuMakePlaneMesh(const std::vector<ZuPoint3d>& points,
                                          const ZuCadPlane& plane,
                                          const std::vector<std::vector<size_t>>& breaklines,
                                          const ZuMeshOptions& options, ZuPlaneMesh* pMesh);
