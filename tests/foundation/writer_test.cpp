#include "zu/foundation/writer.h"

#include "tests/support/test.h"

namespace {

using Manipulator = std::ostream& (*)(std::ostream&);

class Writer : public ::testing::Test {
 protected:
  Writer() { ZuWriterReset(); }
  ~Writer() override { ZuWriterReset(); }

  std::string Text() {
    std::string strText = m_Stream.str();
    m_Stream.str("");
    return strText;
  }

  std::ostringstream m_Stream;
};

TEST_F(Writer, BlocksKeepTheIndentation) {
  m_Stream << "A" << ZuBeginBlockNL << "B" << ZuBeginBlockNL << "C 1" << Zuendl << "D 2"
           << ZuEndBlockNL << ZuEndBlockNL << Zuendl;
  EXPECT_EQ(Text(), "A{\n    B{\n        C 1\n        D 2\n    }\n}\n");
  m_Stream << ZuBeginBlock << " 1 " << Zuendl << ZuEndBlock << Zuendl << ZuComment << "x";
  EXPECT_EQ(Text(), "{ 1 \n    }\n; x");
}

TEST_F(Writer, LevelIsNeverBelowZeroAndOneForAllStreams) {
  m_Stream << ZuEndBlock << ZuEndBlockNL << ZuTabMinus << Zuendl << ZuTabPlus << Zuendl;
  EXPECT_EQ(Text(), "}\n}\n\n    ");
  std::ostringstream other;
  other << ZuTabPlus << Zuendl;
  EXPECT_EQ(other.str(), "\n        ");
  ZuWriterReset();
  m_Stream << Zuendl;
  EXPECT_EQ(Text(), "\n");
}

TEST_F(Writer, ColumnsHaveTheirWidth) {
  const auto blanks = [](int n) { return std::string(static_cast<std::size_t>(n - 1), ' '); };
  for (const auto& [pfn, iWidth] : Cases<Manipulator, int>{{w4, 4},
                                                           {w5, 5},
                                                           {w6, 6},
                                                           {w8, 8},
                                                           {w10, 10},
                                                           {w12, 12},
                                                           {w14, 14},
                                                           {w16, 16},
                                                           {w19, 19}}) {
    m_Stream << s4 << pfn << 7 << 'x';  // one blank, whatever width was left
    EXPECT_EQ(Text(), ' ' + blanks(iWidth) + "7x");
  }
  for (const auto& [pfn, iWidth] : Cases<Manipulator, int>{{s2, 2},
                                                           {s4, 4},
                                                           {s8, 8},
                                                           {s10, 10},
                                                           {s12, 12},
                                                           {s14, 14},
                                                           {s16, 16},
                                                           {s20, 20},
                                                           {s30, 30},
                                                           {s34, 34}}) {
    m_Stream << pfn << "P" << 'x';
    EXPECT_EQ(Text(), 'P' + blanks(iWidth) + 'x');
  }
  m_Stream << w4 << 123456 << w4 << -1 << s4 << "ABCDEF" << w4 << "x";
  EXPECT_EQ(Text(), " 123456   -1ABCDEF    x");
}

// The width goes to the first item behind the manipulator, a brace too, and line ends leave it.
TEST_F(Writer, WidthGoesToTheNextItem) {
  m_Stream << s12 << "DEFLINE" << w4 << ZuBeginBlock << w8 << 1 << ZuEndBlock << Zuendl;
  EXPECT_EQ(Text(), "DEFLINE         {        1}\n");
  m_Stream << s10 << "CAMERA" << ZuBeginBlock << " " << ZuEndBlock << Zuendl;
  EXPECT_EQ(Text(), "CAMERA    { }\n");
  m_Stream << w6 << Zuendl << 5;
  EXPECT_EQ(Text(), " \n     5");
}

TEST_F(Writer, PrecisionCountsDigits) {
  m_Stream << p4 << 1.0 / 3.0 << ' ' << p6 << 1.0 / 3.0 << ' ' << p8 << 1.0 / 3.0 << ' ' << p16
           << 1.0 / 3.0;
  EXPECT_EQ(Text(), "0.3333 0.333333 0.33333333 0.3333333333333333");
}

}  // namespace
