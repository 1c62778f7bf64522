// A line of a measurement log: one measurement of a point in a photo.
//
//   2026-11-22T16:28:30.125Z 3 17 1204.25 873.5 A.%20Meyer 5d1c20aa
//
// Time (UTC, ISO 8601), photo, point, pixel x and y, who measured, and the CRC-32 of what stands
// before the last blank, as eight hexadecimal digits. Of who measured, blanks, '%' and control
// characters are written as %20 and so on; '-' alone is nobody.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "zu/export.h"

struct ZuLoggedMeasurement {
  std::int64_t m_iTime = 0;  // since 1970-01-01 UTC, leap seconds not counted [microseconds]
  unsigned m_uPhoto = 0, m_uPoint = 0;
  double m_dX = 0.0, m_dY = 0.0;  // [pixel]
  std::string m_strWho;           // UTF-8, at most 200 bytes; may be empty
  std::uint64_t m_uLine = 0;      // where it was read, from 1
};

// "2026-11-22T16:28:30.125Z", with 0, 3 or 6 decimals as needed. A time outside the years 1 to 9999
// is taken as the nearest one inside.
ZU_API std::string ZuLogTimeText(std::int64_t iTime);
// Reads such a time with 0 to 6 decimals; the date alone is its midnight. False, *piTime untouched,
// where the text is anything else or no date.
ZU_API bool ZuParseLogTime(std::string_view text, std::int64_t* piTime);
// The time of the system.
ZU_API std::int64_t ZuLogTimeNow();

// Ids from 1, finite pixels, a time from year 1 to 9999, at most 200 bytes of who measured.
ZU_API bool ZuIsLoggable(const ZuLoggedMeasurement& measurement);
// The line without its end. The measurement is loggable.
ZU_API std::string ZuLogLine(const ZuLoggedMeasurement& measurement);
// Takes a whole line without its end; m_uLine stays. False, nothing changed, for any other text or
// where the check sum is wrong.
ZU_API bool ZuParseLogLine(std::string_view line, ZuLoggedMeasurement* pMeasurement);
