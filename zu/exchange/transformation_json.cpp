#include <algorithm>
#include <cmath>
#include <istream>
#include <iterator>
#include <ostream>

#include "zu/exchange/internal/json_finding.h"
#include "zu/exchange/internal/json_to_keywords.h"
#include "zu/exchange/internal/keywords_to_json.h"
#include "zu/exchange/internal/matrix_text.h"
#include "zu/exchange/internal/plane_map.h"
#include "zu/exchange/transformation.h"

namespace {

using zu::internal::Json;
using zu::internal::JsonFault;

constexpr char kFormat[] = "zu-transformation";
constexpr int kVersion = 1;
constexpr double kRotationOff = 1e-8;  // |R^T R - I| of a rotation at most [-]
constexpr double kMatrixOff = 1e-9;    // of matrix and parameters, over the row's largest element
constexpr double kAsymmetry = 1e-6;    // of a covariance, over the roots of its variances [-]
constexpr std::size_t kSimilarityParameters = 7;

struct PlaneType {
  eZuTrafo2DType eType;
  const char* szName;
  const char* szFormula;
};
constexpr PlaneType kPlaneTypes[] = {
    {eZuTrafo2DHelmert, "helmert", "X = a0 + a1 x - a3 y, Y = a2 + a3 x + a1 y"},
    {eZuTrafo2DAffin, "affin", "X = a0 + a1 x + a2 y, Y = a3 + a4 x + a5 y"},
    {eZuTrafo2DProjektiv, "projektiv",
     "X = (a0 x + a1 y + a2) / w, Y = (a3 x + a4 y + a5) / w, w = a6 x + a7 y + 1"},
    {eZuTrafo2DPolynomial, "polynom",
     "X, Y = sums of a0 to a9 and a10 to a19 times 1, x, y, x^2, xy, y^2, x^3, x^2 y, x y^2, y^3"}};

// ---- writing

Json RowsOf(const double* pd, std::size_t uRows, std::size_t uColumns) {
  Json rows = Json::array();
  for (std::size_t i = 0; i < uRows; ++i) {
    rows.push_back(std::vector<double>(pd + i * uColumns, pd + (i + 1) * uColumns));
  }
  return rows;
}

Json VectorJson(const ZuVector& v) { return {v[1], v[2], v[3]}; }

Json TextsOf(const std::vector<std::string>& texts) {
  Json json = Json::array();
  for (const std::string& strText : texts) json.push_back(zu::internal::TextToJson(strText));
  return json;
}

void AddAccuracy(const ZuTransformation& t, std::vector<std::string> names, Json* pRoot) {
  Json& root = *pRoot;
  root["parameter_names"] = std::move(names);
  const auto n = static_cast<std::size_t>(root["parameter_names"].size());
  root["covariance"] = t.covariance.empty() ? Json() : RowsOf(t.covariance.data(), n, n);
  root["sigma0"] = t.dSigma0;
  root["sigma_kind"] = t.strSigmaKind.empty() ? Json() : Json(t.strSigmaKind);
  root["redundancy"] = t.iRedundancy;
  root["accuracy_factor"] = t.dAccuracyFactor;
  root["source_sd"] = t.dSourceSd;
}

const PlaneType& TypeOf(eZuTrafo2DType eType) {
  for (const PlaneType& type : kPlaneTypes) {
    if (type.eType == eType) return type;
  }
  return kPlaneTypes[0];
}

// The 3 x 3 matrix of coordinates as they are; null for a polynomial.
Json PlaneMatrix(const ZuTransformation& t) {
  const double* const a = t.coefficients.data();
  double m[9] = {0, 0, 0, 0, 0, 0, 0, 0, 1};
  switch (t.ePlane) {
    case eZuTrafo2DHelmert: {
      const double ad[] = {a[1], -a[3], a[0], a[3], a[1], a[2]};
      std::copy_n(ad, 6, m);
      break;
    }
    case eZuTrafo2DAffin: {
      const double ad[] = {a[1], a[2], a[0], a[4], a[5], a[3]};
      std::copy_n(ad, 6, m);
      break;
    }
    case eZuTrafo2DProjektiv:
      std::copy_n(a, 8, m);
      break;
    default:
      return nullptr;
  }
  for (int i = 0; i < 3; ++i) {  // behind the shift of the source, before that of the target
    m[3 * i + 2] -= m[3 * i] * t.adSourceCentre[0] + m[3 * i + 1] * t.adSourceCentre[1];
  }
  for (int i = 0; i < 6; ++i) m[i] += t.adTargetCentre[i / 3] * m[6 + i % 3];
  for (int i = 0; i < 9; ++i) m[i] /= i < 8 ? m[8] : 1.0;
  m[8] = 1.0;
  return RowsOf(m, 3, 3);
}

void AddSimilarity(const ZuTransformation& t, Json* pRoot) {
  Json& root = *pRoot;
  root["direction"] = "target = scale rotation (source - source_centre) + target_centre";
  root["conventions"] = {
      {"matrix", "target = matrix (x, y, z, 1), points as columns, rows from above"},
      {"rotation", "rows from above, right-handed, turns vectors"},
      {"covariance",
       "of target_centre tx ty tz, scale, and a small rotation vector w in rad about the source's "
       "axes: rotation becomes rotation exp[w]; lengths in the unit of the target"}};
  root["scale"] = t.similarity.m_dScale;
  double adRotation[9], adMatrix[16];
  const ZuMatrix matrix = t.similarity.GetAsMatrix();
  for (int i = 0; i < 9; ++i) adRotation[i] = t.similarity.m_mRot[i / 3 + 1][i % 3 + 1];
  for (int i = 0; i < 16; ++i) adMatrix[i] = matrix[i / 4 + 1][i % 4 + 1];
  root["rotation"] = RowsOf(adRotation, 3, 3);
  root["source_centre"] = VectorJson(t.similarity.m_vSource);
  root["target_centre"] = VectorJson(t.similarity.m_vTarget);
  root["matrix"] = RowsOf(adMatrix, 4, 4);
  AddAccuracy(t, {"tx", "ty", "tz", "scale", "wx", "wy", "wz"}, pRoot);
}

void AddPlane(const ZuTransformation& t, Json* pRoot) {
  Json& root = *pRoot;
  const PlaneType& type = TypeOf(t.ePlane);
  root["type"] = type.szName;
  root["direction"] = t.bInverse ? "source from target" : "target from source";
  root["conventions"] = {{"formula", type.szFormula},
                         {"coordinates",
                          "x, y source less source_centre; X, Y target less "
                          "target_centre; z stays"},
                         {"matrix", "of coordinates as they are, (x, y, 1) as a column"},
                         {"covariance", "of the coefficients"}};
  root["inverse"] = t.bInverse;
  root["coefficients"] = t.coefficients;
  root["source_centre"] = {t.adSourceCentre[0], t.adSourceCentre[1]};
  root["target_centre"] = {t.adTargetCentre[0], t.adTargetCentre[1]};
  root["matrix"] = PlaneMatrix(t);
  std::vector<std::string> names;
  for (std::size_t k = 0; k < t.coefficients.size(); ++k) names.push_back("a" + std::to_string(k));
  AddAccuracy(t, std::move(names), pRoot);
}

// ---- reading

[[noreturn]] void Refuse(const std::string& strWhere, const std::string& strText,
                         const std::string& strRight) {
  throw JsonFault{strWhere, strText, strRight};
}

const Json& Member(const Json& root, const char* szKey) {
  const auto found = root.find(szKey);
  if (found == root.end()) Refuse(szKey, "is missing", std::string("\"") + szKey + "\": ...");
  return *found;
}

double NumberOf(const Json& value, const std::string& strWhere) {
  if (!value.is_number() || !std::isfinite(value.get<double>())) {
    Refuse(strWhere, "is no number", "a finite number");
  }
  return value.get<double>();
}

// A list of that many numbers.
void TakeRow(const Json& value, const std::string& strWhere, std::size_t uCount, double* pd) {
  if (!value.is_array() || value.size() != uCount) {
    Refuse(strWhere, "is no list of " + std::to_string(uCount) + " numbers", "[..., ...]");
  }
  for (std::size_t i = 0; i < uCount; ++i) {
    pd[i] = NumberOf(value[i], strWhere + "[" + std::to_string(i) + "]");
  }
}

std::vector<double> Rows(const Json& value, const std::string& strWhere, std::size_t uRows,
                         std::size_t uColumns) {
  if (!value.is_array() || value.size() != uRows) {
    Refuse(strWhere, "is no list of " + std::to_string(uRows) + " rows", "[[...], [...], ...]");
  }
  std::vector<double> all(uRows * uColumns);
  for (std::size_t i = 0; i < uRows; ++i) {
    TakeRow(value[i], strWhere + "[" + std::to_string(i) + "]", uColumns, &all[i * uColumns]);
  }
  return all;
}

double OptionalNumber(const Json& root, const char* szKey, double dDefault) {
  const auto found = root.find(szKey);
  if (found == root.end() || found->is_null()) return dDefault;
  const double d = NumberOf(*found, szKey);
  if (d < 0.0) Refuse(szKey, "is negative", "a number from 0 on");
  return d;
}

std::string OptionalText(const Json& root, const char* szKey) {
  const auto found = root.find(szKey);
  return found != root.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::vector<std::string> OptionalTexts(const Json& root, const char* szKey) {
  std::vector<std::string> texts;
  const auto found = root.find(szKey);
  if (found == root.end() || !found->is_array()) return texts;
  for (const Json& value : *found) {
    if (value.is_string()) texts.push_back(value.get<std::string>());
  }
  return texts;
}

void ReadCovariance(const Json& root, std::size_t n, std::vector<double>* pCovariance) {
  const auto found = root.find("covariance");
  pCovariance->clear();
  if (found == root.end() || found->is_null()) return;
  *pCovariance = Rows(*found, "covariance", n, n);
  const std::vector<double>& c = *pCovariance;
  for (std::size_t i = 0; i < n; ++i) {
    if (c[i * n + i] < 0.0) Refuse("covariance", "has a negative variance", "variances from 0 on");
    for (std::size_t j = 0; j < i; ++j) {
      const double dRoot = std::sqrt(c[i * n + i]) * std::sqrt(c[j * n + j]);
      const double a = c[i * n + j], b = c[j * n + i];
      // Variances that vanish leave rounding beside them.
      if (std::fabs(a - b) <= kAsymmetry * std::max(dRoot, std::fabs(a)) &&
          std::fabs(a) <= dRoot * (1.0 + kAsymmetry) + kAsymmetry * kAsymmetry) {
        continue;
      }
      Refuse("covariance[" + std::to_string(i) + "][" + std::to_string(j) + "]",
             "is not that of a covariance", "a symmetric matrix, no correlation beyond 1");
    }
  }
}

void ReadAccuracy(const Json& root, std::size_t n, ZuTransformation* p) {
  ReadCovariance(root, n, &p->covariance);
  p->dSigma0 = OptionalNumber(root, "sigma0", 1.0);
  p->dAccuracyFactor = OptionalNumber(root, "accuracy_factor", 1.0);
  p->dSourceSd = OptionalNumber(root, "source_sd", 0.0);
  p->strSigmaKind = OptionalText(root, "sigma_kind");
  const double dRedundancy = OptionalNumber(root, "redundancy", 0.0);
  p->iRedundancy = static_cast<int>(std::min(dRedundancy, 2147483647.0));
}

void CheckRotation(const std::vector<double>& r) {
  bool bOrthogonal = true;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      double d = i == j ? -1.0 : 0.0;
      for (std::size_t k = 0; k < 3; ++k) d += r[3 * k + i] * r[3 * k + j];
      bOrthogonal = bOrthogonal && std::fabs(d) <= kRotationOff;
    }
  }
  const double dDet = r[0] * (r[4] * r[8] - r[5] * r[7]) - r[1] * (r[3] * r[8] - r[5] * r[6]) +
                      r[2] * (r[3] * r[7] - r[4] * r[6]);
  if (!bOrthogonal) {
    Refuse("rotation", "is no rotation: its columns are not orthogonal and of length 1",
           "a rotation with all its digits, or \"kind\": \"affine\" with the matrix");
  }
  if (dDet < 0.0) Refuse("rotation", "mirrors", "a rotation, or \"kind\": \"affine\"");
}

// A person who edits one of both leaves the other behind.
void CheckMatrix(const Json& root, const ZuTrafo3dData& similarity) {
  const ZuMatrix matrix = similarity.GetAsMatrix();
  const auto found = root.find("matrix");
  const std::vector<double> told =
      found == root.end() ? std::vector<double>() : Rows(*found, "matrix", 4, 4);
  for (std::size_t i = 0; i < 4; ++i) {
    const double* const pRow = matrix[static_cast<int>(i) + 1];  // elements from 1
    double dRow = 1.0;
    for (int j = 1; j <= 4; ++j) dRow = std::max(dRow, std::fabs(pRow[j]));
    for (std::size_t j = 0; j < 4; ++j) {
      if (!std::isfinite(pRow[j + 1])) Refuse("scale", "is too large for the centres", "another");
      if (told.empty() || std::fabs(told[4 * i + j] - pRow[j + 1]) <= kMatrixOff * dRow) continue;
      Refuse("matrix[" + std::to_string(i) + "][" + std::to_string(j) + "]",
             "does not agree with scale, rotation and centres",
             "both of one transformation, or \"kind\": \"affine\" with the matrix alone");
    }
  }
}

void ReadSimilarity(const Json& root, ZuTransformation* p) {
  ZuTrafo3dData& t = p->similarity;
  t.m_dScale = NumberOf(Member(root, "scale"), "scale");
  if (!(t.m_dScale > 0.0)) Refuse("scale", "is not above 0", "a positive number");
  const std::vector<double> rotation = Rows(Member(root, "rotation"), "rotation", 3, 3);
  CheckRotation(rotation);
  double adSource[3], adTarget[3];
  TakeRow(Member(root, "source_centre"), "source_centre", 3, adSource);
  TakeRow(Member(root, "target_centre"), "target_centre", 3, adTarget);
  for (int i = 0; i < 3; ++i) {
    t.m_vSource[i + 1] = adSource[i];
    t.m_vTarget[i + 1] = adTarget[i];
    for (int j = 0; j < 3; ++j) {
      t.m_mRot[i + 1][j + 1] = rotation[static_cast<std::size_t>(3 * i + j)];
    }
  }
  CheckMatrix(root, t);
  ReadAccuracy(root, kSimilarityParameters, p);
}

void ReadPlane(const Json& root, ZuTransformation* p) {
  const std::string strType = OptionalText(root, "type");
  for (const PlaneType& type : kPlaneTypes) {
    if (strType == type.szName) p->ePlane = type.eType;
  }
  if (p->ePlane == eZuTrafo2DNone) {
    Refuse("type", "is not known", "helmert, affin, projektiv or polynom");
  }
  const auto n = static_cast<std::size_t>(zu::internal::PlaneCoefficients(p->ePlane));
  p->coefficients.resize(n);
  TakeRow(Member(root, "coefficients"), "coefficients", n, p->coefficients.data());
  TakeRow(Member(root, "source_centre"), "source_centre", 2, p->adSourceCentre);
  TakeRow(Member(root, "target_centre"), "target_centre", 2, p->adTargetCentre);
  const auto found = root.find("inverse");
  if (found != root.end() && !found->is_boolean())
    Refuse("inverse", "is no truth", "true or false");
  p->bInverse = found != root.end() && found->get<bool>();
  ReadAccuracy(root, n, p);
}

void ReadAffine(const Json& root, const std::string& strName, ZuTransformation* p,
                ZuFindingList* pFindings) {
  const Json& value = Member(root, "matrix");
  const std::size_t uRows = value.is_array() && value.size() == 3 ? 3 : 4;
  const std::vector<double> matrix = Rows(value, "matrix", uRows, 4);
  const auto iCount = static_cast<int>(matrix.size());
  ZuFindingList findings;
  const bool bGood =
      zu::internal::TakeMatrix(matrix.data(), iCount, strName, &p->affine, &findings);
  for (const ZuFinding& finding : findings) {
    if (!bGood) Refuse("matrix", finding.m_strText, finding.m_strRight);
    pFindings->Add(finding);
  }
}

ZuTransformation FromJson(const Json& root, const std::string& strName, ZuFindingList* pFindings) {
  if (!root.is_object()) Refuse("", "is no transformation", "\"format\": \"zu-transformation\"");
  ZuTransformation t;
  const bool bMatrixAlone = root.find("format") == root.end() && root.find("matrix") != root.end();
  if (!bMatrixAlone) {
    if (root.value("format", Json()) != Json(kFormat)) {
      Refuse("", "is no transformation",
             "a file of --save (\"format\": \"zu-transformation\") or a 4 x 4 matrix");
    }
    if (root.value("version", Json()) != Json(kVersion)) Refuse("version", "is not known", "1");
  }
  const std::string strKind = bMatrixAlone ? "affine" : OptionalText(root, "kind");
  if (strKind == "similarity") {
    t.kind = ZuTransformationKind::Similarity;
    ReadSimilarity(root, &t);
  } else if (strKind == "plane") {
    t.kind = ZuTransformationKind::Plane;
    ReadPlane(root, &t);
  } else if (strKind == "affine") {
    ReadAffine(root, strName, &t, pFindings);
  } else {
    Refuse("kind", "is not known", "similarity, affine or plane");
  }
  t.strUnit = OptionalText(root, "unit");
  const Json origin = root.value("made_from", Json::object());
  if (!origin.is_object()) Refuse("made_from", "is no object", "{ ... }");
  t.origin.strCommand = OptionalText(origin, "command");
  t.origin.strVersion = OptionalText(origin, "zu_version");
  t.origin.strSource = OptionalText(origin, "source");
  t.origin.strTarget = OptionalText(origin, "target");
  t.origin.options = OptionalTexts(origin, "options");
  t.origin.used = OptionalTexts(origin, "points");
  t.origin.setAside = OptionalTexts(origin, "set_aside");
  return t;
}

}  // namespace

std::ostream& ZuExportTransformation(std::ostream& stream, const ZuTransformation& t) {
  Json root = {{"format", kFormat}, {"version", kVersion}};
  root["kind"] = t.kind == ZuTransformationKind::Similarity ? "similarity"
                 : t.kind == ZuTransformationKind::Affine   ? "affine"
                                                            : "plane";
  root["unit"] = t.strUnit.empty() ? Json() : zu::internal::TextToJson(t.strUnit);
  if (t.kind == ZuTransformationKind::Similarity) {
    AddSimilarity(t, &root);
  } else if (t.kind == ZuTransformationKind::Plane) {
    AddPlane(t, &root);
  } else {
    root["conventions"] = {
        {"matrix", "target = matrix (x, y, z, 1), points as columns, rows from above"}};
    Json matrix = RowsOf(t.affine.asDblArray(), 3, 4);
    matrix.push_back({0.0, 0.0, 0.0, 1.0});
    root["matrix"] = std::move(matrix);
  }
  const ZuTransformationOrigin& origin = t.origin;
  root["made_from"] = {{"command", zu::internal::TextToJson(origin.strCommand)},
                       {"zu_version", origin.strVersion},
                       {"source", zu::internal::TextToJson(origin.strSource)},
                       {"target", zu::internal::TextToJson(origin.strTarget)},
                       {"options", TextsOf(origin.options)},
                       {"points", TextsOf(origin.used)},
                       {"set_aside", TextsOf(origin.setAside)}};
  stream << '{';
  const char* szBefore = "\n";
  for (const auto& item : root.items()) {
    stream << szBefore << '"' << item.key() << "\": " << item.value().dump();
    szBefore = ",\n";
  }
  return stream << "\n}\n";
}

bool ZuReadTransformation(std::istream& stream, ZuTransformation* pTransformation,
                          ZuFindingList* pFindings, const std::string& strName) {
  const std::string strText{std::istreambuf_iterator<char>(stream), {}};
  if (stream.bad()) {
    pFindings->Add(zu::internal::JsonFinding(strName, "cannot be read", ""));
    return false;
  }
  const std::size_t uFirst = strText.find_first_not_of(" \t\r\n");
  if (uFirst == std::string::npos || strText[uFirst] != '{') {
    ZuTransformation t;
    if (!zu::internal::ReadMatrixText(strText, strName, &t.affine, pFindings)) return false;
    *pTransformation = t;
    return true;
  }
  try {
    *pTransformation = FromJson(Json::parse(strText), strName, pFindings);
    return true;
  } catch (const JsonFault& fault) {
    const std::string strWhere = fault.m_strWhere.empty() ? "" : fault.m_strWhere + ": ";
    pFindings->Add(
        zu::internal::JsonFinding(strName, strWhere + fault.m_strText, fault.m_strRight));
  } catch (const Json::parse_error& error) {
    pFindings->Add(zu::internal::JsonSyntaxFinding(strName, strText, error.byte));
  } catch (const Json::exception& error) {  // a number beyond a double
    pFindings->Add(zu::internal::JsonFinding(strName, error.what(), ""));
  }
  return false;
}
