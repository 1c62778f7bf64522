#include "zu/project/internal/merge_kept.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <tuple>
#include <vector>

#include "zu/foundation/internal/characters.h"
#include "zu/foundation/number_text.h"
#include "zu/project/keyword_block.h"

namespace zu::internal {

namespace {

constexpr std::size_t kIndent = 4;  // blanks a level
constexpr std::size_t kLongestLine = 8511;

// A block without a record of its own, which is written only where it has any content.
constexpr char kOptionalBlock[] = "PARALLELDEF";

// The text of an unknown keyword without the blanks behind it.
std::string_view RawText(const ZuUnknownKeyword& word) {
  const std::string_view text = word.m_strText;
  return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

// What stands beside one thing.
struct Beside {
  std::vector<std::string_view> above, end;
  std::string_view open, behind;
};

// The comments of a block by what they belong to.
class CommentTable {
 public:
  CommentTable() = default;
  explicit CommentTable(const std::vector<ZuFileComment>& comments) {
    for (const ZuFileComment& c : comments) {
      Beside& beside = m_beside[{c.m_strKeyword, c.m_uNumber, c.m_uRow}];
      std::string_view& line = c.m_ePlace == eZuCommentOpen ? beside.open : beside.behind;
      const bool bOnLine = c.m_ePlace == eZuCommentOpen || c.m_ePlace == eZuCommentBehind;
      if (bOnLine && line.empty()) {
        line = c.m_strText;
      } else {
        (c.m_ePlace == eZuCommentEnd ? beside.end : beside.above).push_back(c.m_strText);
      }
      if (c.m_uRow > 0) m_rows[{c.m_strKeyword, c.m_uNumber}].emplace_back(c.m_uRow, c.m_uId);
    }
  }

  // Each once; empty the second time.
  Beside Take(std::string_view keyword, unsigned uNumber, unsigned uRow = 0) {
    const auto found = m_beside.find({keyword, uNumber, uRow});
    if (found == m_beside.end()) return {};
    Beside beside = std::move(found->second);
    m_beside.erase(found);
    return beside;
  }
  // Rows with comments and their ids.
  std::vector<std::pair<unsigned, unsigned>> RowsOf(std::string_view keyword,
                                                    unsigned uNumber) const {
    const auto found = m_rows.find({keyword, uNumber});
    return found != m_rows.end() ? found->second : std::vector<std::pair<unsigned, unsigned>>();
  }
  bool Has(const ZuFileComment& c) const {
    return m_beside.count({c.m_strKeyword, c.m_uNumber, c.m_uRow}) != 0;
  }

 private:
  std::map<std::tuple<std::string_view, unsigned, unsigned>, Beside> m_beside;
  std::map<std::pair<std::string_view, unsigned>, std::vector<std::pair<unsigned, unsigned>>>
      m_rows;
};

void AppendAll(const ZuKeywordBlock& block, std::vector<std::string_view>* pLines) {
  for (const ZuFileComment& comment : block.m_comments) pLines->push_back(comment.m_strText);
  for (const ZuUnknownKeyword& word : block.m_unknown) {
    for (const ZuFileComment& comment : word.m_comments) pLines->push_back(comment.m_strText);
  }
  for (const ZuKeywordBlock& inner : block.m_blocks) AppendAll(inner, pLines);
}

// Lines one behind the other, without an end behind the last.
class LineWriter {
 public:
  explicit LineWriter(std::ostream& stream) : m_stream(stream) {}

  void Line(std::string_view line) {
    if (!m_bFirst) m_stream.put('\n');
    m_bFirst = false;
    Write(line);
  }
  // A text that was a line, or the end of one: with the indentation where the line then fits.
  void Indented(std::string_view text, std::size_t uLevel) {
    const std::size_t uFirst = std::min(text.find('\n'), text.size());
    const std::size_t uIndent = kIndent * uLevel + uFirst > kLongestLine ? 0 : kIndent * uLevel;
    Line(std::string(uIndent, ' ').append(text));
  }
  void Comments(const std::vector<std::string_view>& comments, std::size_t uLevel) {
    for (const std::string_view text : comments) Indented(text, uLevel);
  }
  // Lines of a record, those of its comments above, its comment behind the last one.
  void Lines(const std::string_view* pBegin, const std::string_view* pEnd, const Beside& beside,
             std::size_t uLevel) {
    Comments(beside.above, uLevel);
    const bool bFits = Fits(pEnd[-1], beside.behind);
    if (!bFits) Indented(beside.behind, uLevel);
    for (; pBegin != pEnd; ++pBegin) Line(*pBegin);
    if (bFits) Behind(beside.behind);
  }
  void Behind(std::string_view comment) {
    if (comment.empty()) return;
    m_stream.put(' ');
    Write(comment);
  }
  static bool Fits(std::string_view line, std::string_view comment) {
    return comment.empty() || line.size() + 1 + comment.size() <= kLongestLine;
  }
  void Unknown(const ZuUnknownKeyword& word, std::size_t uLevel) {
    const Beside beside = CommentTable(word.m_comments).Take("", 1);
    const std::string_view text = RawText(word);
    const std::string_view last = text.substr(text.rfind('\n') + 1);
    const bool bFits = kIndent * uLevel + last.size() + beside.behind.size() < kLongestLine;
    Comments(beside.above, uLevel);
    if (!bFits && !beside.behind.empty()) Indented(beside.behind, uLevel);
    Indented(text, uLevel);
    if (bFits) Behind(beside.behind);
  }

 private:
  void Write(std::string_view text) {
    m_stream.write(text.data(), static_cast<std::streamsize>(text.size()));
  }

  std::ostream& m_stream;
  bool m_bFirst = true;
};

// The lines of one written item: its keyword's, then what belongs to it.
struct Item {
  std::string_view keyword;
  std::size_t uBegin, uEnd;
};

class Merger {
 public:
  Merger(std::string_view text, LineWriter* pOut) : m_out(*pOut) {
    for (std::size_t u = 0; u <= text.size();) {
      const std::size_t uEnd = std::min(text.find('\n', u), text.size());
      m_lines.push_back(text.substr(u, uEnd - u));
      u = uEnd + 1;
    }
  }

  // The lines of a block from its keyword's to that of its }, whose items stand at the level.
  void Block(std::size_t uBegin, std::size_t uEnd, std::size_t uLevel,
             const ZuKeywordBlock& block) {
    CommentTable comments(block.m_comments);
    const std::vector<Item> items = Items(uBegin + 1, uEnd - 1, uLevel);
    Beside own = comments.Take("", 1);
    if (items.empty()) {  // values, or rows alone
      const Beside list = comments.Take(block.m_strKeyword, 1);
      if (own.open.empty()) own.open = list.open;
      own.end.insert(own.end.begin(), list.end.begin(), list.end.end());
    }
    Open(uBegin, uEnd, uLevel, own);
    if (items.empty()) {
      Rows(uBegin + 1, uEnd - 1, uLevel, block, {block.m_strKeyword, 1}, &comments);
    }
    std::map<std::string_view, std::size_t> last;  // item of each keyword
    for (std::size_t i = 0; i < items.size(); ++i) last[items[i].keyword] = i;
    Unknown(block, uLevel,
            [](const ZuUnknownKeyword& word) { return word.m_strAfter.empty() && HasValue(word); });
    std::map<std::string_view, unsigned> count;
    for (std::size_t i = 0; i < items.size(); ++i) {
      const std::string_view keyword = items[i].keyword;
      OneItem(items[i], uLevel, block, ++count[keyword], &comments);
      if (last[keyword] != i) continue;
      Unknown(block, uLevel, [keyword](const ZuUnknownKeyword& word) {
        return word.m_strAfter == keyword && HasValue(word);
      });
    }
    Unknown(block, uLevel, [&last](const ZuUnknownKeyword& word) {
      return !word.m_strAfter.empty() && HasValue(word) && last.find(word.m_strAfter) == last.end();
    });
    const ZuKeywordBlock* const pOptional = Inner(block, kOptionalBlock, 1);
    if (HasKept(pOptional) && count[kOptionalBlock] == 0) Unwritten(*pOptional, uLevel);
    Unknown(block, uLevel, [](const ZuUnknownKeyword& word) { return !HasValue(word); });
    for (const ZuFileComment& comment : block.m_comments) {  // of what is not written
      if (comments.Has(comment)) m_out.Indented(comment.m_strText, uLevel);
    }
    Close(uEnd, uLevel, own);
  }

  std::size_t LineCount() const { return m_lines.size(); }

 private:
  using Key = std::pair<std::string_view, unsigned>;

  // An item begins with its keyword at the indentation of the level; a text that has a line of its
  // own stands at the margin.
  bool Begins(std::string_view line, std::size_t uLevel) const {
    const std::size_t uIndent = kIndent * uLevel;
    return line.size() > uIndent && line.find_first_not_of(' ') == uIndent &&
           IsLetter(line[uIndent]);
  }

  std::vector<Item> Items(std::size_t uBegin, std::size_t uEnd, std::size_t uLevel) const {
    std::vector<Item> items;
    for (std::size_t u = uBegin; u < uEnd; ++u) {
      if (Begins(m_lines[u], uLevel)) {
        const std::string_view text = m_lines[u].substr(kIndent * uLevel);
        items.push_back({text.substr(0, text.find(' ')), u, u});
      }
      if (!items.empty()) items.back().uEnd = u + 1;
    }
    return items;
  }

  // The line with the { and what stands above and behind it; the } closes likewise. Comments on
  // lines that would be too long stand above the block.
  void Open(std::size_t uBegin, std::size_t uEnd, std::size_t uLevel, const Beside& beside) {
    m_out.Comments(beside.above, uLevel - 1);
    if (!LineWriter::Fits(m_lines[uEnd - 1], beside.behind)) {
      m_out.Indented(beside.behind, uLevel - 1);
    }
    const bool bFits = LineWriter::Fits(m_lines[uBegin], beside.open);
    if (!bFits) m_out.Indented(beside.open, uLevel - 1);
    m_out.Line(m_lines[uBegin]);
    if (bFits) m_out.Behind(beside.open);
  }
  void Close(std::size_t uEnd, std::size_t uLevel, const Beside& beside) {
    m_out.Comments(beside.end, uLevel);
    m_out.Line(m_lines[uEnd - 1]);
    if (LineWriter::Fits(m_lines[uEnd - 1], beside.behind)) m_out.Behind(beside.behind);
  }

  void OneItem(const Item& item, std::size_t uLevel, const ZuKeywordBlock& block, unsigned uNumber,
               CommentTable* pComments) {
    const ZuKeywordBlock* const pInner = Inner(block, item.keyword, uNumber);
    const bool bLines = item.uEnd - item.uBegin > 1;
    if (HasKept(pInner) && bLines) return Block(item.uBegin, item.uEnd, uLevel + 1, *pInner);
    const Beside beside = pComments->Take(item.keyword, uNumber);
    const Key key(item.keyword, uNumber);
    if (!bLines || (beside.open.empty() && beside.end.empty() &&
                    pComments->RowsOf(key.first, key.second).empty())) {
      if (!beside.open.empty()) m_out.Indented(beside.open, uLevel);
      m_out.Comments(beside.end, uLevel);
      return m_out.Lines(&m_lines[item.uBegin], &m_lines[item.uBegin] + (item.uEnd - item.uBegin),
                         beside, uLevel);
    }
    Open(item.uBegin, item.uEnd, uLevel + 1, beside);
    Rows(item.uBegin + 1, item.uEnd - 1, uLevel + 1, block, key, pComments);
    Close(item.uEnd, uLevel + 1, beside);
  }

  // Rows stand one on a line. Where there are as many as in the file, comments belong to the same
  // ones; otherwise to the first of the same id.
  void Rows(std::size_t uBegin, std::size_t uEnd, std::size_t uLevel, const ZuKeywordBlock& block,
            const Key& key, CommentTable* pComments) {
    const auto commented = pComments->RowsOf(key.first, key.second);
    const bool bSame = block.m_rows.size() == uEnd - uBegin;
    std::map<unsigned, std::size_t> lines;
    if (!bSame && !commented.empty()) lines = LinesOfIds(uBegin, uEnd);
    std::map<std::size_t, Beside> besides;  // by line
    for (const auto& [uRow, uId] : commented) {
      const auto found = lines.find(uId);
      if (!bSame && found == lines.end()) continue;
      const std::size_t uLine = bSame ? uBegin + uRow - 1 : found->second;
      if (uLine < uEnd && besides.count(uLine) == 0) {
        besides[uLine] = pComments->Take(key.first, key.second, uRow);
      }
    }
    for (std::size_t u = uBegin; u < uEnd; ++u) {
      const auto found = besides.find(u);
      if (found == besides.end()) {
        m_out.Line(m_lines[u]);
      } else {
        m_out.Lines(&m_lines[u], &m_lines[u] + 1, found->second, uLevel);
      }
    }
  }

  // The first line of each id.
  std::map<unsigned, std::size_t> LinesOfIds(std::size_t uBegin, std::size_t uEnd) const {
    std::map<unsigned, std::size_t> lines;
    for (std::size_t u = uBegin; u < uEnd; ++u) {
      const std::string_view line = m_lines[u];
      const std::size_t uFirst = std::min(line.find_first_not_of(' '), line.size());
      unsigned uId = 0;
      if (ZuParseId(line.substr(uFirst, line.find(' ', uFirst) - uFirst), &uId)) {
        lines.emplace(uId, u);
      }
    }
    return lines;
  }

  static const ZuKeywordBlock* Inner(const ZuKeywordBlock& block, std::string_view keyword,
                                     unsigned uWanted) {
    for (const ZuKeywordBlock& inner : block.m_blocks) {
      if (inner.m_strKeyword == keyword && --uWanted == 0) return &inner;
    }
    return nullptr;
  }

  // A block of which the record has nothing to write.
  void Unwritten(const ZuKeywordBlock& block, std::size_t uLevel) {
    const std::string strIndent(kIndent * uLevel, ' ');
    const std::string strText = strIndent + block.m_strKeyword + " {\n" + strIndent + "}";
    Merger inner(strText, &m_out);
    inner.Block(0, inner.LineCount(), uLevel + 1, block);
  }

  template <class Wanted>
  void Unknown(const ZuKeywordBlock& block, std::size_t uLevel, Wanted&& isWanted) {
    for (const ZuUnknownKeyword& word : block.m_unknown) {
      if (isWanted(word)) m_out.Unknown(word, uLevel);
    }
  }

  std::vector<std::string_view> m_lines;
  LineWriter& m_out;
};

}  // namespace

bool HasValue(const ZuUnknownKeyword& word) {
  return RawText(word).find_first_of(" \t\r\n{}\"") != std::string_view::npos;
}

bool HasKept(const ZuKeywordBlock* pBlock) {
  return pBlock != nullptr &&
         (!pBlock->m_unknown.empty() || !pBlock->m_comments.empty() ||
          std::any_of(pBlock->m_blocks.begin(), pBlock->m_blocks.end(),
                      [](const ZuKeywordBlock& inner) { return HasKept(&inner); }));
}

void MergeKept(const std::string& strText, const ZuKeywordBlock& block, std::ostream& stream) {
  LineWriter out(stream);
  Merger merger(strText, &out);
  merger.Block(0, merger.LineCount(), 1, block);
}

void WriteUnknown(const ZuUnknownKeyword& word, std::ostream& stream) {
  LineWriter(stream).Unknown(word, 0);
  stream << '\n';
}

void WriteComments(const ZuKeywordBlock& block, std::ostream& stream) {
  std::vector<std::string_view> lines;
  AppendAll(block, &lines);
  for (const std::string_view line : lines) stream << line << '\n';
}

}  // namespace zu::internal
