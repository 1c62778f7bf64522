// The sheet of zu rectify --image: the picture to scale with frame, grid, scale bar and points, as
// PDF or SVG.
#pragma once

#include <string>
#include <vector>

#include "options.h"
#include "zu/rectify/region.h"

namespace cli {

struct SheetOptions {
  std::string strScale;  // "1:50"; empty: no sheet
  std::string strUnit = "m";
  std::string strFile;  // empty: beside the picture

  bool IsAsked() const { return !strScale.empty(); }
  // Object units to a mm of paper. Throws CommandError (usage).
  double UnitsPerMillimetre() const;
  // That of the sheet beside the picture of this name, if none is told.
  std::string FileBeside(const std::string& strPicture) const;
};

// Declares --sheet, --sheet-out and --unit.
void AddSheetOptions(Options& options, SheetOptions* pOptions);
// Throws CommandError (usage): a scale that is none, an ending that is not .pdf or .svg, the name
// of a sheet that nobody asked for.
void CheckSheetOptions(const SheetOptions& options);

struct SheetPoint {
  std::string strLabel;
  double x, y;  // in the plane
};

struct SheetContent {
  std::string strTitle;
  ZuRegion region;      // of the picture, in the plane
  std::string strJpeg;  // the picture
  std::vector<SheetPoint> points;
};

// Pixels of the picture on a sheet: 300 to an inch, in object units.
double SheetPixel(const SheetOptions& options);

// The file of the sheet, in the format of the ending. Throws CommandError (usage) for a sheet of
// more than five metres, (cannot write) where the PDF cannot be made.
std::string MakeSheet(const SheetContent& content, const SheetOptions& options,
                      const std::string& strFile);

}  // namespace cli
