// Matrices and vectors in keyword files, and their debug output.
#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>

#include "zu/foundation/debug.h"
#include "zu/foundation/internal/item_writer.h"
#include "zu/foundation/reader_object.h"
#include "zu/numerics/matrix.h"

using zu::internal::WriteValue;
using zu::internal::WriteValues;

namespace {

// Larger ones are not taken from a file [elements].
constexpr std::int64_t kMaxElements = 1'000'000;

// Takes up to n values. From a brace or the end of the file on, which stay in hand, they are 0.0:
// no need to ask for each of a million.
void TakeValues(ZuReaderObject* pObject, double* pdValues, std::ptrdiff_t n) {
  std::ptrdiff_t i = 0;
  while (i < n && !pObject->IsBlockOpen() && !pObject->IsEndOfRows()) {
    pdValues[i++] = pObject->TakeValue();
  }
  if (i < n) pdValues[i++] = pObject->TakeValue();  // a fault that waits is thrown
  std::fill(pdValues + i, pdValues + n, 0.0);
}

void PrintHeadline(const char* szFormat, std::va_list args) {
  char szHeadline[kZuDebugTextSize];
  const int iLength = std::vsnprintf(szHeadline, sizeof(szHeadline), szFormat, args);
  if (iLength >= 0) dbgprintf("%s\n", szHeadline);
}

}  // namespace

// 3 3  1 0 0  0 1 0  0 0 1
int ZuMatrix::Read(ZuReaderObject* pObject) {
  const int iRows = pObject->TakeInt();
  const int iCols = pObject->TakeInt();
  if (iRows < 1 || iCols < 1 || static_cast<std::int64_t>(iRows) * iCols > kMaxElements) {
    pObject->SkipNumbers();
    return 1;
  }
  if (iRows != m_iZeilen || iCols != m_iSpalten) {
    double* pdOld = m_pdData;
    Allocate(iRows, iCols);
    if (pdOld != m_adInline) delete[] pdOld;
    Clear();  // a fault among the values leaves the rest of them at 0.0
  }
  TakeValues(pObject, m_pdData, Count());
  return 1;
}

std::ostream& ZuMatrix::Write(std::ostream& os) const { return os; }

std::ostream& ZuMatrix::Export(std::ostream& os) const {
  WriteValues(os, m_iZeilen, m_iSpalten);
  for (int i = 1; i <= m_iZeilen; ++i) {
    os << Zuendl;
    for (int j = 1; j <= m_iSpalten; ++j) {
      if (j > 1) os.put(' ');
      WriteValue(os, GetElem(i, j));
    }
  }
  return os;
}

void ZuMatrix::DbgPrintf(const char* szFormat, ...) const {
  std::va_list args;
  va_start(args, szFormat);
  PrintHeadline(szFormat, args);
  va_end(args);
  for (int i = 1; i <= m_iZeilen; ++i) {
    for (int j = 1; j <= m_iSpalten; ++j) dbgprintf("%11.7f ", GetElem(i, j));
    dbgprintf("\n");
  }
}

ZuVector::ZuVector(ZuReaderObject* pObject) : ZuVector(0) { Read(pObject); }

// 3  1 0 0
int ZuVector::Read(ZuReaderObject* pObject) {
  const int n = pObject->TakeInt();
  if (n < 1 || n > kMaxElements) {
    pObject->SkipNumbers();
    return 1;
  }
  double* pdOld = m_pdData;
  init(n);
  if (pdOld != m_adInline) delete[] pdOld;
  TakeValues(pObject, m_pdData, n);
  return 1;
}

std::ostream& ZuVector::Write(std::ostream& os) const { return os; }

std::ostream& ZuVector::Export(std::ostream& os) const {
  WriteValue(os, m_iSize);
  for (int i = 1; i <= m_iSize; ++i) {
    os.put(' ');
    WriteValue(os, GetElem(i));
  }
  return os;
}

void ZuVector::DbgPrintf(const char* szFormat, ...) const {
  std::va_list args;
  va_start(args, szFormat);
  PrintHeadline(szFormat, args);
  va_end(args);
  for (int i = 1; i <= m_iSize; ++i) dbgprintf("%.7f   ", GetElem(i));
  dbgprintf(" (%.7f)\n", Abs());
}
