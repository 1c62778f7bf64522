#include "zu/exchange/internal/matrix_text.h"

#include <algorithm>

#include "zu/exchange/internal/json_finding.h"
#include "zu/foundation/strict_number.h"

namespace zu::internal {

namespace {

constexpr int kNumbers = 16;
constexpr char kSeparators[] = " \t\r\n,;[](){}";
constexpr char kMatrixWanted[] =
    "four rows of four numbers, translation last in each, and 0 0 0 1 below";

bool IsUnitRow(double a, double b, double c, double d) {
  return a == 0.0 && b == 0.0 && c == 0.0 && d == 1.0;
}

}  // namespace

bool TakeMatrix(const double* pd, int iCount, const std::string& strName, ZuAffinMap3d* pMap,
                ZuFindingList* pFindings) {
  ZuAffinMap3d map;
  std::copy_n(pd, 12, map.asDblArray());
  const bool bLastRow = iCount != kNumbers || IsUnitRow(pd[12], pd[13], pd[14], pd[15]);
  if (!bLastRow && IsUnitRow(pd[3], pd[7], pd[11], pd[15])) {
    for (int i = 0; i < 12; ++i) map.asDblArray()[i] = pd[i % 4 * 4 + i / 4];
    ZuFinding finding = JsonFinding(
        strName, "the matrix stands column by column, its translation in the last row", "");
    finding.m_eSeverity = eZuSeverityWarning;
    pFindings->Add(finding);
  } else if (!bLastRow) {
    pFindings->Add(
        JsonFinding(strName, "the last row of the matrix is not 0 0 0 1", kMatrixWanted));
    return false;
  }
  *pMap = map;
  return true;
}

bool ReadMatrixText(const std::string& strText, const std::string& strName, ZuAffinMap3d* pMap,
                    ZuFindingList* pFindings) {
  double ad[kNumbers];
  int iCount = 0;
  std::uint64_t uLine = 1;
  std::size_t uLineStart = 0;
  for (std::size_t u = 0; u < strText.size();) {
    const char c = strText[u];
    if (c == '\n') {
      ++uLine;
      uLineStart = u + 1;
    }
    if (std::find(kSeparators, std::end(kSeparators) - 1, c) != std::end(kSeparators) - 1) {
      ++u;
      continue;
    }
    if (c == '#') {
      u = std::min(strText.find('\n', u), strText.size());
      continue;
    }
    const std::size_t uEnd = std::min(strText.find_first_of(kSeparators, u), strText.size());
    const std::string strField = strText.substr(u, std::min<std::size_t>(uEnd - u, 40));
    double d = 0.0;
    const bool bNumber = uEnd - u <= 40 && ZuParseNumber(strField, &d);
    if (!bNumber || iCount == kNumbers) {
      ZuFinding finding = JsonFinding(
          strName,
          bNumber ? "has more than sixteen numbers" : "\"" + strField + "\" is no finite number",
          kMatrixWanted);
      finding.m_uLine = uLine;
      finding.m_uColumn = u - uLineStart + 1;
      pFindings->Add(finding);
      return false;
    }
    ad[iCount++] = d;
    u = uEnd;
  }
  if (iCount == 12 || iCount == kNumbers) return TakeMatrix(ad, iCount, strName, pMap, pFindings);
  pFindings->Add(JsonFinding(strName, "has " + std::to_string(iCount) + " numbers and is no matrix",
                             kMatrixWanted));
  return false;
}

}  // namespace zu::internal
