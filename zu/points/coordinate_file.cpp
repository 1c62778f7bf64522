// The coordinate file of a point list.
#include <fstream>
#include <locale>
#include <new>

#include "zu/foundation/locale.h"
#include "zu/foundation/unicode.h"
#include "zu/foundation/writer.h"
#include "zu/points/internal/line_reader.h"
#include "zu/points/point_list.h"

int ZuPointList::ReadFile(FILE* pFile, const TZuFormatTable<eZuPointRWMask>& table) {
  ZuCLocale locale;
  SetMask(table);
  try {
    ZuLineReader lines(pFile);
    std::string_view line;
    while (lines.Next(&line)) {
      ZuPoint point;
      if (point.ReadFields(line, *this) > 0 && point.m_uId != 0) Add(point);
    }
  } catch (const std::bad_alloc&) {
    // The points that found room stay.
  }
  return Count();
}

int ZuPointList::ReadFile(const char* szPath, const TZuFormatTable<eZuPointRWMask>& table) {
  const ZuOpenFile pFile = ZuOpenText(szPath);
  return pFile ? ReadFile(pFile.get(), table) : 0;
}

int ZuPointList::ReadFile(const wchar_t* wszPath, const TZuFormatTable<eZuPointRWMask>& table) {
  return ReadFile(UniToAnsi(wszPath)(), table);
}

int ZuPointList::WriteFile(const char* szPath) const {
  ZuWriterReset();
  std::fstream file(szPath != nullptr ? szPath : "", std::ios::out);
  file.imbue(std::locale::classic());
  Write(file);
  file.close();  // sets the failure state if that fails
  return 1;
}

int ZuPointList::WriteFile(const wchar_t* wszPath) const { return WriteFile(UniToAnsi(wszPath)()); }

int ZuPointList::WriteFile(const char* szPath, const TZuFormatTable<eZuPointRWMask>& table) {
  SetMask(table);
  return WriteFile(szPath);
}

int ZuPointList::WriteFile(const wchar_t* wszPath, const TZuFormatTable<eZuPointRWMask>& table) {
  SetMask(table);
  return WriteFile(wszPath);
}
