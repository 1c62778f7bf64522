#include "measure_report.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "camera_plot.h"
#include "html_page.h"
#include "html_table.h"
#include "measure_figures.h"
#include "project_input.h"
#include "svg.h"
#include "text_table.h"

namespace cli {

namespace {

constexpr double kOutlier = 3.0;  // times the RMS
constexpr size_t kWorst = 20;
constexpr size_t kMostPhotos = 300, kMostPoints = 300, kMostReasons = 50;  // rows
constexpr size_t kCameraCurves = 4;
constexpr double kGon = 200.0 / 3.14159265358979323846;

std::vector<std::string> QualityCells(const ZuMeasureQuality& quality,
                                      const ZuMeasuredPoint* pWorst) {
  if (pWorst == nullptr) return {};
  return {Fixed(quality.m_dRmsPixels, 3), Fixed(quality.m_dRms, 4),  Fixed(quality.m_dRmsX, 4),
          Fixed(quality.m_dRmsY, 4),      Fixed(quality.m_dRmsZ, 4), Fixed(pWorst->Length(), 4),
          std::to_string(pWorst->m_uId)};
}

std::string PhotoTable(const ZuPlaneMeasurement& result, const ReportInput& input) {
  const std::string strIn = " [" + input.strUnit + "]";
  HtmlTable table("photos", {{"photo"},
                             {"file", true},
                             {"points"},
                             {"sd" + strIn},
                             {"RMS [px]"},
                             {"RMS" + strIn},
                             {"RMS X" + strIn},
                             {"RMS Y" + strIn},
                             {"RMS Z" + strIn},
                             {"worst" + strIn},
                             {"at point"}});
  const auto add = [&table](std::vector<std::string> cells, const ZuMeasureQuality& quality,
                            const ZuMeasuredPoint* pWorst, bool bTotal) {
    const auto more = QualityCells(quality, pWorst);
    cells.insert(cells.end(), more.begin(), more.end());
    table.AddRow(cells, bTotal);
  };
  for (size_t i = 0; i < std::min(kMostPhotos, result.m_photos.size()); ++i) {
    const ZuMeasuredPhoto& photo = result.m_photos[i];
    add({std::to_string(photo.m_pPhoto->GetId()), photo.m_pPhoto->GetName().chars(),
         std::to_string(photo.m_points.size()), Fixed(input.pAccuracy->Photos()[i].dSd, 4)},
        photo, photo.Worst(), false);
  }
  const ZuMeasuredPhoto* pWorst = result.WorstPhoto();
  add({"all", "", std::to_string(result.m_iPoints), "-"}, result,
      pWorst != nullptr ? pWorst->Worst() : nullptr, true);
  std::string strNote =
      "Differences are the point met with the plane less the check point, by id; RMS is the root "
      "mean square of their lengths, in the image [px] and in the object. " +
      input.pAccuracy->Note() + ".";
  if (result.m_photos.size() > kMostPhotos) {
    strNote += " The first " + std::to_string(kMostPhotos) + " of " +
               std::to_string(result.m_photos.size()) + " photos.";
  }
  return LongSection("Photos", strNote, table.Html());
}

std::string LeftOut(const ZuPlaneMeasurement& result) {
  std::string strItems;
  for (size_t i = 0; i < std::min(kMostReasons, result.m_leftOut.size()); ++i) {
    const ZuLeftOutPhoto& photo = result.m_leftOut[i];
    strItems += "<li>" +
                XmlText("photo " + std::to_string(photo.m_uPhoto) + " " + photo.m_strWhy + " (" +
                        Counted(static_cast<size_t>(photo.m_iMeasurements), "measurement") + ")") +
                "</li>\n";
  }
  for (size_t i = 0; i < std::min(kMostReasons, result.m_refused.size()); ++i) {
    const ZuRefusedMeasurement& point = result.m_refused[i];
    strItems += "<li>" +
                XmlText("photo " + std::to_string(point.m_uPhoto) + ", point " +
                        std::to_string(point.m_uId) + ": " + point.m_strWhy) +
                "</li>\n";
  }
  if (strItems.empty()) return "";
  const size_t uAll = result.m_leftOut.size() + result.m_refused.size();
  return LongSection("Left out",
                     Counted(result.m_leftOut.size(), "photo") + " and " +
                         Counted(result.m_refused.size(), "single measurement") +
                         (uAll > kMostReasons ? "; the first of each." : "."),
                     "<ul>\n" + strItems + "</ul>\n");
}

struct Residual {
  const ZuMeasuredPhoto* pPhoto;
  const ZuMeasuredPoint* pPoint;
};

std::string WorstTable(const ZuPlaneMeasurement& result, const std::string& strUnit) {
  std::vector<Residual> all;
  for (const ZuMeasuredPhoto& photo : result.m_photos) {
    for (const ZuMeasuredPoint& point : photo.m_points) {
      if (point.m_bChecked) all.push_back({&photo, &point});
    }
  }
  const size_t uRows = std::min(kWorst, all.size());
  std::partial_sort(
      all.begin(), all.begin() + static_cast<std::ptrdiff_t>(uRows), all.end(),
      [](const Residual& a, const Residual& b) { return a.pPoint->Length() > b.pPoint->Length(); });
  const std::string strIn = " [" + strUnit + "]";
  HtmlTable table("worst", {{"photo"},
                            {"point"},
                            {"x [px]"},
                            {"y [px]"},
                            {"residual [px]"},
                            {"dX" + strIn},
                            {"dY" + strIn},
                            {"dZ" + strIn},
                            {"length" + strIn},
                            {"times RMS"}});
  for (size_t i = 0; i < uRows; ++i) {
    const ZuMeasuredPoint& p = *all[i].pPoint;
    table.AddRow({std::to_string(all[i].pPhoto->m_pPhoto->GetId()), std::to_string(p.m_uId),
                  Fixed(p.m_dPixelX, 2), Fixed(p.m_dPixelY, 2),
                  Fixed(std::hypot(p.m_dResPixelX, p.m_dResPixelY), 3), Fixed(p.m_dDX, 4),
                  Fixed(p.m_dDY, 4), Fixed(p.m_dDZ, 4), Fixed(p.Length(), 4),
                  Fixed(p.Length() / result.m_dRms, 1)});
  }
  return LongSection(uRows < kWorst ? "The longest residuals" : "The twenty longest residuals", "",
                     table.Html());
}

std::string CoordinateTable(const ZuPlaneMeasurement& result, const ReportInput& input) {
  const std::vector<ZuMeanMeasuredPoint> points = result.MeanPoints();
  const std::string strIn = " [" + input.strUnit + "]";
  HtmlTable table("points", {{"point"},
                             {"photos"},
                             {"X" + strIn},
                             {"Y" + strIn},
                             {"Z" + strIn},
                             {"scatter" + strIn},
                             {"dX" + strIn},
                             {"dY" + strIn},
                             {"dZ" + strIn}});
  const ZuSortHelper<ZuPoint> index(input.pCheck);
  size_t uRows = 0;
  for (const ZuMeanMeasuredPoint& mean : points) {
    if (++uRows > kMostPoints) break;
    std::vector<std::string> cells = {
        std::to_string(mean.m_uId), std::to_string(mean.m_iPhotos),
        Fixed(mean.m_dX, 4),        Fixed(mean.m_dY, 4),
        Fixed(mean.m_dZ, 4),        mean.m_iPhotos > 1 ? Fixed(mean.m_dScatter, 4) : "-"};
    const ZuPoint* pCheck = index.Find(mean.m_uId);
    if (pCheck != nullptr) {
      cells.push_back(Fixed(mean.m_dX - pCheck->m_dX, 4));
      cells.push_back(Fixed(mean.m_dY - pCheck->m_dY, 4));
      cells.push_back(Fixed(mean.m_dZ - pCheck->m_dZ, 4));
    }
    table.AddRow(cells);
  }
  std::string strNote =
      "Mean of the photos, root mean square of their distances from it, and its difference to the "
      "check point.";
  if (points.size() > kMostPoints) {
    strNote += " The first " + std::to_string(kMostPoints) + " of " +
               std::to_string(points.size()) + " points; -o FILE writes all.";
  }
  return LongSection("Object coordinates", strNote, table.Html());
}

std::string OrientationTable(const ZuPlaneMeasurement& result, const std::string& strUnit) {
  const std::string strIn = " [" + strUnit + "]";
  HtmlTable table("orientations", {{"photo"},
                                   {"X0" + strIn},
                                   {"Y0" + strIn},
                                   {"Z0" + strIn},
                                   {"a about X [gon]"},
                                   {"b about Y [gon]"},
                                   {"c about Z [gon]"},
                                   {"pixel [\xC2\xB5m]"},
                                   {"camera"}});
  for (size_t i = 0; i < std::min(kMostPhotos, result.m_photos.size()); ++i) {
    const ZuPhoto& photo = *result.m_photos[i].m_pPhoto;
    const ZuVector& X0 = photo.GetPosAOR();
    double a, b, c;
    photo.GetRotAOR(&a, &b, &c);
    table.AddRow({std::to_string(photo.GetId()), Fixed(X0[1], 3), Fixed(X0[2], 3), Fixed(X0[3], 3),
                  Fixed(a * kGon, 5), Fixed(b * kGon, 5), Fixed(c * kGon, 5),
                  Fixed(photo.GetPixelSize() * 1000.0, 3),
                  std::to_string(photo.GetCamera().GetId())});
  }
  return LongSection("Orientations",
                     "R = Ry(b) Rx(a) Rz(c) carries image vectors to object space; X0, Y0, Z0 is "
                     "the projection centre.",
                     table.Html());
}

// " + 0.5 Y"
std::string Term(double dValue, int iDecimals, const char* szAxis) {
  const std::string strNumber = Fixed(dValue, iDecimals);
  const bool bMinus = strNumber[0] == '-';
  return (bMinus ? " - " + strNumber.substr(1) : " + " + strNumber) + szAxis;
}

std::string PlaneText(const ZuPlaneMeasurement& result, const std::string& strUnit) {
  const ZuPlane& plane = result.m_plane;
  const std::string strFirst = Term(plane.A(), 9, " X");
  const std::string strText =
      (result.m_iPlanePoints > 0
           ? "Best-fit plane of " + Counted(static_cast<size_t>(result.m_iPlanePoints), "point")
           : std::string("Plane as told")) +
      ":" + (strFirst[1] == '+' ? strFirst.substr(2) : strFirst) + Term(plane.B(), 9, " Y") +
      Term(plane.C(), 9, " Z") + Term(plane.D(), 6, "") + " = 0 [" + strUnit +
      "]; longest distance of a point from it " + Fixed(result.m_dPlaneDeviation, 6) + " " +
      strUnit + ".";
  return Section("Plane", "<p>" + XmlText(strText) + "</p>\n");
}

std::string CameraCurves(const ZuPlaneMeasurement& result) {
  std::set<unsigned> shown;
  std::string strCurves;
  for (const ZuMeasuredPhoto& photo : result.m_photos) {
    const ZuCamera& camera = photo.m_pPhoto->GetCamera();
    if (shown.size() >= kCameraCurves || !shown.insert(camera.GetId()).second) continue;
    strCurves += "<figure>" +
                 SvgOf(DistortionCurve(camera, PhotoExtent(*photo.m_pPhoto), 480.0, 320.0)) +
                 "<figcaption>" +
                 XmlText("Camera " + std::to_string(camera.GetId()) + " \"" +
                         camera.GetName().chars() + "\": c = " + SvgNumber(std::fabs(camera.m_dC)) +
                         " mm, principal point (" + SvgNumber(camera.m_dXh) + ", " +
                         SvgNumber(camera.m_dYh) + ") mm; to the corner of the image.") +
                 "</figcaption></figure>\n";
  }
  return Section(shown.size() == 1 ? "Camera" : "Cameras",
                 "<div class='row'>\n" + strCurves + "</div>\n");
}

std::string Inputs(const ReportInput& input) {
  HtmlTable table("inputs", {{"input", true}, {"file", true}, {"bytes"}, {"CRC-32"}});
  for (const ReportInput::File& file : input.files) {
    char szCrc[16];
    std::snprintf(szCrc, sizeof szCrc, "%08x", file.uCrc);
    table.AddRow({file.strWhat, file.strName, std::to_string(file.uBytes), szCrc});
  }
  return Section("Inputs",
                 table.Html() + "<p>Command: <code>" + XmlText(CommandLine()) + "</code></p>\n");
}

std::string Residuals(const ZuPlaneMeasurement& result, const ReportInput& input) {
  const PhotoFigures figures(result);
  std::string strNote =
      "Measured less check point, drawn " + SvgNumber(figures.Factor()) +
      " times as long in every photo; the frame is the image, y down. Yellow arrows are cut and "
      "labelled with their length [px].";
  if (figures.Photos().size() < result.m_photos.size()) {
    strNote += " The " + std::to_string(figures.Photos().size()) + " photos of the largest RMS.";
  }
  if (figures.IsThinned()) strNote += " Of crowded residuals the longest of each cell is drawn.";
  std::string strPhotos = "<div class='row photos'>\n";
  for (const ZuMeasuredPhoto* p : figures.Photos()) strPhotos += SvgOf(figures.Figure(*p));
  return LongSection("Residuals in the photos", strNote, strPhotos + "</div>\n") +
         Section("Residuals in the object",
                 "<div class='row'><figure>" +
                     SvgOf(PlanFigure(result, *input.pCheck, input.strUnit)) +
                     "</figure>\n<figure>" + SvgOf(HistogramFigure(result, input.strUnit)) +
                     "</figure></div>\n");
}

}  // namespace

std::string VerdictOf(const ZuPlaneMeasurement& result, const std::string& strUnit) {
  const std::string strMet = Counted(static_cast<size_t>(result.m_iPoints), "measurement") +
                             " of " + Counted(result.m_photos.size(), "photo") +
                             " met with the plane";
  const std::string strLeftOut =
      result.m_refused.empty() ? "" : "; " + std::to_string(result.m_refused.size()) + " left out";
  if (result.m_iChecked == 0)
    return strMet + "; no check points to compare with" + strLeftOut + ".";
  const ZuMeasuredPhoto& worst = *result.WorstPhoto();
  return strMet + ", " + std::to_string(result.m_iChecked) + " compared: RMS " +
         Fixed(result.m_dRms, 4) + " " + strUnit + ", worst " + Fixed(worst.Worst()->Length(), 4) +
         " " + strUnit + " (photo " + std::to_string(worst.m_pPhoto->GetId()) + ", point " +
         std::to_string(worst.Worst()->m_uId) + "), " +
         std::to_string(result.CountLonger(kOutlier * result.m_dRms)) +
         " beyond three times the RMS" + strLeftOut + ".";
}

std::string MeasureReport(const ZuPlaneMeasurement& result, const ReportInput& input) {
  std::string strVerdict = VerdictOf(result, input.strUnit);
  if (result.m_iChecked > 0) {
    strVerdict += " In the images the RMS is " + Fixed(result.m_dRmsPixels, 3) + " pixels.";
  }
  std::string strBody = LeftOut(result) + PhotoTable(result, input);
  if (result.m_iChecked > 0)
    strBody += Residuals(result, input) + WorstTable(result, input.strUnit);
  strBody += CoordinateTable(result, input) + PlaneText(result, input.strUnit);
  strBody += CameraCurves(result) + OrientationTable(result, input.strUnit) + Inputs(input);
  return HtmlPage("Measurement report", "Measurement on a plane", strVerdict, strBody);
}

Drawing MeasurePicture(const ZuPlaneMeasurement& result, const ReportInput& input) {
  if (result.m_iChecked > 0) return PlanFigure(result, *input.pCheck, input.strUnit);
  return PhotoFigures(result).Figure(result.m_photos.front());
}

}  // namespace cli
