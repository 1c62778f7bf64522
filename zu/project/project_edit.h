// Changes of a project as a whole: what people do to project files with an editor.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "zu/export.h"

class ZuProject;

// Gives photos new ids, their measurements too: from the keys to the values; ids that are no keys
// stay. False, nothing changed, where a key is no photo, a new id is 0, or two photos would have
// one.
ZU_API bool ZuRenumberPhotos(ZuProject* pProject, const std::map<unsigned, unsigned>& ids);

// Adds to the ids of points: of measurements, object points and local systems, where 0 stays 0 (no
// point). False, nothing changed, where an id would leave 1 to 4294967295.
ZU_API bool ZuOffsetPointIds(ZuProject* pProject, long long iOffset);

// Deletes the photos of other ids, with their measurements. Everything else stays.
ZU_API void ZuKeepPhotos(ZuProject* pProject, const std::set<unsigned>& ids);

// Deletes from a project what another one holds alike: records, measurements and object points of
// one id that are equal in all that a file holds. Returns what both hold differently under one id,
// which stays: "photo 3", "camera 1", "object point 17".
ZU_API std::vector<std::string> ZuDropCommonRecords(ZuProject* pProject, const ZuProject& other);

// Both as one, the second behind the first, read as a whole: what no record holds comes along, too.
// An unknown keyword without a value that ends the first stands at the end of all, where it cannot
// take the second's first keyword for its value. The result of ZuProject::Read.
ZU_API bool ZuJoinProjects(const ZuProject& first, const ZuProject& second, ZuProject* pJoined);

// For an image resampled by a factor: the photo is rescaled (ZuPhoto::RescaleTo), its measurements
// are carried along, so that every measurement keeps its place in mm: pixel (x, y) becomes (f x, f
// y). An affine pre-transformation, which may mirror, stays one. False, nothing changed: no such
// photo, a factor that is not above 0 and finite, or a projective or polynomial pre-transformation.
ZU_API bool ZuRescalePhoto(ZuProject* pProject, unsigned uPhoto, double dFactor);
