#include "zu/cloud/cloud_detect.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <string_view>
#include <vector>

#include "zu/cloud/internal/strict_number.h"

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kBinaryMagic = "\x0D\xF0\xBE\xBA"sv;
constexpr std::size_t kFields = 8;  // of a line that are looked at

// Files of other kinds that are given for clouds, by their first bytes.
constexpr struct {
  std::string_view start;
  const char* szName;
} kOthers[] = {{"# .PCD"sv, "a PCD file"},
               {"PK\x03\x04"sv, "a ZIP archive"},
               {"\x1F\x8B"sv, "a file packed by gzip"},
               {"\x89PNG"sv, "an image"},
               {"\xFF\xD8\xFF"sv, "an image"},
               {"II*\0"sv, "an image"},
               {"MM\0*"sv, "an image"},
               {"%PDF"sv, "a PDF document"},
               {"<"sv, "an XML or HTML file"},
               {"{"sv, "a JSON or keyword file"},
               {"solid "sv, "an STL file"},
               {"OFF"sv, "an OFF file"},
               {"//"sv, "a table with a line of column names; without that line it could be read"}};

struct Line {
  std::string_view text;
  std::vector<ZuTextToken> fields;  // between blanks
};

bool IsNumber(const ZuTextToken& field, double* pdValue) {
  const char* pStop = nullptr;
  *pdValue = ZuAtof(field.pBegin, field.pEnd, &pStop);
  return pStop == field.pEnd;
}

// A number, also one with a decimal comma, which the reader refuses with its place.
bool LooksLikeNumber(const ZuTextToken& field) {
  std::string strText(field.pBegin, field.pEnd);
  if (std::count(strText.begin(), strText.end(), ',') == 1) {
    std::replace(strText.begin(), strText.end(), ',', '.');
  }
  double dValue = 0.0;
  return IsNumber({strText.data(), strText.data() + strText.size()}, &dValue);
}

bool IsWhole(const ZuTextToken& field) {
  return std::all_of(field.pBegin, field.pEnd, [](char c) { return c >= '0' && c <= '9'; });
}

// "110001+00000012 81..00+..." or "*110001+...": words of a total station.
bool IsGsiWord(const ZuTextToken& field) {
  const char* p = field.pBegin + (*field.pBegin == '*' ? 1 : 0);
  if (field.pEnd - p < 15) return false;
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  return isDigit(p[0]) && isDigit(p[1]) && (p[6] == '+' || p[6] == '-');
}

// The lines that hold something and are no comment. The last one, which may be cut, counts only
// when it is the first.
std::vector<Line> Lines(std::string_view head) {
  std::vector<Line> lines;
  while (!head.empty()) {
    const std::size_t uEnd = std::min(head.find('\n'), head.size());
    const bool bCut = uEnd == head.size();
    Line line{head.substr(0, uEnd), std::vector<ZuTextToken>(kFields)};
    head.remove_prefix(bCut ? uEnd : uEnd + 1);
    const std::size_t n = ZuSplitTokens(line.text.data(), line.text.data() + line.text.size(),
                                        ZuPtsDelimiter(), line.fields.data(), kFields);
    line.fields.resize(std::min(n, kFields));
    if (n == 0 || *line.fields[0].pBegin == '#' || (bCut && !lines.empty())) continue;
    lines.push_back(std::move(line));
  }
  return lines;
}

eZuCloudFile None(std::string* pstrLooksLike, std::string strText) {
  if (pstrLooksLike) *pstrLooksLike = std::move(strText);
  return eZuCloudFileNone;
}

// Lines of x y z, or ids in front of them: ids are whole numbers that differ, where coordinates
// have fractions.
eZuCloudFile NumbersOrIds(const std::vector<Line>& lines) {
  bool bWhole = true, bFractions = false, bDistinct = true;
  std::set<std::string_view> ids;
  for (const Line& line : lines) {
    if (line.fields.size() < 4) return eZuCloudFilePts;
    const ZuTextToken &first = line.fields[0], &fourth = line.fields[3];
    bWhole = bWhole && IsWhole(first);
    bFractions = bFractions || std::find(fourth.pBegin, fourth.pEnd, '.') != fourth.pEnd;
    const auto uSize = static_cast<std::size_t>(first.pEnd - first.pBegin);
    bDistinct = ids.insert(std::string_view(first.pBegin, uSize)).second && bDistinct;
  }
  if (!bWhole || !bDistinct) return eZuCloudFilePts;
  return bFractions ? eZuCloudFileCoordinates : eZuCloudFileEither;
}

eZuCloudFile TextKind(const std::vector<Line>& lines, std::string* pstrLooksLike) {
  const Line& first = lines[0];
  const auto& fields = first.fields;
  if (IsGsiWord(fields[0])) return None(pstrLooksLike, "a GSI file of a total station");
  if (fields.size() == 1 && IsWhole(fields[0])) {
    if (lines.size() > 1 && lines[1].fields.size() == 1 && IsWhole(lines[1].fields[0])) {
      return None(pstrLooksLike, "a PTX file, or a PTS file without points");
    }
    return eZuCloudFilePts;
  }
  const auto numbers = [&fields](std::size_t uFrom) {
    return std::all_of(fields.begin() + static_cast<std::ptrdiff_t>(uFrom), fields.end(),
                       LooksLikeNumber);
  };
  if (fields.size() >= 3 && numbers(0)) return NumbersOrIds(lines);
  if (fields.size() >= 4 && std::all_of(fields.begin() + 1, fields.begin() + 4, LooksLikeNumber)) {
    return eZuCloudFileCoordinates;  // a name in front
  }
  // Columns between commas or semicolons, below a line of their names or without one.
  const std::string_view separated = lines.size() > 1 ? lines[1].text : first.text;
  const bool bSigns = separated.find_first_not_of("0123456789+-.eE,; \t\r\"") == separated.npos;
  if (bSigns && std::count_if(separated.begin(), separated.end(),
                              [](char c) { return c == ',' || c == ';'; }) >= 2) {
    return eZuCloudFileCoordinates;
  }
  return None(pstrLooksLike, "text: " + ZuQuoted(first.text));
}

}  // namespace

eZuCloudFile ZuDetectCloudFile(const char* pHead, std::size_t uSize, std::string* pstrLooksLike) {
  std::string_view head(pHead, uSize);
  if (head.empty()) return None(pstrLooksLike, "an empty file");
  if (head.starts_with(kBinaryMagic)) return eZuCloudFileBinary;
  if (head.starts_with("ply\n"sv) || head.starts_with("ply\r"sv)) return eZuCloudFilePly;
  if (head.starts_with("LASF"sv)) return eZuCloudFileLas;
  if (head.starts_with("ASTM-E57"sv)) return eZuCloudFileE57;
  if (head.starts_with("\xEF\xBB\xBF"sv)) head.remove_prefix(3);
  for (const auto& other : kOthers) {
    if (head.starts_with(other.start)) return None(pstrLooksLike, other.szName);
  }
  const auto isControl = [](char c) {
    const auto u = static_cast<unsigned char>(c);
    return u < 32 && !(u >= 9 && u <= 13);
  };
  if (std::any_of(head.begin(), head.end(), isControl)) {
    return None(pstrLooksLike, "binary data of an unknown kind");
  }
  const auto lines = Lines(head);
  if (lines.empty()) return None(pstrLooksLike, "text without a line of numbers");
  return TextKind(lines, pstrLooksLike);
}
