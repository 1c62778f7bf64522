// Puts keywords that no record holds back among those that a record has written.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

struct ZuKeywordBlock;
struct ZuUnknownKeyword;

namespace zu::internal {

// The text of an unknown keyword without the blanks behind it.
std::string_view RawText(const ZuUnknownKeyword& word);

// A keyword alone ends its block; anything behind it would be read as its value.
bool HasValue(const ZuUnknownKeyword& word);

// The block, or one inside it, has an unknown keyword. False for null.
bool HasUnknown(const ZuKeywordBlock* pBlock);

// Writes a block "KEYWORD {", items, "}" in the layout of ItemWriter, the unknown keywords of
// `block` among them: each behind the last item of the keyword behind which it stood, or at the end
// where that keyword is not written, and in inner blocks likewise.
void MergeUnknown(const std::string& strText, const ZuKeywordBlock& block, std::ostream& stream);

}  // namespace zu::internal
