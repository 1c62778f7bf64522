// The plane that --plane tells, in every command that meets a project with one:
//
//   7, north            a PLANE record of the project, by id or name
//   0.6,0.8,0,-12.5     A, B, C and D of A x + B y + C z + D = 0
//   1,2,P7              the plane through three object points of the project, by id or name
//
// Anything else is a coordinate file of points that a plane is fitted to; a file of such a name
// counts where the project has no plane or points of these names.
#pragma once

#include <string>

#include "zu/project/project.h"

namespace cli {

constexpr char kPlaneHelp[] =
    "plane of the project by id or name; A,B,C,D; three points of the project, as 1,2,P7; or "
    "coordinate file of the points that a plane is fitted to";

// False: it is a coordinate file. strWhere is the project in messages. Throws CommandError: (bad
// input) a file that does not exist, (undetermined) a plane without normal, points on a line.
bool FindToldPlane(const std::string& strPlane, const ZuProject& project,
                   const std::string& strWhere, ZuPlane* pPlane);

}  // namespace cli
