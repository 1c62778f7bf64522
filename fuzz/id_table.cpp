// Id tables, grids and objects out of a file of keyword blocks.
#include "zu/foundation/id_table.h"

#include <cstdint>
#include <string_view>

#include "tests/support/temp_file.h"
#include "zu/foundation/object.h"
#include "zu/foundation/reader.h"

namespace {

struct Records : public LinkHdl {
  int ReadIds(ZuReaderObject* pObject) { return ids.Read(pObject); }
  int ReadPairs(ZuReaderObject* pObject) { return pairs.Read(pObject); }
  int ReadGrid(ZuReaderObject* pObject) { return grid.Read(pObject); }
  int ReadObject(ZuReaderObject* pObject) { return object.Read(pObject); }

  ZuIdTable ids;
  ZuIdPairTable pairs;
  ZuIdTable2D grid;
  ZuObject object;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  static const TempFile file;
  file.Write(std::string_view(reinterpret_cast<const char*>(pData), uSize));

  Records records;
  const struct {
    const char* szKeyword;
    Link link;
  } keywords[] = {{"I", Link(&records, &Records::ReadIds)},
                  {"P", Link(&records, &Records::ReadPairs)},
                  {"G", Link(&records, &Records::ReadGrid)},
                  {"O", Link(&records, &Records::ReadObject)}};
  ZuReader reader(file.Path());
  for (const auto& keyword : keywords) {
    ZuReaderObject object(keyword.szKeyword, keyword.link);
    reader.RegisterObject(object);
  }
  reader.DoProcess(false);
  return 0;
}
