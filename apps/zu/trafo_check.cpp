#include "trafo_check.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "exit_code.h"
#include "text_table.h"
#include "zu/transform/calc_trafo2d.h"
#include "zu/transform/trafo3d.h"

namespace cli {
namespace {

constexpr double kProper = 1e-6;    // |det R - 1| of a rotation at most [-]
constexpr double kBad = 1e-4;       // RMS over the extent from which a fit is looked at [-]
constexpr double kBetter = 0.1;     // RMS over the former one of a fit that explains it [-]
constexpr double kRounding = 1e-6;  // length over the extent that is no blunder [-]
// Length over the median of a point that stands out [-]. Among few points it bends the fit, and so
// the lengths of the others; among many ones the tail of good points reaches farther.
constexpr double kOutlierOfFew = 3.0, kOutlierOfMany = 5.0;
constexpr size_t kMany = 100;
constexpr size_t kFewest = 4;           // points of which one can stand out
constexpr size_t kFewestOfSeveral = 6;  // points of which two can be told from the others
constexpr size_t kMostSearched = 60;    // points among which several are looked for
constexpr double kMuchBetter = 0.2;     // RMS over that with the wrong points [-]
constexpr double kNone = std::numeric_limits<double>::infinity();

// Largest side of the box.
double ExtentOf(const ZuPointList& points) {
  double adLow[3] = {kNone, kNone, kNone}, adHigh[3] = {-kNone, -kNone, -kNone};
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    const double ad[] = {p->m_dX, p->m_dY, p->m_dZ};
    for (int i = 0; i < 3; ++i) {
      adLow[i] = std::min(adLow[i], ad[i]);
      adHigh[i] = std::max(adHigh[i], ad[i]);
    }
  }
  return std::max({adHigh[0] - adLow[0], adHigh[1] - adLow[1], adHigh[2] - adLow[2]});
}

// Of an even number of lengths the mean of the two in the middle. Reorders them.
double Median(std::vector<double>* pLengths) {
  const auto middle = pLengths->begin() + static_cast<std::ptrdiff_t>(pLengths->size() / 2);
  std::nth_element(pLengths->begin(), middle, pLengths->end());
  if (pLengths->size() % 2 == 1) return *middle;
  return (*std::max_element(pLengths->begin(), middle) + *middle) / 2.0;
}

std::string Figure(double d, double dLargest) { return Fixed(d, DecimalsFor(dLargest)); }

}  // namespace

double SimilarityRms(const ZuPointList& source, const ZuPointList& control) {
  ZuPointList controlCopy(control);
  const ZuSortHelper<ZuPoint> index(&controlCopy);
  ZuTrafo3d trafo;
  if (!trafo.CalcByControlPoints(index, &source, 3, false)) return kNone;
  if (!(std::fabs(trafo.m_mRot.Sarrus() - 1.0) < kProper)) return kNone;
  double dSum = 0.0;
  for (const ZuPoint* p = source.First(); p != nullptr; p = p->Next()) {
    const ZuPoint* const pControl = index.Find(p->GetId());
    const double ad[] = {p->m_dX - trafo.m_vSource[1], p->m_dY - trafo.m_vSource[2],
                         p->m_dZ - trafo.m_vSource[3]};
    const double adControl[] = {pControl->m_dX, pControl->m_dY, pControl->m_dZ};
    for (int i = 1; i <= 3; ++i) {
      const double* const pRow = trafo.m_mRot[i];
      const double d = trafo.m_dScale * (pRow[1] * ad[0] + pRow[2] * ad[1] + pRow[3] * ad[2]) +
                       trafo.m_vTarget[i] - adControl[i - 1];
      dSum += d * d;
    }
  }
  return std::sqrt(dSum / source.Count());
}

double HelmertRms(const ZuPointList& source, const ZuPointList& control) {
  ZuPointList sourceCopy(source), controlCopy(control);
  ZuCalcTrafo2D trafo(&controlCopy);
  if (!trafo.CalcTrafoHelmert(&sourceCopy)) return kNone;
  const ZuSortHelper<ZuPoint> index(&controlCopy);
  double dSum = 0.0;
  for (const ZuPoint* p = source.First(); p != nullptr; p = p->Next()) {
    const ZuPoint* const pControl = index.Find(p->GetId());
    double x = p->m_dX, y = p->m_dY;
    trafo.Transform(&x, &y);
    dSum += std::pow(x - pControl->m_dX, 2) + std::pow(y - pControl->m_dY, 2);
  }
  return std::sqrt(dSum / source.Count());
}

void CheckMirrored(const std::string& strFiles, const std::string& strSource, FitRms pfnRms,
                   const ZuPointList& source, const ZuPointList& control) {
  const double dRms = pfnRms(source, control);
  const double dExtent = ExtentOf(control);
  if (dRms <= kBad * dExtent) return;
  ZuPointList exchanged(source);
  for (ZuPoint* p = exchanged.First(); p != nullptr; p = p->Next()) std::swap(p->m_dX, p->m_dY);
  const double dExchanged = pfnRms(exchanged, control);
  if (!(dExchanged <= kBetter * std::min(dRms, dExtent))) return;
  const double dLargest = std::isfinite(dRms) ? dRms : dExtent;
  throw CommandError(
      kUndetermined,
      strFiles + ": mirrored; RMS " + Figure(dExchanged, dLargest) + " when x and y of " +
          strSource + " are exchanged" +
          (std::isfinite(dRms) ? ", " + Figure(dRms, dLargest) + " as they are" : "") +
          "\nthe columns in the order of the other file would be right");
}

namespace {

ZuPointList Without(const ZuPointList& points, const std::vector<size_t>& left) {
  ZuPointList rest;
  size_t i = 0;
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next(), ++i) {
    if (std::find(left.begin(), left.end(), i) == left.end()) rest.Add(*p);
  }
  return rest;
}

// Points that hide each other: each time the one is left out without which the rest fits best,
// until it fits so much better than all. Empty where no such few are found.
std::vector<size_t> FindWrongPoints(const CommonPoints& common, double* pdRms, double* pdRest) {
  const auto uCount = static_cast<size_t>(common.source.Count());
  std::vector<size_t> left;
  if (common.pfnRms == nullptr || uCount < kFewestOfSeveral || uCount > kMostSearched) return left;
  *pdRms = common.pfnRms(common.source, common.control);
  if (!(*pdRms > kRounding * ExtentOf(common.control))) return left;
  while (3 * (left.size() + 1) <= uCount) {
    size_t uBest = uCount;
    double dBest = kNone;
    left.push_back(0);
    for (size_t i = 0; i < uCount; ++i) {
      if (std::find(left.begin(), left.end() - 1, i) != left.end() - 1) continue;
      left.back() = i;
      const double dRms =
          common.pfnRms(Without(common.source, left), Without(common.control, left));
      if (dRms < dBest) dBest = dRms, uBest = i;
    }
    if (uBest == uCount) break;
    left.back() = uBest;
    *pdRest = dBest;
    if (dBest <= kMuchBetter * *pdRms) return left;
  }
  return {};
}

// In quotes where it would count as two names.
std::string ListedName(const std::string& strLabel) {
  const bool bPlain = strLabel.find_first_of(" \t,#") == std::string::npos;
  return bPlain ? strLabel : '"' + strLabel + '"';
}

// One digit, not below d.
std::string RoundTolerance(double d) {
  const double dUnit = std::pow(10.0, std::floor(std::log10(d)));
  return Shortest(std::ceil(d / dUnit) * dUnit);
}

std::string OtherCommand(const std::string& strOther, double dTolerance) {
  if (strOther.empty() || !(dTolerance > 0.0)) return "";
  return "; or: " + strOther + " --tolerance " + RoundTolerance(dTolerance);
}

}  // namespace

void WarnOfWrongPoints(const std::vector<Residual>& residuals, const CommonPoints& common,
                       Context& context, const std::string& strOther) {
  if (residuals.size() < kFewest) return;
  double dRms = 0.0, dRest = 0.0;
  std::vector<size_t> wrong = FindWrongPoints(common, &dRms, &dRest);
  if (wrong.size() > 1) {
    std::sort(wrong.begin(), wrong.end());
    std::string strNames, strList;
    for (const size_t u : wrong) {
      strNames += (strNames.empty()    ? ""
                   : u == wrong.back() ? " and "
                                       : ", ") +
                  residuals[u].strLabel;
      strList += (strList.empty() ? "" : ",") + ListedName(residuals[u].strLabel);
    }
    context.Warn("points " + strNames + " do not fit the others: RMS " + Figure(dRest, dRms) +
                 " without them, " + Figure(dRms, dRms) + " with them; without them: " +
                 context.CommandWith("--without", strList) + OtherCommand(strOther, 5.0 * dRest));
    return;
  }
  std::vector<double> lengths;
  for (const Residual& r : residuals) lengths.push_back(r.Length());
  const auto largest = std::max_element(lengths.begin(), lengths.end());
  const Residual& worst = residuals[static_cast<size_t>(largest - lengths.begin())];
  const double dMedian = Median(&lengths);
  const double dOutlier = lengths.size() < kMany ? kOutlierOfFew : kOutlierOfMany;
  if (!(worst.Length() > dOutlier * dMedian &&
        worst.Length() > kRounding * ExtentOf(common.control))) {
    return;
  }
  context.Warn("point " + worst.strLabel + " is off by " + Figure(worst.Length(), worst.Length()) +
               ", the median is " + Figure(dMedian, worst.Length()) +
               "; without it: " + context.CommandWith("--without", ListedName(worst.strLabel)) +
               OtherCommand(strOther, 3.0 * dMedian));
}

}  // namespace cli
