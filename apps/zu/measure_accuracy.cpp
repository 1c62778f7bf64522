#include "measure_accuracy.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "cmd_adjust_input.h"
#include "exit_code.h"
#include "text_table.h"
#include "zu/foundation/strict_number.h"

namespace cli {

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;
constexpr size_t kTold = 20;  // warnings

std::string Degrees(double dRadians) { return Fixed(dRadians / kDegree, 1); }

// The two ids of "PHOTO,POINT". Throws CommandError (usage).
std::array<unsigned, 2> ParsePair(const std::string& strText) {
  const size_t uComma = strText.find(',');
  std::array<unsigned, 2> ids{};
  if (uComma != std::string::npos && ZuParseId(strText.substr(0, uComma), &ids[0]) &&
      ZuParseId(strText.substr(uComma + 1), &ids[1])) {
    return ids;
  }
  throw CommandError(kUsage, "--explain " + strText + ": PHOTO,POINT would be right, as 7,46");
}

ZuPoint PixelOf(const ZuMeasuredPoint& p) {
  ZuPoint pixel(p.m_uId, p.m_dPixelX, p.m_dPixelY);
  pixel.m_dDX = p.m_dPixelSdX;
  pixel.m_dDY = p.m_dPixelSdY;
  return pixel;
}

Json Finite(double d) { return std::isfinite(d) ? Json(d) : Json(); }

}  // namespace

void AddAccuracyOptions(Options& options, AccuracyValues* pValues) {
  options.Option("--sigma", "SIGMA", &pValues->strSigma,
                 "standard deviation of a measured coordinate without one in the project, 0.1px or "
                 "0.0005mm");
  options.Option("--incidence", "DEG", &pValues->dIncidence,
                 "warn where a ray meets the plane at less than this angle, 10 by default");
  options.AtLeast(0.0);
  options.AtMost(90.0);
  options.Option("--explain", "PHOTO,POINT", &pValues->strExplain,
                 "show the way of one measurement with its numbers");
}

double MeasureAccuracy::Point::Length() const { return std::sqrt(cov[0] + cov[1] + cov[2]); }

double MeasureAccuracy::Photo::LeastIncidence() const {
  return iLeast < 0 ? std::nan("") : points[static_cast<size_t>(iLeast)].dIncidence;
}

MeasureAccuracy::MeasureAccuracy(const ZuProject& project, const ZuPlaneMeasurement& result,
                                 const std::optional<ZuPlaneFit>& plane, bool bFlip,
                                 const AccuracyValues& values)
    : m_pPlane(plane ? &*plane : nullptr),
      m_dLimit(values.dIncidence * kDegree),
      m_bTold(!project.Covariances().IsEmpty() || (plane && plane->fit.bSigmaTold)) {
  ZuNetworkInput input;
  ParseSigma(values.strSigma, &input);
  m_options = {input.dSigma, input.bSigmaInPixels, bFlip};
  for (const ZuMeasuredPhoto& photo : result.m_photos) Add(project, photo, result.m_plane);
  if (!values.strExplain.empty()) Explain(project, result, values.strExplain);
}

void MeasureAccuracy::Add(const ZuProject& project, const ZuMeasuredPhoto& measured,
                          const ZuPlane& plane) {
  const ZuPlanePointChain chain(project, *measured.m_pPhoto, plane, m_pPlane, m_options);
  Photo photo{{}, chain.HasOrientation(), chain.HasCamera(), 0.0};
  photo.points.reserve(measured.m_points.size());
  int n = 0;
  for (const ZuMeasuredPoint& p : measured.m_points) {
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    Point point{{kNone, kNone, kNone, kNone, kNone, kNone}, kNone};
    ZuPlanePointAccuracy accuracy;
    m_bTold |= p.m_dPixelSdX > 0.0;
    if (chain.Of(PixelOf(p), &accuracy)) {
      const double* const c = accuracy.adCov;
      point = {{c[0], c[4], c[8], c[1], c[2], c[5]}, accuracy.dIncidence};
      photo.dSd += c[0] + c[4] + c[8];
      ++n;
      if (point.dIncidence < m_dLimit) ++photo.iFlat;
      if (!(photo.LeastIncidence() <= point.dIncidence)) {
        photo.iLeast = static_cast<int>(photo.points.size());
      }
    }
    photo.points.push_back(point);
  }
  photo.dSd = n > 0 ? std::sqrt(photo.dSd / n) : std::nan("");
  m_photos.push_back(std::move(photo));
}

void MeasureAccuracy::Explain(const ZuProject& project, const ZuPlaneMeasurement& result,
                              const std::string& strWhich) {
  const auto [uPhoto, uPoint] = ParsePair(strWhich);
  for (const ZuMeasuredPhoto& measured : result.m_photos) {
    const ZuPhoto& photo = *measured.m_pPhoto;
    if (photo.GetId() != uPhoto) continue;
    for (const ZuMeasuredPoint& p : measured.m_points) {
      if (p.m_uId != uPoint) continue;
      const ZuPlanePointChain chain(project, photo, result.m_plane, m_pPlane, m_options);
      Chain told{uPhoto, uPoint, {p.m_dPixelX, p.m_dPixelY}, {}, {}, {}, {}, chain.Parameters()};
      chain.Of(PixelOf(p), &told.accuracy);
      for (int i = 0; i < 3; ++i) {
        told.adCentre[i] = photo.GetPosAOR()[i + 1];
        told.adCentreSd[i] = chain.OrientationSd(i);
        told.adRotationSd[i] = chain.OrientationSd(3 + i);
      }
      m_chain = std::move(told);
      return;
    }
  }
  throw CommandError(kBadInput, "--explain " + strWhich +
                                    ": the plane is not met by that point of that photo; a "
                                    "photo and a point measured in it would be right");
}

std::string MeasureAccuracy::Note() const {
  const auto count = [&](bool Photo::*pHas) {
    return std::count_if(m_photos.begin(), m_photos.end(),
                         [&](const Photo& photo) { return photo.*pHas; });
  };
  const auto nOrientation = count(&Photo::bOrientation), nCamera = count(&Photo::bCamera);
  const std::string strOf = " of " + std::to_string(nOrientation) + " of the photos";
  std::string strText = "sd: of the position, from " + Shortest(m_options.dSigma) +
                        (m_options.bSigmaInPixels ? " px" : " mm") + " a measured coordinate, " +
                        (m_pPlane != nullptr ? "the plane" : "an exact plane");
  if (nOrientation > 0) strText += ", orientation" + strOf;
  if (nCamera > 0) strText += nOrientation > 0 ? " with their cameras" : ", cameras";
  if (nOrientation == 0) {
    strText += nCamera == 0 ? "; orientations and cameras count as exact"
                            : "; orientations count as exact";
  }
  return strText;
}

void MeasureAccuracy::Warn(const ZuPlaneMeasurement& result, const Context& context) const {
  size_t uTold = 0;
  for (size_t i = 0; i < m_photos.size(); ++i) {
    const Photo& photo = m_photos[i];
    if (photo.iFlat == 0 || ++uTold > kTold) continue;
    const ZuMeasuredPhoto& measured = result.m_photos[i];
    context.Warn("photo " + std::to_string(measured.m_pPhoto->GetId()) + ": " +
                 Counted(photo.iFlat, "ray meets", "rays meet") + " the plane at less than " +
                 Degrees(m_dLimit) + " degrees, the least at " + Degrees(photo.LeastIncidence()) +
                 " (point " +
                 std::to_string(measured.m_points[static_cast<size_t>(photo.iLeast)].m_uId) +
                 "); a photo from higher above the plane would be right");
  }
  if (uTold > kTold) {
    context.Warn("and so in " + Counted(static_cast<long long>(uTold - kTold), "more photo"));
  }
}

void MeasureAccuracy::PrintChain(const std::string& strUnit, std::ostream& stream) const {
  if (!m_chain) return;
  const Chain& chain = *m_chain;
  const ZuPlanePointAccuracy& a = chain.accuracy;
  stream << "\nphoto " << chain.uPhoto << ", point " << chain.uPoint << '\n';
  TextTable table;
  table.AddColumn("step", TextTable::eLeft);
  for (const char* szTitle : {"x", "y", "z", "sd x", "sd y", "sd z"}) table.AddColumn(szTitle);
  table.AddColumn("", TextTable::eLeft);
  const auto row = [&](const char* szStep, const double* p, const double* pSd, int n,
                       const char* szUnit) {
    std::vector<std::string> cells(8);
    cells[0] = szStep;
    for (size_t i = 0; i < static_cast<size_t>(n); ++i) {
      if (p != nullptr) cells[1 + i] = Fixed(p[i], 6);
      if (pSd != nullptr) cells[4 + i] = Fixed(pSd[i], p != nullptr ? 6 : 8);
    }
    cells[7] = szUnit;
    table.AddRow(cells);
  };
  const double adImage[2] = {std::sqrt(a.adImageCov[0]), std::sqrt(a.adImageCov[2])};
  const double adAdjusted[2] = {std::sqrt(a.adAdjustedCov[0]), std::sqrt(a.adAdjustedCov[2])};
  const double adSd[3] = {a.Sd(0), a.Sd(1), a.Sd(2)};
  const bool bPixels = a.adPixelSd[0] > 0.0;
  row("measured", chain.adPixel, bPixels ? a.adPixelSd : nullptr, 2, "px");
  row("pre-transformed", a.adPre, nullptr, 2, "");
  row("image", a.adImage, adImage, 2, "mm");
  row("without distortion", a.adAdjusted, adAdjusted, 2, "mm");
  row("projection centre", chain.adCentre, chain.adCentreSd, 3, strUnit.c_str());
  row("rotation", nullptr, chain.adRotationSd, 3, "rad");
  row("direction of the ray", a.adDirection, nullptr, 3, "");
  row("on the plane", a.adPoint, adSd, 3, strUnit.c_str());
  table.Write(stream);
  stream << "\ndistance            " << Fixed(a.dDistance, 6) << "\nincidence           "
         << Angle(a.dIncidence) << "\nsd of the plane     " << Fixed(a.dPlaneSd, 6)
         << "\n\nsd of the position from\n";
  const std::pair<const char*, double> parts[] = {{"pixel", a.dPixel},
                                                  {"camera", a.dCamera},
                                                  {"orientation", a.dOrientation},
                                                  {"camera and orientation", a.dPose},
                                                  {"plane", a.dPlane},
                                                  {"all", std::hypot(adSd[0], adSd[1], adSd[2])}};
  TextTable shares;
  shares.AddColumn("part", TextTable::eLeft);
  shares.AddColumn("sd");
  for (const auto& [szPart, dSd] : parts) shares.AddRow({szPart, Fixed(dSd, 6)});
  shares.Write(stream);
}

void MeasureAccuracy::AddJson(Json* pRoot) const {
  Json& root = *pRoot;
  root["sigma"] = m_options.dSigma;
  root["sigma_unit"] = m_options.bSigmaInPixels ? "px" : "mm";
  if (!m_chain) return;
  const Chain& chain = *m_chain;
  const ZuPlanePointAccuracy& a = chain.accuracy;
  const auto sd = [](const double* pCov) { return Json{std::sqrt(pCov[0]), std::sqrt(pCov[2])}; };
  root["explain"] = Json{{"photo", chain.uPhoto},
                         {"id", chain.uPoint},
                         {"pixel", {chain.adPixel[0], chain.adPixel[1]}},
                         {"sd_pixel", {a.adPixelSd[0], a.adPixelSd[1]}},
                         {"pre", {a.adPre[0], a.adPre[1]}},
                         {"image", {a.adImage[0], a.adImage[1]}},
                         {"sd_image", sd(a.adImageCov)},
                         {"adjusted", {a.adAdjusted[0], a.adAdjusted[1]}},
                         {"sd_adjusted", sd(a.adAdjustedCov)},
                         {"camera_parameters", chain.parameters},
                         {"position", chain.adCentre},
                         {"sd_position", chain.adCentreSd},
                         {"sd_rotation_rad", chain.adRotationSd},
                         {"direction", a.adDirection},
                         {"distance", a.dDistance},
                         {"incidence_rad", a.dIncidence},
                         {"sd_plane", a.dPlaneSd},
                         {"point", a.adPoint},
                         {"sd_point", {Finite(a.Sd(0)), Finite(a.Sd(1)), Finite(a.Sd(2))}},
                         {"parts",
                          {{"pixel", a.dPixel},
                           {"camera", a.dCamera},
                           {"orientation", a.dOrientation},
                           {"camera_and_orientation", a.dPose},
                           {"plane", a.dPlane}}}};
}

}  // namespace cli
