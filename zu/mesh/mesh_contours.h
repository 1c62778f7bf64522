// Contours of a mesh over a plane, in steps along its normal.
#pragma once

#include <vector>

#include "zu/mesh/plane_mesh.h"

struct ZU_MESH_API ZuMeshContour {
  double dLevel = 0.0;  // height over the plane
  bool bClosed = false;
  // With the higher ground to the left; the first is not repeated at the end of a closed one.
  std::vector<ZuPoint2d> line;

  double Length() const;
};

// At all multiples of the step between the lowest and the highest vertex, by level, along straight
// lines in each triangle. A vertex at a level counts as above it: the line of a level piece is its
// rim towards lower ground, a summit at a level has none.
//
// eZuMeshBadOption: the step is not finite or not above 0; eZuMeshTooMany: more than 50 million
// pieces in triangles, or levels beyond 2^52 steps. *pContours is then untouched. n log n of the
// pieces.
ZU_MESH_API eZuMeshStatus ZuCalcContours(const ZuPlaneMesh& mesh, double dStep,
                                         std::vector<ZuMeshContour>* pContours);
