#include "cmd_adjust_input.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>

#include "adjust_options.h"
#include "exit_code.h"
#include "point_input.h"
#include "zu/foundation/number_text.h"
#include "zu/project/project.h"

namespace cli {

namespace {

constexpr std::string_view kDividers = " \t;,\r";

std::vector<std::string_view> Split(std::string_view line, std::string_view dividers) {
  std::vector<std::string_view> fields;
  for (size_t u = 0; u < line.size();) {
    const size_t uStart = line.find_first_not_of(dividers, u);
    if (uStart == std::string_view::npos) break;
    u = std::min(line.find_first_of(dividers, uStart), line.size());
    fields.push_back(line.substr(uStart, u - uStart));
  }
  return fields;
}

[[noreturn]] void FailAt(const std::string& strName, int iLine, const std::string& strWhat,
                         const std::string& strRight) {
  throw CommandError(kBadInput, strName + ":" + std::to_string(iLine) + ": " + strWhat + "; " +
                                    strRight + " would be right");
}

int FindPoint(const ZuNetwork& network, double dId) {
  for (size_t i = 0; i < network.points.size(); ++i) {
    if (network.points[i].uId == static_cast<unsigned>(dId)) return static_cast<int>(i);
  }
  return -1;
}

}  // namespace

std::vector<NumberRow> ReadNumberRows(const std::string& strPath, size_t uIds, size_t uLeast,
                                      size_t uMost, const char* szRight) {
  return ReadNumberRows(InputFile(strPath, szRight), uIds, uLeast, uMost, szRight);
}

std::vector<NumberRow> ReadNumberRows(const InputFile& file, size_t uIds, size_t uLeast,
                                      size_t uMost, const char* szRight) {
  const std::string strText = file.Text();
  std::vector<NumberRow> rows;
  int iLine = 0;
  for (size_t u = 0; u < strText.size();) {
    const size_t uEnd = std::min(strText.find('\n', u), strText.size());
    const std::string_view line = std::string_view(strText).substr(u, uEnd - u);
    u = uEnd + 1;
    ++iLine;
    const auto fields = Split(line, kDividers);
    if (fields.empty() || fields[0][0] == '#') continue;
    if (fields.size() < uLeast || fields.size() > uMost) {
      FailAt(file.Name(), iLine, std::to_string(fields.size()) + " fields", szRight);
    }
    NumberRow row{iLine, {}};
    for (size_t i = 0; i < fields.size(); ++i) {
      double d = 0.0;
      unsigned uId = 0;
      if (i < uIds && !ZuParseId(fields[i], &uId)) {
        FailAt(file.Name(), iLine, ZuWhyNoId(fields[i]).m_strText, szRight);
      }
      if (!ZuParseNumber(fields[i], &d)) {
        FailAt(file.Name(), iLine, ZuWhyNoNumber(fields[i]).m_strText, szRight);
      }
      row.values.push_back(d);
    }
    rows.push_back(std::move(row));
  }
  if (rows.empty()) {
    throw CommandError(kBadInput, file.Name() + ": no row in it; " + szRight + " would be right");
  }
  return rows;
}

ZuPointList ReadAdjustPoints(const std::string& strPath, Context& context) {
  constexpr char kRight[] = "a row \"id x y z\" or \"id x y z dx dy dz\"";
  ZuPointList points;
  const InputFile file(strPath, kRight);
  if (TellsItsColumns(file)) {
    const PointFormat format;
    ReadPoints(file, format, context, &points);
    CheckAccuracies(file.Name(), points, format.strColumns);
    return points;
  }
  std::map<double, int> lines;
  for (const NumberRow& row : ReadNumberRows(file, 1, 4, 7, kRight)) {
    const std::vector<double>& v = row.values;
    if (v.size() != 4 && v.size() != 7) {
      FailAt(NameInMessages(strPath), row.iLine, std::to_string(v.size()) + " fields", kRight);
    }
    const auto [at, bNew] = lines.emplace(v[0], row.iLine);
    if (!bNew) {
      FailAt(NameInMessages(strPath), row.iLine,
             "point " + std::to_string(static_cast<unsigned>(v[0])) + " stands in line " +
                 std::to_string(at->second) + " already",
             "one row a point");
    }
    ZuPoint point(static_cast<unsigned>(v[0]), v[1], v[2], v[3], 0);
    if (v.size() == 7) {
      if (v[4] < 0.0 || v[5] < 0.0 || v[6] < 0.0) {
        FailAt(NameInMessages(strPath), row.iLine, "a negative standard deviation", kRight);
      }
      point.m_dDX = v[4];
      point.m_dDY = v[5];
      point.m_dDZ = v[6];
    }
    points.Add(point);
  }
  return points;
}

void ReadScaleBars(const std::string& strPath, ZuNetwork* pNetwork) {
  constexpr char kRight[] = "a row \"id_a id_b distance sigma\"";
  for (const NumberRow& row : ReadNumberRows(strPath, 2, 4, 4, kRight)) {
    const std::vector<double>& v = row.values;
    ZuNetworkDistance distance{FindPoint(*pNetwork, v[0]), FindPoint(*pNetwork, v[1]), v[2], v[3]};
    for (size_t i = 0; i < 2; ++i) {
      if ((i == 0 ? distance.iFrom : distance.iTo) >= 0) continue;
      FailAt(NameInMessages(strPath), row.iLine,
             "point " + std::to_string(static_cast<unsigned>(v[i])) + " is not in the network",
             "a point measured in photos");
    }
    if (distance.iFrom == distance.iTo || !(v[2] > 0.0) || !(v[3] > 0.0)) {
      FailAt(NameInMessages(strPath), row.iLine, "no distance of two points with its sigma",
             kRight);
    }
    pNetwork->distances.push_back(distance);
  }
}

void ReadMeasurements(const std::string& strPath, ZuProject* pProject) {
  constexpr char kRight[] = "a row \"photo id x y dx dy\" in pixels";
  std::set<std::pair<double, double>> seen;
  for (const NumberRow& row : ReadNumberRows(strPath, 2, 6, 6, kRight)) {
    const std::vector<double>& v = row.values;
    const unsigned uPhoto = static_cast<unsigned>(v[0]), uId = static_cast<unsigned>(v[1]);
    if (!(v[4] > 0.0) || !(v[5] > 0.0)) {
      FailAt(NameInMessages(strPath), row.iLine, "a standard deviation that is not above 0",
             kRight);
    }
    if (pProject->PhotoList().Find(uPhoto) == nullptr) {
      FailAt(NameInMessages(strPath), row.iLine,
             "the project has no photo " + std::to_string(uPhoto), "one of its photos");
    }
    if (!seen.emplace(v[0], v[1]).second) {
      FailAt(NameInMessages(strPath), row.iLine, "this point of the photo stands twice",
             "one row an image point");
    }
    ZuPointList& pixels = pProject->Measurements(uPhoto);
    ZuPoint* pPoint = pixels.Find(uId, 0, nullptr);
    if (pPoint == nullptr) pPoint = pixels.Add(ZuPoint(uId, 0.0, 0.0, 0.0, 0));
    pPoint->m_dX = v[2];
    pPoint->m_dY = v[3];
    pPoint->m_dDX = v[4];
    pPoint->m_dDY = v[5];
  }
}

void ParseSigma(const std::string& strText, ZuNetworkInput* pInput) {
  const bool bPixels = strText.ends_with("px"), bMm = strText.ends_with("mm");
  double d = 0.0;
  if ((!bPixels && !bMm) ||
      !ZuParseNumber(std::string_view(strText).substr(0, strText.size() - 2), &d) || !(d > 0.0)) {
    throw CommandError(kUsage, "--sigma \"" + strText +
                                   "\" is no standard deviation; 0.1px or 0.0005mm would be right");
  }
  pInput->dSigma = d;
  pInput->bSigmaInPixels = bPixels;
}

unsigned ParseEstimate(const std::string& strText) {
  if (strText == "none") return 0;
  unsigned uBits = 0;
  for (const std::string_view name : Split(strText, ",")) {
    int k = 0;
    while (k < ZuNetworkParameters && name != ZuNetworkParameterName(k)) ++k;
    if (k == ZuNetworkParameters) {
      throw CommandError(kUsage, "--estimate: \"" + std::string(name) +
                                     "\" is no parameter; c, xh, yh, a1, a2, a3, b1, b2, c1, c2 "
                                     "with commas between, or none, would be right");
    }
    uBits |= 1U << k;
  }
  return uBits;
}

ZuNetworkDatum ParseDatum(const std::string& strText, ZuNetwork* pNetwork) {
  if (strText == "control") return ZuNetworkDatum::Control;
  if (strText == "inner") return ZuNetworkDatum::Inner;
  if (!strText.starts_with("inner:")) {
    throw CommandError(kUsage, "--datum \"" + strText +
                                   "\"; control, inner or inner:1,2,3 with ids of points would be "
                                   "right");
  }
  for (ZuNetworkPoint& point : pNetwork->points) point.bDatum = false;
  for (const std::string_view id : Split(std::string_view(strText).substr(6), ",")) {
    unsigned uId = 0;
    if (!ZuParseId(id, &uId)) throw CommandError(kUsage, "--datum: " + ZuWhyNoId(id).m_strText);
    const int i = FindPoint(*pNetwork, uId);
    if (i < 0) {
      throw CommandError(kBadInput,
                         "--datum: point " + std::to_string(uId) + " is not in the network");
    }
    pNetwork->points[static_cast<size_t>(i)].bDatum = true;
  }
  return ZuNetworkDatum::Inner;
}

}  // namespace cli
