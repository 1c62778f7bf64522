// Points out of coordinate files, GSI files and the rows of keyword files. The first bytes choose
// the columns, the rest is the file.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/temp_file.h"
#include "zu/foundation/reader.h"
#include "zu/points/point_list.h"

namespace {

using Table = TZuFormatTable<eZuPointRWMask>;

void Require(bool bGood) {
  if (!bGood) std::abort();
}

// Up to five columns; every id that has a meaning, and some that have none, in one byte.
Table TakeTable(std::string_view* pText) {
  std::vector<eZuPointRWMask> columns;
  while (columns.size() < 5 && !pText->empty()) {
    const auto uByte = static_cast<unsigned char>(pText->front());
    pText->remove_prefix(1);
    if (uByte == 0) break;
    columns.push_back(static_cast<eZuPointRWMask>(uByte));
  }
  columns.push_back(eZuPointRWEnd);
  return Table(columns.data());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  std::string_view text(reinterpret_cast<const char*>(pData), uSize);
  const Table table = TakeTable(&text);
  static const TempFile file;
  file.Write(text);

  ZuPointList list;
  const int iCount = list.ReadFile(file.Path(), table);
  Require(iCount == list.Count());
  std::ostringstream os;
  list.Write(os);
  const std::string strText = os.str();
  Require(strText.empty() || iCount > 0);
  Require(std::count(strText.begin(), strText.end(), '\n') >= std::max(0, iCount - 1));

  list.Destroy();
  Require(list.ReadGsiFile(file.Path()) == list.Count());

  file.Write("POINTS {" + std::string(text));
  ZuPointList rows(table);
  ZuReader reader(file.Path());
  ZuReaderObject points("POINTS", Link(&rows, &ZuPointList::Read));
  reader.RegisterObject(points);
  reader.DoProcess(false);
  return 0;
}
