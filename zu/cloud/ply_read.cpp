// PLY text: a header whose words are looked for in the first token of a line, then lines of x y z,
// three values that are passed over, red green blue. Lines are those of std::getline without a
// carriage return at their end, tokens those of boost::tokenizer at blank and tab. Data lines of
// nine plain values are taken apart in one pass; every other line goes the long way, with the same
// result.
#include <algorithm>
#include <boost/tokenizer.hpp>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <istream>
#include <string>

#include "zu/cloud/internal/line_source.h"
#include "zu/cloud/internal/plain_scan.h"
#include "zu/cloud/internal/point_feed.h"
#include "zu/cloud/internal/stdio_file.h"
#include "zu/cloud/internal/token_split.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/foundation/debug.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/locale.h"
#include "zu/foundation/unicode.h"

namespace {

constexpr std::size_t kTokens = 9;        // of a data line that is used, at least
constexpr std::uint64_t kLeastLine = 18;  // bytes of the shortest such line, its end included

struct StreamInput {
  std::istream* pStream;
  std::size_t Read(char* pTarget, std::size_t uSize) {
    pStream->read(pTarget, static_cast<std::streamsize>(uSize));
    return static_cast<std::size_t>(pStream->gcount());
  }
};

using Source = ZuLineSource<StreamInput>;

// Bytes from the position of a stream to its end; 0 when it cannot be told.
std::uint64_t StreamRest(std::istream& stream) {
  const std::istream::pos_type begin = stream.tellg();
  if (begin == std::istream::pos_type(-1)) {
    stream.clear();
    return 0;
  }
  stream.seekg(0, std::ios::end);
  const std::istream::pos_type end = stream.tellg();
  stream.clear();
  stream.seekg(begin);
  return end > begin ? static_cast<std::uint64_t>(end - begin) : 0;
}

// Whether the text holds a word, letters in either case. Words are lower case.
bool HoldsWord(const std::string& strText, const char* szWord) {
  const auto same = [](char a, char b) {
    return (a >= 'A' && a <= 'Z' ? a + ('a' - 'A') : a) == b;
  };
  return std::search(strText.begin(), strText.end(), szWord, szWord + std::strlen(szWord), same) !=
         strText.end();
}

// What the lines so far have told.
struct Header {
  bool bEnded = false;
  std::uint64_t uProperties = 0;  // of all elements together
};

// A line of the header; counts are announced to the feed.
void ReadHeaderLine(const char* pBegin, const char* pEnd, std::uint64_t uRest, Header& header,
                    ZuPointFeed& feed) {
  const boost::char_separator<char> separator(" \t");
  const boost::tokenizer<boost::char_separator<char>, const char*> tokens(pBegin, pEnd, separator);
  std::string strFirst, strLast;
  for (auto it = tokens.begin(); it != tokens.end(); ++it) {
    if (it == tokens.begin()) strFirst = *it;
    strLast = *it;
  }
  // The first word that fits decides; the ends of the list do nothing.
  if (HoldsWord(strFirst, "ply") || HoldsWord(strFirst, "format")) return;
  if (HoldsWord(strFirst, "element")) {
    const int iCount = ZuAtoi(strLast.c_str());
    if (iCount > 0) feed.Expect(static_cast<std::uint64_t>(iCount), uRest / kLeastLine + 1);
  } else if (HoldsWord(strFirst, "faces")) {
    return;
  } else if (HoldsWord(strFirst, "property")) {
    ++header.uProperties;
  } else if (HoldsWord(strFirst, "end_header")) {
    header.bEnded = true;
  }
}

// Volatile: g++ 12 treats the two conversions of neighbouring values as nothing (-O2, vectorised).
double RoundedToFloat(double dValue) {
  const volatile float fValue = static_cast<float>(dValue);
  return static_cast<double>(fValue);
}

// What a data line holds.
struct PointOnLine {
  double x, y, z;
  std::uint32_t uRed, uGreen, uBlue;
  void AddTo(ZuPointFeed& feed) const {
    feed.Add(RoundedToFloat(x), RoundedToFloat(y), RoundedToFloat(z),
             uRed | uGreen << 8 | uBlue << 16);
  }
};

void ReadDataLine(const char* pBegin, const char* pEnd, std::uint64_t uProperties,
                  ZuPointFeed& feed) {
  ZuTextToken t[kTokens];
  const std::size_t uCount = ZuSplitTokens(pBegin, pEnd, ZuPlyDelimiter(), t, kTokens);
  if (uCount < kTokens || uCount < uProperties) return;
  const PointOnLine point = {t[0].AsDouble(), t[1].AsDouble(), t[2].AsDouble(),
                             t[6].AsByte(),   t[7].AsByte(),   t[8].AsByte()};
  point.AddTo(feed);
}

// Moves over a token that blanks stand in front of and behind.
[[gnu::always_inline]] inline bool SkipToken(const char** pp) {
  ZuPlainScan::Blanks(pp);
  const char* const pToken = *pp;
  return ZuPlainScan::Token(pp) && *pp > pToken && ZuPlainScan::IsBlank(**pp);
}

[[gnu::always_inline]] inline bool TakeDouble(const char** pp, double* pdValue) {
  ZuPlainScan::Blanks(pp);
  return ZuPlainScan::Double(pp, pdValue) && ZuPlainScan::IsBlank(**pp);
}

[[gnu::always_inline]] inline bool TakeByte(const char** pp, std::uint32_t* puByte) {
  ZuPlainScan::Blanks(pp);
  return ZuPlainScan::Byte(pp, puByte);
}

// Reads a line of nine tokens with plain numbers; returns its line end, null for any other line.
const char* ReadPlainLine(const char* p, PointOnLine& point) {
  if (!TakeDouble(&p, &point.x) || !TakeDouble(&p, &point.y) || !TakeDouble(&p, &point.z)) {
    return nullptr;
  }
  if (!SkipToken(&p) || !SkipToken(&p) || !SkipToken(&p)) return nullptr;
  if (!TakeByte(&p, &point.uRed) || !ZuPlainScan::IsBlank(*p)) return nullptr;
  if (!TakeByte(&p, &point.uGreen) || !ZuPlainScan::IsBlank(*p)) return nullptr;
  if (!TakeByte(&p, &point.uBlue)) return nullptr;
  if (*p != '\n') ZuPlainScan::Blanks(&p);
  if (*p == '\r') ++p;
  return *p == '\n' ? p : nullptr;
}

// Adds the points of the plain lines that stand whole in the text in hand.
void AddPlainLines(Source& source, ZuPointFeed& feed) {
  const char* pBegin = source.Begin();
  PointOnLine point;
  for (;;) {
    const char* const pEnd = ReadPlainLine(pBegin, point);
    if (!pEnd || pEnd == source.End()) break;
    point.AddTo(feed);
    pBegin = pEnd + 1;
  }
  source.SetBegin(pBegin);
}

void ReadPoints(Source& source, ZuPointFeed& feed, ZuProgress& progress) {
  Header header;
  while (const char* pEnd = ZuNextLine(source, progress)) {
    const char* const pBegin = source.Begin();
    const char* const pText = pEnd > pBegin && pEnd[-1] == '\r' ? pEnd - 1 : pEnd;
    if (!header.bEnded) {
      ReadHeaderLine(pBegin, pText, source.GetRest(), header, feed);
    } else if (header.uProperties >= kTokens) {
      ReadDataLine(pBegin, pText, header.uProperties, feed);
    }
    source.SetBegin(pEnd + 1);
    if (header.bEnded && header.uProperties == kTokens) AddPlainLines(source, feed);
  }
}

}  // namespace

ZuPointCloud* ZuPointCloudContainer::ObsolteReadPlyFile(std::istream& stream) {
  ZuProgress progress("Reading PLY file");
  ZuPointCloud* pCloud = nullptr;
  try {
    const ZuCLocale locale;
    pCloud = AddCloud();
    ZuPointFeed feed(*pCloud);
    Source source(StreamInput{&stream}, StreamRest(stream));
    ReadPoints(source, feed, progress);
  } catch (...) {
    dbgprintf("Error reading PLY: points read before memory ended are kept");
  }
  m_bStopped = progress.IsStopped();
  UpdateCenterAndBox(pCloud);
  return pCloud;
}

ZuPointCloud* ZuPointCloudContainer::ObsolteReadPlyFile(const char* szPath) {
  if (!szPath) return nullptr;
  ZuPointCloud* pCloud = nullptr;
  const auto read = [&] {
    std::ifstream stream(szPath, std::ios::binary);
    stream.peek();
    if (!stream.is_open() || stream.bad()) return pCloud;  // bad: a folder
    stream.clear();
    pCloud = ObsolteReadPlyFile(stream);
    if (pCloud) pCloud->SetName(ZuCloudName(szPath));
    return pCloud;
  };
  zu::internal::OrWithoutMemory(read, pCloud);
  return pCloud;  // also without the name
}

ZuPointCloud* ZuPointCloudContainer::ObsolteReadPlyFile(const wchar_t* szPath) {
  const auto read = [&] { return ObsolteReadPlyFile(UniToAnsi(szPath)()); };
  return zu::internal::OrWithoutMemory<ZuPointCloud*>(read, nullptr);
}
