// What every column reads and writes.
#include <locale>

#include "tests/support/test.h"
#include "zu/foundation/alnum_id.h"
#include "zu/points/point.h"

namespace {

using Table = TZuFormatTable<eZuPointRWMask>;

Table One(int iColumn) {
  const eZuPointRWMask aeColumns[] = {static_cast<eZuPointRWMask>(iColumn), eZuPointRWEnd};
  return Table(aeColumns);
}

std::string Written(const ZuPoint& p, const Table& table) {
  std::ostringstream os;
  p.Write(os, table);
  return os.str();
}

std::string Right(const std::string& text, std::size_t uWidth) {
  return ' ' + std::string(uWidth - std::min(uWidth, text.size()), ' ') + text;
}

ZuPoint FullPoint() {
  ZuPoint p(7, 1.5, -2.25, 1e-7, 3);
  p.SetName("P1");
  p.SetFlag(3);
  p.m_iPhoto = 5;
  p.m_iCamera = INT_MIN;
  p.m_dDX = 3.0;
  p.m_dDY = 4.0;
  p.m_dDZ = 12.0;
  p.m_dRedu1 = 0.1;
  p.m_dRedu2 = 1234567.890123456;
  p.m_dRedu3 = -1e300;
  p.m_iColor = 16777215;
  p.m_snImo = -4;
  p.m_fVX = 0.1F;
  p.m_fVY = 0.25F;
  p.m_fVZ = -1.0F;
  return p;
}

}  // namespace

TEST(Columns, EachWritesItsFieldInItsWidthAndReadsItBack) {
  const struct {
    int iColumn;
    std::string strText;
    std::size_t uWidth;
    bool bReads = true;
  } columns[] = {
      {1, "7", 8},
      {4, "3", 16},
      {5, " 12", 4},
      {6, "3", 4},
      {7, "", 8, false},
      {8, "5", 8},
      {9, "-2147483648", 8},
      {10, "1.5", 16},
      {11, "-2.25", 16},
      {12, "1e-07", 16},
      {13, "3", 19},
      {14, "4", 19},
      {15, "12", 19},
      {16, "13", 19, false},
      {17, "0.1", 19},
      {18, "1234567.890123456", 19},
      {19, "-1e+300", 19},
      {20, "16777215", 16},
      {24, "-4", 8},
      {25, "0.1000000014901161", 16},
      {26, "0.25", 16},
      {27, "-1", 16},
      {28, "", 6, false},
      {29, "0.1", 19},
      {30, "1234567.890123456", 19},
      {31, "-1e+300", 19},
      {105, "3", 19},
      {106, "4", 19},
      {107, "12", 19},
  };
  for (const auto& column : columns) {
    SCOPED_TRACE(column.iColumn);
    const Table table = One(column.iColumn);
    const std::string strWritten = Written(FullPoint(), table);
    EXPECT_EQ(strWritten, Right(column.strText, column.uWidth));

    ZuPoint p;
    EXPECT_EQ(p.Read(strWritten.c_str(), table), column.strText.empty() ? 0 : 1);
    EXPECT_EQ(Written(p, table) == strWritten, column.bReads || column.strText.empty());
  }
  for (int iColumn : {3, 32, 21, 33, 1000, -5, INT_MAX, INT_MIN}) {
    EXPECT_EQ(Written(FullPoint(), One(iColumn)), "") << iColumn;
    ZuPoint p;
    EXPECT_EQ(p.Read("99", One(iColumn)), 1) << iColumn;
    EXPECT_EQ(p.GetId(), iColumn == 3 ? 99u : 0u) << iColumn;
  }
}

TEST(Columns, TheNameStandsQuotedAndLeftAligned) {
  ZuPoint p;
  for (const auto& [szName, szWritten] :
       Cases<const char*, const char*>{{"P1", " \"P1\"            "},
                                       {"", " \"\"              "},
                                       {"a name; of, blanks", " \"a name; of, blanks\""}}) {
    p.SetName(szName);
    EXPECT_EQ(Written(p, One(2)), szWritten);
    ZuPoint read;
    read.SetName("other");
    EXPECT_EQ(read.Read(szWritten, One(2)), 1);
    EXPECT_EQ(read.GetName(), String(szName));
  }
}

TEST(Columns, IdOrNameTakesDigitsAsTheId) {
  for (const auto& [szField, uId] : Cases<const char*, unsigned int>{{"12", 12},
                                                                     {"007", 7},
                                                                     {"P12", 0},
                                                                     {"12P", 0},
                                                                     {"-12", 0},
                                                                     {"0", 0},
                                                                     {"\"12\"", 12},
                                                                     {"\"P 12\"", 0},
                                                                     {"\xE4\xF6", 0},
                                                                     {"1.5", 0},
                                                                     {"99999999999", UINT_MAX},
                                                                     {"3000000000", 3000000000}}) {
    SCOPED_TRACE(szField);
    ZuPoint p;
    EXPECT_EQ(p.Read(szField, One(3)), 1);
    if (uId != 0) {
      EXPECT_EQ(p.GetId(), uId);
      EXPECT_TRUE(p.GetName().empty());
    } else {
      String strName(szField);
      strName.gsub("\"", "");
      EXPECT_EQ(p.GetName(), strName);
      EXPECT_EQ(p.GetId(), GetIdFromAlphaNumericString(strName));
      EXPECT_NE(p.GetId(), 0u);
    }
  }
}

TEST(Columns, LinesAreCutIntoFields) {
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWName, eZuPointRWX, eZuPointRWY,
                                         eZuPointRWEnd};
  for (const auto& [szLine, iFields, uId, szName, x, y] :
       Cases<const char*, int, unsigned int, const char*, double, double>{
           {"1 A 2.5 3.5", 4, 1, "A", 2.5, 3.5},
           {"\t 1;,;A\t\t2.5,3.5 7 8\n", 4, 1, "A", 2.5, 3.5},
           {"1 \"A, B; C\" 2.5 3.5\r\n", 4, 1, "A, B; C", 2.5, 3.5},
           {"1 \"A\"2.5 3.5", 4, 1, "A", 2.5, 3.5},
           {"1 \"\" 2.5 3.5", 4, 1, "", 2.5, 3.5},
           {"1 A\"B 2.5 3.5", 4, 1, "A\"B", 2.5, 3.5},
           {"1 \"open 2.5 3.5\r\n", 2, 1, "open 2.5 3.5", 0, 0},
           {"1 A\r\n", 2, 1, "A", 0, 0},
           {"1 A 2,5 3", 4, 1, "A", 2, 5},  // a decimal comma separates
           {"1 A \"2.5\" \"3.5", 4, 1, "A", 2.5, 3.5},
           {"+1x A +2.5mm -.5e1", 4, 1, "A", 2.5, -5},
           {"# A x 3.5", 4, 0, "A", 0, 3.5},
           {"1 A 1e999 -1e-999", 4, 1, "A", HUGE_VAL, -0.0},
           {"1 A 0x10 1e", 4, 1, "A", 16, 1},
           {"1 A \v2 3", 4, 1, "A", 2, 3},
           {"1 A \f 3", 4, 1, "A", 0, 3},  // a field of white space that separates nothing
           {" \t\r\n", 0, 0, "", 0, 0},
           {"", 0, 0, "", 0, 0},
           {"-1 A", 2, UINT_MAX, "A", 0, 0},
           {"99999999999 A", 2, UINT_MAX, "A", 0, 0},
       }) {
    SCOPED_TRACE(szLine);
    ZuPoint p;
    EXPECT_EQ(p.Read(szLine, Table(kColumns)), iFields);
    EXPECT_EQ(p.GetId(), uId);
    EXPECT_EQ(p.GetName(), String(szName));
    EXPECT_EQ(p.m_dX, x);
    EXPECT_EQ(p.m_dY, y);
  }
  std::string strLine = "5 \"P\" 1 2";
  ZuPoint p;
  EXPECT_EQ(p.Read(strLine.data(), Table(kColumns)), 4);
  EXPECT_EQ(strLine, "5 \"P\" 1 2");
}

TEST(Columns, ShortFieldsTakeTheLowBits) {
  ZuPoint p;
  p.Read("65537", One(6));
  EXPECT_EQ(p.GetControlFlags(), 1);
  p.Read("-32769", One(24));
  EXPECT_EQ(p.m_snImo, 32767);
}

namespace {

class CommaPunct : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

}  // namespace

// Columns never depend on the locale; what the caller has asked of the stream itself holds.
TEST(Columns, NumbersKeepThePointAndTheCallersLayout) {
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWEnd};
  ZuPoint p(123456, 1234567.5, 0, 0);
  std::ostringstream os;
  os.imbue(std::locale(std::locale::classic(), new CommaPunct));
  p.Write(os, Table(kColumns));
  EXPECT_ROW("   123456        1234567.5 16", os.str(), os.precision());

  os.str("");
  os << std::fixed << std::showpos;
  os.fill('_');
  p.Write(os, Table(kColumns));
  EXPECT_EQ(os.str(), " __123456 +1234567.5000000000000000");
}
