// Readers of matrices and vectors whose shape a record demands.
#pragma once

class ZuMatrix;
class ZuReaderObject;
class ZuVector;

namespace zu::internal {

// Reads a matrix or a vector from the token in hand on into one of fixed shape. Another shape in
// the file is not taken: the target stays, one entry with status 4 goes to the error list, and the
// reader goes on behind the values.
void ReadFixedShape(ZuReaderObject* pObject, ZuMatrix* pMatrix);
void ReadFixedShape(ZuReaderObject* pObject, ZuVector* pVector);

}  // namespace zu::internal
