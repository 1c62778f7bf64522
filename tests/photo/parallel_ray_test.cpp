#include <gtest/gtest.h>

#include "zu/photo/photo.h"

// A ray along the plane, in it or beside it, meets it in no point.
TEST(ParallelRay, IsRefusedAndLeavesTheResult) {
  ZuPhoto photo;
  photo.GetCamera().m_dC = 20.0;
  photo.SetRotAOR(0.0, 0.0, 0.0);
  photo.SetPosAOR(0.0, 0.0, 10.0);
  photo.SetHasAOR(true);
  ZuPlane wall;
  wall.A() = 1.0;
  for (const double dD : {0.0, -5.0}) {
    wall.D() = dD;
    ZuPoint result(9, 1.0, 2.0, 3.0), along(1, 0.0, 4.0), towards(2, 3.0, 4.0);
    EXPECT_FALSE(photo.CalcSip(&result, wall, &along));
    EXPECT_EQ(photo.GetSipError(), eZuSipNoPoint);
    EXPECT_EQ(result, ZuPoint(9, 1.0, 2.0, 3.0));
    EXPECT_TRUE(photo.CalcSip(&result, wall, &towards));
  }
}
