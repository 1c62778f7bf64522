#pragma once

#include <stdexcept>
#include <string>

#include "zu/exchange/internal/json_shapes.h"

namespace zu::internal {

// What is wrong with a value, where it stands ("items[3].camera.c") and what would be right.
struct JsonFault {
  std::string m_strWhere, m_strText, m_strRight;
};

// Appends a block with its keyword, for the readers of keyword files, from its object. Keys are
// those of the table, of unknown keywords and comments; others, missing ones and values of another
// type throw a JsonFault.
void JsonToKeywords(const Json& object, const char* szKeyword, const JsonShape* pTable,
                    const std::string& strWhere, std::string* pText);
// The same for an item that is an unknown keyword, and for the comments behind the last item.
void JsonToUnknown(const Json& item, const std::string& strWhere, std::string* pText);
void JsonToLastComments(const Json& root, std::string* pText);

}  // namespace zu::internal
