#include "zu/project/log_line.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "zu/foundation/crc32.h"
#include "zu/foundation/numbers.h"
#include "zu/foundation/strict_number.h"

namespace {

constexpr std::int64_t kSecond = 1'000'000;  // [microseconds]
constexpr std::int64_t kDay = 86'400 * kSecond;
constexpr std::size_t kLongestWho = 200;  // [bytes]
constexpr char kHex[] = "0123456789abcdef";

constexpr std::int64_t DaysOf(int iYear, unsigned uMonth, unsigned uDay) {
  const std::chrono::year_month_day date{std::chrono::year(iYear), std::chrono::month(uMonth),
                                         std::chrono::day(uDay)};
  return std::chrono::sys_days(date).time_since_epoch().count();
}

// First and last moment that can be written.
constexpr std::int64_t kFirstTime = DaysOf(1, 1, 1) * kDay;
constexpr std::int64_t kLastTime = (DaysOf(9999, 12, 31) + 1) * kDay - 1;

// A whole number of so many digits, and of nothing else.
bool TakeDigits(std::string_view* pText, std::size_t uDigits, unsigned* puValue) {
  if (pText->size() < uDigits) return false;
  const char* const pEnd = pText->data() + uDigits;
  const auto result = std::from_chars(pText->data(), pEnd, *puValue);
  if (result.ec != std::errc() || result.ptr != pEnd) return false;
  pText->remove_prefix(uDigits);
  return true;
}

bool TakeChar(std::string_view* pText, char c) {
  if (pText->empty() || pText->front() != c) return false;
  pText->remove_prefix(1);
  return true;
}

// "2026-11-22"
bool TakeDate(std::string_view* pText, std::int64_t* piDays) {
  unsigned uYear = 0, uMonth = 0, uDay = 0;
  const bool bForm = TakeDigits(pText, 4, &uYear) && TakeChar(pText, '-') &&
                     TakeDigits(pText, 2, &uMonth) && TakeChar(pText, '-') &&
                     TakeDigits(pText, 2, &uDay);
  const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(uYear)),
                                         std::chrono::month(uMonth), std::chrono::day(uDay)};
  if (!bForm || uYear == 0 || !date.ok()) return false;
  *piDays = DaysOf(static_cast<int>(uYear), uMonth, uDay);
  return true;
}

// "16:28:30.125Z" to its end [microseconds]
bool TakeClock(std::string_view text, std::int64_t* piTime) {
  unsigned uHour = 0, uMinute = 0, uSecond = 0;
  if (!TakeDigits(&text, 2, &uHour) || !TakeChar(&text, ':') || !TakeDigits(&text, 2, &uMinute) ||
      !TakeChar(&text, ':') || !TakeDigits(&text, 2, &uSecond)) {
    return false;
  }
  std::int64_t iFraction = 0;
  if (TakeChar(&text, '.')) {
    std::int64_t iUnit = kSecond;
    unsigned uDigit = 0;
    while (iUnit > 1 && TakeDigits(&text, 1, &uDigit)) {
      iUnit /= 10;
      iFraction += uDigit * iUnit;
    }
    if (iUnit == kSecond) return false;
  }
  if (text != "Z" || uHour > 23 || uMinute > 59 || uSecond > 59) return false;
  *piTime = ((uHour * 60 + uMinute) * 60 + uSecond) * kSecond + iFraction;
  return true;
}

bool IsPlain(char c) {
  const auto u = static_cast<unsigned char>(c);
  return u > 0x20 && u != 0x7f && u != '%';
}

std::string EncodeWho(const std::string& strWho) {
  if (strWho.empty()) return "-";
  if (strWho == "-") return "%2d";
  std::string str;
  for (const char c : strWho) {
    if (IsPlain(c)) {
      str += c;
      continue;
    }
    const auto u = static_cast<unsigned char>(c);
    str += {'%', kHex[u >> 4U], kHex[u & 15U]};
  }
  return str;
}

bool DecodeWho(std::string_view text, std::string* pWho) {
  pWho->clear();
  if (text == "-") return true;
  while (!text.empty()) {
    if (text.front() != '%') {
      if (!IsPlain(text.front())) return false;  // is never written so
      pWho->push_back(text.front());
      text.remove_prefix(1);
      continue;
    }
    unsigned uByte = 0;
    if (text.size() < 3) return false;
    const auto result = std::from_chars(text.data() + 1, text.data() + 3, uByte, 16);
    if (result.ec != std::errc() || result.ptr != text.data() + 3) return false;
    pWho->push_back(static_cast<char>(uByte));
    text.remove_prefix(3);
  }
  return pWho->size() <= kLongestWho;
}

std::string CheckSum(std::string_view text) {
  std::uint32_t uCrc = ZuCalcCRC32(text.data(), text.size());
  std::string str(8, '0');
  for (auto p = str.rbegin(); p != str.rend(); ++p, uCrc >>= 4U) *p = kHex[uCrc & 15U];
  return str;
}

void AppendShortest(double d, std::string* pstr) {
  std::array<char, kZuShortestSize> acText;
  pstr->append(acText.data(), ZuFormatShortest(acText.data(), d));
}

}  // namespace

std::string ZuLogTimeText(std::int64_t iTime) {
  iTime = std::clamp(iTime, kFirstTime, kLastTime);
  const std::int64_t iDays = (iTime - kFirstTime) / kDay + kFirstTime / kDay;
  const std::int64_t iOfDay = iTime - iDays * kDay;
  const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(iDays))};
  const auto iSeconds = static_cast<int>(iOfDay / kSecond);
  const auto iFraction = static_cast<int>(iOfDay % kSecond);
  std::array<char, 64> acText;
  std::snprintf(acText.data(), acText.size(), "%04d-%02u-%02uT%02d:%02d:%02d",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), iSeconds / 3600, iSeconds / 60 % 60,
                iSeconds % 60);
  std::string strText = acText.data();
  if (iFraction != 0) {
    const bool bMilli = iFraction % 1000 == 0;
    std::snprintf(acText.data(), acText.size(), bMilli ? ".%03d" : ".%06d",
                  bMilli ? iFraction / 1000 : iFraction);
    strText += acText.data();
  }
  return strText + 'Z';
}

bool ZuParseLogTime(std::string_view text, std::int64_t* piTime) {
  std::int64_t iDays = 0, iOfDay = 0;
  if (!TakeDate(&text, &iDays)) return false;
  if (!text.empty() && !(TakeChar(&text, 'T') && TakeClock(text, &iOfDay))) return false;
  *piTime = iDays * kDay + iOfDay;
  return true;
}

std::int64_t ZuLogTimeNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

bool ZuIsLoggable(const ZuLoggedMeasurement& m) {
  return m.m_uPhoto != 0 && m.m_uPoint != 0 && std::isfinite(m.m_dX) && std::isfinite(m.m_dY) &&
         m.m_iTime >= kFirstTime && m.m_iTime <= kLastTime && m.m_strWho.size() <= kLongestWho;
}

std::string ZuLogLine(const ZuLoggedMeasurement& m) {
  std::string strLine = ZuLogTimeText(m.m_iTime) + ' ' + std::to_string(m.m_uPhoto) + ' ' +
                        std::to_string(m.m_uPoint) + ' ';
  AppendShortest(m.m_dX, &strLine);
  strLine += ' ';
  AppendShortest(m.m_dY, &strLine);
  strLine += ' ' + EncodeWho(m.m_strWho);
  return strLine + ' ' + CheckSum(strLine);
}

bool ZuParseLogLine(std::string_view line, ZuLoggedMeasurement* pMeasurement) {
  constexpr std::size_t kFields = 7;
  std::array<std::string_view, kFields> fields;
  std::string_view rest = line;
  for (std::size_t u = 0; u + 1 < kFields; ++u) {
    const std::size_t uBlank = rest.find(' ');
    if (uBlank == rest.npos) return false;
    fields[u] = rest.substr(0, uBlank);
    rest.remove_prefix(uBlank + 1);
  }
  fields[kFields - 1] = rest;
  ZuLoggedMeasurement m = {};
  const bool bGood =
      rest == CheckSum(line.substr(0, line.size() - std::min<std::size_t>(line.size(), 9))) &&
      fields[0].size() > 10 && ZuParseLogTime(fields[0], &m.m_iTime) &&
      ZuParseId(fields[1], &m.m_uPhoto) && ZuParseId(fields[2], &m.m_uPoint) &&
      ZuParseNumber(fields[3], &m.m_dX) && ZuParseNumber(fields[4], &m.m_dY) &&
      !fields[5].empty() && DecodeWho(fields[5], &m.m_strWho);
  if (!bGood) return false;
  m.m_uLine = pMeasurement->m_uLine;
  *pMeasurement = std::move(m);
  return true;
}
