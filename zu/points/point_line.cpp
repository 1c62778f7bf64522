// A point from a line of text.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "zu/foundation/alnum_id.h"
#include "zu/foundation/internal/characters.h"
#include "zu/foundation/numbers.h"
#include "zu/points/internal/columns.h"
#include "zu/points/internal/fields.h"
#include "zu/points/point.h"

namespace {

// The text up to its line end, which goes with the carriage returns before it.
std::string_view WithoutLineEnd(const char* szLine) {
  std::string_view line(szLine, std::strcspn(szLine, "\n"));
  while (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

bool HasOnlyDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), zu::internal::IsDigit);
}

// A text that need not be terminated.
void AssignText(String& str, std::string_view text) {
  char szText[256];
  if (text.size() < sizeof(szText)) {
    std::memcpy(szText, text.data(), text.size());
    szText[text.size()] = '\0';
    str = szText;
  } else {
    str = String(text.data(), static_cast<int>(text.size()));
  }
}

}  // namespace

void ZuPoint::SetIdOrName(std::string_view text, bool bZeroIsName) {
  const bool bDigits = HasOnlyDigits(text);
  const unsigned int uId = bDigits ? ZuAtou(text.data(), text.data() + text.size()) : 0;
  if (bDigits && (uId != 0 || !bZeroIsName)) {
    m_uId = uId;
  } else {
    SetNameAndId(text);
  }
}

void ZuPoint::SetNameAndId(std::string_view text) {
  AssignText(m_strName, text);
  m_uId = GetIdFromAlphaNumericString(m_strName);
}

inline void ZuPoint::ReadField(ZuFieldCutter& fields, const ZuColumn& column) {
  switch (column.eKind) {
    case eZuColumnKind::Id:
      m_uId = fields.Id();
      break;
    case eZuColumnKind::Name:
      AssignText(m_strName, fields.Text());
      break;
    case eZuColumnKind::IdName:
      SetIdOrName(fields.Text(), true);
      break;
    case eZuColumnKind::Flag:
      m_iFlag = fields.Int();
      break;
    case eZuColumnKind::Code:
      SetControlFromText(fields.Text());
      break;
    case eZuColumnKind::Short:
      this->*column.pShort = static_cast<short int>(fields.Int());
      break;
    case eZuColumnKind::Int:
      this->*column.pInt = fields.Int();
      break;
    case eZuColumnKind::Key:
      this->*column.pInt = static_cast<int>(fields.Id());
      break;
    case eZuColumnKind::Double:
      this->*column.pDouble = fields.Double();
      break;
    case eZuColumnKind::Float:
      this->*column.pFloat = static_cast<float>(fields.Double());
      break;
    default:  // the field is taken and nothing is kept of it
      fields.Text();
      break;
  }
}

int ZuPoint::Read(char* szLine, const TZuFormatTable<eZuPointRWMask>& table) {
  return Read(static_cast<const char*>(szLine), table);
}

int ZuPoint::Read(const char* szLine, const TZuFormatTable<eZuPointRWMask>& table) {
  ZuFieldCutter fields(WithoutLineEnd(szLine));
  int iField = 0;
  while (table[iField] != eZuPointRWEnd && fields.FindField()) {
    ReadField(fields, ZuFindColumn(table[iField++]));
  }
  return iField;
}

int ZuPoint::ReadLine(std::string_view line, const ZuColumn* const* ppColumn) {
  ZuFieldCutter fields(line);
  int iField = 0;
  while (ppColumn[iField] != nullptr && fields.FindField()) {
    ReadField(fields, *ppColumn[iField++]);
  }
  return iField;
}
