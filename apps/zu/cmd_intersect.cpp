// zu intersect: object points from the rays of oriented photos.
#include <cmath>
#include <memory>

#include "adjust_options.h"
#include "cmd_adjust_input.h"
#include "commands.h"
#include "input_file.h"
#include "point_input.h"
#include "project_input.h"
#include "report_output.h"
#include "table_decimals.h"
#include "text_table.h"
#include "zu/adjust/intersection_project.h"

namespace cli {

namespace {

constexpr double kDegree = 0.017453292519943295;

struct Values {
  std::string strProject, strOut, strSigma = "0.1px";
  double dAlpha = 0.001, dAlphaTotal = 0.0, dLeastAngle = 5.0;
  int iDecimals = -1;
  bool bTest = false, bPartial = false;
};

Json PointJson(const ZuIntersectedPoint& point) {
  const auto& q = point.covariance;
  return Json{{"id", point.uId},          {"x", point.position[0]},    {"y", point.position[1]},
              {"z", point.position[2]},   {"sx", point.Sd(0)},         {"sy", point.Sd(1)},
              {"sz", point.Sd(2)},        {"cov", {q[1], q[2], q[5]}}, {"rays", point.iRays},
              {"angle_rad", point.dAngle}};
}

Json RayJson(const ZuIntersectedPoint& point, const ZuIntersectedRay& ray) {
  const ZuPointTest& test = ray.test;
  return Json{{"photo", ray.uPhoto},
              {"id", point.uId},
              {"vx", ray.adResidualPixels[0]},
              {"vy", ray.adResidualPixels[1]},
              {"vx_mm", test.adResidual[0]},
              {"vy_mm", test.adResidual[1]},
              {"rx", test.adRedundancy[0]},
              {"ry", test.adRedundancy[1]},
              {"wx", test.adW[0]},
              {"wy", test.adW[1]},
              {"test", test.dTest},
              {"limit", std::isfinite(test.dLimit) ? Json(test.dLimit) : Json()}};
}

std::string AsideText(const ZuIntersectedPoint& point, const ZuIntersectedRay& ray) {
  return "photo " + std::to_string(ray.uPhoto) + ", point " + std::to_string(point.uId) +
         " set aside: T " + Fixed(ray.test.dTest, 1) + " beyond " + Fixed(ray.test.dLimit, 1) +
         ", " + Fixed(ray.adResidualPixels[0], 2) + " " + Fixed(ray.adResidualPixels[1], 2) + " px";
}

void Print(const ZuProjectIntersection& result, std::ostream& stream) {
  stream << Counted(result.CountGood(), "point") << ", sigma0 " << Fixed(result.dSigma0, 4) << " "
         << ZuSigmaKindText(result.sigmaKind) << ", redundancy " << result.iRedundancy << ", RMS "
         << Fixed(result.dRmsPixels, 4) << " px\n\n";
  TextTable table;
  for (const char* szTitle :
       {"point", "rays", "angle deg", "X", "Y", "Z", "sX", "sY", "sZ", "T max", "limit"}) {
    table.AddColumn(szTitle);
  }
  for (const ZuIntersectedPoint& point : result.points) {
    if (!point.IsGood()) continue;
    std::vector<std::string> cells = {std::to_string(point.uId), std::to_string(point.iRays),
                                      Fixed(point.dAngle / kDegree, 1)};
    for (const double d : point.position) cells.push_back(FixedLength(d, 5));
    for (int k = 0; k < 3; ++k) cells.push_back(FixedLength(point.Sd(k), 6));
    double dTest = 0.0, dLimit = 0.0;
    for (const ZuIntersectedRay& ray : point.rays) {
      if (!ray.test.bUsed || ray.test.dTest < dTest) continue;
      dTest = ray.test.dTest;
      dLimit = ray.test.dLimit;
    }
    cells.push_back(Fixed(dTest, 2));
    cells.push_back(Fixed(dLimit, 2));
    table.AddRow(cells);
  }
  table.Write(stream);
  stream << "\nstandard deviations from the pixels"
         << (result.iUnsurePhotos > 0
                 ? " and the covariances of " + Counted(result.iUnsurePhotos, "photo")
                 : "; orientations and cameras count as exact")
         << '\n';
}

// What is set aside or could not be intersected; true where there is any.
bool TellRest(const ZuProjectIntersection& result, Context& context) {
  Json& root = context.Root();
  root["set_aside"] = root["not_found"] = Json::array();
  for (const ZuIntersectedPoint& point : result.points) {
    if (!point.IsGood()) {
      context.Warn("point " + std::to_string(point.uId) + ": " + point.strWhy);
      root["not_found"].push_back(Json{{"id", point.uId},
                                       {"status_text", ZuAdjustStatusText(point.status)},
                                       {"why", point.strWhy}});
      continue;
    }
    for (const ZuIntersectedRay& ray : point.rays) {
      if (ray.test.bUsed) continue;
      if (!std::isfinite(ray.test.dTest)) {
        context.Warn("photo " + std::to_string(ray.uPhoto) + ", point " +
                     std::to_string(point.uId) + ": beyond the camera's model, left out");
        continue;
      }
      context.Text() << '\n' << AsideText(point, ray);
      root["set_aside"].push_back(
          Json{{"photo", ray.uPhoto},
               {"id", point.uId},
               {"test", ray.test.dTest},
               {"limit", ray.test.dLimit},
               {"error", {-ray.adResidualPixels[0], -ray.adResidualPixels[1]}}});
    }
  }
  if (!root["set_aside"].empty()) context.Text() << '\n';
  return !root["set_aside"].empty() || !root["not_found"].empty();
}

void AddJson(const ZuProjectIntersection& result, Json* pRoot) {
  Json& root = *pRoot;
  root["sigma0"] = result.dSigma0;
  root["sigma_kind"] = ZuSigmaKindText(result.sigmaKind);
  root["redundancy"] = result.iRedundancy;
  root["rms_px"] = result.dRmsPixels;
  root["unsure_photos"] = result.iUnsurePhotos;
  root["points"] = root["residuals"] = Json::array();
  for (const ZuIntersectedPoint& point : result.points) {
    if (!point.IsGood()) continue;
    root["points"].push_back(PointJson(point));
    for (const ZuIntersectedRay& ray : point.rays) {
      if (ray.test.bUsed) root["residuals"].push_back(RayJson(point, ray));
    }
  }
}

void WriteIntersected(const ZuProjectIntersection& result, int iDecimals, OutputFile* pOutput) {
  ZuPointList points;
  for (const ZuIntersectedPoint& p : result.points) {
    if (!p.IsGood()) continue;
    ZuPoint point(p.uId, p.position[0], p.position[1], p.position[2]);
    point.m_dDX = p.Sd(0);
    point.m_dDY = p.Sd(1);
    point.m_dDZ = p.Sd(2);
    points.Add(point);
  }
  WritePoints(&points, kPointsWithSd, pOutput, iDecimals);
}

ExitCode Run(const Values& values, bool bSigmaGiven, Context& context) {
  ZuNetworkInput input;
  ParseSigma(values.strSigma, &input);
  const InputFile file(values.strProject, kProjectFile);
  const auto pProject = OpenProject(file, values.bPartial);
  ZuProjectIntersectionOptions options;
  options.dSigma = input.dSigma;
  options.bSigmaInPixels = input.bSigmaInPixels;
  options.bSigmaGiven = bSigmaGiven;
  options.tests.bSnoop = values.bTest;
  options.tests.dAlpha = values.dAlpha;
  options.tests.dAlphaTotal = values.dAlphaTotal;
  const ZuProjectIntersection result = ZuIntersectProject(*pProject, options);
  if (result.CountGood() == 0) {
    throw CommandError(
        kUndetermined,
        file.Name() +
            (result.points.empty()
                 ? ": no point is measured in two or more oriented photos; zu orient finds "
                   "orientations"
                 : ": no point could be intersected; point " +
                       std::to_string(result.points[0].uId) + ": " + result.points[0].strWhy) +
            (result.warnings.empty() ? std::string() : "\n" + result.warnings[0]));
  }
  WarnOf(*pProject, file, context);
  for (const std::string& strText : result.warnings) context.Warn(strText);
  for (const ZuIntersectedPoint& point : result.points) {
    if (!point.IsGood() || point.dAngle >= values.dLeastAngle * kDegree) continue;
    context.Warn("point " + std::to_string(point.uId) + ": its rays meet at " +
                 Fixed(point.dAngle / kDegree, 1) + " degrees");
  }
  Print(result, context.Text());
  AddJson(result, &context.Root());
  if (context.WantsReport()) context.Report().AddCameras(*pProject);
  const bool bRest = TellRest(result, context);
  if (!values.strOut.empty()) {
    WriteIntersected(result, values.iDecimals, &context.NewOutput(values.strOut));
  }
  return bRest || !result.warnings.empty() ? kNotAcceptable : kGood;
}

}  // namespace

Runner DefineIntersect(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("PROJECT", &pValues->strProject, "project file with oriented photos");
  options.Option("--sigma", "SIGMA", &pValues->strSigma,
                 "standard deviation of a measured coordinate, 0.1px or 0.0005mm; without it, it "
                 "is estimated from the residuals of all rays");
  options.Flag("--test", &pValues->bTest, "set aside rays that do not fit, of three and more");
  AddTestLimits(options, &pValues->dAlpha, &pValues->dAlphaTotal);
  options.Option("--least-angle", "DEG", &pValues->dLeastAngle,
                 "warn of points whose rays meet at less");
  options.AtLeast(0.0);
  options.AtMost(90.0);
  AddPartialOption(options, &pValues->bPartial);
  options.Output("-o,--output", "FILE", &pValues->strOut,
                 "the points with standard deviations: id x y z dx dy dz");
  AddDecimals(options, &pValues->iDecimals);
  return [pValues, options](Context& context) {
    return Run(*pValues, options.Given("--sigma"), context);
  };
}

}  // namespace cli
