// --save T.json of commands that find a transformation, and T.json read again.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "context.h"
#include "options.h"
#include "point_input.h"
#include "zu/adjust/similarity.h"
#include "zu/exchange/transformation.h"

namespace cli {

// What a command tells of the transformation it saves.
struct SaveValues {
  std::string strFile;                      // empty: nothing is saved
  std::string strSource, strTarget;         // files
  std::vector<std::string> used, setAside;  // names or ids of common points
};

// Declares --save.
void AddSaveOption(Options& options, SaveValues* pValues);

// Used are the common points but those whose ids are set aside.
void NotePoints(const ZuPointList& common, const std::vector<unsigned>& setAside,
                SaveValues* pValues);

// A new result file. pSure: how sure the parameters are; null, or not good: not known.
void SaveSimilarity(const SaveValues& values, const ZuTrafo3dData& trafo,
                    const ZuSimilarityResult* pSure, const PointFormat& format, Context& context);
// Of kind Plane; origin and unit are filled in here.
void SaveTransformation(const SaveValues& values, ZuTransformation transformation,
                        const PointFormat& format, Context& context);

// A file of --save or a matrix. Throws CommandError (bad input).
ZuTransformation ReadTransformation(const std::string& strPath, Context& context);

}  // namespace cli
