// A similarity transformation between two point lists as the commands report it: residuals, RMS,
// parameters, the ids that only one list has.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "json_text.h"
#include "zu/foundation/sort_helper.h"
#include "zu/points/point_list.h"
#include "zu/transform/trafo3d_data.h"

namespace cli {

// Control minus transformed source, in the unit of the input.
struct Residual {
  std::string strLabel;
  double dX, dY, dZ;

  double Length() const;
};

struct Rms {
  double dX = 0.0, dY = 0.0, dZ = 0.0;

  double Length() const;
};

// Over the points given, sqrt(sum / n) for each axis; zeros without points.
Rms RmsOf(const std::vector<Residual>& residuals);

// The common points of less than three directions: all in one point or on one straight line, to a
// millionth of their extent. A rotation about the line is then free, whatever an estimate says.
bool AreCollinear(const ZuPointList& points);
// The largest distance of a point from the line from the first point to the one farthest from it,
// over the length of that; 0 for points in one place.
double SpreadAcrossLine(const ZuPointList& points);

// Table of residuals, the largest first, and the RMS for each axis.
void WriteResiduals(std::vector<Residual> residuals, std::ostream& stream);

// Parameters with the direction of the transformation and the angles with their axes.
void WriteParameters(const ZuTrafo3dData& trafo, std::ostream& stream);

// The same as JSON: scale, rotation, source_centre, target_centre and more.
void AddParameters(const ZuTrafo3dData& trafo, Json* pRoot);

Json ToJson(const Rms& rms);

// {id, name, x, y, z, dx, dy, dz}; the residuals are null without one.
Json ToJson(const ZuPoint& point, const Residual* pResidual);

// [{id, name, x, y, z, sd}], with the standard deviations of so many coordinates; 0: sd is null.
Json PointRowsJson(const ZuPointList& points, int iSds);

}  // namespace cli
