// Puts what no record holds, keywords and comments, back among the keywords that a record has
// written.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

struct ZuKeywordBlock;
struct ZuUnknownKeyword;

namespace zu::internal {

// A keyword alone ends its block; anything behind it would be read as its value.
bool HasValue(const ZuUnknownKeyword& word);

// The block, or one inside it, has an unknown keyword or a comment. False for null.
bool HasKept(const ZuKeywordBlock* pBlock);

// Writes a block "KEYWORD {", items, "}" in the layout of ItemWriter, what is kept of `block` among
// them. Unknown keywords stand behind the last item of the keyword behind which they stood, or at
// the end where that keyword is not written. Comments stand beside what they belong to; where that
// is not written, or the line would be too long, on lines of their own at the end or above.
void MergeKept(const std::string& strText, const ZuKeywordBlock& block, std::ostream& stream);

// An unknown keyword of the top level with its comments, and a line end.
void WriteUnknown(const ZuUnknownKeyword& word, std::ostream& stream);

// Lines with all comments of a block whose content is written elsewhere.
void WriteComments(const ZuKeywordBlock& block, std::ostream& stream);

}  // namespace zu::internal
