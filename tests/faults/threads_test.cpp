// Two threads with objects of their own do not meet, in any part of the library but those that
// docs/reliability.md names. A program of its own: the preset `tsan` compiles it to see every
// access.
#include <thread>

#include "tests/support/cameras.h"
#include "tests/support/file_readers.h"
#include "tests/support/planted_lists.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/foundation/debug.h"
#include "zu/rectify/calc_plane.h"
#include "zu/rectify/polygon.h"
#include "zu/transform/calc_trafo2d.h"
#include "zu/transform/trafo3d.h"

namespace {

Lines ReadEverything() {
  Lines all;
  for (const FileReader& reader : FileReaders()) {
    const TempFile file(reader.sample());
    const auto pRead = reader.make();
    pRead->Read(file.Path());
    const Lines lines = pRead->Tell();
    all.insert(all.end(), lines.begin(), lines.end());
  }
  return all;
}

// The files of clouds; those of records share the level of their indentation.
std::string WriteClouds() {
  ZuPointCloudContainer container;
  ZuPointCloud* const pCloud = container.AddCloud();
  for (int i = 0; i < 1000; ++i) pCloud->AddPoint(ZuScanPoint3d(i * 0.5, i % 7, 0.25, i));
  pCloud->Transform(ZuAffinMap3d());
  const TempFile binary, pts, ply;
  container.Write(binary.Path());
  container.ExportPtsFile(pts.Path());
  container.ExportPlyFile(ply.Path());
  return binary.Read() + pts.Read() + ply.Read();
}

// Distortion forward and its exact inverse; the inverse by table shares the tables.
double Adjust() {
  double dSum = 0.0;
  for (const auto& named : test_cameras::Calibrations()) {
    for (double x = -3.0; x <= 3.0; x += 0.5) {
      double u = x, v = 0.5 * x;
      named.camera.Adjust(&u, &v);
      named.camera.InvAdjustExact(&u, &v);
      dSum += u + v;
    }
  }
  return dSum;
}

double Estimate() {
  RandomGeometry random(7);
  PlantedLists lists(random, 40, 0, 0.01);
  ZuTrafo3d trafo;
  trafo.CalcByControlPoints(&lists.listA, &lists.listB, 3, false);
  ZuCalcPlane plane;
  plane.CalcPlaneFromFilteredPoints(&lists.listA, true, false);
  ZuPolygon polygon(&lists.listB, eLPolygonIdXY);
  lists.listA.Sort();
  return trafo.GetAsMatrix()[1][1] + plane.GetPlane().D() + polygon.Length(true);
}

TEST(Threads, ObjectsOfTheirOwnDoNotMeet) {
  struct Results {
    Lines read;
    std::string strWritten;
    double dAdjusted = 0.0, dEstimated = 0.0;
    bool operator==(const Results&) const = default;
  };
  const auto run = [](Results* pResults) {
    *pResults = {ReadEverything(), WriteClouds(), Adjust(), Estimate()};
  };
  ZuSetDebugSink({});
  Results expected, found[2];
  run(&expected);
  std::vector<std::thread> threads;
  for (Results& results : found) threads.emplace_back(run, &results);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(found[0], expected);
  EXPECT_EQ(found[1], expected);
}

}  // namespace
