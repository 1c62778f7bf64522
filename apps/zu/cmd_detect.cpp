// zu detect board: the corners of a chessboard in pictures, with markers between its squares or
// without.
#include <cstdio>
#include <memory>

#include "commands.h"
#include "detect_pictures.h"
#include "point_input.h"
#include "zu/image/board.h"
#include "zu/image/marker.h"

namespace cli {

namespace {

struct Values {
  DetectValues detect;
  std::string strSize, strPoints, strFamily;
  int iDecimals = -1;  // of strPoints
  double dSquare = 0.0, dMarker = 0.0;
};

ZuChessboard ParseSize(const std::string& strSize) {
  ZuChessboard board;
  char cEnd = 0;
  if (std::sscanf(strSize.c_str(), "%4dx%4d%c", &board.m_iColumns, &board.m_iRows, &cEnd) != 2 ||
      board.m_iColumns < 3 || board.m_iRows < 3) {
    throw CommandError(kUsage, "--size " + strSize +
                                   ": inner corners of a row and of a column, 3 or more each, such "
                                   "as 9x6, would be right");
  }
  return board;
}

// Into the project, and with --points into a file, too.
void WriteBoard(const Values& values, const ZuChessboard& board, Context& context,
                ZuProject* pProject) {
  if (!(values.dSquare > 0.0)) return;
  board.AddPoints(values.dSquare, &pProject->ObjectPoints());
  if (values.strPoints.empty()) return;
  WritePoints(&pProject->ObjectPoints(), "id,x,y,z", &context.NewOutput(values.strPoints),
              values.iDecimals);
}

ExitCode Run(const Values& values, Context& context) {
  const ZuChessboard board = ParseSize(values.strSize);
  if (!values.strPoints.empty() && !(values.dSquare > 0.0)) {
    throw CommandError(kUsage, "--points needs --square");
  }
  const bool bMarkers = !values.strFamily.empty();
  if (bMarkers) CheckMarkerFamily(values.strFamily);
  if (bMarkers != (values.dMarker > 0.0)) {
    throw CommandError(kUsage, "--family and --marker belong together");
  }
  ZuProject project;
  WriteBoard(values, board, context, &project);
  return DetectPictures(values.detect, context, &project, [&](const Picture& picture) {
    ZuBoardDetection detection =
        bMarkers ? ZuDetectCharuco(picture.image, board, values.strFamily, values.dMarker,
                                   values.detect.dSigmaFloor)
                 : ZuDetectChessboard(picture.image, board, values.detect.dSigmaFloor);
    Found found;
    found.points = std::move(detection.m_points);
    found.strText = std::move(detection.m_strText);
    return found;
  });
}

}  // namespace

Runner DefineDetectBoard(Options& options) {
  auto pValues = std::make_shared<Values>();
  AddDetectOptions(options, &pValues->detect);
  options.Option("--size", "CxR", &pValues->strSize,
                 "inner corners of a row and of a column of the board: 9x6");
  options.Required();
  options.Option("--square", "LENGTH", &pValues->dSquare,
                 "side of a square of the board, whose points then stand in the project");
  options.Above(0.0);
  options.Option("--family", "NAME", &pValues->strFamily,
                 "markers between its squares (ChArUco) of this family: 4x4_50 to 7x7_1000, ...");
  options.Option("--marker", "PART", &pValues->dMarker,
                 "side of such a marker, as a part of that of a square");
  options.Above(0.0);
  options.AtMost(0.99);
  options.Output("--points", "FILE", &pValues->strPoints,
                 "a coordinate file of the points of the board");
  AddDecimals(options, &pValues->iDecimals);
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
