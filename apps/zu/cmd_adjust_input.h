// Files of numbers that `zu adjust` reads beside the project.
#pragma once

#include <string>
#include <vector>

#include "context.h"
#include "input_file.h"
#include "zu/adjust/network_project.h"
#include "zu/points/point_list.h"

namespace cli {

// Rows of numbers: fields divided by blanks, tabs, ';' or ','; empty lines and those that start
// with
// '#' are passed over.
struct NumberRow {
  int iLine = 0;
  std::vector<double> values;
};

// Rows of uLeast to uMost numbers, the first uIds of them ids. Throws CommandError (bad input) with
// file, line and what would be right (szRight).
std::vector<NumberRow> ReadNumberRows(const std::string& strPath, size_t uIds, size_t uLeast,
                                      size_t uMost, const char* szRight);
std::vector<NumberRow> ReadNumberRows(const InputFile& file, size_t uIds, size_t uLeast,
                                      size_t uMost, const char* szRight);

// Points of rows "id x y z" or "id x y z dx dy dz", of a table with titles or a GSI file. Throws
// CommandError (bad input), also for one that stands twice.
ZuPointList ReadAdjustPoints(const std::string& strPath, Context& context);

// Adds the distances of rows "id_a id_b distance sigma". Throws CommandError (bad input) for a
// point that the network has not.
void ReadScaleBars(const std::string& strPath, ZuNetwork* pNetwork);

// Gives measurements the pixel and the standard deviations of rows "photo id x y dx dy" (pixels),
// and adds those that the project has not. Throws CommandError (bad input).
void ReadMeasurements(const std::string& strPath, ZuProject* pProject);

// "0.1px" or "0.0005mm". Throws CommandError (usage).
void ParseSigma(const std::string& strText, ZuNetworkInput* pInput);
// "c,xh,yh,a1" or "none" as bits. Throws CommandError (usage) with the names there are.
unsigned ParseEstimate(const std::string& strText);
// "control", "inner" or "inner:1,2,3": sets the datum of the points. Throws CommandError.
ZuNetworkDatum ParseDatum(const std::string& strText, ZuNetwork* pNetwork);

}  // namespace cli
