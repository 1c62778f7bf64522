// Matrices and vectors in keyword files.
#include "tests/support/keyword_file.h"
#include "tests/support/test.h"
#include "zu/numerics/matrix.h"

namespace {

// Reads "M" into a matrix, "V" into a vector and "N" into a number.
struct Record {
  explicit Record(const std::string& strText) {
    m_iErrors = KeywordFile(strText)
                    .On("M", [&](auto* p) { return m_Matrix.Read(p); })
                    .On("V", [&](auto* p) { return m_Vector.Read(p); })
                    .On("N", &m_iNumber)
                    .Run();
  }
  ZuMatrix m_Matrix = ZuMatrix(2, 2);
  ZuVector m_Vector = ZuVector(7.0, 8.0, 9.0);
  int m_iNumber = 0, m_iErrors = 0;
};

std::string Shown(const ZuMatrix& m) {
  std::string strText = std::to_string(m.GetZeilen()) + "x" + std::to_string(m.GetSpalten());
  for (int i = 0; i < m.GetZeilen() * m.GetSpalten(); ++i) {
    strText += " " + std::to_string(m.GetData()[i]).substr(0, 4);
  }
  return strText;
}

}  // namespace

// The record ends at its last value or at its brace; whatever follows is read.
TEST(MatrixRead, TakesItsValuesAndLeavesTheRest) {
  for (const auto& [szText, szMatrix] : Cases<const char*, const char*>{
           {"M 2 2 1 2.5 -3 4 N 5", "2x2 1.00 2.50 -3.0 4.00"},
           {"M { 2 2 1 2.5 -3 4 } N 5", "2x2 1.00 2.50 -3.0 4.00"},
           {"M { 1 3 1 2 3 4 5 6 } N 5", "1x3 1.00 2.00 3.00"},
           {"M { 3 2 1 2 3 4 5 6 } N 5", "3x2 1.00 2.00 3.00 4.00 5.00 6.00"},
           {"M { 2 3 1 2 } N 5", "2x3 1.00 2.00 0.00 0.00 0.00 0.00"},
           {"M { 2 2 1 \"x\" - 4 } N 5", "2x2 1.00 0.00 0.00 4.00"},
           {"M { 2 2 1 { 2 } 3 } N 5", "2x2 1.00 0.00 0.00 0.00"},
           {"M { 0 3 1 2 3 } N 5", "2x2 0.00 0.00 0.00 0.00"},
           {"M 0 3 1 2 3 N 5", "2x2 0.00 0.00 0.00 0.00"},
           {"M { 2000 501 1 2 3 } N 5", "2x2 0.00 0.00 0.00 0.00"},
           {"M { 2147483647 2147483647 1 } N 5", "2x2 0.00 0.00 0.00 0.00"},
           {"M { -2 -2 1 2 3 4 } N 5", "2x2 0.00 0.00 0.00 0.00"},
       }) {
    SCOPED_TRACE(szText);
    const Record record(szText);
    EXPECT_EQ(Shown(record.m_Matrix), szMatrix);
    EXPECT_ROW("5 0", record.m_iNumber, record.m_iErrors);
  }
}

TEST(MatrixRead, VectorTakesItsValuesAndLeavesTheRest) {
  for (const auto& [szText, expected] :
       Cases<const char*, ZuVector>{{"V 3 1 2 3 N 5", ZuVector(1.0, 2.0, 3.0)},
                                    {"V { 4 1 2.5 } N 5", ZuVector(1.0, 2.5, 0.0, 0.0)},
                                    {"V { 0 1 2 3 } N 5", ZuVector(7.0, 8.0, 9.0)},
                                    {"V 1000001 1 2 3 N 5", ZuVector(7.0, 8.0, 9.0)},
                                    {"V { 3 1 two 3 } N 5", ZuVector(1.0, 0.0, 3.0)}}) {
    SCOPED_TRACE(szText);
    const Record record(szText);
    EXPECT_EQ(record.m_Vector, expected);
    EXPECT_EQ(record.m_iNumber, 5);
  }
}
