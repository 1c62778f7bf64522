// How the keywords of a project file stand in JSON: one table for both ways.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace zu::internal {

using Json = nlohmann::ordered_json;

enum class JsonForm {
  Values,   // the columns as keys of the object itself
  Object,   // the columns as an object
  Objects,  // a list of such objects, the keyword once for each
  Rows,     // a list of such objects in one block
  Numbers,  // an array
  Matrix,   // an array of rows; rows and columns stand before the values of the keyword
  Vector,   // an array; its size stands before the values of the keyword
  Trafo,    // { "type", "coefficients" }
  Name,     // a text; a code stands before it
  Block,    // an object with keywords of its own
  Blocks,   // a list of such objects, the keyword once for each
};

struct JsonShape {
  const char* szKeyword;  // empty: the values have none; null ends a table
  JsonForm eForm;         //
  const char* szKey;      // null for Values
  const char* szColumns;  // "id:u name:t", see JsonColumn
  const JsonShape* pBlock = nullptr;

  // One keyword with braces around its values.
  bool HasBraces() const { return eForm != JsonForm::Values; }
};

// 'u' id, 'i' integer, 'b' flag, 'n' number, 't' text; a text may be missing in JSON.
struct JsonColumn {
  std::string strKey;
  char cKind;
};

std::vector<JsonColumn> JsonColumns(const JsonShape& shape);

// What stands at the top level: keyword, "type" of its item, and content.
struct JsonItemShape {
  const char* szKeyword;
  const char* szType;
  const JsonShape* pBlock;
};

const std::vector<JsonItemShape>& JsonItems();

// Keys that an object may have beside those of its table.
inline constexpr const char* kJsonType = "type";
inline constexpr const char* kJsonUnknown = "unknown";    // [{ "text", "after" }], and a type
inline constexpr const char* kJsonComments = "comments";  // see below
inline constexpr const char* kJsonText = "text";
inline constexpr const char* kJsonAfter = "after";
inline constexpr const char* kJsonLatin1 = "latin1";
// A comment: { "text", "place", "keyword", "number", "row", "id" }, the last five where they say
// more than "above", the object itself, 1, and no row. Places in the order of eZuCommentPlace.
inline constexpr const char* kJsonPlaces[] = {"above", "behind", "open", "end"};
inline constexpr const char* kJsonFormat = "zu-project";
inline constexpr int kJsonVersion = 1;

}  // namespace zu::internal
