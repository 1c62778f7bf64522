#include "similarity_report.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "point_names.h"
#include "text_table.h"

namespace cli {
namespace {

constexpr const char* kParameters[] = {"tx", "ty", "tz", "scale", "angle_x", "angle_y", "angle_z"};
constexpr double kGonPerRadian = 200.0 / std::numbers::pi;

// Values and covariance in the order of kParameters, angles in radians.
struct Parameters {
  double adValue[7], adCovariance[49];
  bool bAngles;  // they have a covariance

  double Sd(int i) const { return std::sqrt(std::max(adCovariance[8 * i], 0.0)); }
};

Parameters ParametersOf(const ZuSimilarityResult& result) {
  Parameters p;
  double adAngles[9], adJacobian[9];
  p.bAngles = result.Angles(p.adValue + 4, adAngles, adJacobian);
  for (int i = 0; i < 3; ++i) p.adValue[i] = result.trafo.m_vTarget[i + 1];
  p.adValue[3] = result.trafo.m_dScale;
  const auto row = [&adJacobian](int i, double* pd) {  // of the angles and the rest by (t, s, w)
    std::fill_n(pd, 7, 0.0);
    if (i < 4) {
      pd[i] = 1.0;
    } else {
      std::copy_n(adJacobian + 3 * (i - 4), 3, pd + 4);
    }
  };
  for (int i = 0; i < 7; ++i) {
    for (int j = 0; j < 7; ++j) {
      double adI[7], adJ[7], dSum = 0.0;
      row(i, adI);
      row(j, adJ);
      for (int k = 0; k < 7; ++k) {
        for (int l = 0; l < 7; ++l) dSum += adI[k] * result.adCovariance[7 * k + l] * adJ[l];
      }
      p.adCovariance[7 * i + j] = dSum;
    }
  }
  return p;
}

std::string Label(unsigned uId, const ZuSortHelper<ZuPoint>& names) {
  const ZuPoint* const p = names.Find(uId);
  return p != nullptr ? PointLabel(*p) : std::to_string(uId);
}

Json JsonOf(const double* pd) { return {pd[0], pd[1], pd[2]}; }

void WriteSigma(const ZuSimilarityResult& result, std::ostream& stream) {
  stream << "redundancy " << result.iRedundancy << ", standard deviations "
         << ZuSigmaKindText(result.sigmaKind);
  if (result.iRedundancy > 0) {
    stream << ", sigma0 a posteriori " << Fixed(result.dSigmaPosteriori, 6);
    if (!result.bSigmaFits) stream << ", which does not agree with 1";
  }
  stream << '\n';
}

void WriteTests(const ZuSimilarityResult& result, const ZuSortHelper<ZuPoint>& names,
                const std::string& strUnit, std::ostream& stream) {
  double dLargest = 0.0;
  for (const auto& point : result.points) {
    for (double d : point.adNabla) {
      if (std::isfinite(d)) dLargest = std::max(dLargest, d);
    }
  }
  const int iDecimals = DecimalsFor(dLargest);
  TextTable table;
  for (const char* szTitle :
       {"point", "r", "w x", "w y", "w z", "T", "smallest error x", "y", "z"}) {
    table.AddColumn(szTitle);
  }
  for (const auto& point : result.points) {
    std::vector<std::string> row = {Label(point.uId, names), Fixed(point.Redundancy(), 3)};
    for (double d : point.adW) row.push_back(Fixed(d, 2));
    row.push_back(Fixed(point.dTest, 2) + (point.IsRejected() ? " !" : ""));
    for (double d : point.adNabla) row.push_back(Fixed(d, iDecimals));
    table.AddRow(row);
  }
  table.Write(stream);
  stream << "w beyond " << Fixed(result.dTestLimit, 2)
         << ", and T with \"!\", say that an error stands behind them\n";
  std::vector<Tested> tested;
  for (const auto& point : result.points) tested.push_back({Label(point.uId, names), &point});
  stream << TestVerdict(tested, strUnit) << '\n';
}

}  // namespace

ZuSimilarityKind SimilarityValues::Kind() const {
  if (strFixed == "scale") return ZuSimilarityKind::Rigid;
  if (strFixed == "levelled") return ZuSimilarityKind::Levelled;
  return strFixed == "shift" ? ZuSimilarityKind::Shift : ZuSimilarityKind::Similarity;
}

ZuSimilarityOptions SimilarityValues::OptionsOf() const {
  ZuSimilarityOptions options;
  options.kind = Kind();
  options.dSigmaTarget = dSigma;
  options.tests = TestsOf(*this, bTest);
  return options;
}

std::vector<SimilarityParameter> SimilarityParameters(const ZuSimilarityResult& result) {
  const Parameters p = ParametersOf(result);
  std::vector<SimilarityParameter> parameters;
  for (int i = 0; i < 4; ++i) {
    const int iDecimals = i < 3 ? 6 : 12;
    parameters.push_back(
        {kParameters[i], Fixed(p.adValue[i], iDecimals), Fixed(p.Sd(i), iDecimals), ""});
  }
  for (int i = 4; i < 7; ++i) {
    parameters.push_back({kParameters[i], Fixed(p.adValue[i] * kGonPerRadian, 7),
                          p.bAngles ? Fixed(p.Sd(i) * kGonPerRadian, 7) : "-", "gon"});
  }
  return parameters;
}

void WriteSds(const ZuSimilarityResult& result, std::ostream& stream) {
  TextTable table;
  table.AddColumn("parameter", TextTable::eLeft);
  table.AddColumn("value");
  table.AddColumn("standard deviation");
  for (const SimilarityParameter& p : SimilarityParameters(result)) {
    table.AddRow(
        {p.strName + (p.strUnit.empty() ? "" : " [" + p.strUnit + "]"), p.strValue, p.strSd});
  }
  table.Write(stream);
}

void WriteSimilarity(const ZuSimilarityResult& result, const ZuSortHelper<ZuPoint>& names,
                     const std::string& strUnit, std::ostream& stream) {
  WriteSigma(result, stream);
  stream << '\n';
  WriteSds(result, stream);
  stream << '\n';
  WriteTests(result, names, strUnit, stream);
  for (const ZuSetAside& aside : result.setAside) {
    const double dLength = std::hypot(aside.adError[0], aside.adError[1], aside.adError[2]);
    stream << "set aside: point " << Label(aside.uId, names) << ", T " << Fixed(aside.dTest, 2)
           << (aside.dTest > aside.dLimit ? " beyond " : " within ") << Fixed(aside.dLimit, 2)
           << ", off by " << Fixed(dLength, DecimalsFor(dLength)) << '\n';
  }
  for (unsigned uId : result.notControlled) {
    stream << "not controlled: point " << Label(uId, names) << '\n';
  }
}

void AddSimilarity(const ZuSimilarityResult& result, const ZuSortHelper<ZuPoint>& names,
                   Json* pRoot) {
  Json& root = *pRoot;
  const auto label = [&names](unsigned uId) {
    const ZuPoint* const p = names.Find(uId);
    return p != nullptr ? JsonLabel(*p) : Json(uId);
  };
  root["free_direction"] = result.strFreeDirection.empty() ? Json() : Json(result.strFreeDirection);
  root["set_aside"] = Json::array();
  root["not_controlled"] = Json::array();
  for (const char* szKey : {"sigma0", "redundancy", "sigma_kind", "parameters", "parameter_names",
                            "covariance", "test_limit"}) {
    root[szKey] = Json();
  }
  if (!result.IsGood()) return;
  const Parameters p = ParametersOf(result);
  root["sigma0"] = result.dSigma0;
  root["redundancy"] = result.iRedundancy;
  root["sigma_kind"] = ZuSigmaKindText(result.sigmaKind);
  Json parameters = Json::object(), names7 = Json::array(), covariance = Json::array();
  for (int i = 0; i < 7; ++i) {
    const bool bSd = i < 4 || p.bAngles;
    const std::string strName = std::string(kParameters[i]) + (i < 4 ? "" : "_rad");
    parameters[strName] = {{"value", p.adValue[i]}, {"sd", bSd ? Json(p.Sd(i)) : Json()}};
    names7.push_back(strName);
    Json row = Json::array();
    for (int j = 0; j < 7; ++j) {
      row.push_back(bSd && (j < 4 || p.bAngles) ? Json(p.adCovariance[7 * i + j]) : Json());
    }
    covariance.push_back(std::move(row));
  }
  root["parameters"] = std::move(parameters);
  root["parameter_names"] = std::move(names7);
  root["covariance"] = std::move(covariance);
  root["test_limit"] = std::isfinite(result.dTestLimit) ? Json(result.dTestLimit) : Json();
  for (const ZuSetAside& aside : result.setAside) {
    const ZuPoint* const point = names.Find(aside.uId);
    Json entry = {{"id", aside.uId}, {"name", point != nullptr ? point->GetName().chars() : ""}};
    entry["test"] = aside.dTest;
    entry["error"] = JsonOf(aside.adError);
    root["set_aside"].push_back(std::move(entry));
  }
  for (unsigned uId : result.notControlled) root["not_controlled"].push_back(label(uId));
}

void SetCarriedSds(const ZuSimilarityResult& result, const ZuPointList& source, ZuPointList* pOut) {
  ZuPointList carried(source);
  result.Carry(&carried);
  ZuPoint* pTo = pOut->First();
  for (const ZuPoint* p = carried.First(); p != nullptr && pTo != nullptr;
       p = p->Next(), pTo = pTo->Next()) {
    pTo->m_dDX = p->m_dDX;
    pTo->m_dDY = p->m_dDY;
    pTo->m_dDZ = p->m_dDZ;
  }
}

}  // namespace cli
