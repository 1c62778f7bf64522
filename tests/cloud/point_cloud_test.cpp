#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "cloud_support.h"
#include "zu/numerics/affin_map3d.h"
#include "zu/numerics/select_volume3d.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A pyramid from the origin along +z whose sides open at 45 degrees.
Zu3dSelectVolume Pyramid(double dEyeX) {
  Zu3dSelectVolume volume;
  const double s = std::sqrt(0.5);
  const double aSides[4][3] = {{s, 0, s}, {-s, 0, s}, {0, s, s}, {0, -s, s}};
  for (int i = 0; i < 4; ++i) {
    volume.GetPlane(i).A() = aSides[i][0];
    volume.GetPlane(i).B() = aSides[i][1];
    volume.GetPlane(i).C() = aSides[i][2];
  }
  volume.SetEye(ZuPoint3d(dEyeX, 0.0, 0.0));
  volume.StartPyramid();
  return volume;
}

ZuAffinMap3d SomeMap() {
  return ZuAffinMap3d::Translate(5.0, -6.0, 7.0) * ZuAffinMap3d::RotXYZ(0.1, 0.2, 0.3) *
         ZuAffinMap3d::Scale(1.0, 2.0, 3.0);
}

ZuScanPoint3d Mapped(const ZuAffinMap3d& map, ZuScanPoint3d p) {
  ZuPoint3d position(p.x, p.y, p.z);
  position.w = p.w;
  position.Transform(map);
  p.x = position.x;
  p.y = position.y;
  p.z = position.z;
  p.w = position.w;
  return p;
}

}  // namespace

TEST(PointCloud, ReserveCountsFromThePointsHeldAndHasALimit) {
  ZuPointCloud cloud;
  AddPoints(cloud, RandomPoints(10, 1));
  cloud.Reserve(90);
  EXPECT_EQ(cloud.GetPoints().capacity(), 100u);
  for (const unsigned int uCount : {67108863u - 9u, 0xFFFFFFFFu}) {
    try {
      cloud.Reserve(uCount);
      FAIL() << uCount;
    } catch (const std::length_error& error) {
      EXPECT_STREQ(error.what(), "vector<T> too long");
    }
  }
}

// The box counts what was put in, and an inserted cloud is one box.
TEST(PointCloud, InsertUnitesBoxesOnce) {
  const auto points = RandomPoints(300, 1), more = RandomPoints(200, 2);
  ZuPointCloud cloud, other;
  AddPoints(cloud, points);
  AddPoints(other, more);
  cloud.Insert(&other);
  EXPECT_EQ(cloud.GetPointCount(), 500u);
  EXPECT_EQ(cloud.GetBox().GetCount(), 301u);
  EXPECT_EQ(cloud.GetCenter().GetCount(), 500);
  EXPECT_TRUE(SamePoints(other.GetPoints(), more));
  cloud.Insert(nullptr);
  cloud.Insert(&cloud);
  EXPECT_EQ(cloud.GetPointCount(), 1000u);
  EXPECT_EQ(cloud.GetBox().GetCount(), 302u);
  EXPECT_EQ(PointBits(cloud.GetPoints()[999]), PointBits(more.back()));
}

TEST(PointCloud, SelectionGrowsAndCountsAll) {
  auto points = RandomPoints(2000, 4);
  for (auto& p : points) p.SetSelected(false);
  points[5].x = kNaN;
  ZuPointCloud cloud;
  AddPoints(cloud, points);
  const Zu3dSelectVolume volumes[] = {Pyramid(0.0), Pyramid(700.0)};
  ZuBoundingBox3d box;
  unsigned int uInFirst = 0;
  for (const auto& p : points) {
    const bool bFirst = volumes[0].IsInSelectRange(p.x, p.y, p.z);
    uInFirst += bFirst ? 1 : 0;
    if (bFirst || volumes[1].IsInSelectRange(p.x, p.y, p.z)) box.Update(p.x, p.y, p.z);
  }
  EXPECT_EQ(cloud.Select(volumes[0]), uInFirst);
  EXPECT_EQ(cloud.Select(volumes[1]), box.GetCount());
  EXPECT_GT(box.GetCount(), uInFirst);
  EXPECT_EQ(BoxValues(cloud.GetSelBox()), BoxValues(box));
  EXPECT_EQ(cloud.Select(Zu3dSelectVolume()), box.GetCount());  // stopped: adds nothing

  cloud.Deselect();
  EXPECT_EQ(BoxValues(cloud.GetSelBox()), BoxValues(ZuBoundingBox3d()));
  for (const auto& p : cloud.GetPoints()) ASSERT_EQ(p.GetFlags(), 0);
}

// AddPoint keeps boxes and centre; deleted points come back unselected at the end.
TEST(PointCloud, DeletionAndUndo) {
  const auto points = RandomPoints(1000, 7);
  ZuPointCloud cloud;
  EXPECT_EQ(cloud.DeleteSelected(), 0u);
  EXPECT_FALSE(cloud.UndoDelete());
  std::vector<ZuScanPoint3d> kept, deleted;
  ZuBoundingBox3d box, selBox;
  ZuCenterPoint3d center;
  for (const auto& p : points) {
    cloud.AddPoint(p);
    box.Update(p.x, p.y, p.z);
    center.Add(p.x, p.y, p.z);
    if (p.IsSelected()) selBox.Update(p.x, p.y, p.z);
    (p.IsSelected() ? deleted : kept).push_back(p);
  }
  EXPECT_TRUE(SamePoints(cloud.GetPoints(), points));
  EXPECT_EQ(BoxValues(cloud.GetSelBox()), BoxValues(selBox));

  EXPECT_EQ(cloud.DeleteSelected(), deleted.size());
  EXPECT_TRUE(SamePoints(cloud.GetPoints(), kept));
  EXPECT_TRUE(cloud.HasUndoData());
  EXPECT_EQ(cloud.GetSelBox().GetCount(), 0u);
  EXPECT_EQ(cloud.DeleteSelected(), 0u);  // nothing selected: no entry

  EXPECT_TRUE(cloud.UndoDelete());
  for (auto& p : deleted) p.SetSelected(false);
  kept.insert(kept.end(), deleted.begin(), deleted.end());
  EXPECT_TRUE(SamePoints(cloud.GetPoints(), kept));
  EXPECT_FALSE(cloud.HasUndoData());
  EXPECT_EQ(BoxValues(cloud.GetBox()), BoxValues(box));
  EXPECT_EQ(CenterValues(cloud.GetCenter()), CenterValues(center));
}

// Two deletions, a transformation, two undos: all points arrive in the new system.
TEST(PointCloud, TransformReachesTheUndoStack) {
  const auto points = RandomPoints(600, 8);
  const ZuAffinMap3d map = SomeMap();
  ZuPointCloud cloud;
  AddPoints(cloud, points);
  cloud.DeleteSelected();
  cloud.Select(Pyramid(0.0));
  ASSERT_GT(cloud.DeleteSelected(), 0u);
  const auto kept = cloud.GetPoints();

  EXPECT_TRUE(cloud.Transform(map));
  ZuPointCloud expected;
  for (const auto& p : kept) expected.AddPoint(Mapped(map, p));
  EXPECT_TRUE(SamePoints(cloud.GetPoints(), expected.GetPoints()));
  EXPECT_EQ(BoxValues(cloud.GetBox()), BoxValues(expected.GetBox()));
  EXPECT_EQ(CenterValues(cloud.GetCenter()), CenterValues(expected.GetCenter()));
  EXPECT_EQ(cloud.GetSelBox().GetCount(), 0u);

  EXPECT_TRUE(cloud.UndoDelete() && cloud.UndoDelete());
  auto all = cloud.GetPoints(), mapped = points;
  for (auto& p : mapped) {
    p.SetSelected(false);
    p = Mapped(map, p);
  }
  for (auto* pPoints : {&all, &mapped}) {
    std::sort(pPoints->begin(), pPoints->end(),
              [](const auto& a, const auto& b) { return a.m_uColor < b.m_uColor; });
  }
  EXPECT_TRUE(SamePoints(all, mapped));
}

TEST(PointCloud, BoxesUnderAMapCollectOverClouds) {
  const ZuAffinMap3d map = SomeMap();
  ZuBoundingBox3d all, selected, onlySelected, expectedAll, expectedSelected;
  for (const unsigned int uSeed : {1u, 2u}) {
    const auto points = RandomPoints(400, uSeed);
    ZuPointCloud cloud;
    AddPoints(cloud, points);
    for (const auto& p : points) {
      const ZuScanPoint3d q = Mapped(map, p);
      expectedAll.Update(q.x, q.y, q.z);
      if (p.IsSelected()) expectedSelected.Update(q.x, q.y, q.z);
    }
    EXPECT_TRUE(cloud.UpdateBoundingBoxes(all, selected, map));
    EXPECT_TRUE(cloud.UpdateBoundingBox(onlySelected, map, true));
  }
  EXPECT_EQ(BoxValues(all), BoxValues(expectedAll));
  EXPECT_EQ(BoxValues(selected), BoxValues(expectedSelected));
  EXPECT_EQ(BoxValues(onlySelected), BoxValues(expectedSelected));
  const ZuPointCloud empty;
  EXPECT_FALSE(empty.UpdateBoundingBox(all, map, false));
  EXPECT_FALSE(empty.UpdateBoundingBoxes(all, selected, map));
}

TEST(PointCloud, EstimatedNormalsLookAtTheEye) {
  ZuPointCloud cloud;
  AddPoints(cloud, RandomPoints(200, 9));
  const ZuPoint3d eye(10.0, 20.0, 5000.0);
  cloud.AddPoint(ZuScanPoint3d(eye));
  cloud.EstimateNormals(eye);
  EXPECT_EQ(cloud.GetEye().z, 5000.0);
  for (unsigned int i = 0; i < 200; ++i) {
    const ZuScanPoint3d& p = cloud.GetPoints()[i];
    const double d = eye.Distance(ZuPoint3d(p.x, p.y, p.z));
    ASSERT_NEAR(p.m_fNX, (eye.x - p.x) / d, 1e-7);
    ASSERT_NEAR(p.m_fNY, (eye.y - p.y) / d, 1e-7);
    ASSERT_NEAR(p.m_fNZ, (eye.z - p.z) / d, 1e-7);
  }
  EXPECT_TRUE(std::isnan(cloud.GetPoints()[200].m_fNX));
  unsigned int uWith = 9, uTotal = 9;
  cloud.CountNormals(uWith, uTotal);
  EXPECT_EQ(uWith + uTotal, 402u);
}

// 36 points are the fewest that get a common normal; the points taken turn black.
TEST(PointCloud, CommonNormalNeeds36Points) {
  for (const int n : {35, 36, 70, 1000}) {
    SCOPED_TRACE(n);
    ZuPointCloud cloud;
    for (int i = 0; i < n; ++i) {
      const double x = i % 6, y = i / 6;
      cloud.AddPoint(ZuScanPoint3d(x, y, 0.5 * x - 0.25 * y + 3.0, 0x7F102030));
    }
    ASSERT_EQ(cloud.CalcEstimatedNormals(), n > 35);
    const int iStep = n / 35;
    const double dLength = std::sqrt(0.25 + 0.0625 + 1.0);
    for (int i = 0; i < n; ++i) {
      const ZuScanPoint3d& p = cloud.GetPoints()[static_cast<std::size_t>(i)];
      const bool bSampled = n > 35 && (i + 1) % iStep == 0;
      ASSERT_EQ(p.m_uColor, bSampled ? 0u : 0x7F102030u) << i;
      ASSERT_EQ(p.HasNormVector(), n > 35);
      ASSERT_NEAR(p.m_fNX, n > 35 ? -0.5 / dLength : 0.0, 1e-6);
    }
  }
  // No plane through one point or a line: the normals stay, the sampled points turn black.
  for (const double dStep : {0.0, 1.0}) {
    ZuPointCloud cloud;
    for (int i = 0; i < 40; ++i) cloud.AddPoint(ZuScanPoint3d(i * dStep, 2.0, 3.0, 5));
    EXPECT_FALSE(cloud.CalcEstimatedNormals());
    EXPECT_FALSE(cloud.GetPoints()[0].HasNormVector());
    EXPECT_EQ(cloud.GetPoints()[0].m_uColor, 0u);
  }
}

// Numbers in order either way, what is not a number last, every record with its own z.
TEST(PointCloud, ZSortOrdersWholeRecords) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const std::size_t n : {0u, 1u, 100u, 5000u}) {
    auto points = RandomPoints(n, 11);
    for (std::size_t i = 0; i < n; ++i) {
      const double adOdd[] = {kNaN, -kNaN, kInfinity, -kInfinity, 0.0, -0.0};
      points[i].x = static_cast<double>(i);
      if (i % 5 == 1) points[i].z = std::round(points[i].z / 100.0);
      if (i % 50 < 6) points[i].z = adOdd[i % 50];
    }
    for (const bool bAscending : {true, false}) {
      ZuPointCloud cloud;
      AddPoints(cloud, points);
      cloud.ZSort(bAscending);
      auto sorted = cloud.GetPoints();
      const auto inOrder = [bAscending](const auto& a, const auto& b) {
        if (std::isnan(b.z)) return !std::isnan(a.z);
        return bAscending ? a.z < b.z : a.z > b.z;
      };
      EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end(), inOrder));
      std::sort(sorted.begin(), sorted.end(), [](auto& a, auto& b) { return a.x < b.x; });
      EXPECT_TRUE(SamePoints(sorted, points));
    }
  }
}

TEST(PointCloud, CopiesCarryAllButTheObservers) {
  ZuPointCloud cloud;
  cloud.SetId(4);
  cloud.SetName(String("scan"));
  cloud.SetFlag(8);
  AddPoints(cloud, RandomPoints(50, 3));
  cloud.EstimateNormals(ZuPoint3d(1.0, 2.0, 3.0));
  cloud.DeleteSelected();
  cloud.GetHeader().m_uWord = 77;
  ZuObserver observer(&cloud);
  ZuPointCloud assigned;
  assigned = cloud;
  for (const ZuPointCloud& copy : {ZuPointCloud(cloud), assigned}) {
    EXPECT_EQ(std::make_tuple(copy.GetId(), std::string(copy.GetName()), copy.GetFlag()),
              std::make_tuple(4u, std::string("scan"), 10));
    EXPECT_TRUE(SamePoints(copy.GetPoints(), cloud.GetPoints()) && copy.HasUndoData());
    EXPECT_EQ(BoxValues(copy.GetBox()), BoxValues(cloud.GetBox()));
    EXPECT_EQ(copy.GetEye().z + copy.GetHeader().m_uWord, 80.0);
  }
  EXPECT_FALSE(assigned.RemoveObserver(&observer));
  const ZuPointCloud fresh;
  EXPECT_TRUE(fresh.IsActive() && fresh.GetEye().w == 1.0);
}
