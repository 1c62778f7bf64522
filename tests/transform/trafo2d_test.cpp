// Stored plane transformations: formulas, matrices, text forms.
#include "zu/transform/trafo2d.h"

#include "tests/support/keyword_file.h"
#include "tests/support/random_geometry.h"
#include "tests/support/test.h"
#include "zu/numerics/matrix.h"
#include "zu/points/point.h"

namespace {

// Reads "T <type> <coefficients>", in the older form for "V".
ZuTrafo2d ReadText(const std::string& strText, ZuTrafo2d trafo = {}, int* piBehind = nullptr) {
  int iBehind = 0;
  KeywordFile(strText)
      .On("T", [&](auto* p) { return trafo.Read(p); })
      .On("V", [&](auto* p) { return trafo.ReadV50(p); })
      .On("BEHIND", &iBehind)
      .Run();
  if (piBehind != nullptr) *piBehind = iBehind;
  return trafo;
}

std::string Written(const ZuTrafo2d& trafo) {
  std::ostringstream stream;
  trafo.Write(stream);
  return stream.str();
}

std::string Coefficients(int n, double dFirst = 1.5) {
  std::string strText;
  for (int i = 0; i < n; ++i) strText += " " + std::to_string(dFirst + i);
  return strText;
}

void ExpectPoint(const ZuTrafo2d& trafo, double x, double y, double X, double Y) {
  ZuPoint point(1, x, y, 9.0);
  ASSERT_TRUE(trafo.Transform(&point));
  EXPECT_NEAR(point.m_dX, X, 1e-12);
  EXPECT_NEAR(point.m_dY, Y, 1e-12);
  EXPECT_EQ(point.m_dZ, 9.0);
}

}  // namespace

// Worked by hand at (2, 3).
TEST(Trafo2d, TransformsByTheFormulaOfItsType) {
  ExpectPoint(ReadText("T 1 1 2 3 4"), 2, 3, 1 + 4 - 12, 3 + 8 + 6);
  ExpectPoint(ReadText("T 2 1 2 3 4 5 6"), 2, 3, 1 + 4 + 9, 4 + 10 + 18);
  ExpectPoint(ReadText("T 3 1 2 3 4 5 6 0.5 1"), 2, 3, 11.0 / 5.0, 29.0 / 5.0);
  ExpectPoint(ReadText("T 4 1 2 3 4 5 6 7 8 9 10 -1 -2 -3 -4 -5 -6 -7 -8 -9 -10"), 2, 3, 698, -698);
  ZuTrafo2d ident;
  ident.SetIdent();
  ExpectPoint(ident, 2, 3, 2, 3);
}

// Types without a formula answer false and leave the coordinates; each has a name.
TEST(Trafo2d, OtherTypesTransformNothing) {
  for (const int iType : {0, 5, 6, -1, 2147483647, -2147483647}) {
    const ZuTrafo2d trafo = ReadText("T " + std::to_string(iType));
    EXPECT_EQ(static_cast<int>(trafo.GetType()), iType);
    double x = 2.0, y = 3.0;
    EXPECT_TRUE(!trafo.Transform(&x, &y) && x == 2.0 && y == 3.0);
    EXPECT_STREQ(trafo.GetTrafoName(), iType == 5 ? "Inv. Helmert" : "None");
    EXPECT_EQ(Written(trafo), [&] {
      std::string strType = std::to_string(iType);
      if (strType.size() < 4) strType.insert(0, 4 - strType.size(), ' ');
      return " " + strType + "\n";
    }());
  }
  EXPECT_STREQ(ZuTrafo2d::GetTrafoName(eZuTrafo2DPolynomial), "Polynomial");
}

TEST(Trafo2d, InverseHelmertReturnsThePoint) {
  RandomGeometry random(21);
  for (int i = 0; i < 100; ++i) {
    std::ostringstream text;
    text.precision(17);
    text << "T 1 " << random.Value(100.0) << ' ' << random.Value(2.0) << ' ' << random.Value(100.0)
         << ' ' << 3.0 + random.Value(2.0);
    const ZuTrafo2d trafo = ReadText(text.str());
    const double x0 = random.Value(50.0), y0 = random.Value(50.0);
    ZuPoint p(1, x0, y0);
    ASSERT_TRUE(trafo.Transform(&p) && trafo.TransInvHelmert(&p));
    EXPECT_NEAR(p.m_dX, x0, 1e-10);
    EXPECT_NEAR(p.m_dY, y0, 1e-10);
  }
  double x = 2.0, y = 3.0;
  EXPECT_TRUE(!ReadText("T 1 5 0 6 0").TransInvHelmert(&x, &y) && x == 2.0 && y == 3.0);
}

// The matrix maps (x, y, 1) as the transformation does.
TEST(Trafo2d, MatrixDoesTheSame) {
  for (const char* szText : {"T 1 1 2 3 4", "T 2 1 2 3 4 5 6", "T 3 1 2 3 4 5 6 0.5 1", "T 0"}) {
    const ZuTrafo2d trafo = ReadText(szText);
    ZuMatrix m(3, 3);
    trafo.BuildMatrix(&m);
    double x = 2.0, y = 3.0;
    trafo.Transform(&x, &y);
    const double w = m[3][1] * 2.0 + m[3][2] * 3.0 + m[3][3];
    EXPECT_NEAR((m[1][1] * 2.0 + m[1][2] * 3.0 + m[1][3]) / w, x, 1e-12) << szText;
    EXPECT_NEAR((m[2][1] * 2.0 + m[2][2] * 3.0 + m[2][3]) / w, y, 1e-12) << szText;

    ZuTrafo2d back;
    back.SetFromMatrix(m, trafo.GetType());
    EXPECT_EQ(back.GetType(), trafo.GetType());
    if (trafo.GetType() == eZuTrafo2DProjektiv) continue;
    EXPECT_EQ(Written(back), Written(trafo)) << szText;
  }
}

// Required: a5 comes from element (2, 2) and a6 from (2, 1).
TEST(Trafo2d, ProjectiveFromAMatrixIsAsymmetrical) {
  ZuMatrix m(3, 3);
  ReadText("T 3 1 2 3 4 5 6 7 8").BuildMatrix(&m);
  ZuTrafo2d back;
  back.SetFromMatrix(m, eZuTrafo2DProjektiv);
  const double expected[] = {1, 2, 3, 4, 5, 5, 4, 8};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(back.GetCoef(i), expected[i]) << i;

  ZuTrafo2d other = ReadText("T 2 1 2 3 4 5 6");
  other.SetFromMatrix(m, eZuTrafo2DPolynomial);  // the type alone
  EXPECT_EQ(other.GetType(), eZuTrafo2DPolynomial);
  EXPECT_EQ(other.GetCoef(5), 6.0);
}

// What is written reads back to the same, and a reader goes on behind it.
TEST(Trafo2d, TextFormReadsBack) {
  for (const auto& [iType, iCoefficients] :
       Cases<int, int>{{0, 0}, {1, 4}, {2, 6}, {3, 8}, {4, 20}, {5, 0}}) {
    const ZuTrafo2d trafo =
        ReadText("T " + std::to_string(iType) + Coefficients(iCoefficients, 0.1));
    int iBehind = 0;
    const ZuTrafo2d back = ReadText("T" + Written(trafo) + " BEHIND 7", {}, &iBehind);
    EXPECT_EQ(iBehind, 7) << iType;
    EXPECT_EQ(Written(back), Written(trafo));
    for (int i = 0; i < ZuTrafo2d::kCoefficients; ++i) {
      EXPECT_DOUBLE_EQ(back.GetCoef(i), i < iCoefficients ? 0.1 + i : 0.0);
    }
  }
  EXPECT_EQ(
      Written(ReadText("T 2 1 2 3 4 5 0.1")),
      "    2\n                   1                   2                   3                   4\n"
      "                   5                 0.1");
}

TEST(Trafo2d, OlderFormHasItsOwnCodes) {
  for (const auto& [iCode, eType, iCoefficients] :
       Cases<int, eZuTrafo2DType, int>{{0, eZuTrafo2DProjektiv, 8},
                                       {1, eZuTrafo2DAffin, 6},
                                       {2, eZuTrafo2DHelmert, 4},
                                       {3, eZuTrafo2DPolynomial, 20}}) {
    int iBehind = 0;
    const ZuTrafo2d trafo = ReadText(
        "V " + std::to_string(iCode) + Coefficients(iCoefficients) + " BEHIND 7", {}, &iBehind);
    EXPECT_EQ(iBehind, 7);
    EXPECT_EQ(trafo.GetType(), eType);
    EXPECT_DOUBLE_EQ(trafo.GetCoef(iCoefficients - 1), 0.5 + iCoefficients);
    EXPECT_EQ(Written(trafo).substr(0, 5), "    " + std::to_string(eType));
  }
  const ZuTrafo2d before = ReadText("T 1 1 2 3 4");
  for (const char* szCode : {"V 4", "V -1"}) {
    int iBehind = 0;
    EXPECT_EQ(Written(ReadText(std::string(szCode) + " BEHIND 7", before, &iBehind)),
              Written(before));
    EXPECT_EQ(iBehind, 7);
  }
}

// Whatever stands for a value is a number or 0.0, and the end of the file ends the values.
TEST(Trafo2d, DamagedTextGivesZeros) {
  const ZuTrafo2d wrong = ReadText("T 2 1 \"x\" 3 4");
  EXPECT_EQ(wrong.GetType(), eZuTrafo2DAffin);
  EXPECT_ROW("1 0 3 0", wrong.GetCoef(0), wrong.GetCoef(1), wrong.GetCoef(2), wrong.GetCoef(5));
  EXPECT_EQ(ReadText("T x 1 2").GetType(), eZuTrafo2DNone);
}
