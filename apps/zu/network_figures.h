// Drawings of an adjusted network: residuals in an image, what the model left over the image plane,
// distortion with its uncertainty.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "camera_plot.h"
#include "drawing.h"
#include "zu/photo/camera.h"
#include "zu/rectify/region.h"

namespace cli {

// Of an image point [px]; the residual is adjusted less measured.
struct ImageResidual {
  double x = 0.0, y = 0.0, vx = 0.0, vy = 0.0;
  bool bUsed = true;
};

// The frame of an image: its region, or where it tells none the extent of the residuals.
ZuRegion ImageFrame(const ZuRegion& region, const std::vector<ImageResidual>& residuals);

// The residuals of one photo over its frame, drawn dFactor times as long; those set aside in red.
// Behind them stands its picture, the bytes of a JPEG file; empty: none.
Drawing ResidualFigure(const std::string& strTitle, const std::string& strNote,
                       const ZuRegion& frame, const std::vector<ImageResidual>& residuals,
                       double dFactor, const std::string& strPicture);
// Times as long as residuals are drawn: one factor for frames as wide as dWidest [px].
double ResidualFactor(const std::vector<ImageResidual>& residuals, double dWidest);

// The mean residual of each cell of the image, of all photos of a camera; in red where it differs
// from zero by more than three of its standard deviations.
std::optional<Drawing> MeanResidualFigure(const std::string& strTitle, const ZuRegion& frame,
                                          const std::vector<ImageResidual>& residuals);

// Radial part of the distortion [um] over the distance from the principal point [mm], with the
// bounds of 95 %; in the model with tangential terms along +x, -x, +y and -y. `parameters` and
// `cov` as ZuDistortionAt takes them.
std::optional<Drawing> DistortionBandFigure(const ZuCamera& camera, ImageExtent image,
                                            const std::vector<int>& parameters,
                                            const std::vector<double>& cov);

}  // namespace cli
