// Uses the installed headers and library as an application does.
#include <zu/zu.h>

#ifdef WITH_ADJUST
#include <zu/adjust/adjust_status.h>
#endif

#ifdef WITH_EXCHANGE
#include <zu/exchange/project_json.h>

#include <sstream>
#endif

#ifdef WITH_GEO
#include <zu/geo/position_converter.h>
#endif

#ifdef WITH_MESH
#include <zu/mesh/mesh_file.h>
#endif

#ifdef WITH_IMAGE
#include <zu/image/image_file.h>
#endif

#include <cstdio>
#include <cstring>

namespace {

const ZuFrame3d g_world;  // made before main: the axes of the library must be there by then

bool HasAxes(const ZuFrame3d& frame) {
  return frame.v1().x == 1.0 && frame.v2().y == 1.0 && frame.v3().z == 1.0;
}

bool HasComponents() {
#ifdef WITH_ADJUST
  if (std::strcmp(ZuAdjustStatusText(ZuAdjustStatus::Good), "good") != 0) return false;
#endif
#ifdef WITH_EXCHANGE
  std::ostringstream json;
  ZuExportProjectJson(json, ZuProject());
  if (json.str().empty()) return false;
#endif
#ifdef WITH_GEO
  if (ZuFindEllipsoid("wgs84") == nullptr) return false;
#endif
#ifdef WITH_MESH
  ZuPlaneMesh mesh;
  if (ZuMakePlaneMesh({}, ZuCadPlane(), {}, {}, &mesh) != eZuMeshTooFew) return false;
#endif
#ifdef WITH_IMAGE
  ZuFindingList findings;
  ZuImage image;
  if (ZuReadImageBytes("no picture", "", &image, nullptr, &findings)) return false;
#endif
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::printf("zu %s\n", ZuVersion());
  const bool bVersion = argc == 2 && std::strcmp(argv[1], ZuVersion()) == 0;
  return bVersion && HasAxes(g_world) && HasComponents() ? 0 : 1;
}
