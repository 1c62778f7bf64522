#include "zu/rectify/internal/read_shape.h"

#include "zu/foundation/reader_object.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/vector.h"

// The temporaries start in a shape that no record demands, so that a size which the readers of
// matrix and vector refuse is told as a wrong shape too.

void zu::internal::ReadFixedShape(ZuReaderObject* pObject, ZuMatrix* pMatrix) {
  const unsigned int uLine = pObject->GetLine();
  ZuMatrix read(1, 1);
  read.Read(pObject);
  if (read.GetZeilen() == pMatrix->GetZeilen() && read.GetSpalten() == pMatrix->GetSpalten()) {
    *pMatrix = read;
  } else {
    pObject->AddShapeError(uLine);
  }
}

void zu::internal::ReadFixedShape(ZuReaderObject* pObject, ZuVector* pVector) {
  const unsigned int uLine = pObject->GetLine();
  ZuVector read(1);
  read.Read(pObject);
  if (read.GetSize() == pVector->GetSize()) {
    *pVector = read;
  } else {
    pObject->AddShapeError(uLine);
  }
}
