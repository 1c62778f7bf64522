#include "zu/cloud/internal/table_cloud.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zu/cloud/internal/point_feed.h"
#include "zu/cloud/internal/raw_values.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/points/column_names.h"
#include "zu/points/internal/line_fields.h"
#include "zu/points/internal/read_rows.h"
#include "zu/points/point.h"

namespace {

// A point of a list has no place for these: columns that a table of a cloud has no use for take
// them along.
constexpr eZuPointRWMask kRed = eZuPointRWRedu1, kIntensity = eZuPointRWDX, kNormal = eZuPointRWVX;

constexpr struct {
  std::string_view title;  // as ZuFoldedTitle gives it
  eZuPointRWMask eColumn;
} kCloudTitles[] = {{"r", kRed},
                    {"red", kRed},
                    {"rot", kRed},
                    {"rf", kRed},
                    {"g", eZuPointRWRedu2},
                    {"green", eZuPointRWRedu2},
                    {"gruen", eZuPointRWRedu2},
                    {"gf", eZuPointRWRedu2},
                    {"b", eZuPointRWRedu3},
                    {"blue", eZuPointRWRedu3},
                    {"blau", eZuPointRWRedu3},
                    {"bf", eZuPointRWRedu3},
                    {"i", kIntensity},
                    {"intensity", kIntensity},
                    {"intensitaet", kIntensity},
                    {"reflectance", kIntensity},
                    {"scalarintensity", kIntensity},
                    {"nx", kNormal},
                    {"normalx", kNormal},
                    {"ny", eZuPointRWVY},
                    {"normaly", eZuPointRWVY},
                    {"nz", eZuPointRWVZ},
                    {"normalz", eZuPointRWVZ}};

ZuColumnTitle CloudTitle(std::string_view title) {
  ZuColumnTitle found = FindZuColumnTitle(title);
  if (found.m_eColumn >= eZuPointRWDX && found.m_eColumn <= eZuPointRWDZ) {
    found.m_eColumn = eZuPointRWSkip;  // accuracies
  }
  if (found.m_eColumn != eZuPointRWSkip) return found;
  const std::string strFolded = ZuFoldedTitle(title);
  const auto* const pKnown =
      std::find_if(std::begin(kCloudTitles), std::end(kCloudTitles),
                   [&strFolded](const auto& known) { return known.title == strFolded; });
  if (pKnown != std::end(kCloudTitles)) found.m_eColumn = pKnown->eColumn;
  return found;
}

// All of these are among the columns.
bool HasAll(const std::vector<eZuPointRWMask>& columns,
            std::initializer_list<eZuPointRWMask> wanted) {
  return std::all_of(wanted.begin(), wanted.end(), [&columns](eZuPointRWMask e) {
    return std::find(columns.begin(), columns.end(), e) != columns.end();
  });
}

bool HasColors(const std::vector<eZuPointRWMask>& columns) {
  return HasAll(columns, {kRed, eZuPointRWRedu2, eZuPointRWRedu3});
}

bool HasNormals(const std::vector<eZuPointRWMask>& columns) {
  return HasAll(columns, {kNormal, eZuPointRWVY, eZuPointRWVZ});
}

class TableCloud {
 public:
  TableCloud(ZuPointCloud& cloud, const ZuTableReading& table) : m_feed(cloud), m_table(table) {}

  void Add(const ZuPoint& point) {
    if (!m_bBegun) Begin();
    ZuScanPoint3d p(point.m_dX, point.m_dY, point.m_dZ, 0);
    if (m_bColors) m_colors.Put(p, point.m_dRedu1, point.m_dRedu2, point.m_dRedu3);
    if (m_bIntensities) m_intensities.Put(p, point.m_dDX, m_table.m_aLines.back(), 0);
    if (m_bNormals) {
      p.m_fNX = point.m_fVX;
      p.m_fNY = point.m_fVY;
      p.m_fNZ = point.m_fVZ;
    }
    m_feed.Add(p);
  }

  // What only the whole file tells.
  eZuIntensityScale Finish(ZuReadFindings* pFindings) {
    const eZuIntensityScale eScale = m_intensities.Scale();
    const ZuTally limited = m_intensities.Settle(m_feed.GetAdded(), eScale);
    if (eScale == eZuIntensity65535 && m_intensities.IsUnit()) {
      pFindings->Add(eZuReadAssumed, 0, 0, "intensities of 0 to 1 are taken as 0 to 65535");
    }
    const std::uint64_t uColors = m_colors.Settle(m_feed.GetAdded());
    pFindings->m_uClampedValues += limited.uCount + uColors;
    limited.Tell(eZuReadClamped, "intensities limited to their scale", *pFindings);
    if (uColors > 0) {
      pFindings->Add(eZuReadClamped, 0, 0,
                     "colours limited to 0 to 255: " + std::to_string(uColors));
    }
    return eScale;
  }

 private:
  // The columns are known from the first point on; those that are told are what they say.
  void Begin() {
    m_bBegun = true;
    if (m_table.m_Form.m_uTitleLine == 0) return;
    const auto& columns = m_table.m_Form.m_aColumns;
    m_bColors = HasColors(columns);
    m_bIntensities = HasAll(columns, {kIntensity});
    m_bNormals = HasNormals(columns);
  }

  ZuPointFeed m_feed;
  const ZuTableReading& m_table;
  ZuRawColors m_colors;
  ZuRawIntensities m_intensities;
  bool m_bBegun = false, m_bColors = false, m_bIntensities = false, m_bNormals = false;
};

// What the borrowed columns hold; null for one that is what it says.
const char* NameOf(eZuPointRWMask eColumn) {
  switch (eColumn) {
    case kRed:
      return "red";
    case eZuPointRWRedu2:
      return "green";
    case eZuPointRWRedu3:
      return "blue";
    case kIntensity:
      return "intensity";
    case kNormal:
      return "nx";
    case eZuPointRWVY:
      return "ny";
    case eZuPointRWVZ:
      return "nz";
    default:
      return nullptr;
  }
}

// Tells what was taken, and names no column that was borrowed.
void NameColumns(ZuTableReading* pTable) {
  ZuTableForm& form = pTable->m_Form;
  if (form.m_uTitleLine == 0) return;
  const bool bColors = HasColors(form.m_aColumns), bNormals = HasNormals(form.m_aColumns);
  std::vector<std::string> names;
  for (eZuPointRWMask& eColumn : form.m_aColumns) {
    const char* const szBorrowed = NameOf(eColumn);
    const bool bColor = eColumn >= kRed && eColumn <= eZuPointRWRedu3;
    const bool bUsed = eColumn == kIntensity || (bColor ? bColors : bNormals);
    if (szBorrowed != nullptr) eColumn = eZuPointRWSkip;
    names.emplace_back(szBorrowed != nullptr && bUsed ? szBorrowed : GetZuColumnName(eColumn));
  }
  while (!names.empty() && names.back() == "skip") {
    names.pop_back();
    form.m_aColumns.pop_back();
    form.m_aTitles.pop_back();
  }
  std::string strColumns;
  for (const std::string& strName : names) strColumns += (strColumns.empty() ? "" : ",") + strName;
  pTable->m_Findings.m_Dialect.m_strColumns = strColumns;
}

}  // namespace

bool ZuHasScanTitles(std::string_view head) {
  while (!head.empty()) {
    const std::size_t uEnd = std::min(head.find('\n'), head.size());
    ZuLineFields fields;
    ZuSplitLoosely(head.substr(0, uEnd), " \t\r,;|\"#/%", &fields);
    head.remove_prefix(std::min(uEnd + 1, head.size()));
    std::vector<eZuPointRWMask> columns;
    for (const std::string_view field : fields) columns.push_back(CloudTitle(field).m_eColumn);
    if (!HasAll(columns, {eZuPointRWX, eZuPointRWY})) continue;
    // "I" alone may be the height of an instrument.
    const bool bIntensity = std::any_of(fields.begin(), fields.end(), [](std::string_view field) {
      return field.size() > 1 && CloudTitle(field).m_eColumn == kIntensity;
    });
    return bIntensity || HasColors(columns) || HasNormals(columns);
  }
  return false;
}

void ZuReadTableCloud(const char* szPath, const ZuTableOptions& options,
                      ZuPointCloudContainer& clouds, eZuReadMode eMode,
                      ZuCloudFileReading& reading) {
  ZuTableOptions tableOptions = options;
  tableOptions.m_pfnTitle = CloudTitle;
  tableOptions.m_bIds = false;
  ZuPointCloud* const pCloud = clouds.AddCloud();
  ZuTableReading table;
  try {
    TableCloud points(*pCloud, table);
    const ZuPointTaker take = [&points](std::unique_ptr<ZuPoint>& pPoint) { points.Add(*pPoint); };
    ZuReadTableRows(szPath, tableOptions, take, eMode, table);
    reading.m_eIntensity = points.Finish(&table.m_Findings);
  } catch (const std::bad_alloc&) {
    table.m_Findings.AddMemoryEnded();
  }
  NameColumns(&table);
  clouds.UpdateCenterAndBox(pCloud);
  reading.m_Findings = std::move(table.m_Findings);
  reading.m_Form = std::move(table.m_Form);
}
