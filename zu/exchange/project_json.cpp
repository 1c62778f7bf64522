#include "zu/exchange/project_json.h"

#include <algorithm>
#include <istream>
#include <iterator>
#include <ostream>
#include <sstream>
#include <vector>

#include "zu/exchange/internal/json_finding.h"
#include "zu/exchange/internal/json_shapes.h"
#include "zu/exchange/internal/json_to_keywords.h"
#include "zu/exchange/internal/keywords_to_json.h"
#include "zu/project/project.h"

using zu::internal::Json;
using zu::internal::JsonFault;
using zu::internal::JsonFinding;
using zu::internal::JsonItemShape;
using zu::internal::JsonSyntaxFinding;

namespace {

constexpr eZuPointRWMask kMeasured[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWEnd};
constexpr eZuPointRWMask kObject[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                      eZuPointRWEnd};
constexpr eZuPointRWMask kDeviations[] = {eZuPointRWId, eZuPointRWDX, eZuPointRWDY, eZuPointRWEnd};

// What stands between the braces of an item.
std::string ContentOf(const ZuProject& project, const ZuProjectItem& item) {
  const std::string& strKeyword = item.m_pBlock->m_strKeyword;
  std::ostringstream os;
  if (strKeyword == "MEASURE") {
    const unsigned uPhoto = item.m_pBlock->m_uId;
    os << "PHOTOID " << uPhoto << "\nPOINTS {\n";
    const ZuPointList* pRows = project.FindMeasurements(uPhoto);
    if (pRows != nullptr) pRows->Export(os, kMeasured);
    os << "\n}";
    const ZuPointList told = project.ToldDeviations(uPhoto);
    if (!told.IsEmpty()) told.Export(os << "\nSIGMA {\n", kDeviations) << "\n}";
  } else if (strKeyword == "COVARIANCE") {
    if (item.m_covariance) project.Covariances().Find(*item.m_covariance)->Export(os);
  } else if (strKeyword == "POINTS") {
    project.ObjectPoints().Export(os, kObject);
  } else if (strKeyword == "LOKAL") {
    project.LocalSystems()[static_cast<std::size_t>(item.m_iLocalSystem)].Export(os);
  } else if (strKeyword == "PHOTO" || strKeyword == "ORTHOPHOTO") {
    static_cast<const ZuPhoto*>(item.m_pRecord)->Export(os);
  } else if (strKeyword == "CAMERA") {
    static_cast<const ZuCamera*>(item.m_pRecord)->ExportFullData(os);
  } else {
    static_cast<const ZuPlane*>(item.m_pRecord)->Export(os);
  }
  return os.str();
}

Json ItemToJson(const ZuProject& project, const ZuProjectItem& item) {
  if (item.m_pUnknown != nullptr) {
    Json unknown = {
        {zu::internal::kJsonType, zu::internal::kJsonUnknown},
        {zu::internal::kJsonText, zu::internal::TextToJson(item.m_pUnknown->m_strText)}};
    zu::internal::CommentsToJson(item.m_pUnknown->m_comments, &unknown);
    return unknown;
  }
  for (const JsonItemShape& shape : zu::internal::JsonItems()) {
    if (item.m_pBlock->m_strKeyword != shape.szKeyword) continue;
    Json object = {{zu::internal::kJsonType, shape.szType}};
    object.update(
        zu::internal::KeywordsToJson(ContentOf(project, item), shape.pBlock, *item.m_pBlock));
    return object;
  }
  return Json::object();
}

[[noreturn]] void Fail(const std::string& strWhere, const char* szText, const char* szRight) {
  throw JsonFault{strWhere, szText, szRight};
}

// The text of a project file, and the line at which each item begins.
struct ProjectText {
  std::string m_strText;
  std::vector<std::size_t> m_starts;  // offsets
};

void AddItem(const Json& item, const std::string& strWhere, ProjectText* pText) {
  pText->m_starts.push_back(pText->m_strText.size());
  const std::string strType =
      item.is_object() ? item.value(zu::internal::kJsonType, Json()).dump() : "";
  if (strType == "\"unknown\"") {
    return zu::internal::JsonToUnknown(item, strWhere, &pText->m_strText);
  }
  for (const JsonItemShape& shape : zu::internal::JsonItems()) {
    if (strType != '"' + std::string(shape.szType) + '"') continue;
    return zu::internal::JsonToKeywords(item, shape.szKeyword, shape.pBlock, strWhere,
                                        &pText->m_strText);
  }
  Fail(strWhere, "has no type that a project knows", "\"type\": \"photo\" or another one");
}

ProjectText ToText(const Json& root) {
  if (!root.is_object() || root.value("format", Json()) != Json(zu::internal::kJsonFormat)) {
    Fail("", "is no project", "\"format\": \"zu-project\"");
  }
  if (root.value("version", Json()) != Json(zu::internal::kJsonVersion)) {
    Fail("version", "is not known", "1");
  }
  const Json items = root.value("items", Json());
  if (!items.is_array()) Fail("items", "is no array", "\"items\": [...]");
  ProjectText text;
  std::size_t u = 0;
  for (const Json& item : items) AddItem(item, "items[" + std::to_string(u++) + "]", &text);
  zu::internal::JsonToLastComments(root, &text.m_strText);
  return text;
}

// What the project found in the text that was made for it, told of the items.
void AddProjectFindings(const ZuProject& project, const ProjectText& text,
                        const std::string& strName, ZuFindingList* pFindings) {
  std::vector<std::uint64_t> lines;  // at which the items begin
  std::uint64_t uLine = 1;
  std::size_t uDone = 0;
  for (const std::size_t uStart : text.m_starts) {
    const auto* p = text.m_strText.data();
    uLine += static_cast<std::uint64_t>(std::count(p + uDone, p + uStart, '\n'));
    uDone = uStart;
    lines.push_back(uLine);
  }
  for (ZuFinding finding : project.GetFindings()) {
    // Unknown keywords are kept, and are none of a writer's faults.
    if (finding.m_eSeverity != eZuSeverityError) continue;
    const auto next = std::upper_bound(lines.begin(), lines.end(), finding.m_uLine);
    if (finding.m_uLine > 0 && next != lines.begin()) {
      finding.m_strText =
          "items[" + std::to_string(next - lines.begin() - 1) + "]: " + finding.m_strText;
    }
    finding.m_uLine = finding.m_uColumn = 0;
    finding.m_strFile = strName;
    pFindings->Add(finding);
  }
}

}  // namespace

std::ostream& ZuExportProjectJson(std::ostream& stream, const ZuProject& project) {
  // Its items stand in the order in which they are written, records that have come since too.
  std::stringstream text;
  project.Export(text);
  ZuProject written;
  written.Read(text);
  stream << "{\n\"format\": \"" << zu::internal::kJsonFormat
         << "\",\n\"version\": " << zu::internal::kJsonVersion << ",\n\"items\": [";
  const char* szBefore = "\n";
  for (const ZuProjectItem& item : written.GetItems()) {
    stream << szBefore << ItemToJson(written, item).dump();
    szBefore = ",\n";
  }
  stream << "\n]";
  Json last = Json::object();
  zu::internal::CommentsToJson(written.GetLastComments(), &last);
  if (!last.empty()) stream << ",\n\"comments\": " << last[zu::internal::kJsonComments].dump();
  return stream << "\n}\n";
}

bool ZuReadProjectJson(std::istream& stream, ZuProject* pProject, ZuFindingList* pFindings,
                       const std::string& strName) {
  pProject->Clear();
  const std::string strText{std::istreambuf_iterator<char>(stream), {}};
  if (stream.bad()) {
    pFindings->Add(JsonFinding(strName, "cannot be read", ""));
    return false;
  }
  try {
    const ProjectText text = ToText(Json::parse(strText));
    std::istringstream keywords(text.m_strText);
    const bool bGood = pProject->Read(keywords, strName);
    AddProjectFindings(*pProject, text, strName, pFindings);
    return bGood;
  } catch (const JsonFault& fault) {
    const std::string strWhere = fault.m_strWhere.empty() ? "" : fault.m_strWhere + ": ";
    pFindings->Add(JsonFinding(strName, strWhere + fault.m_strText, fault.m_strRight));
  } catch (const Json::parse_error& error) {
    pFindings->Add(JsonSyntaxFinding(strName, strText, error.byte));
  } catch (const Json::exception& error) {  // a number beyond a double
    pFindings->Add(JsonFinding(strName, error.what(), ""));
  }
  return false;
}
