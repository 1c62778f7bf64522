// zu detect board: the corners of a chessboard in pictures.
#include <cstdio>
#include <memory>

#include "commands.h"
#include "detect_pictures.h"
#include "point_input.h"
#include "zu/image/board.h"

namespace cli {

namespace {

struct Values {
  DetectValues detect;
  std::string strSize, strPoints;
  double dSquare = 0.0;
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

void WriteBoard(const Values& values, const ZuChessboard& board, Context& context) {
  if (values.strPoints.empty()) return;
  ZuPointList points;
  board.AddPoints(values.dSquare, &points);
  WritePoints(&points, "id,x,y,z", &context.NewOutput(values.strPoints));
}

ExitCode Run(const Values& values, Context& context) {
  const ZuChessboard board = ParseSize(values.strSize);
  if (values.strPoints.empty() != !(values.dSquare > 0.0)) {
    throw CommandError(kUsage, "--points needs --square, and --square is for --points alone");
  }
  ZuProject project;
  const ExitCode eCode =
      DetectPictures(values.detect, context, &project, [&](const Picture& picture) {
        ZuBoardDetection detection = ZuDetectChessboard(picture.image, board);
        Found found;
        found.points = std::move(detection.m_points);
        found.strText = std::move(detection.m_strText);
        return found;
      });
  WriteBoard(values, board, context);
  return eCode;
}

}  // namespace

Runner DefineDetectBoard(Options& options) {
  auto pValues = std::make_shared<Values>();
  AddDetectOptions(options, &pValues->detect);
  options.Option("--size", "CxR", &pValues->strSize,
                 "inner corners of a row and of a column of the board: 9x6");
  options.Required();
  options.Option("--square", "LENGTH", &pValues->dSquare, "side of a square of the board");
  options.Above(0.0);
  options.Output("--points", "FILE", &pValues->strPoints, "the points of the board");
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
