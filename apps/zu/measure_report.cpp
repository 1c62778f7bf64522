#include "measure_report.h"

#include <chrono>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>

#include "camera_plot.h"
#include "measure_figures.h"
#include "point_input.h"
#include "svg.h"
#include "text_table.h"
#include "zu/foundation/crc32.h"
#include "zu/version.h"

namespace cli {

namespace {

constexpr double kOutlier = 3.0;  // times the RMS
constexpr size_t kCameraCurves = 4;
constexpr double kGon = 200.0 / 3.14159265358979323846;

constexpr char kStyle[] = R"(
body{font:15px/1.45 'DejaVu Sans',Verdana,sans-serif;color:#1b1b1b;max-width:1080px;margin:1.5em auto;padding:0 1em}
h1{font-size:1.5em;margin:.2em 0}h2{font-size:1.15em;margin:1.6em 0 .5em;border-bottom:1px solid #bbb}
.verdict{background:#eef3f9;border-left:6px solid #1f5fa8;padding:.8em 1em;font-size:1.1em}
table{border-collapse:collapse;margin:.4em 0}th,td{padding:.2em .7em;text-align:right;border-bottom:1px solid #ddd}
th{background:#f3f3f3;vertical-align:bottom}td.l,th.l{text-align:left}tr.all td{font-weight:bold;border-top:2px solid #888}
.photos svg{margin:.3em .5em .3em 0}svg{max-width:100%;height:auto}figure{margin:.6em 0}
figcaption,.note{color:#444;font-size:.9em}code{font:13px 'DejaVu Sans Mono',monospace;overflow-wrap:anywhere}
@media print{body{max-width:none;margin:0;font-size:11px}svg,tr,figure,.verdict{break-inside:avoid}h2{break-after:avoid}}
)";

std::string Cell(const std::string& strText, bool bLeft = false) {
  return (bLeft ? "<td class='l'>" : "<td>") + XmlText(strText) + "</td>";
}

std::string Head(const std::string& strText, bool bLeft = false) {
  return (bLeft ? "<th class='l'>" : "<th>") + XmlText(strText) + "</th>";
}

std::string PhotoTable(const Measurement& result, const std::string& strUnit) {
  const std::string strIn = " [" + strUnit + "]";
  std::string html = "<table><thead><tr>" + Head("photo") + Head("file", true) + Head("points") +
                     Head("RMS" + strIn) + Head("RMS X" + strIn) + Head("RMS Y" + strIn) +
                     Head("RMS Z" + strIn) + Head("worst" + strIn) + Head("at point") +
                     "</tr></thead>\n<tbody>\n";
  for (const MeasuredPhoto& photo : result.photos) {
    html += "<tr>" + Cell(std::to_string(photo.pPhoto->GetId())) +
            Cell(photo.pPhoto->GetName().chars(), true) + Cell(std::to_string(photo.points.size()));
    if (photo.pWorst != nullptr) {
      html += Cell(Fixed(photo.dRms, 4)) + Cell(Fixed(photo.dRmsX, 4)) +
              Cell(Fixed(photo.dRmsY, 4)) + Cell(Fixed(photo.dRmsZ, 4)) +
              Cell(Fixed(photo.pWorst->Length(), 4)) + Cell(std::to_string(photo.pWorst->uId));
    } else {
      for (int i = 0; i < 6; ++i) html += Cell("-");
    }
    html += "</tr>\n";
  }
  html += "<tr class='all'>" + Cell("all") + Cell("", true) + Cell(std::to_string(result.iPoints));
  if (result.pWorstPhoto != nullptr) {
    html += Cell(Fixed(result.dRms, 4)) + Cell(Fixed(result.dRmsX, 4)) +
            Cell(Fixed(result.dRmsY, 4)) + Cell(Fixed(result.dRmsZ, 4)) +
            Cell(Fixed(result.pWorstPhoto->pWorst->Length(), 4)) +
            Cell(std::to_string(result.pWorstPhoto->pWorst->uId));
  } else {
    for (int i = 0; i < 6; ++i) html += Cell("-");
  }
  return html + "</tr>\n</tbody></table>\n";
}

std::string OrientationTable(const Measurement& result, const std::string& strUnit) {
  const std::string strIn = " [" + strUnit + "]";
  std::string html = "<table><thead><tr>" + Head("photo") + Head("X0" + strIn) +
                     Head("Y0" + strIn) + Head("Z0" + strIn) + Head("a about X [gon]") +
                     Head("b about Y [gon]") + Head("c about Z [gon]") + Head("pixel [\xC2\xB5m]") +
                     Head("camera") + "</tr></thead>\n<tbody>\n";
  for (const MeasuredPhoto& photo : result.photos) {
    const ZuVector& X0 = photo.pPhoto->GetPosAOR();
    double a, b, c;
    photo.pPhoto->GetRotAOR(&a, &b, &c);
    html += "<tr>" + Cell(std::to_string(photo.pPhoto->GetId())) + Cell(Fixed(X0[1], 3)) +
            Cell(Fixed(X0[2], 3)) + Cell(Fixed(X0[3], 3)) + Cell(Fixed(a * kGon, 5)) +
            Cell(Fixed(b * kGon, 5)) + Cell(Fixed(c * kGon, 5)) +
            Cell(Fixed(photo.pPhoto->GetPixelSize() * 1000.0, 3)) +
            Cell(std::to_string(photo.pPhoto->GetCamera().GetId())) + "</tr>\n";
  }
  return html +
         "</tbody></table>\n<p class='note'>R = Ry(b) Rx(a) Rz(c) carries image vectors to "
         "object space; X0, Y0, Z0 is the projection centre.</p>\n";
}

// " + 0.5 Y"; a rounded 0 has no sign.
std::string Term(double dValue, int iDecimals, const char* szAxis) {
  std::string strNumber = Fixed(std::fabs(dValue), iDecimals);
  const bool bZero = strNumber.find_first_not_of("0.") == std::string::npos;
  return (dValue < 0.0 && !bZero ? " - " : " + ") + strNumber + szAxis;
}

std::string PlaneText(const Measurement& result, const std::string& strUnit) {
  const ZuPlane& plane = result.plane;
  const std::string strIn = " [" + XmlText(strUnit) + "]";
  return "<p>Best-fit plane of " + std::to_string(result.iPlanePoints) +
         " points:" + Term(plane.A(), 9, " X").substr(plane.A() < 0.0 ? 0 : 2) +
         Term(plane.B(), 9, " Y") + Term(plane.C(), 9, " Z") + Term(plane.D(), 6, "") + " = 0" +
         strIn + "; longest distance of a point from it " + Fixed(result.dPlaneDeviation, 6) +
         strIn + ".</p>\n";
}

std::string CameraCurves(const Measurement& result) {
  std::set<unsigned> shown;
  std::string html;
  for (const MeasuredPhoto& photo : result.photos) {
    const ZuCamera& camera = photo.pPhoto->GetCamera();
    if (shown.size() >= kCameraCurves || !shown.insert(camera.GetId()).second) continue;
    html += "<figure>" + DistortionCurve(camera, PhotoExtent(*photo.pPhoto), 620.0, 340.0) +
            "<figcaption>Camera " + std::to_string(camera.GetId()) + " \"" +
            XmlText(camera.GetName().chars()) + "\": c = " + SvgNumber(std::fabs(camera.m_dC)) +
            " mm, principal point (" + SvgNumber(camera.m_dXh) + ", " + SvgNumber(camera.m_dYh) +
            ") mm; to the corner of the image.</figcaption></figure>\n";
  }
  return html;
}

std::string CommandLine() {
  std::ifstream stream("/proc/self/cmdline", std::ios::binary);
  std::string strLine, strArgument;
  while (std::getline(stream, strArgument, '\0')) {
    const bool bQuote = strArgument.find_first_of(" \t\"'$&|;<>()*?") != std::string::npos;
    strLine += (strLine.empty() ? "" : " ") + (bQuote ? "'" + strArgument + "'" : strArgument);
  }
  return strLine;
}

std::string Inputs(const ReportInput& input) {
  std::string html = "<table><thead><tr>" + Head("input", true) + Head("file", true) +
                     Head("size [bytes]") + Head("CRC-32") + "</tr></thead>\n<tbody>\n";
  for (const auto& [strWhat, strPath] : input.files) {
    const std::string strContent = ReadWholeFile(strPath);
    char szCrc[16];
    std::snprintf(szCrc, sizeof szCrc, "%08x", ZuCalcCRC32(strContent.data(), strContent.size()));
    html += "<tr>" + Cell(strWhat, true) + Cell(strPath, true) +
            Cell(std::to_string(strContent.size())) + Cell(szCrc) + "</tr>\n";
  }
  return html + "</tbody></table>\n<p>Command: <code>" + XmlText(CommandLine()) + "</code></p>\n";
}

std::string Now() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm parts{};
  localtime_r(&now, &parts);
  char szText[64];
  std::strftime(szText, sizeof szText, "%Y-%m-%d %H:%M", &parts);
  return szText;
}

int CountOutliers(const Measurement& result) {
  int n = 0;
  for (const MeasuredPhoto& photo : result.photos) {
    for (const MeasuredPoint& p : photo.points) {
      if (p.bChecked && p.Length() > kOutlier * result.dRms) ++n;
    }
  }
  return n;
}

std::string Residuals(const Measurement& result, const ReportInput& input) {
  const double dFactor = PhotoFactor(result);
  std::string html =
      "<h2>Residuals in the photos [pixels]</h2>\n<p class='note'>Measured less check "
      "point, in the image, drawn " +
      SvgNumber(dFactor) +
      " times as long in every photo; the frame is the image, y down.</p>\n"
      "<div class='photos'>\n";
  for (const MeasuredPhoto& photo : result.photos) html += PhotoFigure(photo, dFactor);
  html += "</div>\n<h2>Residuals in the object [" + XmlText(input.strUnit) + "]</h2>\n<figure>" +
          PlanFigure(result, *input.pCheck, input.strUnit) + "</figure>\n<figure>" +
          HistogramFigure(result, input.strUnit) + "</figure>\n";
  return html;
}

}  // namespace

std::string VerdictOf(const Measurement& result, const std::string& strUnit) {
  const std::string strMet =
      std::to_string(result.iPoints) + " measurements of " + std::to_string(result.photos.size()) +
      (result.photos.size() == 1 ? " photo" : " photos") + " met with the plane";
  if (result.iChecked == 0) return strMet + "; no check points to compare with.";
  const MeasuredPhoto& worst = *result.pWorstPhoto;
  const int iOutliers = CountOutliers(result);
  return strMet + ", " + std::to_string(result.iChecked) + " compared: RMS " +
         Fixed(result.dRms, 4) + " " + strUnit + ", worst " + Fixed(worst.pWorst->Length(), 4) +
         " " + strUnit + " (photo " + std::to_string(worst.pPhoto->GetId()) + ", point " +
         std::to_string(worst.pWorst->uId) + "), " + std::to_string(iOutliers) +
         " beyond three times the RMS" +
         (!result.refused.empty() ? "; " + std::to_string(result.refused.size()) + " left out"
                                  : "") +
         ".";
}

std::string MeasureReport(const Measurement& result, const ReportInput& input) {
  std::string html =
      "<!DOCTYPE html>\n<html lang='en'><head><meta charset='utf-8'>\n"
      "<meta name='viewport' content='width=device-width'>\n"
      "<title>Measurement report</title>\n<style>" +
      std::string(kStyle) +
      "</style></head>\n<body>\n<h1>Measurement on a plane</h1>\n<p class='verdict'>" +
      XmlText(VerdictOf(result, input.strUnit)) + "</p>\n";
  html += "<h2>Photos</h2>\n" + PhotoTable(result, input.strUnit);
  html +=
      "<p class='note'>Differences are the point met with the plane less the check point, by id; "
      "RMS is the root mean square of their lengths.</p>\n";
  if (result.iChecked > 0) html += Residuals(result, input);
  html += "<h2>Plane</h2>\n" + PlaneText(result, input.strUnit);
  html += "<h2>Camera</h2>\n" + CameraCurves(result);
  html += "<h2>Orientations</h2>\n" + OrientationTable(result, input.strUnit);
  html += "<h2>Inputs</h2>\n" + Inputs(input);
  html += "<p class='note'>Made by zu " + std::string(ZuVersion()) + " on " + Now() + ".</p>\n";
  return html + "</body></html>\n";
}

}  // namespace cli
