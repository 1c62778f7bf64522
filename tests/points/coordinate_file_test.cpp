// Coordinate files: there and back, against a plain second reader, and at every fault.
#include <fstream>
#include <iomanip>

#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/writer.h"
#include "zu/points/point_list.h"

namespace {

using Table = TZuFormatTable<eZuPointRWMask>;

constexpr eZuPointRWMask kPoints3d[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                        eZuPointRWEnd};
constexpr eZuPointRWMask kNamed[] = {eZuPointRWId, eZuPointRWX, eZuPointRWName, eZuPointRWEnd};

struct OpenList : ZuPointList {
  using ZuPointList::ReadFile;
};

ZuPointList Parsed(const std::string& text, const Table& table) {
  const TempFile file(text);
  ZuPointList list;
  list.ReadFile(file.Path(), table);
  return list;
}

std::string Written(const ZuPointList& list) {
  std::ostringstream os;
  list.Write(os);
  return os.str();
}

// Equality of the columns read, to the bit.
::testing::AssertionResult SameField(double a, double b) {
  if (std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b)) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << std::hexfloat << a << " is not " << b;
}

}  // namespace

TEST(CoordinateFile, ReadingAppendsAndReturnsTheCount) {
  const TempFile file("3 1 1 1\n");
  ZuPointList list;
  list.Add(ZuPoint(1, 0, 0, 0));
  EXPECT_ROW("2 0 0", list.ReadFile(file.Path(), Table(kPoints3d)),
             list.ReadFile("/no/such/file", Table(kNamed)),
             list.ReadFile(static_cast<const char*>(nullptr), Table(kNamed)));
  EXPECT_ROW("2 4", list.Count(), list.GetMask().Size());

  const std::string strPath = file.Path();
  const std::wstring wstrPath(strPath.begin(), strPath.end());
  EXPECT_EQ(list.ReadFile(wstrPath.c_str(), Table(kPoints3d)), 3);
  EXPECT_EQ(ZuPointList(String(file.Path()), Table(kPoints3d)).Count(), 1);
}

TEST(CoordinateFile, AnOpenFileIsReadFromItsPositionToItsEnd) {
  const TempFile file("1 0 0 0\n2 0 0 0\n3 0 0 0");
  std::FILE* pFile = std::fopen(file.Path(), "r");
  ASSERT_NE(pFile, nullptr);
  std::fseek(pFile, 8, SEEK_SET);
  OpenList list;
  EXPECT_ROW("2 23", list.ReadFile(pFile, Table(kPoints3d)), std::ftell(pFile));
  EXPECT_NE(std::feof(pFile), 0);
  std::fclose(pFile);
}

TEST(CoordinateFile, OddBytesCostNoMoreThanTheirLine) {
  using namespace std::string_literals;
  for (const auto& [szCase, strText, strIdsAndNames] : Cases<const char*, std::string, std::string>{
           {"carriage returns", "1 0 A\r\n2 0 B\r\r\n3 0 C\r", "1=A 2=B 3=C "},
           {"NUL", "1 0 A\n2 0 B\0C\n\0003 0 C\n4 0 D\n"s, "1=A 2=B 4=D "},
           {"byte order mark",
            "\xEF\xBB\xBF"
            "1 0 A\n",
            "1=A "},
           {"open quote", "1 0 \"A B\n2 0 C\n", "1=A B 2=C "},
           {"blank at the end", "1 0 A \n2 0 B\t", "1=A 2=B "},
       }) {
    SCOPED_TRACE(szCase);
    std::string strFound;
    const ZuPointList list = Parsed(strText, Table(kNamed));
    for (const auto* p = list.First(); p != nullptr; p = p->Next()) {
      strFound += std::to_string(p->GetId()) + "=" + p->GetName().chars() + " ";
    }
    EXPECT_EQ(strFound, strIdsAndNames);
  }
}

// Required: 1999 bytes are a line, what follows is the next one.
TEST(CoordinateFile, LongLinesAreTakenAsSeveral) {
  const std::string strFront = "1 5 ";
  for (std::size_t uLength : {1998u, 1999u, 2000u, 2001u}) {
    SCOPED_TRACE(uLength);
    // The name fills the line up to its end but for "7 8 tail".
    const std::string strLine =
        strFront + std::string(uLength - strFront.size() - 7, 'x') + " 7 8 t";
    const ZuPointList list = Parsed(strLine + "\r\n9 9 end\n", Table(kNamed));
    ASSERT_GE(list.Count(), 2);
    EXPECT_ROW("9 2", list.Last()->GetId(), list.Count());
  }
}

namespace {

// The plain second way: fgets, strchr and strtod.
std::vector<ZuPoint> PlainRead(const char* szPath) {
  std::vector<ZuPoint> points;
  std::FILE* pFile = std::fopen(szPath, "r");
  char szLine[2000];
  while (std::fgets(szLine, sizeof(szLine), pFile) != nullptr) {
    std::string line = szLine;
    if (!line.empty() && line.back() == '\n') line.pop_back();
    std::vector<std::string> fields;
    for (std::size_t i = 0; i < line.size();) {
      if (std::strchr(" \t;,", line[i]) != nullptr) {
        ++i;
        continue;
      }
      const bool bQuoted = line[i] == '"';
      std::size_t uEnd = bQuoted ? line.find('"', i + 1) : line.find_first_of(" \t;,", i);
      if (uEnd == std::string::npos) uEnd = line.size();
      fields.push_back(line.substr(i + bQuoted, uEnd - i - bQuoted));
      i = uEnd + bQuoted;
    }
    ZuPoint p;
    const auto number = [&](std::size_t i) {
      return i < fields.size() ? std::strtod(fields[i].c_str(), nullptr) : 0.0;
    };
    if (fields.empty()) continue;
    const long lId = std::strtol(fields[0].c_str(), nullptr, 10);
    p.SetId(static_cast<unsigned int>(std::clamp(lId, -2147483648L, 4294967295L)));
    p.m_dX = number(1);
    if (fields.size() > 2) p.SetName(fields[2].c_str());
    p.m_dY = number(3);
    if (p.GetId() != 0) points.push_back(p);
  }
  std::fclose(pFile);
  return points;
}

std::string RandomText(std::mt19937_64& random) {
  static constexpr const char* kPieces[] = {
      " ",  " ",  " ",        "\t",   ";",   ",",   "\"",
      "\n", "1",  "2",        "-3.5", "1e5", "x",   "#",
      "P1", "0",  ".5",       "-",    "nan", "inf", "+",
      "7e", "\n", "12345678", "\v",   "0x",  "\f",  "0.1234567890123456"};
  std::string text;
  for (std::uint64_t n = random() % 3000; n > 0; --n) {
    const std::uint64_t uPick = random() % 4000;
    if (uPick == 0) {
      text += std::string(random() % 5000, "x 1"[random() % 3]);
    } else if (uPick == 1) {
      text += '\0';
    } else {
      text += kPieces[random() % std::size(kPieces)];
    }
  }
  return text;
}

}  // namespace

TEST(CoordinateFile, ReadsWhatThePlainReaderReads) {
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWName, eZuPointRWY,
                                         eZuPointRWEnd};
  constexpr unsigned int kSeed = 20240611;
  std::mt19937_64 random(kSeed);
  for (int iRun = 0; iRun < 200; ++iRun) {
    SCOPED_TRACE(::testing::Message() << "seed " << kSeed << ", run " << iRun);
    const TempFile file(RandomText(random));
    const std::vector<ZuPoint> expected = PlainRead(file.Path());
    ZuPointList list;
    ASSERT_EQ(list.ReadFile(file.Path(), Table(kColumns)), static_cast<int>(expected.size()));
    const ZuPoint* p = list.First();
    for (const ZuPoint& e : expected) {
      ASSERT_EQ(p->GetId(), e.GetId());
      ASSERT_EQ(p->GetName(), e.GetName());
      ASSERT_TRUE(SameField(p->m_dX, e.m_dX));
      ASSERT_TRUE(SameField(p->m_dY, e.m_dY));
      p = p->Next();
    }
  }
}

// The stream's own operators, column by column, give the same bytes.
TEST(CoordinateFile, WritesWhatTheStreamWouldWrite) {
  std::mt19937_64 random(11);
  ZuPointList list{Table(kPoints3d)};
  std::ostringstream expected;
  for (int i = 0; i < 5000; ++i) {
    const auto anyDouble = [&] { return std::bit_cast<double>(random()); };
    const ZuPoint p(static_cast<unsigned int>(random()), anyDouble(), std::round(anyDouble()),
                    static_cast<double>(random() % 100000) / 1000);
    list.Add(p);
    if (i > 0) expected << Zuendl;
    expected << p16 << w8 << p.GetId() << w16 << p.m_dX << w16 << p.m_dY << w16 << p.m_dZ;
  }
  EXPECT_EQ(Written(list), expected.str());
}

TEST(CoordinateFile, TheFileHasNoLineEndBehindTheLastPoint) {
  const TempFile file("old");
  ZuPointList list{Table(kPoints3d)};
  list.WriteFile(file.Path());
  EXPECT_EQ(file.Read(), "");
  list.Add(ZuPoint(1, 2, 3, 4));
  list.WriteFile(file.Path(), Table(kNamed));
  EXPECT_EQ(file.Read(), "        1                2 \"\"              ");
  EXPECT_EQ(list.GetMask().Size(), 3);

  EXPECT_ROW("1 1 1", list.WriteFile("/no/such/folder/file"),
             list.WriteFile(static_cast<const wchar_t*>(nullptr)), list.Count());

  // A coordinate file begins at the margin, also after a keyword file that was left half written.
  std::ostringstream unfinished;
  unfinished << ZuBeginBlock;
  list.Add(ZuPoint(2, 0, 0, 0));
  list.WriteFile(file.Path(), Table(kPoints3d));
  EXPECT_NE(file.Read().find("\n        2"), std::string::npos);
}
