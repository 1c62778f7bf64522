// The keyword form of a rectification, written.
#include "zu/foundation/internal/item_writer.h"
#include "zu/rectify/zusp_trafo.h"

namespace {

bool IsUnset(const ZuCamera& camera) {
  for (const double d :
       {camera.m_dC, camera.m_dXh, camera.m_dYh, camera.m_dA1, camera.m_dA2, camera.m_dR0}) {
    if (d != 0.0) return false;
  }
  return camera.GetId() == 0 && camera.GetName().empty();
}

void ExportPolygon(zu::internal::ItemWriter& items, const char* szKeyword,
                   const ZuPolygon& polygon) {
  if (polygon.Count() == 0) return;
  items.Lines(szKeyword, [&polygon](std::ostream& os) { polygon.Export(os); });
}

}  // namespace

// ZUSPID 1 "facade" ACTIV 1 ZUSPTRAFO { 3 3 ... } TRAFO3D { 4 4 ... } VALIDREGION { x y ... }
std::ostream& ZuZuspTrafo::Export(std::ostream& stream) const {
  zu::internal::ItemWriter items(stream);
  items.Item("ZUSPID", GetId(), GetName());
  items.Item("ACTIV", IsActive());
  items.Item("REGIONACTIV", IsRegionActive());
  items.Item("KAMERA", GetDistortCameraFlag());
  if (!IsUnset(m_cameraDistort)) {
    items.Block("DISTORTION", [this](std::ostream& os) { m_cameraDistort.Export(os); });
  }
  items.Lines("ZUSPTRAFO", [this](std::ostream& os) { m_matZusp.Export(os); });
  items.Lines("TRAFO3D", [this](std::ostream& os) { m_matTrans.Export(os); });
  ExportPolygon(items, "MEASPOINTS", m_polyBiko);
  ExportPolygon(items, "DEFPOINTS", m_polyPP);
  ExportPolygon(items, "VALIDREGION", m_polyRegion);
  if (!m_parallelDef.GetLines().IsEmpty() || !m_parallelDef.GetConstraints().IsEmpty()) {
    items.Lines("PARALLELDEF", [this](std::ostream& os) { m_parallelDef.Export(os); });
  }
  return stream;
}
