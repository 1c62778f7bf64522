// zu detect targets: circular targets in pictures, numbered by approximate orientations.
#include <algorithm>
#include <memory>

#include "commands.h"
#include "detect_pictures.h"
#include "point_input.h"
#include "project_files.h"
#include "text_table.h"
#include "zu/image/target_numbers.h"

namespace cli {

namespace {

struct Values {
  DetectValues detect;
  std::string strProject, strPoints;
  ZuTargetOptions target;
  ZuNumberingOptions numbering;
};

// The points of --points, else those of the project; none without a project.
ZuPointList PointsOf(const Values& values, const ZuProject& project, Context& context) {
  ZuPointList points;
  if (!values.strPoints.empty()) {
    ReadPoints(values.strPoints, "id,x,y,z", context, &points);
  } else if (!values.strProject.empty()) {
    points = project.ObjectPoints();
    if (points.IsEmpty()) {
      throw CommandError(kUsage,
                         values.strProject + " has no object points: --points FILE would be right");
    }
  }
  return points;
}

Found Numbered(const Picture& picture, const ZuPointList& points, const Values& values,
               std::vector<ZuTarget> targets) {
  Found found;
  const ZuNumbering numbering =
      ZuNumberTargets(*picture.pPhoto, points, values.numbering, &targets);
  found.strText = numbering.m_strText;
  found.more = {{"targets", targets.size()},
                {"expected", numbering.m_iExpected},
                {"numbered", numbering.m_iNumbered},
                {"rms_px", numbering.m_dRms},
                {"largest_offset_px", numbering.m_dLargestOffset}};
  for (const ZuTarget& target : targets) {
    if (target.m_uId != 0) found.points.push_back(target);
  }
  std::sort(found.points.begin(), found.points.end(),
            [](const ZuDetectedPoint& a, const ZuDetectedPoint& b) { return a.m_uId < b.m_uId; });
  return found;
}

Found Unnumbered(const std::vector<ZuTarget>& targets) {
  Found found;
  unsigned uId = 0;
  for (ZuDetectedPoint point : targets) {
    point.m_uId = ++uId;
    found.points.push_back(point);
  }
  if (targets.empty()) found.strText = "no targets; --least, --most and --contrast tell their kind";
  return found;
}

ExitCode Run(const Values& values, Context& context) {
  if (values.strProject.empty() && !values.strPoints.empty()) {
    throw CommandError(kUsage, "--points needs --project with approximate orientations");
  }
  ZuProject project;
  if (!values.strProject.empty()) ReadProjectFile(values.strProject, context, &project);
  const ZuPointList points = PointsOf(values, project, context);
  ZuTargetOptions options = values.target;
  options.m_dSigmaFloor = values.detect.dSigmaFloor;
  double dOffset = 0.0;
  const ExitCode eCode =
      DetectPictures(values.detect, context, &project, [&](const Picture& picture) {
        std::vector<ZuTarget> targets = ZuDetectTargets(picture.image, options);
        if (values.strProject.empty()) return Unnumbered(targets);
        Found found = Numbered(picture, points, values, std::move(targets));
        dOffset = std::max(dOffset, found.more["largest_offset_px"].get<double>());
        return found;
      });
  if (values.strProject.empty()) {
    context.Warn("each picture has numbers of its own; --project and --points number points alike");
  } else {
    const bool bCorrected = values.numbering.m_dDiameter > 0.0;
    context.Text() << "centres of ellipses lie up to " << Fixed(dOffset, 3)
                   << " px from the images of the disks' centres"
                   << (bCorrected ? ": corrected" : "; --diameter corrects that") << '\n';
  }
  return eCode;
}

}  // namespace

Runner DefineDetectTargets(Options& options) {
  auto pValues = std::make_shared<Values>();
  AddDetectOptions(options, &pValues->detect);
  options.Option("--project", "PROJECT1", &pValues->strProject,
                 "photos with cameras and approximate orientations, found by the pictures' names");
  options.Option("--points", "FILE", &pValues->strPoints,
                 "where the points stand, roughly; else the object points of the project");
  options.Flag("--bright", &pValues->target.m_bBright, "bright disks on dark ground");
  options.Option("--least", "PX", &pValues->target.m_dLeastDiameter,
                 "shortest diameter of a target");
  options.AtLeast(4.0);
  options.Option("--most", "PX", &pValues->target.m_dMostDiameter, "longest diameter of a target");
  options.AtLeast(4.0);
  options.AtMost(5000.0);
  options.Option("--contrast", "PART", &pValues->target.m_dLeastContrast,
                 "least difference of disk and ground, as a part of all grey values");
  options.Above(0.0);
  options.AtMost(1.0);
  options.Option("--diameter", "LENGTH", &pValues->numbering.m_dDiameter,
                 "of the disks in space: measures the images of their centres, not the centres of "
                 "ellipses");
  options.Above(0.0);
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
