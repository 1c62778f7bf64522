#pragma once

#include <stdexcept>
#include <string>

#include "zu/exchange/internal/json_shapes.h"

namespace zu::internal {

// What is wrong with a value, where it stands ("items[3].camera.c") and what would be right.
struct JsonFault {
  std::string m_strWhere, m_strText, m_strRight;
};

// Appends the content of a block, for the readers of keyword files, from its object. Keys are those
// of the table and of unknown keywords; others, missing ones and values of another type throw a
// JsonFault.
void JsonToKeywords(const Json& object, const JsonShape* pTable, const std::string& strWhere,
                    std::string* pContent);

// The text of TextToJson. One that no keyword file can hold in quotes throws.
std::string JsonToText(const Json& value, const std::string& strWhere);
// The same for text that is written as it stands.
std::string JsonToRawText(const Json& value, const std::string& strWhere);

}  // namespace zu::internal
