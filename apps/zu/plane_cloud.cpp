#include "plane_cloud.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "cloud_files.h"
#include "plane_orthogonal.h"
#include "svg.h"
#include "table_decimals.h"
#include "text_table.h"
#include "zu/adjust/cloud_plane.h"
#include "zu/foundation/file_name.h"

namespace cli {

namespace {

constexpr std::uintmax_t kMostTested = 8000000;  // bytes of a text file whose points are tested

// Options that go by points.
bool NeedsPoints(const PlaneValues& values) {
  return values.bAxis || values.adjust.dSigma > 0.0 || values.choice.IsAsked() ||
         !values.strLog.empty() || !values.strOutput.empty();
}

void AddFigures(const ZuCloudPlane& fit, Json* pRoot) {
  Json& json = *pRoot;
  const ZuPlane& plane = fit.plane;
  json["normal"] = {plane.A(), plane.B(), plane.C()};
  json["d"] = plane.D();
  json["sd"] = Json::array();
  for (int i = 0; i < 4; ++i) json["sd"].push_back(std::sqrt(std::max(0.0, fit.adCov[5 * i])));
  json["sigma0"] = fit.dSigma0;
  json["redundancy"] = fit.uPoints - 3;
  json["centre"] = std::vector<double>(fit.adCentre, fit.adCentre + 3);
  json["spread"] = std::vector<double>(fit.adSpread, fit.adSpread + 3);
  json["flatness"] = fit.dHigh - fit.dLow;
  json["rms"] = RmsJson(fit.dRms);
  json["largest"] = std::fabs(fit.dFarthest);
  json["largest_point"] = fit.uFarthest + 1;
  json["count"] = fit.uPoints;
  json["points"] = Json();
}

void WriteFigures(const ZuCloudPlane& fit, const std::string& strEquation, std::ostream& text) {
  const int iDecimals = DecimalsFor(std::fabs(fit.dFarthest));
  text << Counted(fit.uPoints, "point") << ", largest distance "
       << Fixed(std::fabs(fit.dFarthest), iDecimals) << "\n\n"
       << strEquation << "\nsd of A, B, C, D";
  for (int i = 0; i < 4; ++i) {
    text << "  " << ShortLength(std::sqrt(std::max(0.0, fit.adCov[5 * i])));
  }
  text << "\n\nsigma0     " << ShortLength(fit.dSigma0) << "\nRMS        "
       << Fixed(fit.dRms, iDecimals) << "\nflatness   " << Fixed(fit.dHigh - fit.dLow, iDecimals)
       << "  from the lowest to the highest point\nlargest    "
       << Fixed(std::fabs(fit.dFarthest), iDecimals) << "  point " << fit.uFarthest + 1
       << " of the file\n";
}

}  // namespace

namespace {

eZuCloudFile KindOfCloud(const PlaneValues& values) {
  ZuCloudFileOptions options;
  options.m_Table = TableOptions(values.format, values.format.strToldColumns, false);
  std::string strWhy;
  return ZuFindCloudFileKind(values.strPoints.c_str(), options, &strWhy);
}

}  // namespace

bool IsPlaneCloud(const PlaneValues& values) {
  const std::string strEnding = ZuGetFileEnding(values.strPoints);
  if (strEnding == ".zpc" || strEnding == ".ply" || strEnding == ".las" || strEnding == ".e57") {
    return true;
  }
  std::error_code error;
  if (!std::filesystem::is_regular_file(values.strPoints, error)) return false;
  switch (KindOfCloud(values)) {
    case eZuCloudFileNone:
      return false;
    case eZuCloudFilePts:
    case eZuCloudFileCoordinates:
    case eZuCloudFileEither:
      return !NeedsPoints(values) && std::filesystem::file_size(values.strPoints) > kMostTested;
    default:
      return true;
  }
}

ExitCode RunPlaneCloud(const PlaneValues& values, Context& context) {
  if (NeedsPoints(values)) {
    throw CommandError(kUsage, NameInMessages(values.strPoints) +
                                   " is fitted as a cloud, all of whose points count: --tolerance "
                                   "alone goes with it; a coordinate file (zu convert) takes the "
                                   "others");
  }
  ZuPointCloudContainer clouds;
  CloudOptions options;
  options.strColumns = values.format.strToldColumns;
  options.table = TableOptions(values.format, "", false);
  // As the points of a list are taken.
  if (options.strColumns.empty() && KindOfCloud(values) == eZuCloudFileEither) {
    options.strColumns = "id,x,y,z";
  }
  ReadClouds(values.strPoints, options, context, &clouds);
  std::vector<const std::vector<ZuScanPoint3d>*> parts;
  for (const ZuPointCloud* p = clouds.First(); p != nullptr; p = p->Next()) {
    parts.push_back(&p->GetPoints());
  }
  const ZuCloudPlane fit = ZuFitCloudPlane(parts);
  if (fit.eStatus != ZuAdjustStatus::Good) {
    throw CommandError(
        kUndetermined,
        NameInMessages(values.strPoints) + ": " +
            (fit.eStatus == ZuAdjustStatus::TooFew
                 ? "holds " + Counted(fit.uPoints, "point") + ", a plane needs 3"
             : fit.eStatus == ZuAdjustStatus::RankDefect
                 ? std::string("the points do not determine a plane: in one place, on one line, or "
                               "spread as far across one as along it")
                 : std::string(ZuAdjustStatusText(fit.eStatus))));
  }
  WriteFigures(fit, EquationOf(fit.plane), context.Text());
  AddFigures(fit, &context.Root());
  return WithinTolerance(values.choice,
                         {{std::to_string(fit.uFarthest + 1), std::fabs(fit.dFarthest)}}, context,
                         kGood);
}

}  // namespace cli
