// The cutting of one line into tokens.

#include <string_view>

#include "zu/foundation/internal/characters.h"
#include "zu/foundation/numbers.h"
#include "zu/foundation/parser.h"

namespace {

using zu::internal::IsDigit;
using zu::internal::IsLetter;

// What ends a word; further bits that an application sets mean nothing here.
constexpr int kAnyClass =
    eZuChSeparator | eZuChComment | eZuChString | eZuChBlockOpen | eZuChBlockClose;

bool IsSign(char c) { return c == '-' || c == '+'; }

// The words for what no digits tell, as writers put them: inf and nan, with a sign or without.
bool IsNumberWord(std::string_view word) {
  if (IsSign(word.front())) word.remove_prefix(1);
  return word == "inf" || word == "nan";
}

}  // namespace

bool ZuParser::Tokenize() {
  if (m_cSaved != 0) *m_pCursor = m_cSaved;
  m_cSaved = 0;
  while (*m_pCursor != 0 && (m_Lookup.GetFlags(*m_pCursor) & eZuChSeparator) != 0) ++m_pCursor;
  const int nFlags = m_Lookup.GetFlags(*m_pCursor);
  if (*m_pCursor == 0 || (nFlags & eZuChComment) != 0) {
    SkipLine();
    return false;
  }

  ++m_Status.m_uTokenCount;
  m_iTokenDepth = m_iDepth;
  m_pToken = m_pCursor;
  m_Token.m_szText = m_pToken;
  if ((nFlags & eZuChString) != 0) {
    TokenizeString();
  } else if ((nFlags & eZuChBlockOpen) != 0) {
    TokenizeBrace(eZuTokenBlockOpen);
  } else if ((nFlags & eZuChBlockClose) != 0) {
    TokenizeBrace(eZuTokenBlockClose);
  } else {
    TokenizeWord();
  }
  return true;
}

void ZuParser::TokenizeBrace(eZuTokentype eType) {
  m_Token.m_eType = eType;
  ++m_pCursor;
  if (eType == eZuTokenBlockOpen) {
    ++m_iDepth;
  } else if (m_iDepth > 0) {
    --m_iDepth;
  }
}

void ZuParser::TokenizeString() {
  m_Token.m_eType = eZuTokenString;
  m_Token.m_szText = m_pToken = ++m_pCursor;
  while (*m_pCursor != 0 && (m_Lookup.GetFlags(*m_pCursor) & eZuChString) == 0) ++m_pCursor;
  if (*m_pCursor == 0) {
    SetFault(ParserErrorUnterminatedString);
  } else {
    *m_pCursor++ = 0;
  }
}

void ZuParser::TokenizeWord() {
  int nDigits = 0;
  int nLetters = 0;
  bool bFloat = false;
  const char cDecPoint = m_cDecPoint;  // a local: the writes to the line leave it alone
  char* p = m_pCursor;
  for (; *p != 0 && (m_Lookup.GetFlags(*p) & kAnyClass) == 0; ++p) {
    if (*p == cDecPoint) {
      *p = '.';
      bFloat = true;
    } else if (IsDigit(*p)) {
      ++nDigits;
    } else if ((*p == 'e' || *p == 'E') && nDigits > 0) {
      bFloat = true;  // an exponent, no letter
    } else if (IsLetter(*p)) {
      ++nLetters;
    }
  }

  if (nLetters > 0) {
    TokenizeKeyword(p);
  } else if (nDigits == 0) {
    m_Token.m_eType = eZuTokenOther;
  } else if (bFloat) {
    m_Token.m_eType = eZuTokenFloat;
    m_Token.m_dValue = ZuAtof(m_pToken, p);
  } else {
    m_Token.m_eType = eZuTokenInt;
    m_Token.m_iValue = ZuAtoi(m_pToken, p);
  }
  EndWord(p);
}

// A word with letters. With a sign in front inf and nan can be nothing but numbers; without one
// they are keywords too.
void ZuParser::TokenizeKeyword(char const* pEnd) {
  m_Token.m_eType = eZuTokenKeyword;
  m_Token.m_bNumberWord = IsNumberWord({m_pToken, pEnd});
  if (m_Token.m_bNumberWord) m_Token.m_dValue = ZuAtof(m_pToken, pEnd);
  if (IsLetter(*m_pToken)) return;
  if (m_Token.m_bNumberWord) {
    m_Token.m_eType = eZuTokenFloat;
  } else {
    SetFault(ParserErrorInvalidNumber);
  }
}

// Terminates the text of a word and leaves the cursor at what follows it.
//
// Required: nothing is put in the place of a }, which follows as a token of its own.
void ZuParser::EndWord(char* pEnd) {
  m_pCursor = pEnd;
  const int nFlags = m_Lookup.GetFlags(*pEnd);
  if (*pEnd == 0) return;
  if ((nFlags & eZuChSeparator) != 0) {
    *m_pCursor++ = 0;
  } else if ((nFlags & (eZuChComment | eZuChString | eZuChBlockOpen)) != 0) {
    m_cSaved = *pEnd;
    *pEnd = 0;
  }
}

void ZuParser::SetFault(eZuParserStatus eStatus) {
  m_Status.m_eStatus = eStatus;
  m_bFaultPending = true;
}
