// A keyword of a file and the way in which records read their values.
//
//   int ZuObject::Read(ZuReaderObject* pObject) {   // 12 "name"
//     m_uId = pObject->TakeInt();
//     m_strName = pObject->TakeString();
//     return 1;
//   }
//
// Tokens. There is always one token "in hand". A handler is entered with its first one in hand:
// the token behind its keyword, or the first one inside the braces. Readers come in three kinds.
//
// 1. Readers of values, such as the one above, use the operations Take..., Skip and ReadRows. Each
//    takes the token in hand and moves on, so that such readers can be called one after the other.
//    They return with the first token behind their values in hand. In a block that is the block's
//    }. Where a keyword has no block (PHOTOID 1 "x"), it is the first token of the next item, and
//    the reader gives it to that item by itself. A reader of values never sets the skip-next-parse
//    flag: the next operation of a chain would then stand still.
//    {, } and the end of the file are never values and are never moved over: TakeValue counts them
//    as 0.0 and leaves them in hand, all others throw. Only TakeBlockOpen and TakeBlockClose move
//    over a brace; they are for braces that are part of the record.
//    A fault in the token behind the last value, such as 12abc, belongs to the next item. It waits
//    and is thrown when that token is taken.
// 2. Readers of keyword blocks register the block's keywords and call DoProcess, which uses the
//    token in hand first and returns at the block's }.
// 3. A handler of an application that only looks at the token in hand, or reads on through the
//    parser, has used up the last token it saw. It sets the skip-next-parse flag to give it back.
//
// Whatever a handler leaves unread of its block is dropped: the reader goes on behind the block's
// own }. Keywords die when the handler that registered them returns or throws, so they may be bound
// to its local variables.
#pragma once

#include <cstdint>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/foundation/listnode.h"
#include "zu/foundation/parser.h"
#include "zu/foundation/string.h"

class ZuReader;

class ZU_API ZuReaderObject : public ZuListnode {
 public:
  // Characters of a keyword that are kept.
  static constexpr int kKeywordSize = 29;

  // The keyword "_NOT_DEFINED", which gets all items that begin with no keyword: rows of values and
  // blocks without a name.
  ZuReaderObject();
  explicit ZuReaderObject(Link const& link);

  // A handler. The second link is kept for the application; the reader never calls it.
  ZuReaderObject(char const* szKeyword, Link const& link);
  ZuReaderObject(char const* szKeyword, Link const& link, Link const& link2);

  // A value of one token, stored in the target, which must live as long as the keyword. Another
  // kind of token than the one needed is the fault 5.
  ZuReaderObject(char const* szKeyword, int* piTarget);
  ZuReaderObject(char const* szKeyword, unsigned int* puTarget);  // 0 to 4294967295
  ZuReaderObject(char const* szKeyword, double* pdTarget);        // integer, float, inf or nan
  ZuReaderObject(char const* szKeyword, String* pstrTarget);
  ZuReaderObject(char const* szKeyword, bool* pbTarget);  // integer, true if not 0

  ZuReaderObject(ZuReaderObject const&) = default;
  ZuReaderObject& operator=(ZuReaderObject const&) = default;

  // Copies a keyword into the current block of the reader and returns the copy; null without
  // reader.
  ZuReaderObject* RegisterObject(ZuReaderObject& object);

  // Reads the items of a block up to its }, beginning with the token in hand. Returns 1.
  int DoProcess();

  // Case counts. A registered keyword longer than 29 characters is compared by its first 29.
  bool IsKeyword(char const* szKeyword) const;

  ZuReader* GetReader() const { return m_pReader; }
  ZuParser& GetStreamParser() const;
  Link const& GetLink() const { return m_Link; }
  Link const& GetLink2() const { return m_Link2; }

  // A keyword without data target: its handler, if it has one, is called.
  bool IsHandler() const { return m_eType == eZuTokenOther; }
  // Stores the token in hand, or calls the handler. Throws the parser's faults.
  void KeywordFound();

  ZuReaderObject* Next() const { return static_cast<ZuReaderObject*>(m_pNext); }

  // --- Readers of values ---------------------------------------------------------------------

  // The token in hand as a value, which is moved over. Another token is the fault 5 (the end of the
  // file 1) and stays in hand.
  int TakeInt();
  unsigned int TakeId();  // an integer from 0 to 4294967295, see ZuParserToken::GetId
  double TakeNumber();    // integer, float, inf or nan
  String TakeString();

  // The value of a number; any other token counts as 0.0. Braces and the end of the
  // file count as 0.0 too and stay in hand.
  double TakeValue();

  // Moves over the token in hand, whatever its kind. A brace or the end of the file throws as
  // above.
  void Skip();
  // Moves over numbers up to the first other token.
  void SkipNumbers();

  // Moves over a brace that belongs to the record.
  void TakeBlockOpen();
  void TakeBlockClose();
  // Moves over what is left of the block in which the token in hand stands and over its }: values
  // that a newer writer added, faulty ones and blocks too. The end of the file throws.
  void TakeRestOfBlock();

  bool IsBlockOpen() const { return Token().m_eType == eZuTokenBlockOpen; }
  bool IsBlockClose() const { return Token().m_eType == eZuTokenBlockClose; }
  bool IsEndOfFile() const { return Token().m_eType == eZuTokenEof; }
  // A } or the end of the file: no row can follow.
  bool IsEndOfRows() const { return IsBlockClose() || IsEndOfFile(); }

  // Reads a list of rows: calls readRow() until a } or the end of the file is in hand, which stays
  // there, or a row has moved over no token. readRow reads one row by Take... and stores it when it
  // is complete. A row cut by the } or the end of the file ends the list too, without an entry in
  // the error list; the row is lost. Any other misfit is thrown; rows stored before stay.
  template <class Row>
  void ReadRows(Row&& readRow);
  // One such row: false where a } or the end of the file, which stays in hand, has cut it.
  template <class Row>
  bool ReadRow(Row&& readRow);

  // Line of the token in hand, for a message.
  unsigned int GetLine() const;
  // Notes that a value had the wrong shape (a 4x4 matrix where 3x3 is needed): one entry with
  // status 4 in the error list; the error handler is not called and the reader goes on. The line is
  // that of the token in hand, or the one given.
  void AddShapeError();
  void AddShapeError(unsigned int uLine);

 protected:
  friend class ZuReader;

  ZuReaderObject(char const* szKeyword, eZuTokentype eType, void* pData, bool bBool);

  ZuParserToken const& Token() const { return GetStreamParser().GetToken(); }
  void Move();
  // Takes the throw of a row: true if a } or the end of the file has ended the list, with the
  // parser's status put back.
  bool EndsRows(ZuParserStatus const& status);
  std::uint64_t MoveCount() const { return GetStreamParser().GetMoveCount(); }

  ZuReader* m_pReader = nullptr;
  char m_szKeyword[kKeywordSize + 1];
  void* m_pData = nullptr;
  eZuTokentype m_eType = eZuTokenOther;  // eZuTokenOther: the handler is called
  bool m_bBool = false;                  // an integer goes to a bool
  bool m_bUnsigned = false;              // an integer goes to an unsigned int
  Link m_Link;
  Link m_Link2;
  bool m_bCut = false;  // the keyword was longer than what is kept
};

template <class Row>
void ZuReaderObject::ReadRows(Row&& readRow) {
  while (!IsEndOfRows()) {
    const std::uint64_t uBefore = MoveCount();
    if (!ReadRow(readRow) || MoveCount() == uBefore) return;
  }
}

template <class Row>
bool ZuReaderObject::ReadRow(Row&& readRow) {
  try {
    readRow();
    return true;
  } catch (ZuParserStatus const& status) {
    if (!EndsRows(status)) throw;
    return false;
  }
}
