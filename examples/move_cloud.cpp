// Reads a scan, takes its large offsets away, turns its normals to the scanner and saves it.
#include <zu/cloud/point_cloud_container.h>
#include <zu/numerics/affin_map3d.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

int main() {
  const char* const szSamples = std::getenv("ZU_SAMPLES");
  const std::string strScan = std::string(szSamples ? szSamples : "samples") + "/clouds/autzen.pts";
  ZuPointCloudContainer clouds;
  ZuPointCloud* pCloud = clouds.ReadPtsFile(strScan.c_str());
  if (pCloud == nullptr) {
    std::fprintf(stderr, "%s: no such file\n", strScan.c_str());
    return 1;
  }
  pCloud->SetName(String("autzen"));

  const ZuBoundingBox3d box = pCloud->GetBox();
  pCloud->Transform(ZuAffinMap3d::Translate(-box.Xmin(), -box.Ymin(), 0.0));
  pCloud->EstimateNormals(ZuPoint3d(1500.0, 2500.0, 5000.0));
  std::printf("%u points, %.2f x %.2f x %.2f feet\n", pCloud->GetPointCount(),
              pCloud->GetBox().GetXSize(), pCloud->GetBox().GetYSize(),
              pCloud->GetBox().GetZSize());

  const std::string strTarget =
      (std::filesystem::temp_directory_path() / "zu_example_cloud.zpc").string();
  if (clouds.Write(strTarget.c_str()) == 0) {
    std::fprintf(stderr, "%s: cannot write\n", strTarget.c_str());
    return 1;
  }
  ZuPointCloudContainer back;
  const int iClouds = back.Read(strTarget.c_str());
  std::filesystem::remove(strTarget);
  std::printf("%d cloud read back, first point at %.2f %.2f %.2f\n", iClouds,
              back.First()->GetPoints()[0].x, back.First()->GetPoints()[0].y,
              back.First()->GetPoints()[0].z);
  return back.Size() == pCloud->GetPointCount() ? 0 : 1;
}
