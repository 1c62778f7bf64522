#include "zu/rectify/internal/read_shape.h"

#include <cstdint>

#include "zu/foundation/reader_object.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/vector.h"

namespace {

// Larger ones are taken by no reader of matrices and vectors [elements].
constexpr std::int64_t kMaxElements = 1'000'000;

// Moves over the values of a shape that is not taken, without room for them: a file may claim a
// million of them in a few bytes, again and again.
void Refuse(ZuReaderObject* pObject, std::int64_t iElements, bool bShape, unsigned int uLine) {
  if (bShape && iElements <= kMaxElements) {
    const auto hasValue = [pObject] { return !pObject->IsBlockOpen() && !pObject->IsEndOfRows(); };
    for (std::int64_t i = 0; i < iElements && hasValue(); ++i) pObject->TakeValue();
  } else {
    pObject->SkipNumbers();
  }
  pObject->AddShapeError(uLine);
}

}  // namespace

void zu::internal::ReadFixedShape(ZuReaderObject* pObject, ZuMatrix* pMatrix) {
  const unsigned int uLine = pObject->GetLine();
  const int iRows = pObject->TakeInt();
  const int iCols = pObject->TakeInt();
  if (iRows != pMatrix->GetZeilen() || iCols != pMatrix->GetSpalten()) {
    const std::int64_t iElements = static_cast<std::int64_t>(iRows) * iCols;
    return Refuse(pObject, iElements, iRows > 0 && iCols > 0, uLine);
  }
  ZuMatrix read(iRows, iCols);  // a fault among the values leaves the record its own
  for (int i = 1; i <= iRows; ++i) {
    for (int j = 1; j <= iCols; ++j) read[i][j] = pObject->TakeValue();
  }
  *pMatrix = read;
}

void zu::internal::ReadFixedShape(ZuReaderObject* pObject, ZuVector* pVector) {
  const unsigned int uLine = pObject->GetLine();
  const int n = pObject->TakeInt();
  if (n != pVector->GetSize()) return Refuse(pObject, n, n > 0, uLine);
  ZuVector read(n);
  for (int i = 1; i <= n; ++i) read[i] = pObject->TakeValue();
  *pVector = read;
}
