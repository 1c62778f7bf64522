#include "json_text.h"

#include <charconv>
#include <cmath>
#include <numbers>

namespace cli {
namespace {

void AppendNumber(double dValue, std::string* pText) {
  if (!std::isfinite(dValue)) {
    *pText += "null";
    return;
  }
  char szBuffer[32];
  const auto result = std::to_chars(szBuffer, szBuffer + sizeof(szBuffer), dValue + 0.0);
  pText->append(szBuffer, result.ptr);
}

std::string Quoted(const std::string& strText) {
  return Json(strText).dump(-1, ' ', false, Json::error_handler_t::replace);
}

void BreakLine(int iIndent, std::string* pText) {
  *pText += '\n';
  pText->append(iIndent, ' ');
}

// iLevel counts the lists and objects around the value; the outermost object is level 0. Results
// are built by the commands and nest a few levels deep.
void Append(const Json& json, int iLevel, std::string* pText) {
  if (json.is_number_float()) return AppendNumber(json.get<double>(), pText);
  if (json.is_string()) {
    *pText += Quoted(json.get_ref<const std::string&>());
    return;
  }
  if (!json.is_structured()) {
    *pText += json.dump();
    return;
  }
  const bool bObject = json.is_object();
  const bool bLines =
      (bObject && iLevel == 0) || (!bObject && !json.empty() && json.front().is_structured());
  *pText += bObject ? '{' : '[';
  bool bFirst = true;
  for (const auto& item : json.items()) {
    if (!bFirst) *pText += bLines ? "," : ", ";
    bFirst = false;
    if (bLines) BreakLine(iLevel + 1, pText);
    if (bObject) *pText += Quoted(item.key()) + ": ";
    Append(item.value(), iLevel + 1, pText);
  }
  if (bLines && !json.empty()) BreakLine(iLevel, pText);
  *pText += bObject ? '}' : ']';
}

}  // namespace

Json RmsJson(double dTotal) { return std::isfinite(dTotal) ? Json{{"total", dTotal}} : Json(); }

Json RmsJson(const std::vector<double>& byAxis) {
  Json rms = Json::object();
  double dSum = 0.0;
  for (size_t i = 0; i < byAxis.size(); ++i) {
    rms[std::string(1, "xyz"[i])] = byAxis[i];
    dSum += byAxis[i] * byAxis[i];
  }
  rms["total"] = std::sqrt(dSum);
  return std::isfinite(dSum) ? rms : Json();
}

void AddPhotoAngles(const char* szKey, const std::array<double, 3>& angles, Json* pPhoto) {
  constexpr double kDegree = std::numbers::pi / 180.0;
  const auto json = [&angles](double dUnit) {
    return Json{{"a", angles[0] / dUnit}, {"b", angles[1] / dUnit}, {"c", angles[2] / dUnit}};
  };
  (*pPhoto)[szKey] = json(1.0);
  (*pPhoto)[std::string(szKey) + "_deg"] = json(kDegree);
}

std::string JsonText(const Json& json) {
  std::string strText;
  Append(json, 0, &strText);
  return strText + "\n";
}

}  // namespace cli
