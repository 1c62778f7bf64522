// A project as JSON and back is the same project; the schema tells what is written.
#include "zu/exchange/project_json.h"

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/support/project_json.h"
#include "tests/support/test.h"

namespace {

using nlohmann::json;

// The first finding of a JSON text; empty without one.
std::string FindingOf(const std::string& strJson) {
  std::istringstream stream(strJson);
  ZuProject project;
  ZuFindingList findings;
  const bool bGood = ZuReadProjectJson(stream, &project, &findings, "a.json");
  EXPECT_EQ(bGood, findings.GetErrorCount() == 0);
  return findings.GetFindings().empty() ? "" : GetZuFindingLine(findings.GetFindings().front());
}

void ExpectSameBack(const ZuProject& project) {
  ZuProject again;
  ZuFindingList findings;
  std::istringstream stream(JsonOf(project));
  ZuReadProjectJson(stream, &again, &findings);
  EXPECT_EQ(Exported(again), Exported(project));
}

// What a schema of these words (type, properties, required, additionalProperties, items, $ref,
// const, enum, anyOf) has against a value; empty where it is valid.
std::string Against(const json& schema, const json& value, const json& root);

std::string AgainstObject(const json& schema, const json& value, const json& root) {
  for (const auto& key : schema.value("required", json::array())) {
    if (!value.contains(key.get<std::string>())) return "no " + key.get<std::string>();
  }
  for (const auto& [strKey, member] : value.items()) {
    const auto found = schema.at("properties").find(strKey);
    if (found == schema.at("properties").end()) return "unknown key " + strKey;
    const std::string strFault = Against(*found, member, root);
    if (!strFault.empty()) return strKey + ": " + strFault;
  }
  return "";
}

std::string Against(const json& schema, const json& value, const json& root) {
  if (schema.contains("$ref")) {
    const std::string strRef = schema["$ref"];
    return Against(root.at(json::json_pointer(strRef.substr(1))), value, root);
  }
  if (schema.contains("const")) return schema["const"] == value ? "" : "not the constant";
  if (schema.contains("enum")) {
    for (const json& word : schema["enum"]) {
      if (word == value) return "";
    }
    return "none of the words";
  }
  if (schema.contains("anyOf")) {
    std::string strAll;
    for (const json& one : schema["anyOf"]) {
      const std::string strFault = Against(one, value, root);
      if (strFault.empty()) return "";
      strAll += "(" + strFault + ")";
    }
    return strAll;
  }
  const std::string strType = schema.at("type");
  if (strType == "object") {
    return value.is_object() ? AgainstObject(schema, value, root) : "no object";
  }
  if (strType == "array") {
    if (!value.is_array()) return "no array";
    for (const json& item : value) {
      const std::string strFault = Against(schema.at("items"), item, root);
      if (!strFault.empty()) return strFault;
    }
    return "";
  }
  const bool bGood = strType == "integer"   ? value.is_number_integer()
                     : strType == "number"  ? value.is_number()
                     : strType == "boolean" ? value.is_boolean()
                                            : value.is_string();
  return bGood ? "" : "no " + strType;
}

TEST(ProjectJson, SamplesComeBackAndKeepToTheSchema) {
  std::ifstream file(ZU_SOURCE_DIR "/docs/files/project.schema.json");
  const json schema = json::parse(file);
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(ZU_SOURCE_DIR "/samples")) {
    if (entry.path().extension() != ".prj") continue;
    SCOPED_TRACE(entry.path());
    ZuProject project;
    ASSERT_TRUE(project.Read(entry.path().c_str()));
    ExpectSameBack(project);
    EXPECT_EQ(Against(schema, json::parse(JsonOf(project)), schema), "");
  }
}

// A comment above and behind each line.
std::string Commented(const std::string& strText) {
  std::string strCommented;
  std::istringstream lines(strText);
  int iLine = 0;
  for (std::string strLine; std::getline(lines, strLine); ++iLine) {
    const std::string strNumber = std::to_string(iLine);
    strCommented += "; above " + strNumber + "\n" + strLine + " ! behind " + strNumber + "\n";
  }
  return strCommented + "; end\n";
}

// Every keyword, unknown ones at three depths, bytes that are no UTF-8, numbers of all kinds.
TEST(ProjectJson, EveryKeywordComesBack) {
  std::ifstream file(ZU_SOURCE_DIR "/docs/files/project.schema.json");
  const json schema = json::parse(file);
  std::istringstream text(R"(TOP { 1 "Stra)"
                          "\xDF"
                          R"(e"
}
POINTS { 1 0.1 nan -0.0 }
PHOTO { FIRST 1 PHOTOID 4294967295 "H)"
                          "\xFC"
                          R"(tte" COMMENT "K\u00F6ln" DIGITALPAGE 3 DIGITALROT 2
  DIGITAL 1 DIGITIZERID 7 CHECKACTIVE 1 STATE -2 ROTATION 1 SCALE 1e300 ORIENTED 1
  DIGIREGION { 0 0 639 479 }
  CAMDATA { ID 1 NAME "c" MD 2 C 4 XH 1 YH 2 R0 3 K1 0.5 RM 4 A1 5 A2 6 A3 7 B1 8 B2 9 C1 10 C2 11
    CV 12 XHV 13 YHV 14 }
  RESEAUFILE "r" RESEAUSUBID 5 PRERESTRAFO { 2 1 2 3 4 5 6 } PRERESEAU { 4 "r" }
  MAINRESTRAFO { 1 1 2 3 4 } MAINRESEAU { 4 "m" } POLYRESINVTRAFO { 77 } POLYRESINV { 4 "i" }
  AORM { 3 3 1 inf 0 0 1 -inf 0 0 4157222543.0 } AORV { 3 1 2 3 }
  ZUSPPLANE { ZUSPID 1 "z" ACTIV 1 REGIONACTIV 1 KAMERA 1 DISTORTION { 1 2 3 4 5 6 7 "d" }
    MEASPOINTS { 1 2 3 2 3 4 3 4 5 } DEFPOINTS { 1 2 3 4 2 3 4 5 3 4 5 6 } NEW { 2 }
    VALIDREGION { 0 0 1 1 } PARALLELDEF { DEFLINE { 1 1 2 0 0 } CONSTRAINT { 1 2 2 0.1 } } }
  LASTZUSPID 9 SCREENPOS { 1 2.5 } SCREENSIZE 3 SCREENFLAGS 4 REGOI { 1 2 3 4 5 }
  TPS_SETUP_ID "s" }
MEASURE { PHOTOID 4294967295 POINTS { 1 2 3 4294967295 4 5 } WEIGHT 2 SIGMA { 1 0.1 2e-3 } }
COVARIANCE { CAMERAID 3 PARAMETERS "c xh" NEW 1 MATRIX { 2 2 1 0.5 0.5 1 } }
ORTHOPHOTO { ID 1 "o" COMMENT "x" RECTPIXEL 1 TIME 2 SCALE 3 PLANEANGLE 4 DIGITALROT 1 MIRROR 2
  PIXELSIZE { 0 0 1 1 } OBJECTSIZE { 0 0 2 2 } PLANEINFO { ZUSPID 2 "p" } }
CAMERA { ID 3 C 4 } PLANE { 1 "w" 0 0 1 0.1 }
LOKAL { 1 101 102 4 103 101 0.1 0.2 0.3 101 104 5.25 0 0 0 0 0 0 })");
  ZuProject project;
  project.Read(text);
  ASSERT_EQ(project.GetItems().size(), 9u);
  ExpectSameBack(project);
  std::istringstream commented(Commented(Exported(project)));
  project.Read(commented);
  ExpectSameBack(project);
  EXPECT_EQ(Against(schema, json::parse(JsonOf(project)), schema), "");
}

TEST(ProjectJson, FaultsNameTheirPlace) {
  const auto in = [](const char* szItem) {
    return std::string(R"({"format": "zu-project", "version": 1, "items": [)") + szItem + "]}";
  };
  const struct {
    std::string strJson;
    const char* szFinding;
  } cases[] = {
      {"{\n \"format\": x", "a.json:2:12: error: is no JSON from here on"},
      {"[]", "a.json: error: is no project; \"format\": \"zu-project\" would be right"},
      {in(R"({"type": "photo", "id": 1, "camera": {"c": true}})"),
       "a.json: error: items[0].camera.c: has another type; a number would be right"},
      {in(R"({"type": "photo", "id": -1})"),
       "a.json: error: items[0].id: is no whole number of this range; 0 to 4294967295 would be "
       "right"},
      {in(R"({"type": "photo", "id": 1, "scal": 2})"),
       "a.json: error: items[0].scal: is no key of this object"},
      {in(R"({"type": "measurements", "photo": 1, "points": [{"id": 1, "x": 2}]})"),
       "a.json: error: items[0].points[0]: has no y; \"y\" would be right"},
      {in(R"({"type": "photo", "id": 1, "comment": "a \" b"})"),
       "a.json: error: items[0].comment: holds a quote or a line end; one line without quotes "
       "would be right"},
      {in(R"({"type": "photo", "id": 1}, {"type": "photo", "id": 1})"),
       "a.json: error: items[1]: photo 1 stands twice, first in line 1; one PHOTO block for each "
       "id would be right"},
  };
  for (const auto& c : cases) EXPECT_EQ(FindingOf(c.strJson), c.szFinding);
}

}  // namespace
