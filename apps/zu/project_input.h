// ZuProject and camera files on the command line: findings as warnings and as the message of a
// fault.
#pragma once

#include <memory>
#include <string>

#include "context.h"
#include "input_file.h"
#include "options.h"
#include "text_table.h"
#include "zu/project/project.h"

namespace cli {

// Declares --partial.
void AddPartialOption(Options& options, bool* pbPartial);
// --library of the commands that convert image points.
void AddLibraryOption(Options& options, bool* pbLibrary);

// Reads a project. Throws CommandError (bad input) with the first places where the file is
// another kind of file, or at fault.
std::unique_ptr<ZuProject> OpenProject(const InputFile& file, bool bPartial);

// The same into a project. szForWhole: what would do, too, where the whole file is missing.
void ReadProject(const InputFile& file, eZuProjectPart ePart, ZuProject* pProject,
                 const char* szForWhole = "");

// Throws CommandError (bad input) with the first errors among the findings.
[[noreturn]] void FailOf(const ZuFindingList& findings, const InputFile& file,
                         const char* szForWhole = "");

// The warnings on standard error, when the command has succeeded. Under --strict the first one is
// thrown as CommandError (bad input).
void WarnOf(const ZuFindingList& findings, const InputFile& file, const Context& context);
void WarnOf(const ZuProject& project, const InputFile& file, const Context& context);

// The photo of that id. Throws CommandError (bad input) that lists those there are.
ZuPhoto& FindPhoto(ZuProject& project, unsigned uId, const InputFile& file);

// What a project file is called where one is missing.
constexpr char kProjectFile[] = "a project file";

// Throws CommandError (undetermined) that tells what the photo lacks for a computation.
void CheckNothingLacks(const ZuProject& project, const ZuPhoto& photo, unsigned uNeeds,
                       const InputFile& file);

// The cameras of a camera file, either form, or of a project and its photos, one of each id. A
// keyword that was probably meant as another is a fault here: the camera would lack a coefficient.
// Throws CommandError (bad input).
ZuCameraList ReadCameras(const std::string& strPath, Context& context);

}  // namespace cli
