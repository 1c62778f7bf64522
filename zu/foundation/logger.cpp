#include "zu/foundation/logger.h"

#include <algorithm>
#include <cstdarg>
#include <cwchar>

#include "zu/foundation/debug.h"
#include "zu/foundation/internal/c_format.h"

ZU_INSTANTIATE_LIST(ZuLoggerRef);

namespace {

constexpr int kMessageLength = 1500;  // [characters, terminator included]

constinit ZuMasterLogger* theMaster = nullptr;

// Copies at most n characters and a terminator.
void CopyCut(wchar_t* szTarget, wchar_t const* szText, std::size_t n) {
  std::size_t i = 0;
  for (; i < n && szText[i] != L'\0'; ++i) szTarget[i] = szText[i];
  szTarget[i] = L'\0';
}

// Replaces the first szToken in a buffer of nSize characters; what no longer fits is cut.
void ReplaceFirst(wchar_t* szInOut, std::size_t nSize, wchar_t const* szToken,
                  wchar_t const* szText) {
  wchar_t* const pToken = std::wcsstr(szInOut, szToken);
  if (pToken == nullptr) return;
  wchar_t const* const pTail = pToken + std::wcslen(szToken);
  const std::size_t nRoom = nSize - 1 - static_cast<std::size_t>(pToken - szInOut);
  const std::size_t nText = std::min(std::wcslen(szText), nRoom);
  const std::size_t nTail = std::min(std::wcslen(pTail), nRoom - nText);
  std::wmemmove(pToken + nText, pTail, nTail);
  std::wmemcpy(pToken, szText, nText);
  pToken[nText + nTail] = L'\0';
}

}  // namespace

int ZuLogger::Log(int, wchar_t const*) { return 0; }

ZuMasterLogger::ZuMasterLogger() { SetFormat(L"[$hour24:$minute:$second] $mesg"); }

ZuMasterLogger::~ZuMasterLogger() {
  if (theMaster == this) theMaster = nullptr;
}

void ZuMasterLogger::AddLogger(ZuLogger* pLogger) { m_loggers.Add(new ZuLoggerRef(pLogger)); }

void ZuMasterLogger::SubtractLogger(ZuLogger* pLogger) {
  for (ZuLoggerRef* p = m_loggers.First(); p != nullptr; p = p->Next()) {
    if (p->GetLogger() != pLogger) continue;
    for (Walk* pWalk = m_pWalk; pWalk != nullptr; pWalk = pWalk->m_pOuter) {
      if (pWalk->m_pNext == p) pWalk->m_pNext = p->Next();
    }
    m_subtracted.Add(m_loggers.Subtract(p));
    return;
  }
}

template <class Call>
void ZuMasterLogger::ForEachLogger(Call call) {
  // Puts the walk outside back, also when a logger throws.
  struct Restore {
    Walk** ppWalk;
    Walk* pOuter;
    ~Restore() { *ppWalk = pOuter; }
  };
  Walk walk = {m_loggers.First(), m_pWalk};
  const Restore restore = {&m_pWalk, m_pWalk};
  m_pWalk = &walk;
  while (walk.m_pNext != nullptr) {
    ZuLogger* const pLogger = walk.m_pNext->GetLogger();
    walk.m_pNext = walk.m_pNext->Next();
    if (pLogger != nullptr) call(*pLogger);
  }
}

void ZuMasterLogger::SetFormat(wchar_t const* szFormat) {
  if (szFormat) CopyCut(m_szFormat, szFormat, kFormatLength);
}

int ZuMasterLogger::Start() {
  int iResult = 0;
  ForEachLogger([&](ZuLogger& logger) { iResult |= logger.Start() != 0; });
  return iResult;
}

int ZuMasterLogger::Stop() {
  int iResult = 0;
  ForEachLogger([&](ZuLogger& logger) { iResult |= logger.Stop() != 0; });
  return iResult;
}

int ZuMasterLogger::Log(int iLevel, wchar_t const* szMessage) {
  wchar_t szLine[kLineLength];
  CopyCut(szLine, m_szFormat, kLineLength - 1);
  Format(szLine, szMessage ? szMessage : L"");
  ForEachLogger([&](ZuLogger& logger) {
    if (iLevel <= logger.m_iLevel) logger.Log(iLevel, szLine);
  });
  return 0;
}

void ZuMasterLogger::Format(wchar_t* szInOut, wchar_t const* szMessage) {
  const std::time_t now = std::time(nullptr);
  std::tm local = {};
#if defined(_WIN32)
  localtime_s(&local, &now);
#else
  localtime_r(&now, &local);
#endif
  FormatAt(szInOut, szMessage, local);
}

// The message comes last, so that nothing in it is taken for a token.
void ZuMasterLogger::FormatAt(wchar_t* szInOut, wchar_t const* szMessage, std::tm const& time) {
  const int iHour12 = time.tm_hour > 12 ? time.tm_hour - 12 : time.tm_hour;
  const struct {
    wchar_t const* szToken;
    wchar_t const* szForm;
    int iValue;
  } numbers[] = {{L"$day", L"%02d", time.tm_mday},        {L"$month", L"%02d", time.tm_mon + 1},
                 {L"$year", L"%4d", time.tm_year + 1900}, {L"$hour12", L"%02d", iHour12},
                 {L"$hour24", L"%02d", time.tm_hour},     {L"$minute", L"%02d", time.tm_min},
                 {L"$second", L"%02d", time.tm_sec}};
  for (const auto& number : numbers) {
    wchar_t szText[16];
    std::swprintf(szText, 16, number.szForm, number.iValue);
    ReplaceFirst(szInOut, kLineLength, number.szToken, szText);
  }
  ReplaceFirst(szInOut, kLineLength, L"$ampm", time.tm_hour >= 12 ? L"PM" : L"AM");
  ReplaceFirst(szInOut, kLineLength, L"$mesg", szMessage);
}

void ZuApplicationLogger::RegisterMasterLogger(ZuMasterLogger* pMaster) { theMaster = pMaster; }

ZuMasterLogger* ZuApplicationLogger::GetMasterLogger() { return theMaster; }

int ZuApplicationLogger::Log(int iLevel, wchar_t const* szFormat, ...) {
  if (theMaster == nullptr) return 0;
  wchar_t szText[kMessageLength];
  std::va_list args;
  va_start(args, szFormat);
  zu::internal::FormatInto(szText, kMessageLength, szFormat, args);
  va_end(args);
  return LogText(iLevel, szText);
}

int ZuApplicationLogger::LogText(int iLevel, wchar_t const* szText) {
  if (theMaster == nullptr) return 0;
  dbgprintf(L"Log: %ls", szText);
  theMaster->Log(iLevel, szText);
  return 0;
}
