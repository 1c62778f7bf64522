#include "zu/rectify/zusp_parallel_def.h"

#include "tests/support/test.h"
#include "zu/numerics/line3d.h"
#include "zu/points/point_list.h"

namespace {

class ParallelDef : public ::testing::Test {
 protected:
  ParallelDef() : def(&points) {
    for (unsigned int i = 1; i <= 6; ++i) points.Add(ZuPoint(i, i, 2.0 * i, 3.0 * i));
  }
  ZuPointList points;
  ZuZuspParallelDef def;
};

TEST_F(ParallelDef, LinesJoinTwoPointsOnce) {
  EXPECT_FALSE(def.HasData());
  EXPECT_EQ(def.MakeDefLine(1, 1), nullptr);
  EXPECT_EQ(def.MakeDefLine(1, 9), nullptr);
  ASSERT_NE(def.MakeDefLine(1, 2), nullptr);
  EXPECT_EQ(def.MakeDefLine(2, 1), nullptr);
  EXPECT_FALSE(def.HasDefLineWithLastBikos());
  const ZuZuspDefLine* pLast = def.MakeDefLineFromLastTwoBikos();
  ASSERT_NE(pLast, nullptr);
  EXPECT_ROW("5 2", pLast->m_uBikoId1, pLast->GetId());
  EXPECT_EQ(def.MakeDefLineFromLastTwoBikos(), nullptr);
  // One id in common warns, both refuse.
  points.Add(ZuPoint(7, 0.0, 0.0));
  EXPECT_TRUE(def.HasDefLineWithLastBikos());
  EXPECT_NE(def.MakeDefLineFromLastTwoBikos(), nullptr);
  def.GetLines().First()->SetId(9);
  EXPECT_EQ(def.MakeDefLine(1, 3)->GetId(), 10u);

  ZuZuspParallelDef none(nullptr);
  EXPECT_FALSE(none.IsDefLineValid(1, 2));
  EXPECT_EQ(none.MakeDefLineFromLastTwoBikos(), nullptr);
  none.CheckAndRepair();
}

TEST_F(ParallelDef, ConstraintsJoinTwoLinesOnceAType) {
  for (unsigned int i = 1; i <= 4; ++i) def.MakeDefLine(i, i + 1);
  ASSERT_NE(def.MakeConstraintDef(1, 2, eConstraintParallel), nullptr);
  EXPECT_EQ(def.MakeConstraintDef(2, 1, eConstraintParallel), nullptr);
  EXPECT_NE(def.MakeConstraintDef(1, 2, eConstraintPerpendicular), nullptr);
  EXPECT_EQ(def.MakeConstraintDef(1, 1, eConstraintParallel), nullptr);
  EXPECT_EQ(def.MakeConstraintDef(1, 8, eConstraintParallel), nullptr);
  EXPECT_TRUE(def.HasConstraintDef(1, 2, true, eConstraintNone));
  EXPECT_TRUE(def.HasConstraintDef(2, 8, false, eConstraintParallel));
  EXPECT_FALSE(def.HasConstraintDefFromLastTwoLines(eConstraintNone));
  EXPECT_FALSE(def.MakeLastTwoParallelConstraintsPerpendicular());

  ASSERT_NE(def.MakeConstraintDefFromLastTwoDefLines(eConstraintParallel), nullptr);
  EXPECT_EQ(def.MakeConstraintDefFromLastTwoDefLines(eConstraintParallel), nullptr);
  delete def.GetConstraints().Subtract(2u);  // leaves the two parallel ones
  ASSERT_TRUE(def.MakeLastTwoParallelConstraintsPerpendicular());
  EXPECT_EQ(def.GetConstraints().Count(), 6);
  EXPECT_TRUE(def.HasConstraintDef(2, 4, true, eConstraintPerpendicular));
  EXPECT_FALSE(def.MakeLastTwoParallelConstraintsPerpendicular());
}

TEST_F(ParallelDef, RepairFollowsDeletedPoints) {
  def.MakeDefLine(1, 2);
  def.MakeDefLine(3, 4);
  def.MakeDefLine(5, 6);
  def.MakeConstraintDef(1, 2, eConstraintParallel);
  def.MakeConstraintDef(2, 3, eConstraintParallel);
  delete points.Subtract(points.Find(1u));
  def.CheckAndRepair();
  EXPECT_EQ(def.GetLines().Count(), 2);
  ASSERT_EQ(def.GetConstraints().Count(), 1);
  EXPECT_EQ(def.GetConstraints().First()->m_uLineId1, 2u);
}

TEST_F(ParallelDef, LinesAndMidpoints) {
  const ZuZuspDefLine* p12 = def.MakeDefLine(1, 2);
  def.MakeDefLine(3, 6);
  const ZuZuspDefLineConstraint* pConstraint = def.MakeConstraintDef(1, 2, eConstraintParallel);
  ZuPoint p1, p2;
  ASSERT_TRUE(def.GetConstraintLine(p1, p2, pConstraint));
  EXPECT_ROW("1.5 13.5", p1.m_dX, p2.m_dZ);
  ZuLine3d line;
  ASSERT_TRUE(def.GetLine(line, p12));
  EXPECT_ROW("4 1", line.getEnd().y, line.getStart().w);
  EXPECT_TRUE(!def.GetLine(p1, p2, nullptr) && !def.GetConstraintLine(p1, p2, nullptr));
}

TEST_F(ParallelDef, WrittenForm) {
  def.MakeDefLine(1, 2)->m_iXAxis = 1;
  def.MakeDefLine(3, 4);
  def.MakeConstraintDef(1, 2, eConstraintPerpendicular);
  std::ostringstream stream;
  def.Write(stream);
  EXPECT_EQ(stream.str(),
            "DEFLINE         {        1        1        2        1        0}\n"
            "DEFLINE         {        2        3        4        0        0}\n"
            "CONSTRAINT      {        1        2        2        0}\n");
}

}  // namespace
