// Planes, regions and polygons out of keyword files; a plane file is one of blocks alone.
#include <cstdint>
#include <string_view>

#include "tests/support/temp_file.h"
#include "zu/foundation/reader.h"
#include "zu/rectify/plane_list.h"
#include "zu/rectify/polygon.h"
#include "zu/rectify/region.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  static const TempFile file;
  file.Write(std::string_view(reinterpret_cast<const char*>(pData), uSize));

  ZuPlaneList planes;
  planes.ReadFile(String(file.Path()));

  ZuRegion region;
  ZuPolygon polygons[] = {ZuPolygon(eLPolygonXY), ZuPolygon(eLPolygonIdXYZ),
                          ZuPolygon(static_cast<ELPolygonMode>(7))};
  const struct {
    const char* szKeyword;
    Link link;
  } keywords[] = {{"P", Link(&planes, &ZuPlaneList::AddPlane)},
                  {"R", Link(&region, &ZuRegion::Read)},
                  {"A", Link(&polygons[0], &ZuPolygon::Read)},
                  {"B", Link(&polygons[1], &ZuPolygon::Read)},
                  {"C", Link(&polygons[2], &ZuPolygon::Read)}};
  ZuReader reader(file.Path());
  for (const auto& keyword : keywords) {
    ZuReaderObject object(keyword.szKeyword, keyword.link);
    reader.RegisterObject(object);
  }
  reader.DoProcess(false);
  for (const ZuPolygon& polygon : polygons) {
    for (const ZuPoint* p = polygon.First(); p != nullptr; p = p->Next()) polygon.Overlap(p);
  }
  return 0;
}
