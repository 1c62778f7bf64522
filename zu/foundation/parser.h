// The tokenizer of keyword files: cuts lines into words, numbers, strings and braces.
//
//   KEYWORD 12 0.5e3 "text" { ... }   ; the rest of a line behind ; or ! is a comment
//
// A token never spans lines. Faults are thrown as ZuParserStatus by value; ZuReader catches them.
// Lines may end with LF or CR LF, and a UTF-8 byte order mark at the start of a file is dropped.
// Numbers do not depend on the locale of the process. One thread at a time.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/locale.h"

// Classes of a byte, as bits.
enum eZuChClass : int {
  eZuChSeparator = 1,
  eZuChComment = 2,  // the rest of the line is dropped
  eZuChString = 4,   // delimits a string
  eZuChBlockOpen = 8,
  eZuChBlockClose = 16
};

// The class bits of every byte.
class ZU_API ZuChLookup {
 public:
  // Blank, tab and line end separate; ; and ! begin a comment; " delimits strings; { and }.
  ZuChLookup();

  // Sets or clears the bits nFlags of one byte, or of every byte of a terminated text.
  void SetFlags(char c, int nFlags) { m_aiFlags[static_cast<unsigned char>(c)] |= nFlags; }
  void SetFlags(char const* szBytes, int nFlags);
  void ClearFlags(char c, int nFlags) { m_aiFlags[static_cast<unsigned char>(c)] &= ~nFlags; }
  void ClearFlags(char const* szBytes, int nFlags);
  int GetFlags(char c) const { return m_aiFlags[static_cast<unsigned char>(c)]; }

 protected:
  int m_aiFlags[256];
};

enum eZuTokentype : int {
  eZuTokenOther = 0,    // a word with neither digit nor letter, such as a lone -
  eZuTokenInt = 1,      //
  eZuTokenFloat = 2,    // a number with a decimal point or an exponent; -inf, -nan
  eZuTokenNumber = 3,   // only asked for; an integer, a float, the words inf and nan meet it
  eZuTokenKeyword = 4,  //
  eZuTokenString = 5,   //
  eZuTokenBlockOpen = 6,
  eZuTokenBlockClose = 7,
  eZuTokenEof = 8
};

struct ZU_API ZuParserToken {
  eZuTokentype m_eType = eZuTokenOther;
  int m_iValue = 0;       // of an integer
  double m_dValue = 0.0;  // of a float
  // The token's text, in the line buffer: valid until the next token is read.
  //
  // Required: the text of a word that a } follows without a blank runs on past that }, so that such
  // a keyword is not recognised. Numbers are not hurt by it.
  char const* m_szText = "";

  // A keyword that is the word inf or nan: a number where one is asked for, with its value above.
  bool m_bNumberWord = false;

  bool IsFloat() const {
    return m_eType == eZuTokenFloat || (m_eType == eZuTokenKeyword && m_bNumberWord);
  }
  bool IsNumber() const { return m_eType == eZuTokenInt || IsFloat(); }
  // The value of a number; 0.0 for any other token.
  double GetNumber() const {
    return m_eType == eZuTokenInt ? m_iValue : IsFloat() ? m_dValue : 0.0;
  }
  // The value of an integer as an id: 0 to 4294967295 as they stand, more saturates there, one with
  // a minus is taken modulo 2^32. 0 for any other token.
  unsigned int GetId() const;
};

enum eZuParserStatus : int {
  ParserStatusOK = 0,
  ParserStatusEOF = 1,
  ParserErrorStream = 2,              // file cannot be read, or a line longer than the buffer
  ParserErrorUnterminatedString = 3,  // the line ends inside a string
  ParserErrorInvalidNumber = 4,       // a word with letters that starts with none, such as 12abc
  ParserErrorNotSpecifiedToken = 5    // another token than the one needed
};

// The name of a status, "ParserStatusOK" for example; "ParserStatus??" for an unknown value.
ZU_API char const* GetZuParserStatusText(eZuParserStatus eStatus);

// Where the parser stands and how it fares; thrown by value for a fault and at the end of the file.
struct ZU_API ZuParserStatus {
  unsigned int m_uLine = 0;        // line of the token in hand, from 1
  unsigned int m_uTokenCount = 0;  // tokens read so far
  eZuParserStatus m_eStatus = ParserStatusOK;
};

class ZU_API ZuParser {
 public:
  // Longest line, in characters, without its line end: one of the buffer's is the terminator.
  static constexpr int kLineSize = 8512;

  ZuParser();
  virtual ~ZuParser();
  ZuParser(ZuParser const&) = delete;
  ZuParser& operator=(ZuParser const&) = delete;

  // Reads the next token, which is then in hand. At the end of the stream that is an end-of-file
  // token, again and again, with status 1. Throws the status for faults 2, 3 and 4; a stream that
  // has failed throws at every call.
  ZuParserToken const& ParseForToken(std::istream& stream);

  // The same, but a set skip-next-parse flag is cleared and the token in hand stays.
  ZuParserToken const& Fetch(std::istream& stream);

  // Fetch for what nobody looks at: a fault in the token is dropped. A stream that has failed
  // throws.
  ZuParserToken const& FetchUnread(std::istream& stream);

  // Fetch for the readers of values (see reader_object.h): a fault in the new token is not thrown
  // here but waits until somebody takes that token or reads on. The token is marked as unused until
  // the next one is read.
  void MoveOn(std::istream& stream);

  // The token in hand, unchecked.
  ZuParserToken const& GetToken() const { return m_Token; }

  // The token in hand if it has the type, else throws status 5. At the end of the file status 1 is
  // thrown instead.
  //
  // Required: eZuTokenNumber asked for at the end of the file gives status 5 all the same.
  ZuParserToken const& GetToken(eZuTokentype eType);
  int GetTokenInt() { return GetToken(eZuTokenInt).m_iValue; }
  double GetTokenFloat() { return GetToken(eZuTokenFloat).m_dValue; }
  char const* GetTokenString() { return GetToken(eZuTokenString).m_szText; }
  double GetTokenNumber() { return GetToken(eZuTokenNumber).GetNumber(); }
  unsigned int GetTokenId() { return GetToken(eZuTokenInt).GetId(); }

  // Drops the rest of the line.
  void SkipLine();

  // With the flag set, the token in hand is given once more by the next Fetch.
  void SkipNextParse(bool bSkip) { m_bSkipNextParse = bSkip; }
  bool IsSkipNextParse() const { return m_bSkipNextParse; }

  ZuParserStatus const& GetStatus() const { return m_Status; }
  void SetStatus(eZuParserStatus eStatus) { m_Status.m_eStatus = eStatus; }

  // Switching a class on for a byte takes the other of the two away from it.
  void SetCommentChar(char c, bool bOn);
  void SetTokenseperator(char c, bool bOn);
  // The byte loses both classes and is the decimal point from now on.
  void SetDecPoint(char c);
  ZuChLookup& GetChLookup() { return m_Lookup; }

  // Blocks open behind the token in hand: { and } count as they are given out, whoever takes them.
  // A } too many counts nothing.
  std::int64_t GetDepth() const { return m_iDepth; }
  // Blocks open around the token in hand: { stands in the block around its own, } in the one it
  // closes.
  std::int64_t GetTokenDepth() const { return m_iTokenDepth; }
  // Tokens read so far, ends of file included.
  std::uint64_t GetMoveCount() const { return m_uMoveCount; }

  // The token in hand was read by MoveOn and not moved over.
  bool IsUnused() const { return m_bUnused; }
  void ClearUnused() { m_bUnused = false; }

  // Throws the fault of the token in hand if MoveOn has met one and nobody has been told.
  void RaisePending() {
    if (m_bFaultPending) ThrowPending();
  }
  bool IsFaultPending() const { return m_bFaultPending; }
  // Drops that fault; that of a failed stream is thrown.
  void DropPending();

  // ParseForToken with the fault as result instead of an exception: 0, 1 or the fault.
  eZuParserStatus ReadToken(std::istream& stream);

  // 1 or 2 once the stream has ended or failed, whatever the status is now; else 0.
  eZuParserStatus GetEnd() const { return m_eEnd; }

  // Sets the status and throws it.
  [[noreturn]] void Raise(eZuParserStatus eStatus);
  // Throws for a token in hand that is not the one needed: 1 at the end of the file, else 5.
  [[noreturn]] void RaiseMisfit();

 protected:
  // Takes the next token off the line; false at the line's end. A fault stands in the status and in
  // m_bFaultPending.
  bool Tokenize();
  void TokenizeBrace(eZuTokentype eType);
  void TokenizeString();
  void TokenizeWord();
  void TokenizeKeyword(char const* pEnd);
  void EndWord(char* pEnd);
  void SetFault(eZuParserStatus eStatus);
  [[noreturn]] void ThrowPending();
  eZuParserStatus ReadLine(std::istream& stream);

  // A line of the greatest length may have a byte order mark and a carriage return besides.
  static constexpr int kBufferSize = kLineSize + 8;

  char m_acLine[kBufferSize];
  char* m_pToken;     // start of the token in hand
  char* m_pCursor;    // first byte not read
  char m_cSaved = 0;  // byte that the terminator at the cursor stands for; 0: none
  char m_cDecPoint = '.';
  ZuChLookup m_Lookup;
  ZuParserStatus m_Status;
  ZuParserToken m_Token;
  bool m_bSkipNextParse = false;
  ZuCLocale m_Locale;

  bool m_bUnused = false;
  bool m_bFaultPending = false;
  eZuParserStatus m_eEnd = ParserStatusOK;
  std::int64_t m_iDepth = 0;
  std::int64_t m_iTokenDepth = 0;
  std::uint64_t m_uMoveCount = 0;
};
