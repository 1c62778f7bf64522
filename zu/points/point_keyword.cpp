// A point from the values of a keyword file.
#include <string_view>

#include "zu/foundation/reader_object.h"
#include "zu/points/internal/columns.h"
#include "zu/points/point.h"

namespace {

// The text of the token in hand. A word ends at the first byte that no word can hold: the text runs
// on past a brace that follows it without a blank.
String TokenText(ZuParser& parser) {
  const ZuParserToken& token = parser.GetToken();
  int iLength = 0;
  for (const char* p = token.m_szText; *p != '\0'; ++p, ++iLength) {
    if (token.m_eType != eZuTokenString && parser.GetChLookup().GetFlags(*p) != 0) break;
  }
  return String(token.m_szText, iLength);
}

}  // namespace

ZuPoint::ZuPoint(ZuReaderObject* pObject, const TZuFormatTable<eZuPointRWMask>& table) {
  Read(pObject, table);
}

int ZuPoint::Read(ZuReaderObject* pObject, const TZuFormatTable<eZuPointRWMask>& table) {
  for (int i = 0; table[i] != eZuPointRWEnd; ++i) ReadValue(pObject, ZuFindColumn(table[i]));
  return 1;
}

void ZuPoint::ReadValue(ZuReaderObject* pObject, const ZuColumn& column) {
  switch (column.eKind) {
    case eZuColumnKind::Id:
      m_uId = pObject->TakeId();
      break;
    case eZuColumnKind::Name:
      m_strName = pObject->TakeString();
      break;
    case eZuColumnKind::IdName: {
      const String strText = TokenText(pObject->GetStreamParser());
      pObject->Skip();  // throws before anything is kept where the token is no value
      SetIdOrName(std::string_view(strText.chars()), false);
      break;
    }
    case eZuColumnKind::Flag:
      m_iFlag = pObject->TakeInt();
      break;
    case eZuColumnKind::Code:
      SetAsControlFlag(pObject->TakeInt());
      break;
    case eZuColumnKind::Short:
      this->*column.pShort = static_cast<short int>(pObject->TakeInt());
      break;
    case eZuColumnKind::Int:
      this->*column.pInt = pObject->TakeInt();
      break;
    case eZuColumnKind::Key:
      this->*column.pInt = static_cast<int>(pObject->TakeId());
      break;
    case eZuColumnKind::Double:
      this->*column.pDouble = pObject->TakeNumber();
      break;
    case eZuColumnKind::Float:
      this->*column.pFloat = static_cast<float>(pObject->TakeNumber());
      break;
    case eZuColumnKind::Accuracy:
    case eZuColumnKind::Number:
      pObject->TakeNumber();
      break;
    case eZuColumnKind::Skip:
      pObject->Skip();
      break;
    case eZuColumnKind::Blank:
    case eZuColumnKind::Nothing:
      break;
  }
}
