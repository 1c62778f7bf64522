// Positions from one system on the earth to another, for the commands that do so.
#pragma once

#include <string>

#include "context.h"
#include "options.h"
#include "point_input.h"

namespace cli {

struct GeoValues {
  std::string strFrom, strTo;
  std::string strEllipsoid;
};

// Declares --from, --to and --ellipsoid.
void AddGeoOptions(Options& options, GeoValues* pValues);

// Reads the points, converts them, tells and writes them (`strOutput` empty: no file). Points that
// a system does not reach are told and left out; kNotAcceptable then. Throws CommandError.
ExitCode RunGeo(const GeoValues& values, const std::string& strPoints, const PointFormat& format,
                const std::string& strOutput, Context& context);

}  // namespace cli
