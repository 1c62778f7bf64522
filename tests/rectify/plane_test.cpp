#include "zu/rectify/plane.h"

#include <locale>

#include "tests/support/planes.h"
#include "tests/support/random_geometry.h"
#include "tests/support/test.h"
#include "zu/foundation/object.h"
#include "zu/rectify/plane_list.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

// The unit normal at an angle from the z axis.
ZuPlane Tilted(double dAngle, double d = 0.0) {
  return MakePlane(std::sin(dAngle), 0.0, std::cos(dAngle), d);
}

TEST(Plane, DefaultIsNoPlane) {
  const ZuPlane plane;
  ZuPoint result(1, 7.0, 8.0, 9.0);
  EXPECT_EQ(plane.IsValid(), 0);
  EXPECT_FALSE(plane.ProjectPoint(&result, ZuPoint()));
  EXPECT_EQ(result.m_dX, 7.0);
  EXPECT_EQ(plane.CalcPlaneVectorForSip(), ZuVector(3));
  EXPECT_TRUE(!std::isfinite(plane.Dist(1.0, 2.0, 3.0)) && !plane.IsParallel(plane));
  EXPECT_FALSE(plane.IsNormal(plane));
}

TEST(Plane, CopiesTakeTheRecordAndStandInNoList) {
  ZuPlaneList list;
  ZuPlane* pFirst = list.Add(MakePlane(1.0, 2.0, 3.0, 4.0));
  ZuPlane* pLast = list.Add(MakePlane(5.0, 6.0, 7.0, 8.0));
  pFirst->SetId(17);
  pFirst->SetName("wall");
  pFirst->SetActive(true);
  const ZuPlane copy(*pFirst);
  EXPECT_EQ(copy.Next(), nullptr);
  *pLast = *pFirst;
  for (const ZuPlane* p : {&copy, static_cast<const ZuPlane*>(pLast)}) {
    double a = 0.0, b = 0.0, c = 0.0, d = 0.0;
    p->Get(&a, &b, &c, &d);
    EXPECT_ROW("17 wall 2 1 2 3 4", p->GetId(), p->GetName(), p->IsActive(), a, b, c, d);
  }
  EXPECT_EQ(pFirst->Next(), pLast);
  EXPECT_EQ(list.GetActivePlane(), pFirst);
  EXPECT_ROW("2 2 0", list.CountActivePlanes(), IsPlaneFlagGuiCheckActive(pFirst),
             IsPlaneFlagGuiSelect(pFirst));
}

TEST(Plane, DistancesOfAnyLengthOfNormal) {
  const ZuPlane plane = MakePlane(0.0, 3.0, 4.0, -10.0);
  EXPECT_ROW("-2 -10 3", plane.Dist(9.0, 0.0, 0.0), plane.FastDist(9.0, 0.0, 0.0),
             plane.Dist(ZuPoint(1, 0.0, 3.0, 4.0)));
  ZuPlane mirrored = plane;
  mirrored.MirrorNormal();
  EXPECT_EQ(mirrored.FastDist(9.0, 1.0, 0.0), 7.0);
  // Required: planes differ by their D alone, also when the lengths of the normals differ.
  EXPECT_EQ(plane.Dist(MakePlane(0.0, 6.0, 8.0, 5.0)), -15.0);
  EXPECT_EQ(Tilted(0.0, 3.0).Dist(Tilted(1e-6, 1.0)), 0.0);
}

// Required: the bounds are those of stored projects.
TEST(Plane, AnglesAreBoundedAsStored) {
  const double dParallel = std::bit_cast<double>(std::uint64_t{0x3e9ad7f29ac00000});
  const ZuPlane up = Tilted(0.0);
  EXPECT_TRUE(up.IsParallel(Tilted(0.9 * dParallel)) && !up.IsParallel(Tilted(1.1 * dParallel)));
  EXPECT_FALSE(up.IsParallel(MakePlane(0.0, 0.0, -1.0, 0.0)));  // the side counts
  const struct {
    double dAngle;
    bool bNormal;
  } pairs[] = {
      {44.0 / 180.0 * kPi, false},          {kPi / 4.0, true}, {kPi / 4.0 - 0.9 * dParallel, true},
      {kPi / 4.0 - 1.1 * dParallel, false}, {kPi / 2.0, true}, {kPi, true}};
  for (const auto& pair : pairs) {
    EXPECT_EQ(up.IsNormal(Tilted(pair.dAngle)), pair.bNormal) << pair.dAngle;
    EXPECT_NEAR(up.CalcAngle(Tilted(pair.dAngle)), pair.dAngle, 1e-12);
  }
}

TEST(Plane, OpposedNormalsInEveryDirectionGivePi) {
  RandomGeometry random(61);
  for (int i = 0; i < 100; ++i) {
    const ZuVector3d n = random.Direction() * (5.0 + random.Value(4.0));
    EXPECT_NEAR(MakePlane(n.x, n.y, n.z, 0.0).CalcAngle(MakePlane(-n.x, -n.y, -n.z, 0.0)), kPi,
                5e-8);
  }
}

// Required: the point comes from A and B of this plane, A of the other, both D and the
// constant 21.0; the other plane's B and both C are not read.
TEST(Plane, IntersectionPointFollowsItsFormula) {
  RandomGeometry random(67);
  for (int i = 0; i < 50; ++i) {
    const ZuVector3d n1 = random.Direction(), n2 = random.Direction() * 3.0;
    const ZuPlane one = MakePlane(n1.x, n1.y, n1.z, random.Value(9.0));
    const ZuPlane other = MakePlane(n2.x, n2.y, n2.z, random.Value(9.0));
    ZuVector point(3), direction(3), point2(3);
    ASSERT_TRUE(one.CalcIntersection(point, direction, other));
    EXPECT_EQ(point[3], 0.0);
    EXPECT_TRUE(direction.IsNormalized(1e-14));
    const ZuVector3d cross = n1 % n2;
    EXPECT_NEAR(direction * ZuVector(cross.x, cross.y, cross.z), cross.Norm(), 1e-13);
    ASSERT_TRUE(MakePlane(n1.x, n1.y, 7.0, one.D())
                    .CalcIntersection(point2, direction, MakePlane(n2.x, -8.0, 9.0, other.D())));
    EXPECT_EQ(point2, point);
  }
  // Worked by hand: the determinant is 2 * 4 - 1 * 21 = -13.
  ZuVector point(3), direction(3);
  ASSERT_TRUE(MakePlane(1.0, 2.0, 0.0, 3.0)
                  .CalcIntersection(point, direction, MakePlane(4.0, 0.0, 1.0, 5.0)));
  EXPECT_NEAR(point[1], (2.0 * -5.0 - 21.0) / -13.0, 1e-15);
  EXPECT_NEAR(point[2], (-3.0 * 4.0 + 5.0 * 21.0) / -13.0, 1e-15);
}

TEST(Plane, IntersectionRefusesWhatHasNoLine) {
  ZuVector point(1.0, 2.0, 3.0), direction(4.0, 5.0, 6.0);
  EXPECT_FALSE(Tilted(0.0).CalcIntersection(point, direction, Tilted(1e-7)));
  EXPECT_EQ(direction, ZuVector(4.0, 5.0, 6.0));
  // No point can be fixed: the direction is written all the same.
  EXPECT_FALSE(Tilted(0.0).CalcIntersection(point, direction, MakePlane(1.0, 0.0, 0.0, 0.0)));
  EXPECT_EQ(direction, ZuVector(0.0, 1.0, 0.0));
  EXPECT_FALSE(MakePlane(1.0, 0.0, 0.0, 2.0)
                   .CalcIntersection(point, direction, MakePlane(-1.0, 0.0, 0.0, 2.0)));
  EXPECT_EQ(point, ZuVector(1.0, 2.0, 3.0));
}

TEST(Plane, PointForTheRayLiesOnTheNearestAxis) {
  for (const auto& [plane, expected] :
       Cases<ZuPlane, ZuVector>{{MakePlane(2.0, 1.0, -1.0, 4.0), ZuVector(-2.0, 0.0, 0.0)},
                                {MakePlane(1.0, -2.0, 1.0, 4.0), ZuVector(0.0, 2.0, 0.0)},
                                {MakePlane(2.0, 0.0, 2.0, 4.0), ZuVector(0.0, 0.0, -2.0)}})
    EXPECT_EQ(plane.CalcPlaneVectorForSip(), expected);
  // Required: a tie of A and B falls to C, even when C is 0.
  const ZuPlane tie = MakePlane(1.0, 1.0, 0.0, 4.0);
  EXPECT_FALSE(std::isfinite(tie.CalcPlaneVectorForSip()[3]));
}

TEST(Plane, ProjectionWritesCoordinatesAlone) {
  RandomGeometry random(71);
  for (int i = 0; i < 20; ++i) {
    const ZuVector3d n = random.Direction();
    const ZuPlane plane = MakePlane(n.x, n.y, n.z, random.Value(5.0));
    const ZuPoint p(3, random.Value(9.0), random.Value(9.0), random.Value(9.0));
    ZuPoint foot(8, 0.0, 0.0, 0.0);
    foot.m_dDX = 0.5;
    ASSERT_TRUE(plane.ProjectPoint(&foot, p));
    EXPECT_ROW("8 0.5", foot.GetId(), foot.m_dDX);
    EXPECT_NEAR(plane.Dist(foot), 0.0, 1e-13);
    EXPECT_NEAR(foot.Distance(p), std::fabs(plane.Dist(p)), 1e-13);
  }
  // Required: n is not divided by its length a second time, so that 2 z = 0 mirrors the point.
  ZuPoint p(1, 0.0, 0.0, 5.0);
  ASSERT_TRUE(MakePlane(0.0, 0.0, 2.0, 0.0).ProjectPoint(&p, p));
  EXPECT_EQ(p.m_dZ, -5.0);
}

}  // namespace
