// Mesh files of other programs: PLY and Wavefront OBJ.
#pragma once

#include <iosfwd>

#include "zu/mesh/plane_mesh.h"

// The vertices in space, as double, and the triangles; text has the shortest numbers that read back
// to the same bits, binary is little endian. Errors stand in the stream, whose result is returned.
ZU_MESH_API bool ZuExportMeshPly(std::ostream& stream, const ZuPlaneMesh& mesh, bool bBinary);
ZU_MESH_API bool ZuExportMeshObj(std::ostream& stream, const ZuPlaneMesh& mesh);
