#include "trafo_report.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "point_input.h"
#include "table_decimals.h"
#include "text_table.h"

namespace cli {
namespace {

constexpr double kCollinear = 1e-6;  // distance from the line over the extent [-]

constexpr char kDirection[] = "target = s R (source - xs) + xt";

double Length(double x, double y, double z) { return std::sqrt(x * x + y * y + z * z); }

double Largest(const std::vector<Residual>& residuals) {
  double dLargest = 0.0;
  for (const auto& r : residuals) dLargest = std::max(dLargest, r.Length());
  return dLargest;
}

struct Angles {
  double dX, dY, dZ;
};

Angles AnglesOf(const ZuTrafo3dData& trafo) {
  ZuMatrix rotation(trafo.m_mRot);
  Angles angles = {};
  rotation.GetRotAngles(&angles.dX, &angles.dY, &angles.dZ);
  return angles;
}

Json ToJson(const ZuVector& v) { return {v[1], v[2], v[3]}; }

Json AnglesJson(const Angles& angles, double dHalfTurn) {
  const double d = dHalfTurn / std::numbers::pi;
  return {{"x", angles.dX * d}, {"y", angles.dY * d}, {"z", angles.dZ * d}};
}

void WriteVector(const char* szName, const ZuVector& v, std::ostream& stream) {
  stream << szName << "  " << FixedLength(v[1], 6) << "  " << FixedLength(v[2], 6) << "  "
         << FixedLength(v[3], 6) << '\n';
}

}  // namespace

double Residual::Length() const { return cli::Length(dX, dY, dZ); }

double Rms::Length() const { return cli::Length(dX, dY, dZ); }

Rms RmsOf(const std::vector<Residual>& residuals) {
  Rms sum;
  for (const auto& r : residuals) {
    sum.dX += r.dX * r.dX;
    sum.dY += r.dY * r.dY;
    sum.dZ += r.dZ * r.dZ;
  }
  const double n = residuals.empty() ? 1.0 : static_cast<double>(residuals.size());
  return {std::sqrt(sum.dX / n), std::sqrt(sum.dY / n), std::sqrt(sum.dZ / n)};
}

bool AreCollinear(const ZuPointList& points) { return SpreadAcrossLine(points) <= kCollinear; }

double SpreadAcrossLine(const ZuPointList& points) {
  const ZuPoint* pFirst = points.First();
  if (pFirst == nullptr) return 0.0;
  ZuPoint far;  // from the first point to the one farthest from it
  double dFar = 0.0;
  for (const ZuPoint* p = pFirst; p != nullptr; p = p->Next()) {
    const ZuPoint d = *p - *pFirst;
    const double dLength = Length(d.m_dX, d.m_dY, d.m_dZ);
    if (dLength > dFar) {
      far = d;
      dFar = dLength;
    }
  }
  if (dFar == 0.0) return 0.0;
  far = far / dFar;
  double dMost = 0.0;
  for (const ZuPoint* p = pFirst; p != nullptr; p = p->Next()) {
    const ZuPoint d = *p - *pFirst;
    const double dOff =
        Length(d.m_dY * far.m_dZ - d.m_dZ * far.m_dY, d.m_dZ * far.m_dX - d.m_dX * far.m_dZ,
               d.m_dX * far.m_dY - d.m_dY * far.m_dX);
    if (!(dOff <= dMost)) dMost = dOff;
  }
  return dMost / dFar;
}

void WriteResiduals(std::vector<Residual> residuals, std::ostream& stream) {
  const Rms rms = RmsOf(residuals);
  const int iDecimals = DecimalsFor(Largest(residuals));
  std::stable_sort(residuals.begin(), residuals.end(),
                   [](const Residual& a, const Residual& b) { return a.Length() > b.Length(); });
  TextTable table;
  table.AddColumn("point");
  for (const char* szTitle : {"dx", "dy", "dz", "length"}) table.AddColumn(szTitle);
  const auto addRow = [&](const std::string& strLabel, const auto& r) {
    table.AddRow({strLabel, Fixed(r.dX, iDecimals), Fixed(r.dY, iDecimals), Fixed(r.dZ, iDecimals),
                  Fixed(r.Length(), iDecimals)});
  };
  for (const auto& r : residuals) addRow(r.strLabel, r);
  addRow("RMS", rms);
  table.Write(stream);
}

void WriteParameters(const ZuTrafo3dData& trafo, std::ostream& stream) {
  stream << kDirection << "\n\ns   " << Fixed(trafo.m_dScale, 14) << "\n\n";
  for (int i = 1; i <= 3; ++i) {
    stream << (i == 2 ? "R " : "  ");
    for (int j = 1; j <= 3; ++j) {
      const std::string strValue = Fixed(trafo.m_mRot[i][j], 14);
      stream << (strValue[0] == '-' ? "  " : "   ") << strValue;
    }
    stream << '\n';
  }
  stream << '\n';
  WriteVector("xs", trafo.m_vSource, stream);
  WriteVector("xt", trafo.m_vTarget, stream);

  const Angles angles = AnglesOf(trafo);
  stream << "\nR = Ry Rx Rz, right-handed rotations\n";
  stream << "  about x  " << Angle(angles.dX) << '\n';
  stream << "  about y  " << Angle(angles.dY) << '\n';
  stream << "  about z  " << Angle(angles.dZ) << '\n';
}

void AddParameters(const ZuTrafo3dData& trafo, Json* pRoot) {
  Json rotation = Json::array();
  for (int i = 1; i <= 3; ++i) {
    const double* pRow = trafo.m_mRot[i];
    rotation.push_back({pRow[1], pRow[2], pRow[3]});
  }
  const Angles angles = AnglesOf(trafo);
  (*pRoot)["direction"] = kDirection;
  (*pRoot)["scale"] = trafo.m_dScale;
  (*pRoot)["rotation"] = rotation;
  (*pRoot)["source_centre"] = ToJson(trafo.m_vSource);
  (*pRoot)["target_centre"] = ToJson(trafo.m_vTarget);
  (*pRoot)["rotation_order"] = "R = Ry Rx Rz";
  (*pRoot)["angles_deg"] = AnglesJson(angles, 180.0);
  (*pRoot)["angles_gon"] = AnglesJson(angles, 200.0);
}

Json ToJson(const Rms& rms) { return RmsJson({rms.dX, rms.dY, rms.dZ}); }

Json ToJson(const ZuPoint& point, const Residual* pResidual) {
  Json json = {{"id", point.GetId()}};
  if (!point.GetName().empty()) json["name"] = point.GetName().chars();
  json["x"] = point.m_dX;
  json["y"] = point.m_dY;
  json["z"] = point.m_dZ;
  json["dx"] = pResidual != nullptr ? Json(pResidual->dX) : Json();
  json["dy"] = pResidual != nullptr ? Json(pResidual->dY) : Json();
  json["dz"] = pResidual != nullptr ? Json(pResidual->dZ) : Json();
  return json;
}

Json PointRowsJson(const ZuPointList& points, int iSds) {
  Json rows = Json::array();
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    Json row = {{"id", p->GetId()}};
    if (!p->GetName().empty()) row["name"] = p->GetName().chars();
    row["x"] = p->m_dX;
    row["y"] = p->m_dY;
    row["z"] = p->m_dZ;
    row["sd"] = iSds == 0   ? Json()
                : iSds == 2 ? Json{p->m_dDX, p->m_dDY}
                            : Json{p->m_dDX, p->m_dDY, p->m_dDZ};
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace cli
