#include <ctime>

#include "cloud_support.h"
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
  ASSERT_EQ(pCloud->GetPointCount(), 3u);
  const ZuScanPoint3d& p = pCloud->GetPoints()[2];
  EXPECT_EQ(p.z, 9.0);
  EXPECT_EQ(p.w, 1.0);
  EXPECT_EQ(p.m_fDX, 0.125f);
  EXPECT_EQ(p.m_fNZ, -1.0f);
  EXPECT_EQ(p.m_sFlags, 0x0107);
  EXPECT_EQ(p.m_uColor, 0x80000003u);
  EXPECT_EQ(pCloud->GetSelBox().GetCount(), 2u);
  const ZuScanHeader& header = pCloud->GetHeader();
  for (const std::int64_t iStamp : {header.m_iImportStart, header.m_iImportEnd,
                                    header.m_iSecondImportStart, header.m_iSecondImportEnd}) {
    EXPECT_GE(iStamp, before);
    EXPECT_LE(iStamp, std::time(nullptr));
  }
  EXPECT_EQ(container.GetBox().GetCount(), 1u);
  EXPECT_EQ(CenterValues(container.GetCenter()), CenterValues(pCloud->GetCenter()));
}

// One cloud is observed, the last one; its end leaves no trace.
TEST(CloudContainer, ChangesOfTheLastCloudReachTheListsObservers) {
  struct Recorder : ZuObserver {
    std::vector<std::pair<int, void*>> events;
    void Notify(ZuNotifyEvent* pEvent) override {
      events.emplace_back(pEvent->m_eType, pEvent->m_pItem);
    }
  } recorder;
  OpenContainer container;
  ZuPointCloud* pFirst = container.AddCloud();
  ZuPointCloud* pLast = container.AddCloud();
  recorder.SetNotifyParent(&container.GetClouds());
  int iHint = 0;
  pFirst->NotifyChanged(&iHint, nullptr);
  EXPECT_TRUE(recorder.events.empty());
  pLast->NotifyChanged(&iHint, nullptr);
  pLast->NotifyChanged(&iHint, &container);  // left out
  ASSERT_EQ(recorder.events.size(), 1u);
  EXPECT_EQ(recorder.events[0], std::make_pair(static_cast<int>(eZuNotifyChanged), (void*)nullptr));
  container.Delete(pLast);
  EXPECT_EQ(container.Parent(), nullptr);
  pLast = container.AddCloud();
  EXPECT_EQ(container.Parent(), pLast);
}
