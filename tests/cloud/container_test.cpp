#include <ctime>

#include "cloud_support.h"
#include "tests/support/count_allocations.h"
#include "zu/points/point_list.h"

TEST(CloudContainer, CloudsGetFreeIdsAndCountAsChanges) {
  OpenContainer container;
  EXPECT_EQ(container.GetDirty(), 0);
  EXPECT_EQ(container.AddCloud()->GetId(), 1u);
  container.m_uNextIdHint = 10;
  ZuPointCloud* pCloud = container.AddCloud(20, "named");
  EXPECT_EQ(pCloud->GetId(), 10u);
  EXPECT_STREQ(pCloud->GetName().chars(), "named");
  EXPECT_EQ(pCloud->GetPoints().capacity(), 20u);
  EXPECT_EQ(container.GetDirty(), 2);
  container.SetDirty();
  EXPECT_TRUE(container.Delete(pCloud));
  EXPECT_FALSE(container.Delete(nullptr));
  EXPECT_EQ(container.GetDirty(), 4);

  // No room for so many points: no cloud to hand out, but it is in the list.
  EXPECT_EQ(container.AddCloud(67108864, nullptr), nullptr);
  EXPECT_EQ(container.GetClouds().Count(), 2);
}

TEST(CloudContainer, PointListsBecomeClouds) {
  ZuPointList list;
  for (unsigned int i = 1; i <= 3; ++i) {
    ZuPoint point(i, 1.0 * i, 2.0 * i, 3.0 * i);
    point.m_dDX = 0.125;
    point.m_fVZ = -1.0f;
    point.m_snImo = static_cast<short>(0x0100 * (i & 1) + 7);
    point.m_iColor = static_cast<int>(0x80000000u + i);
    list.Add(point);
  }
  ZuPointCloudContainer container;
  EXPECT_EQ(container.AddCloud(static_cast<ZuPointList*>(nullptr)), nullptr);
  const std::time_t before = std::time(nullptr);
  const ZuPointCloud* pCloud = container.AddCloud(&list);
  ASSERT_NE(pCloud, nullptr);
  EXPECT_STREQ(pCloud->GetName().chars(), "Coo Cloud");
  ZuScanPoint3d expected(3.0, 6.0, 9.0, static_cast<int>(0x80000003u));
  expected.m_fDX = 0.125f;
  expected.m_fNZ = -1.0f;
  expected.m_sFlags = 0x0107;
  EXPECT_EQ(PointBits(pCloud->GetPoints().at(2)), PointBits(expected));
  EXPECT_EQ(pCloud->GetSelBox().GetCount(), 2u);
  const ZuScanHeader& header = pCloud->GetHeader();
  for (const std::int64_t iStamp : {header.m_iImportStart, header.m_iImportEnd,
                                    header.m_iSecondImportStart, header.m_iSecondImportEnd}) {
    EXPECT_TRUE(iStamp >= before && iStamp <= std::time(nullptr));
  }
  EXPECT_EQ(container.GetBox().GetCount(), 1u);
  EXPECT_EQ(CenterValues(container.GetCenter()), CenterValues(pCloud->GetCenter()));
}

// Whichever cloud was added, dropped by a reader or deleted last.
TEST(CloudContainer, ChangesOfEveryCloudReachTheListsObservers) {
  struct Recorder : ZuObserver {
    std::vector<std::pair<int, void*>> events;
    void Notify(ZuNotifyEvent* pEvent) override {
      events.emplace_back(pEvent->m_eType, pEvent->m_pItem);
    }
  } recorder;
  std::vector<ZuPointCloud*> clouds;
  {
    OpenContainer container;
    for (int i = 0; i < 5; ++i) clouds.push_back(container.AddCloud());
    EXPECT_EQ(container.Parent(), clouds[4]);
    for (const std::size_t uDeleted : {4u, 1u}) {
      container.Delete(clouds[uDeleted]);
      clouds.erase(clouds.begin() + static_cast<std::ptrdiff_t>(uDeleted));
    }
    recorder.SetNotifyParent(&container.GetClouds());
    int iHint = 0;
    for (ZuPointCloud* p : clouds) {
      p->NotifyChanged(&iHint, nullptr);
      p->NotifyChanged(&iHint, &container);  // left out
    }
    const std::pair<int, void*> changed(eZuNotifyChanged, nullptr);
    EXPECT_EQ(recorder.events, (std::vector<std::pair<int, void*>>(3, changed)));
    container.GetClouds().SubtractFirst();  // outlives the container
  }
  recorder.events.clear();
  clouds[0]->NotifyChanged(nullptr, nullptr);
  EXPECT_TRUE(recorder.events.empty());
  delete clouds[0];
}

// The clouds with any bit of a mask, by the steps of a list.
TEST(CloudContainer, StepsByFlags) {
  ZuPointCloudContainer container;
  for (const int iFlag : {0, 4, 0, 12, 8}) container.AddCloud()->SetFlag(iFlag);
  ZuPointCloud* const pFirst = container.First();
  ZuPointCloud* const pFourth = container.GetClouds().Get(3);
  EXPECT_EQ(pFirst->First(4)->GetId(), 2u);
  EXPECT_EQ(pFirst->First(2), pFirst);
  EXPECT_EQ(pFourth->First(4), pFourth);
  EXPECT_EQ(pFourth->Next(4), nullptr);
  EXPECT_EQ(pFourth->Next(8)->GetId(), 5u);
  EXPECT_EQ(pFourth->Previous(4)->GetId(), 2u);
  EXPECT_EQ(pFourth->Previous(8), nullptr);
}

TEST(CloudContainer, JoinedCloudsGrowAsAVectorDoes) {
  ZuPointCloud sum, part;
  AddPoints(part, RandomPoints(10, 1));
  int iMoves = 0;
  for (int i = 0; i < 2000; ++i) {
    const std::size_t uRoom = sum.GetPoints().capacity();
    sum.Insert(&part);
    iMoves += sum.GetPoints().capacity() != uRoom ? 1 : 0;
  }
  EXPECT_EQ(sum.GetPointCount(), 20000u);
  EXPECT_LE(iMoves, 13);
}

// Writers on a caller's stream take no memory of their own.
TEST(CloudContainer, WritersNeedNoMemory) {
  ZuPointCloud cloud;
  AddPoints(cloud, RandomPoints(2000, 1));
  std::FILE* const fp = std::fopen("/dev/null", "wb");
  std::setvbuf(fp, nullptr, _IONBF, 0);
  const AllocationFault fault(0, true);
  EXPECT_EQ(cloud.Write(fp), 1);
  EXPECT_EQ(cloud.WritePtsFile(fp, true), 2000u);
  EXPECT_EQ(cloud.ExportPts(fp), 2000u);
  EXPECT_EQ(cloud.ExportPly(fp), 2000u);
  EXPECT_FALSE(fault.HasStruck());
  std::fclose(fp);
}
