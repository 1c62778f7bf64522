#include "cmd_adjust_output.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "point_input.h"
#include "table_decimals.h"
#include "text_table.h"
#include "zu/adjust/error_ellipsoid.h"

namespace cli {

namespace {

constexpr const char* kAxes[] = {"x", "y", "z"};

size_t Index(int i) { return static_cast<size_t>(i); }

// Null for what is not finite.
Json Number(double d) { return std::isfinite(d) ? Json(d) : Json(); }

struct Rms {
  double dSum = 0.0;
  int n = 0;
  void Add(double x, double y) {
    dSum += x * x + y * y;
    ++n;
  }
  double Value() const { return n > 0 ? std::sqrt(dSum / n) : std::nan(""); }
};

// By photo; the last one is of all.
std::vector<Rms> ImageRms(const ZuNetworkOfProject& made, const ZuNetworkResult& result) {
  std::vector<Rms> rms(made.network.photos.size() + 1);
  for (size_t i = 0; i < result.imageTests.size(); ++i) {
    if (!result.imageTests[i].bUsed) continue;
    const auto v = ZuToPixels(made.pixels[i], result.imageTests[i].adV);
    rms[Index(made.network.images[i].iPhoto)].Add(v[0], v[1]);
    rms.back().Add(v[0], v[1]);
  }
  return rms;
}

std::vector<int> EstimatedParameters(const ZuNetworkCamera& camera) {
  std::vector<int> parameters;
  for (int k = 0; k < ZuNetworkParameters; ++k) {
    if (camera.adSd[Index(k)] > 0.0) parameters.push_back(k);
  }
  return parameters;
}

Json CameraJson(const ZuNetworkOfProject& made, const ZuNetworkResult& result, size_t i) {
  const ZuCamera& camera = result.cameras[i];
  Json json{{"id", camera.GetId()}, {"mode", camera.m_iMode}};
  json["parameters"] = Json::array();
  json["values"] = Json::object();
  json["sd"] = Json::object();
  std::vector<ZuNetworkUnknown> unknowns;
  for (int k = 0; k < ZuNetworkParameters; ++k) {
    if (!ZuNetworkHasParameter(camera, k)) continue;
    json["values"][ZuNetworkParameterName(k)] = ZuNetworkParameterValue(camera, k);
  }
  json["values"]["r0"] = camera.m_dR0;
  for (const int k : EstimatedParameters(made.network.cameras[i])) {
    json["parameters"].push_back(ZuNetworkParameterName(k));
    json["sd"][ZuNetworkParameterName(k)] = Number(result.cameraSd[i][Index(k)]);
    unknowns.push_back({ZuNetworkUnknown::Camera, static_cast<int>(i), k});
  }
  const std::vector<double> q = result.Covariance(unknowns);
  const size_t n = q.empty() ? 0 : unknowns.size();
  json["correlation"] = Json::array();
  for (size_t a = 0; a < n; ++a) {
    Json row = Json::array();
    for (size_t b = 0; b < n; ++b) {
      row.push_back(Number(q[n * a + b] / std::sqrt(q[n * a + a] * q[n * b + b])));
    }
    json["correlation"].push_back(row);
  }
  return json;
}

Json PhotoJson(const ZuNetworkOfProject& made, const ZuNetworkResult& result, size_t i,
               const Rms& rms) {
  const ZuNetworkPhoto& photo = result.photos[i];
  const auto& r = photo.adRotation;
  const auto& sd = result.photoSd[i];
  Json json{{"id", photo.uId},
            {"name", made.photoNames[i]},
            {"rotation", {{r[0], r[1], r[2]}, {r[3], r[4], r[5]}, {r[6], r[7], r[8]}}},
            {"position", photo.adPosition},
            {"sd_position", {Number(sd[0]), Number(sd[1]), Number(sd[2])}},
            {"sd_rotation", {Number(sd[3]), Number(sd[4]), Number(sd[5])}},
            {"points", rms.n},
            {"rms", Number(rms.Value())},  // the key of published adjustments
            {"rms_px", Number(rms.Value())}};
  AddPhotoAngles("angles", result.photoAngles[i], &json);
  AddPhotoAngles("sd_angles", result.photoAnglesSd[i], &json);
  return json;
}

// Half axes and directions of the 95 % ellipsoid.
Json EllipsoidJson(const ZuNetworkResult& result, size_t i) {
  const bool bAPriori = result.sigmaKind == ZuSigmaKind::APriori;
  const ZuErrorEllipsoid ellipsoid =
      ZuMakeErrorEllipsoid(result.pointCovariance[i], bAPriori ? 0 : result.iRedundancy);
  Json axes = Json::array();
  for (const double d : ellipsoid.adAxes) axes.push_back(Number(d));
  return Json{{"axes", axes}, {"directions", ellipsoid.adDirections}};
}

Json PointJson(const ZuNetworkOfProject& made, const ZuNetworkResult& result, size_t i) {
  const auto& p = result.points[i];
  const auto& q = result.pointCovariance[i];
  return Json{{"id", made.network.points[i].uId},
              {"x", p[0]},
              {"y", p[1]},
              {"z", p[2]},
              {"sx", Number(std::sqrt(q[0]))},
              {"sy", Number(std::sqrt(q[1]))},
              {"sz", Number(std::sqrt(q[2]))},
              {"cov", {Number(q[3]), Number(q[4]), Number(q[5])}},
              {"ellipsoid", EllipsoidJson(result, i)},
              {"rays", result.pointRays[i]}};
}

Json ResidualJson(const ZuNetworkOfProject& made, const ZuNetworkResult& result, size_t i) {
  const ZuNetworkImagePoint& image = made.network.images[i];
  const ZuNetworkTest& test = result.imageTests[i];
  const auto v = ZuToPixels(made.pixels[i], test.adV);
  return Json{{"photo", made.network.photos[Index(image.iPhoto)].uId},
              {"id", made.network.points[Index(image.iPoint)].uId},
              {"vx", v[0]},
              {"vy", v[1]},
              {"vx_mm", test.adV[0]},
              {"vy_mm", test.adV[1]},
              {"rx", test.adR[0]},
              {"ry", test.adR[1]},
              {"wx", test.adW[0]},
              {"wy", test.adW[1]}};
}

Json ControlJson(const ZuNetworkOfProject& made, const ZuNetworkResult& result) {
  Json json = Json::array();
  for (size_t i = 0; i < made.network.points.size(); ++i) {
    const ZuNetworkTest& test = result.controlTests[i];
    const ZuNetworkPoint& point = made.network.points[i];
    if (!test.bUsed) continue;
    int n = 0;
    for (int k = 0; k < 3; ++k) {
      if (!(point.iControl >> k & 1) || !(point.adGivenSd[Index(k)] > 0.0)) continue;
      json.push_back(Json{{"id", point.uId},
                          {"axis", kAxes[k]},
                          {"v", test.adV[n]},
                          {"r", test.adR[n]},
                          {"w", test.adW[n]}});
      ++n;
    }
  }
  return json;
}

Json ScaleBarJson(const ZuNetworkOfProject& made, const ZuNetworkResult& result) {
  Json json = Json::array();
  for (size_t i = 0; i < made.network.distances.size(); ++i) {
    const ZuNetworkDistance& distance = made.network.distances[i];
    const ZuNetworkTest& test = result.distanceTests[i];
    if (!test.bUsed) continue;
    json.push_back(Json{{"a", made.network.points[Index(distance.iFrom)].uId},
                        {"b", made.network.points[Index(distance.iTo)].uId},
                        {"d", distance.dDistance + test.adV[0]},
                        {"sd", Number(result.DistanceSd(distance.iFrom, distance.iTo))},
                        {"v", test.adV[0]},
                        {"r", test.adR[0]},
                        {"w", test.adW[0]}});
  }
  return json;
}

Json SetAsideJson(const ZuNetworkOfProject& made, const ZuNetworkSetAside& aside) {
  Json json = Json::object();
  const ZuNetwork& network = made.network;
  Json error = Json::array();
  if (aside.eKind == ZuNetworkKind::Image) {
    const ZuNetworkImagePoint& image = network.images[Index(aside.iIndex)];
    json["photo"] = network.photos[Index(image.iPhoto)].uId;
    json["id"] = network.points[Index(image.iPoint)].uId;
    for (const double d : ZuToPixels(made.pixels[Index(aside.iIndex)], aside.adError)) {
      error.push_back(d);
    }
  } else if (aside.eKind == ZuNetworkKind::Control) {
    json["photo"] = Json();
    json["id"] = network.points[Index(aside.iIndex)].uId;
    for (const double d : aside.adError) error.push_back(d);
  } else {
    const ZuNetworkDistance& distance = network.distances[Index(aside.iIndex)];
    json["photo"] = Json();
    json["a"] = network.points[Index(distance.iFrom)].uId;
    json["b"] = network.points[Index(distance.iTo)].uId;
    error.push_back(aside.adError[0]);
  }
  json["test"] = aside.dTest;
  json["limit"] = aside.dLimit;
  json["error"] = error;
  return json;
}

std::vector<size_t> PointsById(const ZuNetworkOfProject& made, const ZuNetworkResult& result) {
  std::vector<size_t> order;
  for (size_t i = 0; i < made.network.points.size(); ++i) {
    if (result.pointUsed[i]) order.push_back(i);
  }
  std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
    return made.network.points[a].uId < made.network.points[b].uId;
  });
  return order;
}

}  // namespace

std::string SetAsideText(const ZuNetworkOfProject& made, const ZuNetworkSetAside& aside) {
  const Json json = SetAsideJson(made, aside);
  std::string strText;
  if (aside.eKind == ZuNetworkKind::Image) {
    strText = "photo " + json["photo"].dump() + ", point " + json["id"].dump();
  } else if (aside.eKind == ZuNetworkKind::Control) {
    strText = "control point " + json["id"].dump();
  } else {
    strText = "the distance of points " + json["a"].dump() + " and " + json["b"].dump();
  }
  strText += " set aside: T " + Fixed(aside.dTest, 1) + " beyond " + Fixed(aside.dLimit, 1) +
             ", estimated error";
  for (const Json& error : json["error"]) {
    const double d = error;
    strText += " " + Fixed(d, aside.eKind == ZuNetworkKind::Image ? 2 : 4);
  }
  return strText + (aside.eKind == ZuNetworkKind::Image ? " px" : "");
}

void AddAdjustmentJson(const ZuNetworkOfProject& made, const ZuNetworkResult& result, Json* pRoot) {
  Json& root = *pRoot;
  const std::vector<Rms> rms = ImageRms(made, result);
  root["sigma0"] = result.dSigma0;
  root["sigma_kind"] = ZuSigmaKindText(result.sigmaKind);
  root["redundancy"] = result.iRedundancy;
  root["observations"] = result.iObservations;
  root["unknowns"] = result.iUnknowns;
  root["defect"] = result.iDefect;
  root["iterations"] = result.iSteps;
  root["rms_px"] = Number(rms.back().Value());
  for (const char* szKey : {"cameras", "photos", "points", "residuals"}) {
    root[szKey] = Json::array();
  }
  for (size_t i = 0; i < result.cameras.size(); ++i) {
    root["cameras"].push_back(CameraJson(made, result, i));
  }
  for (size_t i = 0; i < result.photos.size(); ++i) {
    if (result.photoUsed[i]) root["photos"].push_back(PhotoJson(made, result, i, rms[i]));
  }
  for (const size_t i : PointsById(made, result)) {
    root["points"].push_back(PointJson(made, result, i));
  }
  for (size_t i = 0; i < made.network.images.size(); ++i) {
    if (result.imageTests[i].bUsed) root["residuals"].push_back(ResidualJson(made, result, i));
  }
  root["control"] = ControlJson(made, result);
  root["scale_bars"] = ScaleBarJson(made, result);
  root["set_aside"] = Json::array();
  for (const ZuNetworkSetAside& aside : result.setAside) {
    root["set_aside"].push_back(SetAsideJson(made, aside));
  }
}

void PrintAdjustment(const ZuNetworkOfProject& made, const ZuNetworkResult& result,
                     std::ostream& stream) {
  const std::vector<Rms> rms = ImageRms(made, result);
  stream << "sigma0 " << Fixed(result.dSigma0, 6) << ", redundancy " << result.iRedundancy << " ("
         << result.iObservations << " observations, " << result.iUnknowns << " unknowns";
  if (result.iDefect > 0) stream << ", " << result.iDefect << " inner conditions";
  stream << "), " << Counted(result.iSteps, "step") << ", RMS " << Fixed(rms.back().Value(), 4)
         << " px\nstandard deviations with sigma0 " << ZuSigmaKindText(result.sigmaKind) << "\n\n";
  for (size_t i = 0; i < result.cameras.size(); ++i) {
    const std::vector<int> parameters = EstimatedParameters(made.network.cameras[i]);
    if (parameters.empty()) continue;
    stream << "camera " << result.cameras[i].GetId() << " [mm]\n";
    TextTable table;
    table.AddColumn("parameter", TextTable::eLeft);
    table.AddColumn("value");
    table.AddColumn("sd");
    for (const int k : parameters) {
      const double dSd = result.cameraSd[i][Index(k)];
      const int iDecimals = std::clamp(3 - static_cast<int>(std::floor(std::log10(dSd))), 4, 15);
      table.AddRow({ZuNetworkParameterName(k),
                    Fixed(ZuNetworkParameterValue(result.cameras[i], k), iDecimals),
                    Fixed(dSd, iDecimals)});
    }
    table.Write(stream);
    stream << '\n';
  }
  TextTable photos;
  photos.AddColumn("photo");
  photos.AddColumn("file", TextTable::eLeft);
  for (const char* szTitle : {"points", "RMS px", "X", "Y", "Z", "sX", "sY", "sZ"}) {
    photos.AddColumn(szTitle);
  }
  for (size_t i = 0; i < result.photos.size(); ++i) {
    if (!result.photoUsed[i]) continue;
    std::vector<std::string> cells = {std::to_string(result.photos[i].uId), made.photoNames[i],
                                      std::to_string(rms[i].n), Fixed(rms[i].Value(), 3)};
    for (const double d : result.photos[i].adPosition) cells.push_back(FixedLength(d, 5));
    for (size_t k = 0; k < 3; ++k) cells.push_back(FixedLength(result.photoSd[i][k], 6));
    photos.AddRow(cells);
  }
  photos.Write(stream);
  stream << '\n';
  TextTable points;
  for (const char* szTitle : {"point", "rays", "X", "Y", "Z", "sX", "sY", "sZ"}) {
    points.AddColumn(szTitle);
  }
  for (const size_t i : PointsById(made, result)) {
    std::vector<std::string> cells = {std::to_string(made.network.points[i].uId),
                                      std::to_string(result.pointRays[i])};
    for (const double d : result.points[i]) cells.push_back(FixedLength(d, 5));
    for (size_t k = 0; k < 3; ++k) {
      cells.push_back(FixedLength(std::sqrt(result.pointCovariance[i][k]), 6));
    }
    points.AddRow(cells);
  }
  points.Write(stream);
  for (const ZuNetworkSetAside& aside : result.setAside) {
    stream << (&aside == result.setAside.data() ? "\n" : "") << SetAsideText(made, aside) << '\n';
  }
}

void WriteAdjustedPoints(const ZuNetworkOfProject& made, const ZuNetworkResult& result,
                         int iDecimals, OutputFile* pOutput) {
  ZuPointList points;
  for (const size_t i : PointsById(made, result)) {
    const auto& p = result.points[i];
    const auto& cov = result.pointCovariance[i];
    ZuPoint point(made.network.points[i].uId, p[0], p[1], p[2]);
    point.m_dDX = std::sqrt(cov[0]);
    point.m_dDY = std::sqrt(cov[1]);
    point.m_dDZ = std::sqrt(cov[2]);
    points.Add(point);
  }
  WritePoints(&points, kPointsWithSd, pOutput, iDecimals);
}

}  // namespace cli
