#include "tests/support/file_writers.h"

#include <fstream>
#include <new>
#include <string>

#include "zu/cloud/point_cloud_container.h"
#include "zu/foundation/writer.h"
#include "zu/photo/camera_list.h"
#include "zu/photo/reseau_file.h"
#include "zu/rectify/plane_list.h"
#include "zu/rectify/zusp_def_line.h"
#include "zu/transform/lokal_system.h"
#include "zu/transform/trafo2d.h"

namespace {

constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWName, eZuPointRWX,
                                       eZuPointRWDX, eZuPointRWVX,   eZuPointRWEnd};

// What the writers write, with numbers that a comma or groups of digits would change.
struct Records {
  ZuPointList points;
  ZuCameraList cameras;
  ZuReseaufileList reseaus;
  ZuPointCloudContainer clouds;
  ZuPlane plane;
  ZuLokalSystem local;
  ZuTrafo2d trafo;
  ZuZuspDefLine line{12345, 12346};
  String path;

  Records() {
    points.SetMask(kColumns);
    for (unsigned int u = 1; u < 40; ++u) {
      ZuPoint point(1234567 + u, 1234.5 * u, 2.25, -1e-7, 3);
      point.SetName("a name of some length");
      points.Add(point);
      cameras.Add(ZuCamera(12345 + u, 35.127, 0.5, -0.25, -1.5e-5, 2.5e-8, 1200.5, "camera"));
    }
    ZuReseauFile reseau;
    reseau.CreateDigitalFormat(4000, 3000, 22.5, 15.25);
    reseaus.Add(reseau);
    ZuPointCloud* pCloud = clouds.AddCloud(0, "cloud");
    for (int i = 0; i < 40; ++i) pCloud->AddPoint(ZuScanPoint3d(1234.5 * i, 0.125, -1e-7, i));
    plane.SetId(12345);
    plane.A() = 0.5;
    plane.D() = 1234567.25;
    local.m_uIdA = 1234567;
    local.m_dScale1Dist = 5.25;
    ZuMatrix matrix(3, 3);
    matrix.SetIdent();
    matrix[1][3] = 1234567.25;
    trafo.SetFromMatrix(matrix, eZuTrafo2DAffin);
  }
};

Records& TheRecords() {
  static Records records;
  return records;
}

// Through a stream with the locale of the process, as an application makes it.
int WriteRecords(const char* szPath) {
  try {
    const Records& records = TheRecords();
    std::ofstream stream(szPath);
    records.plane.Write(stream) << '\n';
    records.local.Write(stream) << '\n';
    records.trafo.Write(stream) << '\n';
    records.line.Write(stream) << '\n';
    records.points.Write(stream) << '\n';
    records.cameras.WriteFile(stream, true);
    for (const ZuReseauFile* p = records.reseaus.First(); p != nullptr; p = p->Next()) {
      const_cast<ZuReseauFile*>(p)->WriteDigitalCameraFormat(stream);
    }
    return 1;
  } catch (const std::bad_alloc&) {
    return 0;  // of this function's own stream
  }
}

}  // namespace

const std::vector<FileWriter>& FileWriters() {
  static Records& records = TheRecords();
  // A path that is a String takes memory of the caller's.
  static const auto toString = [](const char* szPath, auto write) {
    try {
      records.path = szPath;
    } catch (const std::bad_alloc&) {
      return 0;
    }
    return static_cast<int>(write(records.path));
  };
  using Path = const String&;
  static const std::vector<FileWriter> writers = {
      {"coordinate file", [](const char* sz) { return records.points.WriteFile(sz); }, false},
      {"camera file, gentri",
       [](const char* sz) {
         return toString(sz, [](Path path) { return records.cameras.WriteFile(path, true); });
       },
       false},
      {"camera file, full",
       [](const char* sz) {
         return toString(sz, [](Path path) { return records.cameras.WriteFileFormatFull(path); });
       },
       false},
      {"digital camera file",
       [](const char* sz) {
         return toString(sz,
                         [](Path path) { return records.reseaus.WriteDigitalCameraFormat(path); });
       },
       false},
      {"records", WriteRecords, false},
      {"cloud file", [](const char* sz) { return records.clouds.Write(sz); }, true},
      {"PTS file", [](const char* sz) { return records.clouds.ExportPtsFile(sz); }, true},
      {"PLY file", [](const char* sz) { return records.clouds.ExportPlyFile(sz); }, true},
  };
  return writers;
}
