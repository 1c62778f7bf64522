// The run of a reader over the items of its file.
//
// Two figures of the parser keep the run in step with the braces whatever handlers do: the depth
// behind the token in hand, and the depth in which that token stands. Each level of items knows its
// depth. Before each item the run compares: deeper means that something was left unread, which is
// dropped; less deep means that the } of this level has been given out.

#include <new>

#include "zu/foundation/reader.h"

// The call of one handler. It gives back at its end, also by an exception, what the call has
// changed: the keywords and blocks that the handler registered, the current object, the skip flag.
class ZuReader::HandlerScope {
 public:
  HandlerScope(ZuReader& reader, ZuReaderObject* pObject)
      : m_Reader(reader),
        m_pObject(pObject),
        m_pInstance(reader.m_pCurrentInstance),
        m_pLast(m_pInstance->Last()) {
    if (reader.m_iOpenHandlers >= kMaxHandlers) {
      reader.m_Parser.Raise(ParserErrorNotSpecifiedToken);
    }
    ++reader.m_iOpenHandlers;
  }
  HandlerScope(HandlerScope const&) = delete;
  HandlerScope& operator=(HandlerScope const&) = delete;

  ~HandlerScope() {
    --m_Reader.m_iOpenHandlers;
    while (m_Reader.m_pCurrentInstance != m_pInstance) m_Reader.ReleaseInstance();
    while (m_pInstance->Last() != m_pLast) delete m_pInstance->SubtractLast();
    m_Reader.m_pCurrentObject = m_pObject;
    if (m_bReturned) return;
    m_Reader.m_Parser.SkipNextParse(false);
    m_Reader.m_Parser.ClearUnused();
  }

  void Returned() { m_bReturned = true; }

 private:
  ZuReader& m_Reader;
  ZuReaderObject* m_pObject;
  ZuReaderInstance* m_pInstance;
  ZuReaderObject* m_pLast;
  bool m_bReturned = false;
};

int ZuReader::DoProcess(bool bContinueAtBlockEnd) {
  const eZuParserStatus eStatus = m_Parser.GetStatus().m_eStatus;
  if (eStatus == ParserStatusEOF || eStatus == ParserErrorStream) return 1;
  try {
    if (m_bSimpleMode) {
      DoProcessSimpleMode();
    } else {
      DoProcessItems(bContinueAtBlockEnd);
    }
  } catch (const std::bad_alloc&) {
    // The handlers that are open give back what they hold first.
    if (m_iOpenHandlers > 0) throw;
    EndWithoutMemory();
  }
  RemoveLastMisfit();
  return 1;
}

void ZuReader::DoProcessItems(bool bContinueAtBlockEnd) {
  std::int64_t iDepth = NextDepth();
  bool bContinue = true;
  while (bContinue) {
    try {
      bContinue = ReturnToDepth(&iDepth, bContinueAtBlockEnd) && ProcessItem(bContinueAtBlockEnd);
    } catch (ZuParserStatus const& status) {
      bContinue = HandleFault(status);
    }
  }
}

void ZuReader::DoProcessSimpleMode() {
  ZuReaderObject* pObject = m_pCurrentInstance->First();
  m_pCurrentObject = pObject;
  bool bContinue = pObject != nullptr;
  while (bContinue) {
    try {
      bContinue = !HasFailed() && Fetch().m_eType != eZuTokenEof;
      if (bContinue) CallWithUnnamed(pObject);
    } catch (ZuParserStatus const& status) {
      bContinue = HandleFault(status);
    }
  }
}

// The stream has failed and that was told.
bool ZuReader::HasFailed() const {
  return m_Parser.GetEnd() == ParserErrorStream && !m_Parser.IsFaultPending();
}

// The depth in which the next item stands.
std::int64_t ZuReader::NextDepth() const {
  return m_Parser.IsSkipNextParse() ? m_Parser.GetTokenDepth() : m_Parser.GetDepth();
}

// Makes the next token one of the depth of these items. False: there is none, the run of these
// items is over. A } that was given out while an item was read counts as the end of the block.
bool ZuReader::ReturnToDepth(std::int64_t* piDepth, bool bContinueAtBlockEnd) {
  if (HasFailed()) return false;
  if (NextDepth() != *piDepth) m_Parser.RaisePending();
  if (!m_Parser.IsFaultPending()) m_Parser.SetStatus(m_Parser.GetEnd());
  if (NextDepth() < *piDepth) {
    *piDepth = NextDepth();
    return bContinueAtBlockEnd;
  }
  if (NextDepth() > *piDepth) DropToDepth(*piDepth);
  return true;
}

// Values that nobody has asked for, of a newer writer for instance, are not looked at: a fault in
// them is none.
void ZuReader::DropToDepth(std::int64_t iDepth) {
  m_Parser.SkipNextParse(false);
  while (m_Parser.GetDepth() > iDepth) {
    if (m_Parser.FetchUnread(m_Stream).m_eType == eZuTokenEof) return;
  }
}

// One item, from its first token on. False ends the run of these items.
bool ZuReader::ProcessItem(bool bContinueAtBlockEnd) {
  switch (Fetch().m_eType) {
    case eZuTokenEof:
      m_Parser.Raise(ParserStatusEOF);
    case eZuTokenBlockClose:
      return bContinueAtBlockEnd;
    case eZuTokenKeyword:
      return ProcessKeyword();
    default:
      ProcessUnnamed();
      return true;
  }
}

bool ZuReader::ProcessKeyword() {
  ZuReaderObject* pObject = FindObject(m_Parser.GetToken().m_szText);
  if (pObject == nullptr) return ProcessUnknown();
  m_pCurrentObject = pObject;
  if (Fetch().m_eType != eZuTokenBlockOpen) {
    CallWithValue(pObject);
    return true;
  }
  const std::int64_t iOuterDepth = m_Parser.GetTokenDepth();
  Fetch();
  CallWithBlock(pObject, iOuterDepth);
  return true;
}

bool ZuReader::ProcessUnknown() {
  if (m_bSkipUnknownToken) {
    SkipUnknownValue();
    return true;
  }
  const std::uint64_t uBefore = m_Parser.GetMoveCount();
  m_Parser.ClearUnused();
  const bool bContinue = UnknownTokenFound() != 0;
  if (m_Parser.IsUnused()) m_Parser.SkipNextParse(true);
  // A word that is still unknown would be found again without end.
  const bool bSame = m_Parser.GetMoveCount() == uBefore;
  if (bSame && FindObject(m_Parser.GetToken().m_szText) == nullptr) m_Parser.SkipNextParse(false);
  return bContinue;
}

void ZuReader::ProcessUnnamed() {
  ZuReaderObject* pObject = FindObject("_NOT_DEFINED");
  if (pObject == nullptr) m_Parser.Raise(ParserErrorNotSpecifiedToken);
  m_pCurrentObject = pObject;
  if (m_Parser.GetToken().m_eType == eZuTokenBlockOpen) {
    CallWithBlock(pObject, m_Parser.GetTokenDepth());
  } else {
    CallWithUnnamed(pObject);
  }
}

void ZuReader::Call(ZuReaderObject* pObject, bool bBlock) {
  m_Parser.ClearUnused();
  if (!pObject->IsHandler()) {
    pObject->KeywordFound();
    return;
  }
  HandlerScope scope(*this, pObject);
  if (bBlock) NewInstance();
  pObject->KeywordFound();
  scope.Returned();
}

// The token in hand is the value behind the keyword. What the handler has moved to and not used
// belongs to the next item.
void ZuReader::CallWithValue(ZuReaderObject* pObject) {
  Call(pObject, false);
  if (m_Parser.IsUnused()) m_Parser.SkipNextParse(true);
}

// The same where the token in hand is the item itself: a handler that gives it back untouched would
// get it again without end.
void ZuReader::CallWithUnnamed(ZuReaderObject* pObject) {
  const std::uint64_t uBefore = m_Parser.GetMoveCount();
  CallWithValue(pObject);
  if (m_Parser.GetMoveCount() == uBefore) m_Parser.SkipNextParse(false);
}

// The first token of the block, or the { of a block without keyword, is in hand. A token in hand
// behind the block that a reader of values has moved to is kept; any other skip flag is cleared. A
// fault behind the values, still inside the block, goes with the rest of the block.
void ZuReader::CallWithBlock(ZuReaderObject* pObject, std::int64_t iOuterDepth) {
  Call(pObject, true);
  const bool bBehind = m_Parser.GetTokenDepth() <= iOuterDepth;
  m_Parser.SkipNextParse(bBehind && m_Parser.IsUnused());
  m_Parser.ClearUnused();
  if (!bBehind) m_Parser.DropPending();
  m_Parser.RaisePending();
}

// Enters a fault. True: go on behind the token in hand.
bool ZuReader::HandleFault(ZuParserStatus const& status) {
  m_Parser.SkipNextParse(false);
  m_Parser.ClearUnused();
  if (status.m_eStatus == ParserStatusEOF) {
    m_Parser.SetStatus(ParserStatusEOF);
    return false;
  }
  m_ErrorList.Add(new ZuReaderError(status));
  const bool bContinue = ParserError() != 0;
  if (m_Parser.GetEnd() != ParserStatusOK) {
    m_Parser.SetStatus(m_Parser.GetEnd());
    return false;
  }
  return bContinue;
}

void ZuReader::EndWithoutMemory() {
  m_Parser.SkipLine();
  m_Stream.setstate(std::ios::badbit);
  m_Parser.SetStatus(ParserErrorStream);
  try {
    AddError(ParserErrorStream);
    ParserError();
  } catch (const std::bad_alloc&) {
    // The status tells.
  }
}

void ZuReader::SkipUnknownValue() {
  switch (Fetch().m_eType) {
    case eZuTokenBlockOpen:
      m_Parser.SetStatus(ParserStatusOK);  // whatever was dropped before
      SkipCurrentBlock();
      break;
    case eZuTokenBlockClose:
      m_Parser.SkipNextParse(true);
      break;
    default:
      break;
  }
}

void ZuReader::SkipCurrentBlock() {
  AddError(m_Parser.GetStatus().m_eStatus);
  for (std::int64_t nOpen = 1; nOpen > 0;) {
    switch (m_Parser.FetchUnread(m_Stream).m_eType) {
      case eZuTokenBlockOpen:
        ++nOpen;
        break;
      case eZuTokenBlockClose:
        --nOpen;
        break;
      case eZuTokenEof:
        return;
      default:
        break;
    }
  }
}

// Required: an entry of this status at the end of the list goes. Lists of rows end by it, and
// applications count the rest.
void ZuReader::RemoveLastMisfit() {
  ZuReaderError const* pLast = m_ErrorList.Last();
  if (pLast == nullptr || pLast->m_eStatus != ParserErrorNotSpecifiedToken) return;
  delete m_ErrorList.SubtractLast();
}
