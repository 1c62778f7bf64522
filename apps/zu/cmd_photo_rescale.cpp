// zu photo rescale: photos of a project whose images were resampled.
#include <memory>

#include "commands.h"
#include "id_list.h"
#include "project_files.h"
#include "text_table.h"
#include "zu/project/project_edit.h"

namespace cli {

namespace {

struct Values {
  std::string strProject, strOut, strPhotos;
  double dFactor = 0.0;
  unsigned uWidth = 0;
};

double FactorOf(const ZuPhoto& photo, const Values& values) {
  if (values.uWidth == 0) return values.dFactor;
  return values.uWidth / (photo.GetDigiRegion().Width() + 1.0);
}

ExitCode Run(const Values& values, Context& context) {
  if ((values.dFactor > 0.0) == (values.uWidth > 0)) {
    throw CommandError(kUsage, "one of --factor and --width is needed");
  }
  CheckProjectEnding(values.strOut);
  ZuProject project;
  ReadProjectFile(values.strProject, context, &project);
  const std::set<unsigned> wanted = PhotosOf(project, values.strPhotos, "--photos");
  context.Root()["photos"] = Json::array();
  for (ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    if (wanted.count(p->GetId()) == 0) continue;
    const double dFactor = FactorOf(*p, values);
    if (!ZuRescalePhoto(&project, p->GetId(), dFactor)) {
      throw CommandError(kUndetermined, "photo " + std::to_string(p->GetId()) +
                                            " cannot be rescaled; a PRERESTRAFO of type 0, 1 or 2 "
                                            "and an image of some width would be right");
    }
    const ZuRegion& region = p->GetDigiRegion();
    context.Text() << "photo " << p->GetId() << ": factor " << Shortest(dFactor) << ", pixels "
                   << Shortest(region.Left()) << ' ' << Shortest(region.Bottom()) << " to "
                   << Shortest(region.Right()) << ' ' << Shortest(region.Top()) << '\n';
    context.Root()["photos"].push_back(
        Json{{"id", p->GetId()},
             {"factor", dFactor},
             {"digital_region", {region.Left(), region.Bottom(), region.Right(), region.Top()}},
             {"pixel_size", p->GetPixelSize()}});
  }
  WriteProjectFile(values.strOut, context, project);
  return kGood;
}

}  // namespace

Runner DefinePhotoRescale(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("PROJECT", &pValues->strProject, "project file, or its JSON");
  options.Option("--factor", "F", &pValues->dFactor, "new pixels for one old pixel");
  options.Above(0.0);
  options.Option("--width", "N", &pValues->uWidth, "pixels of an image row, in place of --factor");
  options.Above(0.0);
  options.Option("--photos", "IDS", &pValues->strPhotos, "1,4,7-9 (all)");
  options.Output("-o,--output", "FILE", &pValues->strOut, "the project as .prj or .json");
  options.Required();
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
