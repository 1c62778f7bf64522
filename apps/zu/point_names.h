// Which points are the same: within a list, and between two. A point is known by its name where it
// has one, else by its id.
//
// The library knows points by ids alone, and the id of a name is a hash: of 300,000 names some ten
// pairs share one. So every command that looks for points in lists first gives them ids of which
// that is true: equal ids, same point.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "context.h"
#include "zu/points/point_list.h"

namespace cli {

// What counts of points that stand more than once: the words of --duplicates.
enum Duplicates { eDuplicatesError, eDuplicatesFirst, eDuplicatesLast, eDuplicatesMean };

// Takes points that stand more than once together at the place of the first. `lines` has the line
// of each point. The mean is that of the coordinates; all else is of the first. Throws CommandError
// (bad input) with both lines for eDuplicatesError; otherwise the command warns, under --quiet too.
void JoinDuplicates(const std::string& strFile, const std::vector<std::uint64_t>& lines,
                    Duplicates eDuplicates, Context& context, ZuPointList* pPoints);

// Gives the points ids that are equal where the points are the same, and only there; pB is null for
// one list alone. In files with a column for the id a point without name is the same as the point
// of its id in the other list. Ids stay where they can; where an id of a file must change, the
// command warns.
void GiveCommonIds(const std::string& strFileB, Context& context, ZuPointList* pA, ZuPointList* pB);

// The name of a point in messages and tables: its name, or else its id. In JSON a text or a number.
std::string PointLabel(const ZuPoint& point);
Json JsonLabel(const ZuPoint& point);
Json JsonLabels(const std::vector<const ZuPoint*>& points);

// The point of that id as PointLabel has it.
std::string LabelOf(unsigned uId, const ZuPointList& points);

}  // namespace cli
