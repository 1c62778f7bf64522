// zu rectify --image: the picture of a plane from photos.
#pragma once

#include <string>
#include <vector>

#include "adjust_options.h"
#include "commands.h"
#include "picture_files.h"
#include "point_choice.h"
#include "point_input.h"
#include "rectify_sheet.h"

namespace cli {

struct RectifyImageValues {
  std::string strProject, strPhotos, strOut;  // as zu rectify declares them
  unsigned uZusp = 0;                         // 0: none
  std::string strPlane, strControl, strRegion, strPictures, strProjectOut, strConditions;
  double dPixel = 0.0;
  unsigned uEpsg = 0;
  bool bFlip = false, bLines = false, bEstimateC = false;
  AdjustValues adjust;
  PictureOptions picture;
  SheetOptions sheet;
  PointFormat format;
  PointChoice choice;
};

// Declares what --image has beside zu rectify.
void AddRectifyImageOptions(Options& options, RectifyImageValues* pValues);

ExitCode RunRectifyImage(const RectifyImageValues& values, Context& context);

}  // namespace cli
