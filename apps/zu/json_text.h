// JSON as the program prints it: numbers in the shortest form that reads back to the same double,
// null for one that is not finite, bytes that are no UTF-8 replaced.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace cli {

using Json = nlohmann::ordered_json;

// One key of the outermost object a line, one element of a list of objects a line; with line end.
std::string JsonText(const Json& json);

}  // namespace cli
