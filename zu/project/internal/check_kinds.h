// Checks of files by their kinds, and of what a project refers to.
#pragma once

#include <string>
#include <string_view>

#include "zu/photo/reseau_file.h"
#include "zu/project/finding_list.h"

class ZuPhoto;
class ZuProject;

namespace zu::internal {

// A reseau file, or with bDigital a digital camera file: what its reader would drop or end at, ids
// and keys that stand twice, sensors that are not plausible.
void CheckReseau(std::string_view text, const std::string& strFile, bool bDigital,
                 ZuFindingList* pFindings);

// Names of reseaus in a project that are in none of the reseau and digital camera files of its
// folder, and the faults of these files. Nothing where the folder has none: they lie elsewhere.
void CheckReseauNames(const ZuProject& project, const std::string& strFile,
                      const std::string& strFolder, ZuFindingList* pFindings);

// A file of a total station: damaged words, points of another unit than the others, angles beyond
// a full circle or in several units.
void CheckGsi(const char* szPath, std::string_view text, ZuFindingList* pFindings);

// Photos whose measurements of object points fit when the angles of AORM, taken as degrees, are
// gon, or the other way.
void CheckAngleUnits(const ZuProject& project, const std::string& strFile,
                     ZuFindingList* pFindings);

}  // namespace zu::internal
