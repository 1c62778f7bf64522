// %YAML:1.0
// ---
// image_width: 640
// camera_matrix: !!opencv-matrix
//    rows: 3
//    cols: 3
//    dt: d
//    data: [ 5.3e+02, 0., 3.2e+02, 0., 5.3e+02, 2.4e+02, 0., 0., 1. ]
// image_names:
//    - "left01.jpg"
//
// What FileStorage writes of YAML, and what people write by hand: maps and sequences in blocks and
// in brackets, texts plain and quoted, comments. No anchors, no texts of several lines.
#include <cmath>
#include <limits>

#include "zu/exchange/internal/photo_block.h"
#include "zu/exchange/internal/storage_node.h"
#include "zu/foundation/number_text.h"
#include "zu/foundation/strict_number.h"

namespace zu::internal {

namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

void AppendUtf8(unsigned u, std::string* pText) {
  if (u < 0x80U) {
    *pText += static_cast<char>(u);
    return;
  }
  const int iMore = u < 0x800U ? 1 : u < 0x10000U ? 2 : 3;
  constexpr unsigned kFirst[] = {0, 0xc0U, 0xe0U, 0xf0U};
  *pText += static_cast<char>(kFirst[iMore] | u >> (6 * iMore));
  for (int i = iMore - 1; i >= 0; --i) {
    *pText += static_cast<char>(0x80U | (u >> (6 * i) & 0x3fU));
  }
}

class StorageTextReader {
 public:
  explicit StorageTextReader(const ZuExchangeFile& file) : m_file(file), m_text(file.strText) {}

  StorageNode Read() {
    if (m_text.substr(0, kByteOrderMark.size()) == kByteOrderMark) m_u = kByteOrderMark.size();
    m_uLineStart = m_u;
    if (Peek() == '%') SkipLine();
    SkipToContent();
    if (m_text.substr(m_u, 3) == "---") m_u += 3;
    StorageNode root = Value(-1);
    SkipToContent();
    if (m_u < m_text.size())
      Fail("is no YAML from here on", "names with values, in line with those above");
    if (root.eKind != StorageNode::Kind::Map)
      Fail("holds no names with values", "camera_matrix: ...");
    return root;
  }

 private:
  class Deeper {
   public:
    explicit Deeper(StorageTextReader* pReader) : m_pReader(pReader) {
      if (++pReader->m_iDepth > kStorageDepth)
        pReader->Fail("is nested too deep", "32 levels at most");
    }
    ~Deeper() { --m_pReader->m_iDepth; }
    Deeper(const Deeper&) = delete;
    Deeper& operator=(const Deeper&) = delete;

   private:
    StorageTextReader* m_pReader;
  };

  [[noreturn]] void Fail(const std::string& strText, const std::string& strRight) const {
    FailExchange(m_file.strName, m_uLine, strText, strRight);
  }

  char Peek(std::size_t uAhead = 0) const {
    return m_u + uAhead < m_text.size() ? m_text[m_u + uAhead] : '\n';
  }
  int Column() const {
    return static_cast<int>(std::min<std::size_t>(m_u - m_uLineStart, 1U << 20U));
  }
  bool AtEnd() const { return m_u >= m_text.size(); }
  static bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }
  static bool IsSpace(char c) { return IsBlank(c) || c == '\n'; }

  void SkipLine() {
    while (!AtEnd() && m_text[m_u] != '\n') ++m_u;
  }
  void SkipBlanks() {
    while (!AtEnd() && IsBlank(m_text[m_u])) ++m_u;
  }
  // To the next token, over line ends and comments; to the end at the end of the document.
  void SkipToContent() {
    for (; !AtEnd(); ++m_u) {
      if (m_text[m_u] == '#') SkipLine();
      if (AtEnd()) return;
      if (m_text[m_u] == '\n') {
        ++m_uLine;
        m_uLineStart = m_u + 1;
      } else if (!IsBlank(m_text[m_u])) {
        break;
      }
    }
    if (Column() == 0 && m_text.substr(std::min(m_u, m_text.size()), 3) == "...")
      m_u = m_text.size();
  }

  // "!!opencv-matrix", which the map behind it says, too.
  void SkipTag() {
    if (Peek() != '!') return;
    while (!IsSpace(Peek())) ++m_u;
    SkipBlanks();
  }

  unsigned Hexadecimal() {
    unsigned u = 0;
    for (int i = 0; i < 4; ++i) {
      const char c = Peek();
      const int iDigit = c >= '0' && c <= '9'   ? c - '0'
                         : c >= 'a' && c <= 'f' ? c - 'a' + 10
                         : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                : -1;
      if (iDigit < 0) Fail("a \\u without four digits", "\\u00e9");
      u = 16U * u + static_cast<unsigned>(iDigit);
      ++m_u;
    }
    return u;
  }

  void Escape(std::string* pText) {
    constexpr std::string_view kLetters = "ntrbf0", kMeant{"\n\t\r\b\f\0", 6};
    const char c = Peek();
    ++m_u;
    if (c != 'u') {
      const std::size_t u = kLetters.find(c);
      *pText += u == std::string_view::npos ? c : kMeant[u];
      return;
    }
    unsigned u = Hexadecimal();
    if (u >= 0xd800U && u < 0xdc00U && Peek() == '\\' && Peek(1) == 'u') {
      m_u += 2;
      u = 0x10000U + ((u - 0xd800U) << 10U) + ((Hexadecimal() - 0xdc00U) & 0x3ffU);
    }
    AppendUtf8(u, pText);
  }

  std::string Quoted() {
    const char cQuote = Peek();
    std::string strText;
    for (++m_u; Peek() != cQuote;) {
      if (AtEnd() || Peek() == '\n') Fail("a text without its closing quote", "one in its line");
      const char c = m_text[m_u++];
      if (c == '\\' && cQuote == '"') {
        Escape(&strText);
      } else {
        strText += c;
      }
    }
    ++m_u;
    return strText;
  }

  // Up to a comment, the end of the line, a name's colon, or in brackets what ends an item there.
  std::string_view Plain(bool bFlow, bool bName) {
    const std::size_t uStart = m_u;
    for (; Peek() != '\n'; ++m_u) {
      const char c = m_text[m_u];
      if (c == '#' && m_u > uStart && IsBlank(m_text[m_u - 1])) break;
      if (c == ':' && ((bFlow && bName) || IsSpace(Peek(1)))) break;
      if (bFlow && (c == ',' || c == ']' || c == '}')) break;
    }
    std::size_t uEnd = m_u;
    while (uEnd > uStart && IsBlank(m_text[uEnd - 1])) --uEnd;
    return m_text.substr(uStart, uEnd - uStart);
  }

  StorageNode Flow() {
    const Deeper deeper(this);
    StorageNode node;
    node.uLine = m_uLine;
    const bool bMap = Peek() == '{';
    node.eKind = bMap ? StorageNode::Kind::Map : StorageNode::Kind::Sequence;
    const char cEnd = bMap ? '}' : ']';
    ++m_u;
    for (;;) {
      SkipToContent();
      if (AtEnd()) Fail("a bracket is not closed", std::string(1, cEnd));
      if (Peek() == cEnd) break;
      std::string strName;
      if (bMap) {
        strName = Peek() == '"' || Peek() == '\'' ? Quoted() : std::string(Plain(true, true));
        SkipToContent();
        if (Peek() != ':') Fail("a name in brackets without its colon", "{ x: 1 }");
        ++m_u;
        SkipToContent();
      }
      StorageNode item = FlowValue();
      item.strName = std::move(strName);
      node.Add(std::move(item));
      SkipToContent();
      if (Peek() == ',') {
        ++m_u;
      } else if (Peek() != cEnd) {
        Fail("a comma or the closing bracket is missing", std::string(", or ") + cEnd);
      }
    }
    ++m_u;
    return node;
  }

  StorageNode FlowValue() {
    SkipTag();
    if (Peek() == '[' || Peek() == '{') return Flow();
    if (Peek() == '"' || Peek() == '\'') return TextNode(Quoted());
    return StorageScalar(Plain(true, false), m_uLine);
  }

  StorageNode TextNode(std::string strText) const {
    StorageNode node;
    node.eKind = StorageNode::Kind::Text;
    node.strText = std::move(strText);
    node.uLine = m_uLine;
    return node;
  }

  bool AtDash() const { return Peek() == '-' && IsSpace(Peek(1)); }

  // What stands behind a name or a dash of that column: in its line, or in lines further right; a
  // sequence may stand below its name, too.
  StorageNode Value(int iColumn) {
    const Deeper deeper(this);
    SkipBlanks();
    SkipTag();
    const std::uint64_t uLine = m_uLine;
    SkipToContent();
    const bool bBelow = m_uLine > uLine;
    if (AtEnd() ||
        (bBelow && Column() <= iColumn && !(Column() == iColumn && AtDash() && !m_bInDash))) {
      return {};
    }
    SkipTag();
    if (Peek() == '[' || Peek() == '{') return Flow();
    if (AtDash()) return BlockSequence(Column());
    if (Peek() == '|' || Peek() == '>' || Peek() == '&' || Peek() == '*') {
      Fail("a text of several lines or an anchor, which is not read", "a value in its line");
    }
    const int iOwn = Column();
    const std::uint64_t uOwn = m_uLine;
    const bool bQuoted = Peek() == '"' || Peek() == '\'';
    std::string strText = bQuoted ? Quoted() : std::string(Plain(false, false));
    SkipBlanks();
    if (Peek() == ':' && IsSpace(Peek(1))) return BlockMap(iOwn, std::move(strText));
    if (bQuoted) return TextNode(std::move(strText));
    return StorageScalar(strText, uOwn);
  }

  // Behind the first name, at its colon.
  StorageNode BlockMap(int iColumn, std::string strName) {
    StorageNode map;
    map.eKind = StorageNode::Kind::Map;
    map.uLine = m_uLine;
    for (;;) {
      ++m_u;
      const std::uint64_t uLine = m_uLine;
      const bool bFormer = m_bInDash;
      m_bInDash = false;
      StorageNode item = Value(iColumn);
      m_bInDash = bFormer;
      item.strName = std::move(strName);
      if (item.uLine == 0) item.uLine = uLine;
      map.Add(std::move(item));
      SkipToContent();
      if (AtEnd() || Column() != iColumn || AtDash()) return map;
      strName = Peek() == '"' || Peek() == '\'' ? Quoted() : std::string(Plain(false, true));
      SkipBlanks();
      if (Peek() != ':') Fail(ZuQuoted(strName) + " has no colon", "a name, a colon, a value");
    }
  }

  StorageNode BlockSequence(int iColumn) {
    StorageNode sequence;
    sequence.eKind = StorageNode::Kind::Sequence;
    sequence.uLine = m_uLine;
    const bool bFormer = m_bInDash;
    m_bInDash = true;
    do {
      ++m_u;
      sequence.Add(Value(iColumn));
      SkipToContent();
    } while (!AtEnd() && Column() == iColumn && AtDash());
    m_bInDash = bFormer;
    return sequence;
  }

  const ZuExchangeFile& m_file;
  std::string_view m_text;
  std::size_t m_u = 0, m_uLineStart = 0;
  std::uint64_t m_uLine = 1;
  int m_iDepth = 0;
  bool m_bInDash = false;  // a dash below is the next item's, not a sequence
};

}  // namespace

void StorageNode::Add(StorageNode&& item) {
  if (eKind == Kind::Sequence && item.eKind == Kind::Number) {
    numbers.push_back(item.dNumber);
  } else {
    children.push_back(std::move(item));
  }
}

const StorageNode* StorageNode::Find(std::initializer_list<const char*> names) const {
  for (const char* szName : names) {
    for (const StorageNode& child : children) {
      if (eKind == Kind::Map && child.strName == szName && child.eKind != Kind::None) return &child;
    }
  }
  return nullptr;
}

StorageNode StorageScalar(std::string_view text, std::uint64_t uLine) {
  StorageNode node;
  node.uLine = uLine;
  node.eKind = text.empty() || text == "~" || text == "null" ? StorageNode::Kind::None
                                                             : StorageNode::Kind::Text;
  node.strText = text;
  const bool bMinus = !text.empty() && text[0] == '-';
  const std::string_view word = text.substr(bMinus || (!text.empty() && text[0] == '+') ? 1 : 0);
  if (word.size() == 4 && word[0] == '.') {
    const std::string strLower{static_cast<char>(word[1] | 0x20), static_cast<char>(word[2] | 0x20),
                               static_cast<char>(word[3] | 0x20)};
    if (strLower == "nan" || strLower == "inf") {
      const double d = strLower == "nan" ? std::numeric_limits<double>::quiet_NaN()
                                         : std::numeric_limits<double>::infinity();
      node.eKind = StorageNode::Kind::Number;
      node.dNumber = bMinus ? -d : d;
      return node;
    }
  }
  if (ZuParseNumber(text, &node.dNumber)) node.eKind = StorageNode::Kind::Number;
  return node;
}

StorageNode ReadStorageText(const ZuExchangeFile& file) { return StorageTextReader(file).Read(); }

}  // namespace zu::internal
