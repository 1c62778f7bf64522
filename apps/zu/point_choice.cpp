#include "point_choice.h"

#include <algorithm>
#include <cmath>

#include "nearest_word.h"
#include "text_table.h"
#include "zu/foundation/sort_helper.h"
#include "zu/foundation/strict_number.h"
#include "zu/points/name_line.h"

namespace cli {

namespace {

constexpr size_t kMostBeyond = 10;  // points beyond the tolerance that are named
constexpr const char* kAxes[] = {"x", "y", "z"};

const ZuPoint* FindIn(const std::string& strName, std::initializer_list<const ZuPointList*> lists) {
  unsigned uId = 0;
  const bool bId = ZuParseId(strName, &uId);
  for (const bool bByName : {true, false}) {
    for (const ZuPointList* pList : lists) {
      for (const ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) {
        const bool bNamed = !p->GetName().empty();
        if (bByName ? bNamed && strName == p->GetName().chars() : bId && p->GetId() == uId) {
          return p;
        }
      }
    }
  }
  return nullptr;
}

// Root mean squares by axis.
std::array<double, 3> RmsOfDeviations(const std::vector<Deviation>& checks) {
  std::array<double, 3> sums = {};
  for (const Deviation& check : checks) {
    for (size_t k = 0; k < 3; ++k) {
      sums[k] += check.ad[k] * check.ad[k] / static_cast<double>(checks.size());
    }
  }
  for (double& d : sums) d = std::sqrt(d);
  return sums;
}

Json RmsJsonOf(const std::array<double, 3>& ad, int iDimensions) {
  if (iDimensions == 1) return RmsJson(ad[0]);
  return RmsJson(std::vector<double>(ad.begin(), ad.begin() + iDimensions));
}

Json AxesJson(const std::array<double, 3>& ad, int iDimensions) {
  if (iDimensions == 1) return ad[0];
  Json json = Json::object();
  for (int k = 0; k < iDimensions; ++k) json[kAxes[k]] = ad[static_cast<size_t>(k)];
  return json;
}

}  // namespace

std::string PointHint(const std::string& strName, std::initializer_list<const ZuPointList*> lists) {
  std::vector<std::string> known;
  for (const ZuPointList* pList : lists) {
    for (const ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) {
      known.push_back(PointLabel(*p));
    }
  }
  const std::string strNearest = NearestWord(strName, known);
  if (!strNearest.empty()) return "; did you mean " + strNearest + "?";
  if (known.empty()) return "; there is no point at all";
  std::string strSome;
  for (size_t i = 0; i < std::min<size_t>(known.size(), 3); ++i) {
    strSome += (i == 0 ? "" : ", ") + known[i];
  }
  return "; points such as " + strSome + " are there";
}

std::string OwnPoints(const std::string& strFileA, const ZuPointList& a,
                      const std::string& strFileB, const ZuPointList& b) {
  if (a.IsEmpty() || b.IsEmpty()) return "";
  return "\npoints are the same by name, or else by id: the first of " + strFileA + " is " +
         PointLabel(*a.First()) + ", of " + strFileB + " is " + PointLabel(*b.First()) +
         "; --columns tells where they stand";
}

double Deviation::Length() const { return std::hypot(ad[0], ad[1], ad[2]); }

void AddPointChoice(Options& options, PointChoice* pChoice, bool bTolerance) {
  options.Option("--without", "P,Q,...", &pChoice->strWithout,
                 "points that take no part, by name or id");
  options.Option("--check-points", "P,Q,...", &pChoice->strCheck,
                 "points that take no part; what the result leaves to them is told apart");
  if (!bTolerance) return;
  options.Option("--tolerance", "T", &pChoice->dTolerance,
                 "exit code 1 where a residual or the deviation of a check point is longer than T");
  options.Above(0.0);
}

PointRoles::PointRoles(const PointChoice& choice, const std::string& strFiles,
                       std::initializer_list<const ZuPointList*> lists)
    : m_without(IdsOf(choice.strWithout, "--without", strFiles, lists)),
      m_check(IdsOf(choice.strCheck, "--check-points", strFiles, lists)) {
  for (const unsigned uId : m_without) {
    for (const ZuPointList* pList : lists) {
      const ZuPoint* p = pList->TZuListHeader<ZuPoint>::Find(uId);
      if (p == nullptr) continue;
      m_withoutLabels.push_back(PointLabel(*p));
      if (IsCheck(uId)) {
        throw CommandError(kUsage, "point " + PointLabel(*p) +
                                       " is in --without and in --check-points; one of them would "
                                       "be right");
      }
      break;
    }
  }
}

std::set<unsigned> PointRoles::IdsOf(const std::string& strNames, const char* szOption,
                                     const std::string& strFiles,
                                     std::initializer_list<const ZuPointList*> lists) const {
  std::vector<std::string> names;
  if (!ZuParseNameLine(strNames, &names)) {
    throw CommandError(kUsage, std::string(szOption) + " " + strNames +
                                   ": a quote is not closed; 3,K107 would be right");
  }
  std::set<unsigned> ids;
  for (const std::string& strName : names) {
    if (const ZuPoint* p = FindIn(strName, lists)) {
      ids.insert(p->GetId());
      continue;
    }
    throw CommandError(kBadInput, std::string(szOption) + ": no point \"" + strName + "\" in " +
                                      strFiles + PointHint(strName, lists));
  }
  return ids;
}

ZuPointList PointRoles::TakeOut(const ZuPointList& source, ZuPointList* pControl) const {
  ZuPointList checks;
  if (m_without.empty() && m_check.empty()) return checks;
  const ZuSortHelper<ZuPoint> index(&source);
  ZuPointList rest;
  for (const ZuPoint* p = pControl->First(); p != nullptr; p = p->Next()) {
    const bool bOut = !TakesPart(p->GetId()) && index.Find(p->GetId()) != nullptr;
    if (!bOut) {
      rest.Add(*p);
    } else if (IsCheck(p->GetId())) {
      checks.Add(*p);
    }
  }
  pControl->Destroy();
  rest.MoveTo(pControl);
  return checks;
}

void PointRoles::Write(const std::vector<Deviation>& checks, int iDimensions,
                       std::ostream& text) const {
  if (!m_withoutLabels.empty()) {
    text << "\nleft out by --without:";
    for (const std::string& strLabel : m_withoutLabels) text << ' ' << strLabel;
    text << '\n';
  }
  if (checks.empty()) return;
  double dLargest = 0.0;
  for (const Deviation& check : checks) dLargest = std::max(dLargest, check.Length());
  const int iDecimals = DecimalsFor(dLargest);
  text << (iDimensions == 1
               ? "\ncheck points: distance from the plane, above 0 on the side of the normal\n"
               : "\ncheck points: computed minus check\n");
  TextTable table;
  table.AddColumn("point");
  for (int k = 0; k < iDimensions; ++k) {
    table.AddColumn(iDimensions == 1 ? "deviation" : std::string("d") + kAxes[k]);
  }
  if (iDimensions > 1) table.AddColumn("length");
  const auto addRow = [&](const std::string& strLabel, const std::array<double, 3>& ad) {
    std::vector<std::string> row = {strLabel};
    for (int k = 0; k < iDimensions; ++k) {
      row.push_back(Fixed(ad[static_cast<size_t>(k)], iDecimals));
    }
    if (iDimensions > 1) row.push_back(Fixed(std::hypot(ad[0], ad[1], ad[2]), iDecimals));
    table.AddRow(row);
  };
  for (const Deviation& check : checks) addRow(PointLabel(*check.pPoint), check.ad);
  addRow("RMS", RmsOfDeviations(checks));
  table.Write(text);
}

void PointRoles::AddJson(const std::vector<Deviation>& checks, int iDimensions, Json* pRoot) const {
  (*pRoot)["without"] = m_withoutLabels;
  Json points = Json::array();
  for (const Deviation& check : checks) {
    Json point = {{"id", check.pPoint->GetId()}};
    if (!check.pPoint->GetName().empty()) point["name"] = check.pPoint->GetName().chars();
    point["deviation"] = AxesJson(check.ad, iDimensions);
    points.push_back(std::move(point));
  }
  const std::array<double, 3> rms = RmsOfDeviations(checks);
  (*pRoot)["check_points"] = {{"rms", checks.empty() ? Json() : RmsJsonOf(rms, iDimensions)},
                              {"points", std::move(points)}};
}

ExitCode WithinTolerance(const PointChoice& choice,
                         const std::vector<std::pair<std::string, double>>& lengths,
                         Context& context, ExitCode eCode) {
  if (!(choice.dTolerance > 0.0)) return eCode;
  size_t uBeyond = 0;
  for (const auto& length : lengths) {
    if (length.second <= choice.dTolerance) continue;
    if (uBeyond++ >= kMostBeyond) continue;
    context.Warn("point " + length.first + " is off by " +
                 Fixed(length.second, DecimalsFor(length.second)) + ", beyond --tolerance " +
                 Shortest(choice.dTolerance));
  }
  if (uBeyond > kMostBeyond) {
    context.Warn(Counted(uBeyond - kMostBeyond, "more point") + " beyond --tolerance " +
                 Shortest(choice.dTolerance));
  }
  return uBeyond > 0 ? kNotAcceptable : eCode;
}

void AddLengths(const std::vector<Deviation>& checks,
                std::vector<std::pair<std::string, double>>* pLengths) {
  for (const Deviation& check : checks) {
    pLengths->emplace_back(PointLabel(*check.pPoint), check.Length());
  }
}

}  // namespace cli
