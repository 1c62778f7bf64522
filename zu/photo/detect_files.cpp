#include "zu/photo/detect_files.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/string.h"

namespace {

constexpr size_t kHead = 65536;  // bytes looked at
constexpr size_t kLines = 40;    // lines of numbers looked at
constexpr unsigned char kCloudMagic[4] = {0x0D, 0xF0, 0xBE, 0xBA};

std::string ReadHead(const char* szPath) {
  std::string head(kHead, '\0');
  std::FILE* fp = szPath != nullptr ? std::fopen(szPath, "rb") : nullptr;
  const size_t nRead = fp != nullptr ? std::fread(head.data(), 1, kHead, fp) : 0;
  if (fp != nullptr) std::fclose(fp);
  head.resize(nRead);
  if (head.compare(0, 3, "\xEF\xBB\xBF") == 0) head.erase(0, 3);
  return head;
}

// Tokens of the keyword grammar: '{', '}', '"' for a string, '1' for a number, 'k' for a word.
struct Token {
  char cKind;
  std::string_view text;
};

class Scanner {
 public:
  explicit Scanner(std::string_view text) : m_text(text) {}

  bool Next(Token* pToken) {
    SkipBlanks();
    if (m_pos >= m_text.size()) return false;
    const size_t start = m_pos;
    const char c = m_text[m_pos++];
    if (c == '{' || c == '}') {
      *pToken = {c, m_text.substr(start, 1)};
    } else if (c == '"') {
      while (m_pos < m_text.size() && m_text[m_pos] != '"' && m_text[m_pos] != '\n') ++m_pos;
      *pToken = {'"', m_text.substr(start + 1, m_pos - start - 1)};
      if (m_pos < m_text.size()) ++m_pos;
    } else {
      while (m_pos < m_text.size() && !IsEnd(m_text[m_pos])) ++m_pos;
      *pToken = {std::isalpha(static_cast<unsigned char>(c)) != 0 ? 'k' : '1',
                 m_text.substr(start, m_pos - start)};
    }
    return true;
  }

 private:
  static bool IsEnd(char c) { return std::strchr(" \t\r\n{}\";!", c) != nullptr; }

  void SkipBlanks() {
    while (m_pos < m_text.size()) {
      const char c = m_text[m_pos];
      if (c == ';' || c == '!') {
        while (m_pos < m_text.size() && m_text[m_pos] != '\n') ++m_pos;
      } else if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
        ++m_pos;
      } else {
        return;
      }
    }
  }

  std::string_view m_text;
  size_t m_pos = 0;
};

bool IsProjectKeyword(std::string_view text) {
  for (const char* szKeyword : {"PHOTO", "ORTHOPHOTO", "MEASURE", "PLANE", "LOKAL"}) {
    if (text == szKeyword) return true;
  }
  return false;
}

// Blocks of keywords: a project when one of its keywords stands at the top level, otherwise a
// camera file.
eZuvoFile DetectKeywords(Scanner scanner, Token token) {
  int iDepth = 0;
  bool bCamera = false;
  do {
    if (token.cKind == '{') ++iDepth;
    if (token.cKind == '}') --iDepth;
    if (iDepth != 0 || token.cKind != 'k') continue;
    if (IsProjectKeyword(token.text)) return eZuvoFileProject;
    if (token.text == "CAMERA") bCamera = true;
  } while (scanner.Next(&token));
  return bCamera ? eZuvoFileCamera : eZuvoFileUnknown;
}

eZuvoFile DetectBlocks(std::string_view text) {
  Scanner scanner(text);
  Token token{};
  if (!scanner.Next(&token)) return eZuvoFileUnknown;
  if (token.cKind == 'k') return DetectKeywords(scanner, token);
  if (token.cKind == '"') {
    return scanner.Next(&token) && token.cKind == '{' ? eZuvoFileReseau : eZuvoFileUnknown;
  }
  if (token.cKind != '{' || !scanner.Next(&token)) return eZuvoFileUnknown;
  if (token.cKind == '"') return eZuvoFileDigitalCamera;
  return token.cKind == '1' ? eZuvoFileSimpleCamera : eZuvoFileUnknown;
}

bool IsNumber(std::string_view text) {
  bool bDigit = false;
  for (const char c : text) {
    if (std::isdigit(static_cast<unsigned char>(c)) != 0) {
      bDigit = true;
    } else if (std::strchr("+-.eE", c) == nullptr) {
      return false;
    }
  }
  return bDigit;
}

bool IsInteger(std::string_view text) {
  return IsNumber(text) && text.find_first_of(".eE") == std::string_view::npos;
}

std::vector<std::string_view> Fields(std::string_view line, const char* szDelimiters) {
  std::vector<std::string_view> fields;
  size_t pos = 0;
  while ((pos = line.find_first_not_of(szDelimiters, pos)) != std::string_view::npos) {
    size_t end = line.find_first_of(szDelimiters, pos);
    if (end == std::string_view::npos) end = line.size();
    fields.push_back(line.substr(pos, end - pos));
    pos = end;
  }
  return fields;
}

// A row of a coordinate file has an id or a name in front; a row of a text cloud starts with x.
// Four numbers with an integer in front are taken as id and coordinates, unless a line with the
// count alone stood before.
eZuvoFile DetectRows(std::string_view text) {
  bool bCount = false;
  size_t pos = 0;
  for (size_t n = 0; n < kLines && pos < text.size(); ++n) {
    size_t end = text.find('\n', pos);
    if (end == std::string_view::npos) end = text.size();
    const std::string_view line = text.substr(pos, end - pos);
    pos = end + 1;
    if (line.find('\0') != std::string_view::npos) return eZuvoFileUnknown;
    const auto fields = Fields(line, " \t\r,;");
    if (fields.empty() || fields[0][0] == '#') continue;
    if (fields.size() == 1 && IsInteger(fields[0])) {
      bCount = true;
      continue;
    }
    size_t nNumbers = 0;
    for (const auto& field : fields) nNumbers += IsNumber(field) ? 1 : 0;
    const bool bAllNumbers = nNumbers == fields.size();
    if (bAllNumbers && bCount) return eZuvoFilePts;
    if (bAllNumbers && fields.size() >= 3 && !IsInteger(fields[0])) return eZuvoFilePts;
    if (fields.size() >= 3 && nNumbers + 1 >= fields.size() && nNumbers >= 2) {
      return eZuvoFileCoordinate;
    }
  }
  return eZuvoFileUnknown;
}

bool IsGsi(std::string_view text) {
  const size_t pos = text.find_first_not_of(" \t\r\n*");
  if (pos == std::string_view::npos || text.size() - pos < 15) return false;
  const std::string_view word = text.substr(pos, 15);
  return IsInteger(word.substr(0, 2)) && (word[6] == '+' || word[6] == '-') &&
         word.substr(2, 4).find(' ') == std::string_view::npos &&
         (word[0] == '1' || word[0] == '4') && word[1] == '1';
}

eZuvoFile DetectHead(const std::string& head) {
  if (head.empty()) return eZuvoFileUnknown;
  if (head.size() >= 4 && std::memcmp(head.data(), kCloudMagic, 4) == 0) return eZuvoFileCloud;
  if (head.compare(0, 3, "ply") == 0 && (head.size() == 3 || head[3] == '\n' || head[3] == '\r')) {
    return eZuvoFilePly;
  }
  if (head.compare(0, 4, "LASF") == 0) return eZuvoFileLas;
  if (head.compare(0, 8, "ASTM-E57") == 0) return eZuvoFileE57;
  if (IsGsi(head)) return eZuvoFileGsi;
  const eZuvoFile eBlocks = DetectBlocks(head);
  return eBlocks != eZuvoFileUnknown ? eBlocks : DetectRows(head);
}

// A file for which there is no memory is unknown.
eZuvoFile Detect(const char* szPath) {
  const auto detect = [szPath] { return DetectHead(ReadHead(szPath)); };
  return zu::internal::OrWithoutMemory(detect, eZuvoFileUnknown);
}

}  // namespace

const char* GetZuvoFileText(eZuvoFile eType) {
  static const char* const texts[] = {
      "unknown file",        "coordinate file",    "GSI file", "project file", "camera file",
      "simple camera file",  "binary point cloud", "PTS file", "PLY file",     "reseau file",
      "digital camera file", "LAS file",           "E57 file"};
  const int i = eType;
  return i >= 0 && i < static_cast<int>(sizeof texts / sizeof texts[0]) ? texts[i] : texts[0];
}

ZuDetectZuvoFiles::ZuDetectZuvoFiles(const String& path) : m_eType(Detect(path.chars())) {}

ZuDetectZuvoFiles::ZuDetectZuvoFiles(const char* szPath) : m_eType(Detect(szPath)) {}
