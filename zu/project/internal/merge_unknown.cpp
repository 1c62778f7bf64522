#include "zu/project/internal/merge_unknown.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <string_view>
#include <vector>

#include "zu/foundation/internal/characters.h"
#include "zu/project/keyword_block.h"

namespace zu::internal {

namespace {

constexpr std::size_t kIndent = 4;  // blanks a level

// The lines of one written item: its keyword's, then what belongs to it.
struct Item {
  std::string_view keyword;
  std::size_t uBegin, uEnd;
};

class Merger {
 public:
  Merger(std::string_view text, std::ostream& stream) : m_stream(stream) {
    for (std::size_t u = 0; u <= text.size();) {
      const std::size_t uEnd = std::min(text.find('\n', u), text.size());
      m_lines.push_back(text.substr(u, uEnd - u));
      u = uEnd + 1;
    }
  }

  // The lines of a block from its keyword's to that of its }, whose items stand at the level.
  void Block(std::size_t uBegin, std::size_t uEnd, std::size_t uLevel,
             const ZuKeywordBlock& block) {
    Lines(uBegin, uBegin + 1);
    const std::vector<Item> items = Items(uBegin + 1, uEnd - 1, uLevel);
    std::map<std::string_view, std::size_t> last;  // item of each keyword
    for (std::size_t i = 0; i < items.size(); ++i) last[items[i].keyword] = i;
    Unknown(block, uLevel,
            [](const ZuUnknownKeyword& word) { return word.m_strAfter.empty() && HasValue(word); });
    std::map<std::string_view, int> count;
    for (std::size_t i = 0; i < items.size(); ++i) {
      const std::string_view keyword = items[i].keyword;
      const ZuKeywordBlock* pInner = Inner(block, keyword, count[keyword]++);
      if (HasUnknown(pInner) && items[i].uEnd - items[i].uBegin > 1) {
        Block(items[i].uBegin, items[i].uEnd, uLevel + 1, *pInner);
      } else {
        Lines(items[i].uBegin, items[i].uEnd);
      }
      if (last[keyword] != i) continue;
      Unknown(block, uLevel, [keyword](const ZuUnknownKeyword& word) {
        return word.m_strAfter == keyword && HasValue(word);
      });
    }
    Unknown(block, uLevel, [&last](const ZuUnknownKeyword& word) {
      return !word.m_strAfter.empty() && HasValue(word) && last.find(word.m_strAfter) == last.end();
    });
    Unknown(block, uLevel, [](const ZuUnknownKeyword& word) { return !HasValue(word); });
    Lines(uEnd - 1, uEnd);
  }

  std::size_t LineCount() const { return m_lines.size(); }

 private:
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

  static const ZuKeywordBlock* Inner(const ZuKeywordBlock& block, std::string_view keyword,
                                     int iWanted) {
    for (const ZuKeywordBlock& inner : block.m_blocks) {
      if (inner.m_strKeyword == keyword && iWanted-- == 0) return &inner;
    }
    return nullptr;
  }

  template <class Wanted>
  void Unknown(const ZuKeywordBlock& block, std::size_t uLevel, Wanted&& isWanted) {
    for (const ZuUnknownKeyword& word : block.m_unknown) {
      if (!isWanted(word)) continue;
      m_stream << std::string(kIndent * uLevel, ' ') << RawText(word) << '\n';
    }
  }

  void Lines(std::size_t uBegin, std::size_t uEnd) {
    for (std::size_t u = uBegin; u < uEnd; ++u) {
      m_stream << m_lines[u];
      if (u + 1 < m_lines.size()) m_stream << '\n';
    }
  }

  std::vector<std::string_view> m_lines;
  std::ostream& m_stream;
};

}  // namespace

std::string_view RawText(const ZuUnknownKeyword& word) {
  const std::string_view text = word.m_strText;
  return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

bool HasValue(const ZuUnknownKeyword& word) {
  return RawText(word).find_first_of(" \t\r\n{}\"") != std::string_view::npos;
}

bool HasUnknown(const ZuKeywordBlock* pBlock) {
  return pBlock != nullptr &&
         (!pBlock->m_unknown.empty() ||
          std::any_of(pBlock->m_blocks.begin(), pBlock->m_blocks.end(),
                      [](const ZuKeywordBlock& inner) { return HasUnknown(&inner); }));
}

void MergeUnknown(const std::string& strText, const ZuKeywordBlock& block, std::ostream& stream) {
  Merger merger(strText, stream);
  merger.Block(0, merger.LineCount(), 1, block);
}

}  // namespace zu::internal
