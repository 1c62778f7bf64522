// Copies of records without the memory for them: whole, or an exception, and nothing leaks.
#include <gtest/gtest.h>

#include <new>

#include "tests/support/cameras.h"
#include "tests/support/count_allocations.h"
#include "zu/photo/ortho_photo.h"
#include "zu/photo/reseau_file.h"

namespace {

// Lets each allocation of the work fail once. The work throws, or is whole.
template <class Make, class Work, class IsWhole>
void FailEach(Make make, Work work, IsWhole isWhole) {
  for (std::size_t uGood = 0; uGood < 10000; ++uGood) {
    auto target = make();
    bool bThrown = false, bStruck = false;
    try {
      const AllocationFault fault(uGood, false);
      try {
        work(target);
      } catch (const std::bad_alloc&) {
        bThrown = true;
      }
      bStruck = fault.HasStruck();
    } catch (...) {
      FAIL();
    }
    EXPECT_TRUE(bThrown || isWhole(target)) << uGood;
    if (!bStruck) return;
  }
  FAIL() << "no end";
}

TEST(Copies, AreWholeOrThrow) {
  ZuReseauFile reseau;
  reseau.GenerateDummyData();
  FailEach([] { return ZuReseauFile(); }, [&](ZuReseauFile& to) { to = reseau; },
           [](const ZuReseauFile& to) { return to.GetCrossList().Count() == 9; });
  ZuOrthoPhoto ortho(3);
  for (int i = 0; i < 5; ++i) ortho.ZuspPlaneList().Add(new ZuZuspPlaneInfo);
  FailEach([] { return ZuOrthoPhoto(1); }, [&](ZuOrthoPhoto& to) { to = ortho; },
           [](ZuOrthoPhoto& to) {
             return to.ZuspPlaneList().Count() == 5 && to.ZuspPlaneList().IsNotifyEnabled();
           });
}

// The conversion needs the inverse table, for which there is no memory: the point is not lost where
// it stood, and one that was to be added is freed.
TEST(Copies, PointWhoseConversionThrows) {
  ZuCamera::DeleteInvAdjustTables();
  ZuPhoto photo(1);
  photo.SetCamera(test_cameras::ChessboardRadial());
  photo.GetMeasureList().Add(ZuPoint(7, 0.5, 0.25));
  const ZuPoint point(8, 0.5, 0.25);
  const auto uLive = LiveAllocations();
  bool bThrown = true;
  for (int iWay = 0; iWay < 4; ++iWay) {
    for (std::size_t uGood = 0; uGood < 3; ++uGood) {  // the table takes three allocations
      const AllocationFault fault(uGood, true);
      try {
        if (iWay == 0) photo.AddImo(point, eAdjustedToBiko);
        if (iWay == 1) photo.AddImoFast(point, eAdjustedToBiko);
        if (iWay == 2) photo.AddMeasure(point, eAdjustedToBiko);
        if (iWay == 3) photo.MoveMeasureToImo(7, eAdjustedToBiko);
        bThrown = false;
      } catch (const std::bad_alloc&) {
      }
    }
  }
  EXPECT_TRUE(bThrown);
  EXPECT_EQ(LiveAllocations(), uLive);
  EXPECT_EQ(photo.CountImo(), 0);
  EXPECT_EQ(photo.CountMeasure(), 1);
  EXPECT_EQ(photo.FirstMeasure()->m_dX, 0.5);
}

}  // namespace
