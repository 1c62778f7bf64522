// Puts keywords that no record holds back among those that a record has written.
#pragma once

#include <iosfwd>
#include <string>

struct ZuKeywordBlock;

namespace zu::internal {

// The block, or one inside it, has an unknown keyword. False for null.
bool HasUnknown(const ZuKeywordBlock* pBlock);

// Writes a block "KEYWORD {", items, "}" in the layout of ItemWriter, the unknown keywords of
// `block` among them: each behind the last item of the keyword behind which it stood, or at the end
// where that keyword is not written, and in inner blocks likewise.
void MergeUnknown(const std::string& strText, const ZuKeywordBlock& block, std::ostream& stream);

}  // namespace zu::internal
