// The commands of the program. One source file a command (cmd_<name>.cpp), which defines one
// function; the function declares the command's options and returns what runs it:
//
//   Runner DefinePlane(Options& options) {
//     struct Values { std::string strPoints; bool bForce = false; };
//     auto pValues = std::make_shared<Values>();
//     options.Positional("POINTS", &pValues->strPoints, "coordinate file");
//     options.Flag("--force", &pValues->bForce, "take every point");
//     return [pValues](Context& context) {
//       ...                                     // throw CommandError(kBadInput, text) on a fault
//       context.Text() << ...;                  // the result as text
//       context.Root()["common"] = ...;         // the same result as JSON; see Context::Root
//       context.NewOutput(path).Stream() << ...;  // a result file
//       return kGood;                           // or kNotAcceptable: the result is given all the
//       same
//     };
//   }
//
// A new command: its file in apps/CMakeLists.txt, its declaration below, its row in commands.cpp.
// --json, --quiet and --help are there without being declared. What a runner finds ready:
//   context.h      result, result files, warnings
//   point_input.h  coordinate files and --columns        text_table.h   aligned tables
//   output_file.h  files that are whole or not there     progress_line.h long work
#pragma once

#include <functional>
#include <vector>

#include "context.h"
#include "exit_code.h"
#include "options.h"

namespace cli {

using Runner = std::function<ExitCode(Context&)>;

struct Command {
  const char* szName;     // "plane", or "cloud info" for a command of a group
  const char* szSummary;  // one line of the list of commands
  const char* szExample;  // one worked example for --help: the call, and what it gives
  Runner (*pfnDefine)(Options&);
};

Runner DefineAdjust(Options& options);
Runner DefineApply(Options& options);
Runner DefineBatch(Options& options);
Runner DefineCalibrate(Options& options);
Runner DefineCameraAdjust(Options& options);
Runner DefineCameraGentri(Options& options);
Runner DefineCameraInfo(Options& options);
Runner DefineCameraPlot(Options& options);
Runner DefineCheck(Options& options);
Runner DefineCloudConvert(Options& options);
Runner DefineCloudInfo(Options& options);
Runner DefineCloudNormals(Options& options);
Runner DefineCloudTransform(Options& options);
Runner DefineCompare(Options& options);
Runner DefineConstructArc(Options& options);
Runner DefineConstructConditions(Options& options);
Runner DefineConstructIntersection(Options& options);
Runner DefineConstructLine(Options& options);
Runner DefineConstructMatch(Options& options);
Runner DefineConstructOrtho(Options& options);
Runner DefineConstructRectangle(Options& options);
Runner DefineConstructResection(Options& options);
Runner DefineConvert(Options& options);
Runner DefineDetectAruco(Options& options);
Runner DefineDetectBoard(Options& options);
Runner DefineDetectTargets(Options& options);
Runner DefineExamples(Options& options);
Runner DefineDraw(Options& options);
Runner DefineExport(Options& options);
Runner DefineGeo(Options& options);
Runner DefineImport(Options& options);
Runner DefineIntersect(Options& options);
Runner DefineLocal(Options& options);
Runner DefineLogAppend(Options& options);
Runner DefineLogReplay(Options& options);
Runner DefineLogShow(Options& options);
Runner DefineMeasure(Options& options);
Runner DefineMerge(Options& options);
Runner DefineMesh(Options& options);
Runner DefineOrient(Options& options);
Runner DefinePhotoConvert(Options& options);
Runner DefinePhotoInfo(Options& options);
Runner DefinePhotoInner(Options& options);
Runner DefinePhotoRescale(Options& options);
Runner DefinePhotoUndistort(Options& options);
Runner DefinePlane(Options& options);
Runner DefinePointsGsi(Options& options);
Runner DefineProjectDetect(Options& options);
Runner DefineProjectInfo(Options& options);
Runner DefineProjectMerge(Options& options);
Runner DefineProjectRenumber(Options& options);
Runner DefineProjectSplit(Options& options);
Runner DefineProjectUpdate(Options& options);
Runner DefineRectify(Options& options);
Runner DefineTrafo2d(Options& options);
Runner DefineTransform(Options& options);

// In the order of the list that `zu --help` prints.
const std::vector<Command>& Commands();

}  // namespace cli
