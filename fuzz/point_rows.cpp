// Points, ids, matrices and vectors as rows of keyword blocks.
#include <sstream>

#include "fuzz/points_use.h"
#include "zu/foundation/id_table.h"
#include "zu/foundation/object.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/vector.h"

namespace {

struct Records : public LinkHdl {
  explicit Records(const Columns& columns) : points(columns) {}

  int ReadIds(ZuReaderObject* pObject) { return ids.Read(pObject); }
  int ReadPairs(ZuReaderObject* pObject) { return pairs.Read(pObject); }
  int ReadGrid(ZuReaderObject* pObject) { return grid.Read(pObject); }
  int ReadMatrix(ZuReaderObject* pObject) { return matrix.Read(pObject); }
  int ReadVector(ZuReaderObject* pObject) { return vector.Read(pObject); }

  ZuPointList points;
  ZuIdTable ids;
  ZuIdPairTable pairs;
  ZuIdTable2D grid;
  ZuObject object;
  ZuMatrix matrix = ZuMatrix(2, 2);
  ZuVector vector = ZuVector(2);
};

void Read(Records& records, const char* szPath, bool bGoOn) {
  ZuReaderObject keywords[] = {
      {"POINTS", Link(&records.points, &ZuPointList::Read)},
      {"IDS", Link(&records, &Records::ReadIds)},
      {"PAIRS", Link(&records, &Records::ReadPairs)},
      {"GRID", Link(&records, &Records::ReadGrid)},
      {"OBJECT", Link(&records.object, &ZuObject::Read)},
      {"MATRIX", Link(&records, &Records::ReadMatrix)},
      {"VECTOR", Link(&records, &Records::ReadVector)},
  };
  ReadKeywords(szPath, keywords, bGoOn);
}

// Every element is set and stands inside the storage.
void UseMatrices(const Records& records) {
  double dSum = 0.0;
  for (int i = 1; i <= records.matrix.GetZeilen(); ++i) {
    for (int j = 1; j <= records.matrix.GetSpalten(); ++j) dSum += records.matrix.GetElem(i, j);
  }
  for (int i = 1; i <= records.vector.GetSize(); ++i) dSum += records.vector.GetElem(i);
  std::ostringstream os;
  os << dSum;
  if (records.matrix.GetZeilen() != records.matrix.GetSpalten()) return;
  if (records.matrix.GetZeilen() > 20) return;
  ZuMatrix inverse(records.matrix);
  inverse.Invert();
  const ZuMatrix product = inverse * records.matrix;
  Require(product.GetZeilen() == records.matrix.GetZeilen());
}

void UseIds(const Records& records) {
  ZuIdTable sorted(records.ids);
  sorted.Sort();
  ZuIdPairTable pairs(records.pairs);
  pairs.Sort();
  unsigned int uSum = 0;
  for (int y = 0; y < records.grid.GetSizeY(); ++y) {
    for (int x = 0; x < records.grid.GetSizeX(); ++x) uSum += records.grid(x, y);
  }
  const ZuIdTable2D copy(records.grid);
  Require(copy.GetSizeX() == records.grid.GetSizeX());
  std::ostringstream os;
  os << uSum;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  Records records(TakeColumns(input));
  Read(records, input.Path(), (input.Option() & 4U) != 0);
  UseMatrices(records);
  UseIds(records);
  UsePoints(records.points);

  // The same bytes as the rows of one block.
  ZuPointList rows(records.points.GetMask());
  ZuReaderObject keywords[] = {{"POINTS", Link(&rows, &ZuPointList::Read)}};
  ReadKeywords(Input::Path("POINTS {" + std::string(input.Text())), keywords, false);
  std::ostringstream os;
  rows.Write(os);
  return 0;
}
