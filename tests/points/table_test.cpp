// Tables as other programs write them.
#include "zu/points/table.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/temp_file.h"

namespace {

struct Table {
  ZuPointList points;
  ZuTableReading reading;
};

void Read(const std::string& strBytes, Table* pTable, const ZuTableOptions& options = {}) {
  const TempFile file(strBytes);
  pTable->reading = ZuReadTable(file.Path(), options, pTable->points);
}

std::string Utf16(const std::string& strLatin1, bool bBigEndian) {
  std::string strText = bBigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (const char c : strLatin1) {
    strText += bBigEndian ? std::string{'\0', c} : std::string{c, '\0'};
  }
  return strText;
}

constexpr char kName[] = "K\xC3\xBCrschners Ecke am Turm 3";

// The second point is always (4157222.543, 664789.25, -1.5).
const std::string kRows = "1;0;0;0\nK\xC3\xBCrschners Ecke am Turm 3;4157222,543;664789,25;-1,5\n";
const std::string kLatin1 =
    "Punkt;Rechtswert;Hochwert;H\xF6he\n1;0;0;0\nK\xFCrschners Ecke am Turm "
    "3;4157222,543;664789,25;-1,5\n";

}  // namespace

TEST(Table, IsFoundByItsFirstLines) {
  const std::string strUtf8 = "Punkt;Rechtswert;Hochwert;H\xC3\xB6he\n" + kRows;
  std::string strTabs = strUtf8, strCommas = "\"ID\",h [m],E,North (m),remark\n";
  for (char& c : strTabs) c = c == ';' ? '\t' : c;
  strCommas +=
      std::string("1,0,0,0,\n,,,,\n\"") + kName + "\",-1.5,4157222.543,664789.25,\"a, b\"\n";
  const std::string strSigned =
      "survey of 3 May 2024\n\n// X Y Z Name\n0 0 0 1\n"
      "4157222.543 664789.25 -1.5 \"" +
      std::string(kName) + "\"\n";
  const std::string files[] = {strUtf8,
                               "\xEF\xBB\xBF" + strUtf8,
                               strTabs,
                               strCommas,
                               strSigned,
                               kLatin1,
                               Utf16(kLatin1, false),
                               Utf16(kLatin1, true),
                               Utf16(kLatin1, false).substr(2)};
  for (const std::string& strFile : files) {
    SCOPED_TRACE(strFile);
    Table table;
    Read(strFile, &table);
    ASSERT_TRUE(table.reading.m_Findings.IsWhole())
        << GetZuFindingLine(*table.reading.m_Findings.FirstOf(eZuSeverityError));
    ASSERT_EQ(table.points.Count(), 2);
    const ZuPoint& p = *table.points.Last();
    EXPECT_EQ(table.points.First()->GetId(), 1u);
    EXPECT_STREQ(p.GetName().chars(), kName);
    EXPECT_EQ(p.m_dX, 4157222.543);
    EXPECT_EQ(p.m_dY, 664789.25);
    EXPECT_EQ(p.m_dZ, -1.5);
    EXPECT_EQ(table.reading.m_Form.m_iDecimals, 3);

    // Written, it is the same table again.
    std::ostringstream stream;
    ZuWriteTable(stream, table.points, table.reading.m_Form, 3);
    Table again;
    Read(stream.str(), &again);
    ASSERT_EQ(again.points.Count(), 2) << stream.str();
    EXPECT_EQ(again.points.Last()->m_dY, p.m_dY);
    EXPECT_STREQ(again.points.Last()->GetName().chars(), kName);
    EXPECT_EQ(again.reading.m_Form.m_aTitles.size(), 4u);
  }
}

TEST(Table, KeepsToWhatIsToldAndTellsWhatIsWrong) {
  const struct {
    const char* szText;
    ZuTableOptions options;
    int iPoints;
    const char* szFault;  // the first line of an error
  } rows[] = {
      {"A 1 2 3\nB 4 5 6\n", {}, 2, ""},
      {"1 2 3\n4 5 6\n", {{}, '\0', false, 0, false}, 2, ""},
      {"1:1,5:2:3\n", {{}, ':', true, 0, true}, 1, ""},
      {"7 8\nold\n1 1,5 2,5 3\n", {{}, '\0', true, 2, true}, 1, ""},
      {"E;N;H;sx [mm]\n1,5;2;3;4\n", {{}, '\0', false, 0, false}, 1, ""},
      {"Punkt;X;Y;Z\nA;1,5;2;3\nB;1.5;2;3\n", {}, 1, "3:3: error: \"1.5\" has a decimal point"},
      {"Punkt;X;Y;Z\nA;1,5;2\n", {}, 0, "2:8: error: the line has 3 fields"},
      {"X Y Z\n1 2 3 4\n", {}, 0, "1: error: the titles do not fit"},
      {"# X Y Z\n1 2 3 4\n", {}, 1, ""},
      {"Name N E Z\nOld tower 1 2 3\n", {}, 1, ""},
      {"Punkt;X;Y;Z\nA;;2;3\n", {}, 0, ""},
      {"1;1,5;2;3\n", {}, 0, "1:3: error: \"1,5\" has a decimal comma"},
      {"", {}, 0, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.szText);
    Table table;
    Read(row.szText, &table, row.options);
    EXPECT_EQ(table.points.Count(), row.iPoints);
    const auto* pFault = table.reading.m_Findings.FirstOf(eZuSeverityError);
    if (*row.szFault == '\0') continue;
    ASSERT_NE(pFault, nullptr);
    EXPECT_NE(GetZuFindingLine(*pFault).find(row.szFault), std::string::npos)
        << GetZuFindingLine(*pFault);
  }
  Table table;
  Read("sx [mm];Z [mm];X [m];Y [m];Name\n4;3000;1;2;A\n", &table);
  ASSERT_EQ(table.points.Count(), 1);
  EXPECT_EQ(table.reading.m_Form.m_strUnit, "mm");
  EXPECT_EQ(table.points.First()->m_dX, 1000.0);
  EXPECT_EQ(table.points.First()->m_dDX, 4.0);
}

// Whatever stands in the file, what is read ends within it.
TEST(Table, CutAnywhereReadsWhatIsThere) {
  for (const std::string& strWhole : {Utf16(kLatin1, false), kLatin1, kRows}) {
    for (size_t uSize = 0; uSize <= strWhole.size(); ++uSize) {
      Table table;
      Read(strWhole.substr(0, uSize), &table);
      ASSERT_LE(table.points.Count(), 2);
    }
  }
}
