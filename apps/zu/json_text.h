// JSON as the program prints it: numbers in the shortest form that reads back to the same double,
// null for one that is not finite, bytes that are no UTF-8 replaced.
#pragma once

#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace cli {

using Json = nlohmann::ordered_json;

// A root mean square as all commands give it: "total", of the lengths, and in front of it "x", "y"
// and "z" where residuals have axes. null where nothing is behind it (not finite).
Json RmsJson(double dTotal);
Json RmsJson(const std::vector<double>& byAxis);

// The angles a, b, c of R = Ry(b) Rx(a) Rz(c) of a photo: in degrees under szKey with "_deg"
// behind.
//
// Required: under szKey itself they stand in radians; adjustments of networks are published and
// compared by that key.
void AddPhotoAngles(const char* szKey, const std::array<double, 3>& angles, Json* pPhoto);

// One key of the outermost object a line, one element of a list of objects a line; with line end.
std::string JsonText(const Json& json);

}  // namespace cli
