#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zu/exchange/internal/json_shapes.h"
#include "zu/project/keyword_block.h"

namespace zu::internal {

// The content of a block as a record has written it, as an object; the unknown keywords of the
// block under kJsonUnknown, its comments under kJsonComments.
Json KeywordsToJson(const std::string& strContent, const JsonShape* pTable,
                    const ZuKeywordBlock& block);

// Adds them under kJsonComments; nothing without one.
void CommentsToJson(const std::vector<ZuFileComment>& comments, Json* pObject);

// A text, or { "latin1": text } where it is not UTF-8.
Json TextToJson(std::string_view text);

}  // namespace zu::internal
