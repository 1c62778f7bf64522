// Whole projects in and out: a project file or its JSON, told apart by content when read and by the
// ending when written.
#pragma once

#include <string>

#include "context.h"
#include "zu/project/project.h"

namespace cli {

// Reads all of it in place of what the project holds, with warnings on standard error. Throws
// CommandError (bad input) with the first places where the file is at fault.
void ReadProjectFile(const std::string& strPath, Context& context, ZuProject* pProject);

// Throws CommandError (usage) for an ending other than .prj and .json; "-" is a project file.
void CheckProjectEnding(const std::string& strPath);

// A new result file with the project.
void WriteProjectFile(const std::string& strPath, Context& context, const ZuProject& project);
bool IsJsonName(const std::string& strPath);

}  // namespace cli
