// The coordinate file of a point list.
#include <fstream>
#include <locale>
#include <memory>
#include <new>
#include <string_view>
#include <typeinfo>
#include <vector>

#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/locale.h"
#include "zu/foundation/unicode.h"
#include "zu/foundation/writer.h"
#include "zu/points/internal/columns.h"
#include "zu/points/internal/line_reader.h"
#include "zu/points/point_list.h"

namespace {

// The columns of a table, and a null behind them.
std::vector<const ZuColumn*> ColumnsOf(const TZuFormatTable<eZuPointRWMask>& table) {
  std::vector<const ZuColumn*> columns;
  for (int i = 0; table[i] != eZuPointRWEnd; ++i) columns.push_back(&ZuFindColumn(table[i]));
  columns.push_back(nullptr);
  return columns;
}

}  // namespace

int ZuPointList::ReadFile(FILE* pFile, const TZuFormatTable<eZuPointRWMask>& table) {
  // Without observers and with no derived class, whose Add may be its own, nobody can tell whether
  // a point was copied in or read in place; nor can the count change but by what is read.
  const bool bAlone = typeid(*this) == typeid(ZuPointList) && ZuStandardNotifier::Count() == 0;
  int iCount = bAlone ? Count() : 0;
  try {
    const ZuCLocale locale;
    SetMask(table);
    const std::vector<const ZuColumn*> columns = ColumnsOf(*this);
    ZuLineReader lines(pFile);
    std::string_view line;
    auto pPoint = std::make_unique<ZuPoint>();
    while (lines.Next(&line)) {
      const int iFields = pPoint->ReadLine(line, columns.data());
      if (iFields > 0 && pPoint->m_uId != 0) {
        if (!bAlone) {
          zu::internal::Taken(Add(*pPoint));
        } else {
          LinkLast(pPoint.release());
          ++iCount;
          pPoint = std::make_unique<ZuPoint>();
          continue;
        }
      }
      if (iFields > 0) *pPoint = ZuPoint();
    }
  } catch (const std::bad_alloc&) {
    // The points that found room stay.
  }
  return bAlone ? iCount : Count();
}

int ZuPointList::ReadFile(const char* szPath, const TZuFormatTable<eZuPointRWMask>& table) {
  const ZuOpenFile pFile = ZuOpenText(szPath);
  return pFile ? ReadFile(pFile.get(), table) : 0;
}

int ZuPointList::ReadFile(const wchar_t* wszPath, const TZuFormatTable<eZuPointRWMask>& table) {
  const auto read = [&] { return ReadFile(UniToAnsi(wszPath)(), table); };
  return zu::internal::OrWithoutMemory(read, 0);
}

int ZuPointList::WriteFile(const char* szPath) const {
  const ZuWriterStart start;
  const auto write = [&] {
    std::fstream file(szPath != nullptr ? szPath : "", std::ios::out);
    file.imbue(std::locale::classic());
    Write(file);
    file.close();  // sets the failure state if that fails
    return 1;
  };
  return zu::internal::OrWithoutMemory(write, 1);
}

int ZuPointList::WriteFile(const wchar_t* wszPath) const {
  const auto write = [&] { return WriteFile(UniToAnsi(wszPath)()); };
  return zu::internal::OrWithoutMemory(write, 1);
}

int ZuPointList::WriteFile(const char* szPath, const TZuFormatTable<eZuPointRWMask>& table) {
  const auto write = [&] {
    SetMask(table);
    return WriteFile(szPath);
  };
  return zu::internal::OrWithoutMemory(write, 1);
}

int ZuPointList::WriteFile(const wchar_t* wszPath, const TZuFormatTable<eZuPointRWMask>& table) {
  const auto write = [&] {
    SetMask(table);
    return WriteFile(wszPath);
  };
  return zu::internal::OrWithoutMemory(write, 1);
}
