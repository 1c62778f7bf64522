#include "rectify_sheet.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <stdexcept>

#include "drawing.h"
#include "exit_code.h"
#include "svg.h"
#include "zu/foundation/strict_number.h"

namespace cli {

namespace {

// All in mm.
constexpr double kLeft = 18.0, kTop = 16.0, kRight = 12.0, kBottom = 24.0;
constexpr double kLeastGrid = 20.0;  // between two lines of the grid
constexpr double kBar = 60.0;        // longest scale bar
constexpr double kShort = 1e-9;      // a label that misses the border by this part of its step
constexpr double kMostSide = 5000.0;
constexpr double kLetter = 2.5, kTitle = 3.5;
constexpr double kResolution = 25.4 / 300.0;
constexpr Color kSheetInk = {0, 0, 0};
constexpr Color kSheetGrid = {140, 140, 140};
constexpr Color kSheetPoint = {204, 26, 26};

std::string EndingOf(const std::string& strFile) {
  std::string strEnding = std::filesystem::path(strFile).extension().string();
  for (char& c : strEnding) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return strEnding;
}

// Object units in a metre.
double UnitsPerMetre(const std::string& strUnit) {
  if (strUnit == "mm") return 1000.0;
  if (strUnit == "cm") return 100.0;
  return strUnit == "km" ? 0.001 : 1.0;
}

class Sheet {
 public:
  Sheet(const SheetContent& content, const SheetOptions& options)
      : m_content(content),
        m_options(options),
        m_dUnits(options.UnitsPerMillimetre()),
        m_dWidth(content.region.Width() / m_dUnits),
        m_dHeight(content.region.Height() / m_dUnits) {
    const double dLongest = std::max(PaperWidth(), PaperHeight());
    if (dLongest <= kMostSide) return;
    throw CommandError(kUsage, "--sheet " + options.strScale + ": a side of " +
                                   Significant(dLongest / 1000.0) +
                                   " m; at most 5 m, by a smaller scale or region, would be right");
  }

  // A bar of 60 mm and the scale need their place, too.
  double PaperWidth() const { return kLeft + std::max(m_dWidth, 2.0 * kBar) + kRight; }
  double PaperHeight() const { return kTop + m_dHeight + kBottom; }

  void Draw(Drawing* pPaper) const {
    pPaper->Text(kLeft, kTop - 7.0, m_content.strTitle, kTitle, Anchor::eStart, 0.0,
                 Filled(kSheetInk));
    pPaper->Picture(kLeft, kTop, m_dWidth, m_dHeight, m_content.strJpeg, 1.0);
    DrawGrid(pPaper);
    DrawPoints(pPaper);
    pPaper->Rect(kLeft, kTop, m_dWidth, m_dHeight, Pen(kSheetInk, 0.3));
    DrawScale(pPaper);
  }

 private:
  double X(double x) const { return kLeft + (x - m_content.region.Left()) / m_dUnits; }
  double Y(double y) const { return kTop + (m_content.region.Top() - y) / m_dUnits; }

  static std::vector<double> Lines(double dLow, double dHigh, double dStep) {
    std::vector<double> lines;
    for (double i = std::ceil(dLow / dStep - kShort); i * dStep <= dHigh + kShort * dStep; ++i) {
      lines.push_back(i * dStep);
    }
    return lines;
  }

  void DrawGrid(Drawing* pPaper) const {
    const double dAsked = kLeastGrid * m_dUnits;
    double dStep = SvgRoundDown(dAsked);
    if (dStep < dAsked) dStep = SvgRoundDown(2.6 * dStep);  // from 1 to 2, 2 to 5, 5 to 10
    const double dBottom = kTop + m_dHeight, dRight = kLeft + m_dWidth;
    const auto xs = Lines(m_content.region.Left(), m_content.region.Right(), dStep);
    const auto ys = Lines(m_content.region.Bottom(), m_content.region.Top(), dStep);
    const SvgTickLabels labelsX(xs), labelsY(ys);
    for (size_t i = 0; i < xs.size(); ++i) {
      pPaper->Line(X(xs[i]), kTop, X(xs[i]), dBottom, Pen(kSheetGrid, 0.1));
      pPaper->Text(X(xs[i]), dBottom + 4.0, labelsX.texts[i], kLetter, Anchor::eMiddle, 0.0,
                   Filled(kSheetInk));
    }
    for (size_t i = 0; i < ys.size(); ++i) {
      pPaper->Line(kLeft, Y(ys[i]), dRight, Y(ys[i]), Pen(kSheetGrid, 0.1));
      pPaper->Text(kLeft - 1.5, Y(ys[i]) + 0.9, labelsY.texts[i], kLetter, Anchor::eEnd, 0.0,
                   Filled(kSheetInk));
    }
    const std::string strX = "X" + labelsX.strOffset, strY = "Y" + labelsY.strOffset;
    pPaper->Text(dRight, dBottom + 8.0, strX + " [" + m_options.strUnit + "]", kLetter,
                 Anchor::eEnd, 0.0, Filled(kSheetInk));
    pPaper->Text(kLeft, kTop - 2.0, strY + " [" + m_options.strUnit + "]", kLetter, Anchor::eStart,
                 0.0, Filled(kSheetInk));
  }

  void DrawPoints(Drawing* pPaper) const {
    const ZuRegion& region = m_content.region;
    for (const SheetPoint& point : m_content.points) {
      if (!(point.x >= region.Left() && point.x <= region.Right() && point.y >= region.Bottom() &&
            point.y <= region.Top())) {
        continue;
      }
      pPaper->Circle(X(point.x), Y(point.y), 0.8, Pen(kSheetPoint, 0.2));
      pPaper->Text(X(point.x) + 1.2, Y(point.y) - 1.0, point.strLabel, kLetter, Anchor::eStart, 0.0,
                   Filled(kSheetPoint));
    }
  }

  // Four parts, every other one black.
  void DrawScale(Drawing* pPaper) const {
    const double dLength = SvgRoundDown(kBar * m_dUnits), dPart = dLength / 4.0 / m_dUnits;
    const double y = kTop + m_dHeight + 13.0;
    for (int i = 0; i < 4; ++i) {
      pPaper->Rect(kLeft + i * dPart, y, dPart, 1.5,
                   i % 2 == 0 ? Framed(kSheetInk, kSheetInk, 0.15) : Pen(kSheetInk, 0.15));
    }
    for (const int i : {0, 2, 4}) {
      const std::string strUnit = i == 4 ? " " + m_options.strUnit : "";
      pPaper->Text(kLeft + i * dPart, y + 5.0, SvgNumber(dLength * i / 4.0) + strUnit, kLetter,
                   i == 4 ? Anchor::eStart : Anchor::eMiddle, 0.0, Filled(kSheetInk));
    }
    pPaper->Text(kLeft + 4.0 * dPart + 6.0, y + 1.5, m_options.strScale, kTitle, Anchor::eStart,
                 0.0, Filled(kSheetInk));
  }

  const SheetContent& m_content;
  const SheetOptions& m_options;
  double m_dUnits;  // object units to a mm of paper
  double m_dWidth, m_dHeight;
};

}  // namespace

double SheetOptions::UnitsPerMillimetre() const {
  double dNumber = 0.0;
  if (!strScale.starts_with("1:") || !ZuParseNumber(strScale.substr(2), &dNumber) ||
      !(dNumber > 0.0 && std::isfinite(dNumber))) {
    throw CommandError(kUsage, "--sheet " + strScale + ": a scale as 1:50 would be right");
  }
  return dNumber * UnitsPerMetre(strUnit) / 1000.0;
}

std::string SheetOptions::FileBeside(const std::string& strPicture) const {
  if (!strFile.empty()) return strFile;
  return std::filesystem::path(strPicture).replace_extension(".pdf").string();
}

void AddSheetOptions(Options& options, SheetOptions* pOptions) {
  options.Option("--sheet", "SCALE", &pOptions->strScale,
                 "--image: a sheet to this scale, as 1:50, with frame, grid, scale bar and the "
                 "points");
  options.Output("--sheet-out", "FILE", &pOptions->strFile,
                 "the sheet, as .pdf or .svg (beside the picture, .pdf)");
  options.Choice("--unit", {"mm", "cm", "m", "km"}, &pOptions->strUnit,
                 "unit of the object, for the scale of the sheet");
}

void CheckSheetOptions(const SheetOptions& options) {
  if (!options.IsAsked()) {
    if (options.strFile.empty()) return;
    throw CommandError(kUsage, "--sheet-out needs --sheet, as 1:50");
  }
  options.UnitsPerMillimetre();
  const std::string strEnding = EndingOf(options.strFile);
  if (!options.strFile.empty() && strEnding != ".pdf" && strEnding != ".svg") {
    throw CommandError(kUsage, options.strFile + ": a sheet is written as .pdf or .svg");
  }
}

double SheetPixel(const SheetOptions& options) {
  return kResolution * options.UnitsPerMillimetre();
}

std::string MakeSheet(const SheetContent& content, const SheetOptions& options,
                      const std::string& strFile) {
  const Sheet sheet(content, options);
  Drawing paper(sheet.PaperWidth(), sheet.PaperHeight(), Drawing::eUnit::eMillimetre);
  paper.SetTitle(content.strTitle);
  sheet.Draw(&paper);
  try {
    return EndingOf(strFile) == ".svg" ? SvgFileOf(paper) : PdfOf(paper);
  } catch (const std::runtime_error& error) {
    throw CommandError(kCannotWrite, strFile + ": " + error.what());
  }
}

}  // namespace cli
