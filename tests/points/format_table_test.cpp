#include "zu/points/format_table.h"

#include "tests/support/test.h"
#include "zu/points/point.h"

namespace {

using Table = TZuFormatTable<eZuPointRWMask>;

constexpr eZuPointRWMask kPoints3d[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                        eZuPointRWEnd};

}  // namespace

TEST(FormatTable, HoldsTheColumnsUpToTheFirstZero) {
  Table table(kPoints3d);
  EXPECT_EQ(table.Size(), 4);
  EXPECT_EQ(table[3], eZuPointRWZ);
  EXPECT_EQ(table[4], eZuPointRWEnd);
  EXPECT_EQ(table[-1], eZuPointRWEnd);
  EXPECT_TRUE(table.HasEntry(eZuPointRWX) && !table.HasEntry(eZuPointRWName));

  Table copy(table);
  constexpr eZuPointRWMask kPosition[] = {eZuPointRWX, eZuPointRWY, eZuPointRWEnd};
  table = kPosition;
  EXPECT_ROW("2 4", table.Size(), copy.Size());
  copy.DelTable();
  EXPECT_ROW("0 0", copy.Size(), Table(nullptr).Size());
}

TEST(FormatTable, ShowsValuesInTheUnitOfTheirColumn) {
  Table table(kPoints3d);
  EXPECT_EQ(table.GetDisplayValue(eZuPointRWX, 2.5), 2.5);
  table.SetUnit(eZuPointRWX, eZuUnitMeter, eZuUnitMillimeter);
  EXPECT_EQ(table.GetUnit(eZuPointRWX), eZuUnitMillimeter);  // the unit shown
  EXPECT_DOUBLE_EQ(table.GetDisplayValue(eZuPointRWX, 2.5), 2500.0);
  EXPECT_DOUBLE_EQ(table.GetDisplayValue(1, 2.5), 2500.0);
  EXPECT_EQ(table.GetDisplayValue(eZuPointRWY, 2.5), 2.5);
  table.SetUnit(1, eZuUnitMeter);
  EXPECT_EQ(table.GetUnit(1), eZuUnitMeter);
  EXPECT_EQ(table.GetDisplayValue(1, 2.5), 2.5);

  for (int i : {-1, 4, 1000}) {
    table.SetUnit(i, eZuUnitFoot);
    EXPECT_EQ(table.GetUnit(i), eZuUnitNone);
    EXPECT_EQ(table.GetDisplayValue(i, 2.5), 2.5);
  }
  table.SetUnit(eZuPointRWName, eZuUnitFoot, eZuUnitInch);
  EXPECT_EQ(table.GetUnit(eZuPointRWName), eZuUnitNone);
  EXPECT_EQ(table.GetDisplayValue(eZuPointRWName, 2.5), 2.5);

  table.AddUnitEntry(eZuUnitFoot, eZuUnitInch);  // for a column that never follows
  EXPECT_EQ(table.GetUnit(4), eZuUnitNone);
  EXPECT_EQ(table.Size(), 4);
}

TEST(FormatTable, WritesTheTitlesOnOneLine) {
  constexpr eZuPointRWMask kMany[] = {eZuPointRWId,    eZuPointRWName,      eZuPointRWIdName,
                                      eZuPointRWFlag,  eZuPointRWCode,      eZuPointRWX,
                                      eZuPointRWDX,    eZuPointRWResidualX, eZuPointRWSkip,
                                      eZuPointRWColor, eZuPointRWSZ,        eZuPointRWEnd};
  std::ostringstream os;
  os << Table(kMany);
  EXPECT_EQ(os.str(),
            "        #             Name     Flag Code                X                  dx"
            "          Residual x    Color                  Sz");
}

TEST(Units, FactorsAndConversion) {
  const struct {
    int iUnit;
    double dFactor;
  } units[] = {{0, 1},      {1, 0.001},  {2, 0.01}, {3, 1}, {4, 1e-6},
               {5, 0.3048}, {6, 0.0254}, {7, 1},    {-1, 1}};
  for (const auto& unit : units) {
    EXPECT_EQ(GetUnitFactor(static_cast<eZuUnit>(unit.iUnit)), unit.dFactor) << unit.iUnit;
  }
  double dFeet = 1.0;
  ConvertUnit(&dFeet, eZuUnitFoot, eZuUnitMillimeter);
  EXPECT_EQ(dFeet, 304.8);

  ZuPoint p(1, 1.0, 2.0, 3.0);
  p.m_dDX = 5.0;
  ConvertUnit(&p, eZuUnitCentimeter, eZuUnitMillimeter);
  EXPECT_TRUE(p == ZuPoint(0, 10.0, 20.0, 30.0));
  EXPECT_EQ(p.m_dDX, 5.0);
}
