#include "result_report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "context.h"
#include "report_output.h"
#include "text_table.h"

namespace cli {

namespace {

constexpr size_t kShownRows = 300, kShownItems = 12;
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr const char* kAxisKeys[] = {"x", "y", "z"};
// Lengths in the unit of the result.
constexpr const char* kLengths[] = {"x",  "y",  "z",  "dx", "dy",     "dz",        "sx",
                                    "sy", "sz", "sd", "d",  "length", "deviation", "distance"};
// Keys of every object, which the page tells in other places.
constexpr const char* kFrameKeys[] = {"zu_version",      "command",     "status",  "unit",
                                      "warnings",        "status_text", "read_as", "parameters",
                                      "parameter_names", "covariance"};

template <size_t n>
bool IsOneOf(const std::string& strKey, const char* const (&keys)[n]) {
  return std::find(std::begin(keys), std::end(keys), strKey) != std::end(keys);
}

double NumberAt(const Json& object, const char* szKey) {
  const auto found = object.find(szKey);
  return found != object.end() && found->is_number() ? found->get<double>() : kNone;
}

// "angle_rad" is "angle [rad]", "only_source" is "only source".
std::string TitleOf(const std::string& strKey, const std::string& strUnit) {
  std::string strTitle = strKey;
  std::string strIn = IsOneOf(strKey, kLengths) ? strUnit : "";
  for (const char* szUnit : {"deg", "gon", "rad", "px", "mm", "um"}) {
    const std::string strEnd = std::string("_") + szUnit;
    if (strTitle.size() <= strEnd.size() || !strTitle.ends_with(strEnd)) continue;
    strTitle.resize(strTitle.size() - strEnd.size());
    strIn = szUnit;
  }
  std::replace(strTitle.begin(), strTitle.end(), '_', ' ');
  return strTitle + (strIn.empty() ? "" : " [" + strIn + "]");
}

std::string Heading(std::string strKey) {
  std::replace(strKey.begin(), strKey.end(), '_', ' ');
  if (!strKey.empty() && strKey[0] >= 'a' && strKey[0] <= 'z') strKey[0] -= 'a' - 'A';
  return strKey;
}

std::string ValueText(const Json& value, int iDecimals) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_number_float()) return Fixed(value.get<double>(), iDecimals);
  return value.is_null() ? "-" : value.dump();
}

std::string FigureText(const Json& value) {
  return ValueText(value, value.is_number() ? DecimalsFor(std::fabs(value.get<double>())) : 0);
}

bool IsPlain(const Json& value) { return !value.is_structured(); }

bool IsListOf(const Json& value, bool (*pfnIs)(const Json&)) {
  return value.is_array() && !value.empty() && std::all_of(value.begin(), value.end(), pfnIs);
}

bool IsObject(const Json& value) { return value.is_object(); }
bool IsPlainList(const Json& value) { return IsListOf(value, IsPlain); }

std::string LabelOfRow(const Json& row) {
  for (const char* szKey : {"name", "label"}) {
    if (row.contains(szKey) && row[szKey].is_string()) return row[szKey].get<std::string>();
  }
  return row.contains("id") ? FigureText(row["id"]) : "";
}

double LengthOfRow(const Json& row) {
  if (row.contains("deviation") && row["deviation"].is_number()) {
    return std::fabs(row["deviation"].get<double>());
  }
  const double dz = NumberAt(row, "dz");
  return std::hypot(NumberAt(row, "dx"), NumberAt(row, "dy"), std::isfinite(dz) ? dz : 0.0);
}

// Objects with their inner objects and short lists laid out side by side: "sd x", "sd y".
class FlatTable {
 public:
  FlatTable(const Json& rows, const std::string& strUnit) : m_strUnit(strUnit) {
    std::vector<std::pair<double, const Json*>> ranked;
    for (const Json& row : rows) ranked.emplace_back(Rank(row), &row);
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    for (const auto& rank : ranked) m_sorted.push_back(rank.second);
    m_uMore = m_sorted.size() > kShownRows ? m_sorted.size() - kShownRows : 0;
    m_sorted.resize(m_sorted.size() - m_uMore);
    for (const Json* pRow : m_sorted) {
      m_cells.emplace_back(m_columns.size());
      const std::string strLabel = pRow->contains("name") ? LabelOfRow(*pRow) : "";
      if (!strLabel.empty()) Put("point", Json(strLabel));
      for (const auto& item : pRow->items()) {
        if (!strLabel.empty() && (item.key() == "name" || item.key() == "id")) continue;
        Add(item.key(), item.value());
      }
    }
  }

  AdjustReport::Table Table(const std::string& strTitle) const {
    AdjustReport::Table table;
    table.strTitle = strTitle;
    table.uMore = m_uMore;
    std::vector<int> decimals;
    for (const Column& column : m_columns) {
      table.columns.push_back({TitleOf(column.strKey, m_strUnit), column.bText});
      decimals.push_back(DecimalsFor(column.dLargest));
    }
    for (const auto& cells : m_cells) {
      std::vector<std::string> row;
      for (size_t i = 0; i < m_columns.size(); ++i) {
        row.push_back(i < cells.size() ? ValueText(cells[i], decimals[i]) : "-");
      }
      table.rows.push_back(std::move(row));
    }
    return table;
  }

 private:
  struct Column {
    std::string strKey;
    double dLargest = 0.0;
    bool bText = false;
  };

  // The longest residual first, points without one behind.
  static double Rank(const Json& row) {
    const double d = LengthOfRow(row);
    return std::isfinite(d) ? d : -1.0;
  }

  void Put(const std::string& strKey, const Json& value) {
    size_t i = 0;
    while (i < m_columns.size() && m_columns[i].strKey != strKey) ++i;
    if (i == m_columns.size()) m_columns.push_back({strKey});
    Column& column = m_columns[i];
    if (value.is_number_float()) {
      const double d = std::fabs(value.get<double>());
      if (std::isfinite(d)) column.dLargest = std::max(column.dLargest, d);
    }
    column.bText |= value.is_string() && strKey != "point";
    auto& cells = m_cells.back();
    cells.resize(std::max(cells.size(), m_columns.size()));
    cells[i] = value;
  }

  void Add(const std::string& strKey, const Json& value) {
    if (IsPlain(value)) return Put(strKey, value);
    if (value.is_object()) {
      for (const auto& item : value.items()) {
        if (IsPlain(item.value())) Put(strKey + " " + item.key(), item.value());
      }
    } else if (IsPlainList(value)) {
      const bool bAxes = value.size() <= 3 && value.size() > 1 && value[0].is_number();
      if (!bAxes) return Put(strKey, Json(Listed(value)));
      for (size_t i = 0; i < value.size(); ++i) Put(strKey + " " + kAxisKeys[i], value[i]);
    }
  }

  static std::string Listed(const Json& values) {
    std::string strText;
    for (size_t i = 0; i < std::min(values.size(), kShownItems); ++i) {
      strText += (i == 0 ? "" : ", ") + FigureText(values[i]);
    }
    if (values.size() <= kShownItems) return strText;
    return strText + " and " + std::to_string(values.size() - kShownItems) + " more";
  }

  std::string m_strUnit;
  std::vector<const Json*> m_sorted;
  std::vector<Column> m_columns;
  std::vector<std::vector<Json>> m_cells;
  size_t m_uMore = 0;
};

AdjustReport::Table MatrixTable(const Json& rows, const std::string& strTitle, const Json& names) {
  AdjustReport::Table table;
  table.strTitle = strTitle;
  const bool bNames = names.is_array() && names.size() == rows.size();
  if (bNames) table.columns.push_back({"", true});
  for (size_t i = 0; i < rows[0].size(); ++i) {
    table.columns.push_back({bNames ? FigureText(names[i]) : std::to_string(i + 1)});
  }
  for (size_t i = 0; i < rows.size(); ++i) {
    std::vector<std::string> row;
    if (bNames) row.push_back(FigureText(names[i]));
    for (const Json& value : rows[i]) {
      row.push_back(value.is_number() ? Shortest(value.get<double>()) : FigureText(value));
    }
    table.rows.push_back(std::move(row));
  }
  return table;
}

class ResultReport {
 public:
  ResultReport(const Json& result, Context& context) : m_result(result), m_context(context) {
    m_report.strUnit = result["unit"].is_string() ? result["unit"].get<std::string>() : "units";
    m_strUnit = result["unit"].is_string() ? m_report.strUnit : "";
  }

  AdjustReport Report(const std::string& strSummary) {
    m_report.strTitle = Heading(strSummary);
    m_report.strViews = "Picture";
    m_report.strVerdict = Verdict();
    for (const auto& item : m_result.items()) {
      if (!IsOneOf(item.key(), kFrameKeys)) AddValue(item.key(), item.value());
    }
    AddParameters();
    AddFigures();
    AddInputs();
    if (m_result.contains("photos")) AddCameras(m_result["photos"]);
    for (const char* szKey : {"points", "crosses"}) {
      if (m_result.contains(szKey)) AddViews(m_result[szKey]);
    }
    for (const char* szKey : {"control", "conditions"}) {  // of a rectification
      const auto found = m_result.find(szKey);
      if (found != m_result.end() && found->is_object()) AddViews(found->value("points", Json()));
    }
    if (m_report.views.empty() && m_context.Report().bAllPlaces) AddViews(GivenPlaces({}), true);
    if (m_report.views.empty() && !m_context.Report().cameras.empty()) AddViews({}, true);
    if (m_result.contains("clouds")) AddBoxes(m_result["clouds"]);
    return m_report;
  }

 private:
  // The single numbers and words, in front of all lists.
  void AddFigures() {
    m_figures.emplace_back("status", m_result["status_text"].get<std::string>());
    AdjustReport::Table table;
    table.strTitle = "Result";
    table.columns = {{"figure", true}, {"value", true}};
    for (const auto& [strName, strText] : m_figures) table.rows.push_back({strName, strText});
    m_report.tables.insert(m_report.tables.begin(), std::move(table));
  }

  void AddInputs() {
    if (!m_result.contains("read_as") || !m_result["read_as"].is_array()) return;
    for (const Json& text : m_result["read_as"]) {
      m_report.inputs.emplace_back("points", FigureText(text));
    }
  }

  // What the command prints first.
  std::string Verdict() const {
    const std::string strText = m_context.PrintedText();
    const std::string strLine = strText.substr(0, strText.find('\n'));
    if (!strLine.empty() && strLine.find("  ") == std::string::npos) return strLine;
    return Heading(m_result["status_text"].get<std::string>()) + ".";
  }

  void AddValue(const std::string& strKey, const Json& value) {
    if (value.is_null()) return;
    if (IsPlain(value)) {
      m_figures.emplace_back(TitleOf(strKey, m_strUnit), FigureText(value));
    } else if (value.is_object()) {
      for (const auto& item : value.items()) {
        const std::string strInner = strKey + " " + item.key();
        if (IsPlain(item.value())) {
          if (!item.value().is_null()) {
            m_figures.emplace_back(TitleOf(strInner, ""), FigureText(item.value()));
          }
        } else {
          AddValue(strInner, item.value());
        }
      }
    } else if (IsListOf(value, IsObject)) {
      AddTable(strKey, value);
    } else if (IsListOf(value, IsPlainList) && value.size() <= kShownItems) {
      m_report.tables.push_back(MatrixTable(value, Heading(strKey), Json()));
    } else if (IsPlainList(value)) {
      std::string strText;
      for (size_t i = 0; i < std::min(value.size(), kShownItems); ++i) {
        strText += (i == 0 ? "" : ", ") + FigureText(value[i]);
      }
      if (value.size() > kShownItems) {
        strText += " and " + std::to_string(value.size() - kShownItems) + " more";
      }
      m_figures.emplace_back(TitleOf(strKey, ""), strText);
    }
  }

  // Lists inside the objects of a list follow it as tables of their own.
  void AddTable(const std::string& strKey, const Json& rows) {
    m_report.tables.push_back(FlatTable(rows, m_strUnit).Table(Heading(strKey)));
    size_t uShown = 0;
    for (const Json& row : rows) {
      for (const auto& item : row.items()) {
        if (!IsListOf(item.value(), IsObject) || ++uShown > kShownItems) continue;
        AddTable(strKey + " " + LabelOfRow(row) + ": " + item.key(), item.value());
      }
    }
  }

  void AddParameters() {
    if (m_result.contains("parameters") && m_result["parameters"].is_object()) {
      for (const auto& item : m_result["parameters"].items()) {
        const std::string strTitle = TitleOf(item.key(), "");
        const size_t uUnit = std::min(strTitle.find(" ["), strTitle.size());
        const Json& value = item.value()["value"];
        m_report.parameters.push_back(
            {strTitle.substr(0, uUnit), FigureText(value), FigureText(item.value()["sd"]),
             uUnit < strTitle.size() ? strTitle.substr(uUnit + 2, strTitle.size() - uUnit - 3)
                                     : "-"});
      }
    }
    if (m_result.contains("covariance") && IsListOf(m_result["covariance"], IsPlainList) &&
        m_result["covariance"].size() <= kShownItems) {
      m_report.tables.push_back(
          MatrixTable(m_result["covariance"], "Covariance of the parameters",
                      m_result.contains("parameter_names") ? m_result["parameter_names"] : Json()));
    }
  }

  struct Place {
    std::array<double, 3> at = {kNone, kNone, kNone}, residual = {kNone, kNone, kNone};
    std::array<double, 9> cov = {};
    bool bUsed = true;
    std::string strLabel;
  };

  Place PlaceOf(const Json& row) const {
    Place place;
    place.strLabel = LabelOfRow(row);
    for (size_t i = 0; i < 3; ++i) {
      place.at[i] = NumberAt(row, kAxisKeys[i]);
      place.residual[i] = NumberAt(row, (std::string("d") + kAxisKeys[i]).c_str());
      double dSd = NumberAt(row, (std::string("s") + kAxisKeys[i]).c_str());
      if (row.contains("sd") && row["sd"].is_array() && row["sd"].size() > i) {
        dSd = row["sd"][i].is_number() ? row["sd"][i].get<double>() : kNone;
      }
      place.cov[4 * i] = std::isfinite(dSd) ? dSd * dSd : 0.0;
    }
    if (row.contains("moved") && row["moved"].is_array() && row["moved"].size() == 2) {
      for (size_t i = 0; i < 2; ++i) place.residual[i] = row["moved"][i].get<double>();
    }
    if (row.contains("cov") && row["cov"].is_array() && row["cov"].size() == 3) {
      for (size_t i = 0; i < 3; ++i) {  // xy, xz, yz
        const double d = row["cov"][i].is_number() ? row["cov"][i].get<double>() : 0.0;
        const size_t a = i == 2 ? 1 : 0, b = i == 0 ? 1 : 2;
        place.cov[3 * a + b] = place.cov[3 * b + a] = d;
      }
    }
    const auto& places = m_context.Report().places;
    if (row.contains("id") && row["id"].is_number_unsigned() && !std::isfinite(place.at[0])) {
      const auto found = places.find(row["id"].get<unsigned>());
      if (found != places.end()) place.at = found->second;
    }
    const bool bAside = row.contains("used") && row["used"] == false;
    place.bUsed = !bAside && !IsNamed("rejected", place.strLabel);
    return place;
  }

  bool IsNamed(const char* szKey, const std::string& strLabel) const {
    if (!m_result.contains(szKey) || !m_result[szKey].is_array()) return false;
    const Json& list = m_result[szKey];
    return std::any_of(list.begin(), list.end(), [&](const Json& label) {
      return !label.is_structured() && FigureText(label) == strLabel;
    });
  }

  // The plan, and where heights differ the points from the side.
  void AddViews(const Json& rows) {
    if (!IsListOf(rows, IsObject)) return;
    std::vector<Place> places;
    bool bHeights = false;
    for (const Json& row : rows) {
      const Place place = PlaceOf(row);
      if (!std::isfinite(place.at[0] + place.at[1])) continue;
      bHeights |= std::isfinite(place.at[2]) && place.at[2] != 0.0;
      places.push_back(place);
    }
    if (places.empty()) return;
    for (const Place& place : GivenPlaces(places)) places.push_back(place);
    AddViews(places, bHeights);
  }

  // The points of the command that none of `places` has the name of.
  std::vector<Place> GivenPlaces(const std::vector<Place>& places) const {
    std::vector<Place> given;
    if (!m_context.Report().bAllPlaces) return given;
    for (const auto& [uId, at] : m_context.Report().places) {
      Place place;
      place.strLabel = std::to_string(uId);
      place.at = at;
      const bool bNamed = std::any_of(places.begin(), places.end(), [&place](const Place& other) {
        return other.strLabel == place.strLabel;
      });
      if (!bNamed) given.push_back(std::move(place));
    }
    return given;
  }

  void AddViews(const std::vector<Place>& places, bool bHeights) {
    AddView(places, 0, 1);
    if (bHeights) AddView(places, 0, 2);
  }

  void AddView(const std::vector<Place>& places, size_t iX, size_t iY) {
    ReportView view;
    view.strTitle = iY == 1 ? "Plan" : "From the side";
    view.strAxisX = kAxisKeys[iX];
    view.strAxisY = kAxisKeys[iY];
    bool bResiduals = false;
    for (const Place& place : places) {
      ReportView::Item item;
      item.x = place.at[iX];
      item.y = place.at[iY];
      item.bArrow = std::isfinite(place.residual[iX] + place.residual[iY]);
      bResiduals |= item.bArrow;
      if (item.bArrow) {
        item.dx = place.residual[iX];
        item.dy = place.residual[iY];
      }
      item.cxx = place.cov[4 * iX];
      item.cyy = place.cov[4 * iY];
      item.cxy = place.cov[3 * iX + iY];
      item.bUsed = place.bUsed;
      item.strLabel = place.strLabel;
      view.items.push_back(std::move(item));
    }
    if (bResiduals) view.strNote = "Arrows: given minus computed.";
    AddCameraLines(iX, iY, &view);
    m_report.views.push_back(std::move(view));
  }

  // The way each looks, a part of the extent long.
  void AddCameraLines(size_t iX, size_t iY, ReportView* pView) const {
    constexpr double kPart = 0.08;
    const auto& cameras = m_context.Report().cameras;
    double adLow[2] = {HUGE_VAL, HUGE_VAL}, adHigh[2] = {-HUGE_VAL, -HUGE_VAL};
    const auto add = [&](double x, double y) {
      adLow[0] = std::min(adLow[0], x);
      adLow[1] = std::min(adLow[1], y);
      adHigh[0] = std::max(adHigh[0], x);
      adHigh[1] = std::max(adHigh[1], y);
    };
    for (const auto& item : pView->items) add(item.x, item.y);
    for (const auto& camera : cameras) add(camera.at[iX], camera.at[iY]);
    const double dExtent = std::max(adHigh[0] - adLow[0], adHigh[1] - adLow[1]);
    const double dLength = dExtent > 0.0 ? kPart * dExtent : 1.0;
    for (const auto& camera : cameras) {
      const double x = camera.at[iX], y = camera.at[iY];
      const double dx = dLength * camera.view[iX], dy = dLength * camera.view[iY];
      // A triangle that opens the way the camera looks.
      pView->lines.push_back({{{x, y},
                               {x + dx - 0.35 * dy, y + dy + 0.35 * dx},
                               {x + dx + 0.35 * dy, y + dy - 0.35 * dx},
                               {x, y}},
                              camera.strLabel});
    }
  }

  // Photos that tell where they stood.
  void AddCameras(const Json& photos) {
    if (!IsListOf(photos, IsObject)) return;
    for (const Json& photo : photos) {
      if (!photo.contains("position") || !photo.contains("rotation")) continue;
      if (!photo["position"].is_array() || !photo["rotation"].is_array()) continue;
      CommandReport::Camera camera;
      for (size_t i = 0; i < 3; ++i) {
        camera.at[i] = photo["position"][i].get<double>();
        camera.view[i] = -photo["rotation"][i][2].get<double>();
      }
      camera.strLabel = LabelOfRow({{"id", photo["id"]}});
      m_context.Report().cameras.push_back(camera);
    }
  }

  // Clouds as the boxes they fill.
  void AddBoxes(const Json& clouds) {
    if (!IsListOf(clouds, IsObject)) return;
    for (const size_t iY : {1U, 2U}) {
      ReportView view;
      view.strTitle = iY == 1 ? "Limits, plan" : "Limits, from the side";
      view.strAxisX = kAxisKeys[0];
      view.strAxisY = kAxisKeys[iY];
      for (const Json& cloud : clouds) {
        if (!IsPlainList(cloud.value("min", Json())) || !IsPlainList(cloud.value("max", Json()))) {
          continue;
        }
        const Json &low = cloud["min"], &high = cloud["max"];
        if (!low[0].is_number() || !high[iY].is_number()) continue;
        const double x1 = low[0].get<double>(), x2 = high[0].get<double>();
        const double y1 = low[iY].get<double>(), y2 = high[iY].get<double>();
        view.lines.push_back(
            {{{x1, y2}, {x2, y2}, {x2, y1}, {x1, y1}, {x1, y2}}, LabelOfRow(cloud)});
      }
      if (!view.lines.empty()) m_report.views.push_back(std::move(view));
    }
  }

  const Json& m_result;
  Context& m_context;
  AdjustReport m_report;
  std::vector<std::pair<std::string, std::string>> m_figures;
  std::string m_strUnit;  // empty where it is not known
};

}  // namespace

AdjustReport ReportOfResult(const Json& result, const std::string& strSummary, Context& context) {
  return ResultReport(result, context).Report(strSummary);
}

}  // namespace cli
