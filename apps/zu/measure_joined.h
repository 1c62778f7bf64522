// zu measure: a point that several photos show, as one.
#pragma once

#include <string>
#include <vector>

#include "commands.h"
#include "zu/project/plane_measurement.h"
#include "zu/project/project.h"

namespace cli {

struct JoinValues {
  std::string strJoin = "mean", strJoined;  // mean or rays; file
};

// Declares --join and --joined.
void AddJoinOptions(Options& options, JoinValues* pValues);

struct JoinedPoint {
  unsigned uId;
  int iPhotos;
  double adX[3];
  bool bRays;      // intersection of its rays; else the mean on the plane
  double dSpread;  // of the photos' points on the plane about their mean, root mean square
  double adSd[3];  // of an intersection
};

// By id. With rays a point of two and more photos is the intersection of its rays where there is
// one; what there is not becomes a warning.
std::vector<JoinedPoint> JoinPoints(const JoinValues& values, const ZuPlaneMeasurement& result,
                                    const ZuProject& project, Context& context);
// Rows id, x, y, z, photos, spread.
void WriteJoined(const std::vector<JoinedPoint>& points, std::ostream& stream);
Json JoinedJson(const std::vector<JoinedPoint>& points);

}  // namespace cli
