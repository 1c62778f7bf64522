// The driver of keyword files: gives every item of a file to what was registered for it.
//
//   ZuReader reader("project.prj");
//   ZuReaderObject camera("CAMERA", Link(&list, &ZuCameraList::ReadFormatFull));
//   reader.RegisterObject(camera);
//   reader.DoProcess(false);
//   for (auto* p = reader.GetReaderErrorList().First(); p != nullptr; p = p->Next()) ...
//
// A file is a sequence of items: a keyword followed by nothing, by values or by a block { ... } of
// items. Keywords belong to the block whose handler registered them. reader_object.h tells how
// handlers read.
//
// Whatever a file holds, reading ends, memory stays sound, and everything complete before a fault
// is kept. At most 64 handlers are open at once, one inside the other; the next one is the fault 5.
// One reader, one thread.
#pragma once

#include <cstdint>
#include <fstream>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/foundation/list.h"
#include "zu/foundation/parser.h"
#include "zu/foundation/reader_object.h"
#include "zu/foundation/string.h"

// The keywords that are valid inside one block.
class ZU_API ZuReaderInstance : public ZuListnode, public TZuListHeader<ZuReaderObject> {
 public:
  explicit ZuReaderInstance(ZuReader* pReader) : m_pReader(pReader) {}

  ZuReader* GetReader() const { return m_pReader; }

 protected:
  ZuReader* m_pReader;
};

class ZU_API ZuReaderError : public ZuParserStatus, public ZuListnode {
 public:
  explicit ZuReaderError(ZuParserStatus const& status) : ZuParserStatus(status) {}

  ZuReaderError* Next() const { return static_cast<ZuReaderError*>(m_pNext); }
};

class ZU_API ZuReaderErrorList : public TZuListHeader<ZuReaderError> {
 public:
  using TZuListHeader<ZuReaderError>::operator=;
};

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

class ZU_API ZuReader {
 public:
  // Opens the file; a wide path is converted to UTF-8. A path that cannot be read gives the status
  // 2 at the first token, so one entry in the error list.
  explicit ZuReader(char const* szPath);
  explicit ZuReader(wchar_t const* szPath);

  // Required: not virtual. The two operations below come first in the table of virtual operations.
  ~ZuReader();
  ZuReader(ZuReader const&) = delete;
  ZuReader& operator=(ZuReader const&) = delete;

  // Called for an unknown keyword, which is in hand (GetParser().GetToken().m_szText, and its line
  // in GetStatus()), when SkipUnknownToken(false) was set, and for a fault other than the end of
  // the file, whose entry is the last of the error list. Not 0: go on. They call the link that was
  // set, with this reader as argument; 0 without one.
  //
  // A handler of unknown keywords reports, calls SkipUnknownValue() and returns 1; or it registers
  // the keyword, sets the parser's skip-next-parse flag and returns 1, and the keyword is read.
  virtual long UnknownTokenFound();
  virtual long ParserError();

  // Copies the keyword into the current block and returns the copy, which the reader owns.
  ZuReaderObject* RegisterObject(ZuReaderObject& object);

  // Reads items up to the } that ends the present block, or, with bContinueAtBlockEnd, behind it
  // too. The end of the file ends it always and is no error. Returns 1.
  //
  // A fault is entered in the error list. It ends the items among which it stands: those of a block
  // that registered keywords, with the reading going on behind that block, or those of the file,
  // and so the run. A fault among the plain values of a record stands among the items of which the
  // record is one, not in a block of its own: at the top of a file such a record ends the run, and
  // so does one whose first token is a fault, whose handler is not called. With an error handler
  // that returns not 0 reading goes on at the next token instead.
  //
  // No faults: what is wrong behind the values of a block, and in a block that nobody knows.
  //
  // Where memory ends, the run ends with the status 2, whose entry is the last of the error list if
  // there is room for it; records complete before stay, and no exception leaves.
  //
  // Required: on leaving, a last entry with status 5 is taken off the error list, also at the end
  // of an inner block. An application that needs every fault sets the error handler.
  int DoProcess(bool bContinueAtBlockEnd);

  // Reads on behind the } of the block in which the parser stands, or to the end of the file, over
  // whatever stands there. Adds a copy of the parser's status to the error list: one entry, with
  // the status 0 and the line for a block that nobody knows.
  void SkipCurrentBlock();

  // Skips what follows an unknown keyword: its block, or one token, but never a }.
  void SkipUnknownValue();

  // true, the default: unknown keywords are skipped by SkipUnknownValue(). false:
  // UnknownTokenFound() decides.
  void SkipUnknownToken(bool bSkip) { m_bSkipUnknownToken = bSkip; }
  // Simple mode: the file has no keywords, every token goes to the first object registered.
  void SetSimpleMode(bool bSimple) { m_bSimpleMode = bSimple; }
  void SetUnknownTokenHdl(Link const& link) { m_UnknownTokenHdl = link; }
  void SetParserErrorHdl(Link const& link) { m_ParserErrorHdl = link; }

  ZuParser& GetParser() { return m_Parser; }
  ZuParser& GetStreamParser() { return m_Parser; }
  std::ifstream& GetStream() { return m_Stream; }
  // The path as given, in UTF-8 if it was wide.
  String const& GetFileName() const { return m_strFileName; }

  int GetReadErrorCount() const { return m_ErrorList.Count(); }
  ZuReaderErrorList& GetReaderErrorList() { return m_ErrorList; }
  // Adds an entry with the present line and the status given; nothing is called.
  void AddError(eZuParserStatus eStatus);
  void AddError(eZuParserStatus eStatus, unsigned int uLine);
  // Writes the error list to the application's logger, at level 2; nothing for an empty list.
  void LogErrorsToApplicationLogger() const;

 protected:
  friend class ZuReaderObject;
  class HandlerScope;

  // Handlers open at once.
  static constexpr int kMaxHandlers = 64;

  void Open(char const* szPath);
  ZuParserToken const& Fetch() { return m_Parser.Fetch(m_Stream); }

  void NewInstance();
  void ReleaseInstance();
  ZuReaderObject* FindObject(char const* szKeyword) const;

  void DoProcessItems(bool bContinueAtBlockEnd);
  void DoProcessSimpleMode();
  bool ProcessItem(bool bContinueAtBlockEnd);
  bool ProcessKeyword();
  bool ProcessUnknown();
  void ProcessUnnamed();
  void Call(ZuReaderObject* pObject, bool bBlock);
  void CallWithValue(ZuReaderObject* pObject);
  void CallWithUnnamed(ZuReaderObject* pObject);
  void CallWithBlock(ZuReaderObject* pObject, std::int64_t iOuterDepth);

  bool HasFailed() const;
  std::int64_t NextDepth() const;
  bool ReturnToDepth(std::int64_t* piDepth, bool bContinueAtBlockEnd);
  void DropToDepth(std::int64_t iDepth);

  bool HandleFault(ZuParserStatus const& status);
  void EndWithoutMemory();
  void RemoveLastMisfit();

  std::ifstream m_Stream;
  ZuParser m_Parser;
  TZuListHeader<ZuReaderInstance> m_InstanceList;
  ZuReaderInstance* m_pCurrentInstance = nullptr;
  ZuReaderObject* m_pCurrentObject = nullptr;
  Link m_UnknownTokenHdl;
  Link m_ParserErrorHdl;
  ZuReaderErrorList m_ErrorList;
  bool m_bSkipUnknownToken = true;
  bool m_bSimpleMode = false;

  String m_strFileName;
  int m_iOpenHandlers = 0;
};

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
