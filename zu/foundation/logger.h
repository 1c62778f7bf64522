// Logging through one hub of the process.
//
//   ZuMasterLogger master;
//   master.AddLogger(&myLogger);
//   ZuApplicationLogger::RegisterMasterLogger(&master);
//   ZuApplicationLogger::Log(2, L"%d points in %s", nPoints, szFile);
//
// ZuApplicationLogger is the front door. It hands a message to the master that the application has
// registered, which formats it and hands it to every attached logger whose level is at least that
// of the message: a low number is an important message. Without a master nothing happens. Logging
// never fails towards the caller. One thread at a time.
#pragma once

#include <ctime>

#include "zu/export.h"
#include "zu/foundation/list.h"

// Where messages go. Applications derive from it.
class ZU_API ZuLogger {
 public:
  explicit ZuLogger(int iLevel = 3) : m_iLevel(iLevel) {}
  virtual int Start() { return 0; }
  virtual int Stop() { return 0; }
  // The text holds for the call alone.
  virtual int Log(int iLevel, wchar_t const* szText);
  virtual ~ZuLogger() = default;

  int GetLevel() const { return m_iLevel; }
  void SetLevel(int iLevel) { m_iLevel = iLevel; }

 protected:
  friend class ZuMasterLogger;

  int m_iLevel;  // the highest level that is still taken
};

// A logger on a master's list. The logger is not owned.
class ZU_API ZuLoggerRef : public ZuListnode {
 public:
  explicit ZuLoggerRef(ZuLogger* pLogger) : m_pLogger(pLogger) {}
  ZuLogger* GetLogger() const { return m_pLogger; }
  ZuLoggerRef* Next() const { return static_cast<ZuLoggerRef*>(m_pNext); }
  ZuLoggerRef* Previous() const { return static_cast<ZuLoggerRef*>(m_pPrev); }

 protected:
  ZuLogger* m_pLogger;
};

class ZU_API ZuMasterLogger : public ZuLogger {
 public:
  ZuMasterLogger();
  // The loggers stay alive. If this is the registered master, there is none afterwards. Not to be
  // called from a logger: the walk over the loggers needs their list to its end.
  ~ZuMasterLogger() override;
  ZuMasterLogger(ZuMasterLogger const&) = delete;
  ZuMasterLogger& operator=(ZuMasterLogger const&) = delete;

  // Puts a logger at the tail of the list. It must live until it is subtracted or the master ends.
  void AddLogger(ZuLogger* pLogger);
  // Takes its first entry off the list; nothing where it has none. Loggers may do so inside Log.
  void SubtractLogger(ZuLogger* pLogger);

  // Sets the form of a line, cut at kFormatLength characters; null is ignored. Replaced in it, each
  // at its first place alone: $day $month $year $hour12 $hour24 $minute $second $ampm $mesg.
  void SetFormat(wchar_t const* szFormat);

  // Call the same of every logger. 1 if any of them gave other than 0.
  int Start() override;
  int Stop() override;

  // Formats the message and hands it to every logger of at least that level. Lines are cut at
  // kLineLength - 1 characters. Returns 0.
  int Log(int iLevel, wchar_t const* szMessage) override;

 protected:
  static constexpr int kFormatLength = 200;  // [characters]
  static constexpr int kLineLength = 500;    // [characters, terminator included]

  // Expands a format, in a buffer of kLineLength characters, with a message and the local time.
  void Format(wchar_t* szInOut, wchar_t const* szMessage);
  static void FormatAt(wchar_t* szInOut, wchar_t const* szMessage, std::tm const& time);

  TZuListHeader<ZuLoggerRef> m_loggers;
  wchar_t m_szFormat[kFormatLength + 1];

 private:
  // A place in the list, which holds while loggers come and go. Walks nest: a logger may log.
  struct Walk {
    ZuLoggerRef* m_pNext;
    Walk* m_pOuter;
  };
  // Calls call(logger) for each, null ones left out.
  template <class Call>
  void ForEachLogger(Call call);

  Walk* m_pWalk = nullptr;                  // the innermost
  TZuListHeader<ZuLoggerRef> m_subtracted;  // entries taken off, kept until the master ends
};

// The front door. The application owns the master,
// which takes itself off at its end; null takes it off before.
class ZU_API ZuApplicationLogger {
 public:
  static void RegisterMasterLogger(ZuMasterLogger* pMaster);
  static ZuMasterLogger* GetMasterLogger();

  // Formats as wprintf does (%s: 8-bit text in UTF-8, %ls: wide text), cut at 1499 characters,
  // whatever the process locale. Returns 0.
  static int Log(int iLevel, wchar_t const* szFormat, ...);
  // Sends the text to the debug output too. Returns 0.
  static int LogText(int iLevel, wchar_t const* szText);
};

ZU_DECLARE_LIST(ZuLoggerRef);
