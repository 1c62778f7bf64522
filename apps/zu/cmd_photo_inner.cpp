// zu photo inner: the first transformation of a photo, from measured crosses of its reseau.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <utility>

#include "adjust_options.h"
#include "commands.h"
#include "point_input.h"
#include "project_files.h"
#include "report_output.h"
#include "text_table.h"
#include "zu/adjust/first_trafo.h"
#include "zu/foundation/file_name.h"
#include "zu/photo/reseau_file.h"

namespace cli {
namespace {

PointFormat PixelsOfCrosses() {
  PointFormat format;
  format.strToldColumns = "id,x,y";
  format.szCoordinates = "xy";
  return format;
}

struct Values {
  std::string strProject, strOut, strCrosses, strReseau;
  std::string strType = "affin";
  unsigned uPhoto = 0;
  PointFormat format = PixelsOfCrosses();
  double dSigma = 0.0;
  AdjustValues adjust;
};

struct InnerKind {
  const char* szName;
  ZuTrafo2dKind kind;
  size_t uMinCrosses;
};
constexpr InnerKind kInnerKinds[] = {{"helmert", ZuTrafo2dKind::Helmert, 2},
                                     {"affin", ZuTrafo2dKind::Affine, 3},
                                     {"projektiv", ZuTrafo2dKind::Projective, 4},
                                     {"polynom", ZuTrafo2dKind::Polynomial, 10}};

ZuPhoto& InnerPhoto(const ZuProject& project, const Values& values) {
  ZuPhoto* pPhoto = project.PhotoList().Find(values.uPhoto);
  if (pPhoto != nullptr) return *pPhoto;
  throw CommandError(kBadInput, NameInMessages(values.strProject) + ": has no photo " +
                                    std::to_string(values.uPhoto) +
                                    "; zu project info lists its photos");
}

// The file that --reseau names, or the one beside the project that the photo names.
std::string ReseauPathOf(const Values& values, const ZuPhoto& photo) {
  if (!values.strReseau.empty()) return values.strReseau;
  const std::string strName = photo.GetReseauData().GetName().chars();
  const std::filesystem::path path =
      std::filesystem::path(values.strProject).parent_path() / strName;
  if (!strName.empty() && ZuExistFile(path.c_str())) return path.string();
  throw CommandError(
      kBadInput, "photo " + std::to_string(photo.GetId()) +
                     (strName.empty() ? " names no reseau"
                                      : ": reseau \"" + strName + "\" is not beside the project") +
                     "; --reseau FILE tells its crosses");
}

ZuReseauFile ReadReseau(const Values& values, const ZuPhoto& photo) {
  const std::string strPath = ReseauPathOf(values, photo);
  ZuReseaufileList list;
  list.ReadReseauFile(String(strPath.c_str()));
  if (list.GetReadErrorCount() > 0) {
    throw CommandError(kBadInput, strPath + ":" + std::to_string(list.GetReadErrorLine()) + ": " +
                                      list.GetReadErrorText());
  }
  const ZuReseauFile* pFound = list.FindReseauFile(&photo);
  if (pFound == nullptr && list.Count() == 1) pFound = list.First();
  if (pFound != nullptr) return *pFound;
  throw CommandError(kBadInput,
                     strPath + (list.IsEmpty() ? ": is no reseau or digital camera file"
                                               : ": holds several reseaus, and none is the photo's "
                                                 "(RESEAUFILE, RESEAUSUBID)"));
}

ZuFirstTrafo FitOf(const Values& values, const InnerKind& kind, const ZuPhoto& photo,
                   const ZuPointList& pixels, const ZuReseauFile& reseau) {
  ZuFirstTrafoOptions options;
  options.kind = kind.kind;
  options.dPixelSigma = values.dSigma;
  options.tests = TestsOf(values.adjust, values.adjust.bTest);
  ZuFirstTrafo first = ZuFitFirstTrafo(photo, pixels, reseau, options);
  if (first.IsGood()) return first;
  const std::string strWhere = NameInMessages(values.strCrosses) + ": ";
  if (first.common.size() < kind.uMinCrosses) {
    throw CommandError(kUndetermined, strWhere + Counted(first.common.size(), "cross", "crosses") +
                                          " of the reseau measured, " + kind.szName + " needs " +
                                          std::to_string(kind.uMinCrosses));
  }
  throw CommandError(kUndetermined,
                     strWhere + "the crosses do not determine --type " + kind.szName + ": " +
                         (first.fit.strFree.empty() ? ZuAdjustStatusText(first.fit.eStatus)
                                                    : "free is: " + first.fit.strFree));
}

double RmsOfCrosses(const ZuTrafo2dFit& fit, double* pdLargest) {
  double dSum = 0.0;
  int iUsed = 0;
  for (const ZuPointTest& test : fit.points) {
    const double d = std::hypot(test.adResidual[0], test.adResidual[1]);
    *pdLargest = std::max(*pdLargest, d);
    if (test.bUsed) dSum += d * d, ++iUsed;
  }
  return std::sqrt(dSum / std::max(iUsed, 1));
}

void WriteCrosses(const ZuTrafo2dFit& fit, double dLargest, std::ostream& text) {
  const int iDecimals = DecimalsFor(dLargest);
  TextTable table;
  for (const char* szTitle : {"cross", "dx [mm]", "dy [mm]", "wx", "wy", "r"}) {
    table.AddColumn(szTitle);
  }
  table.AddColumn("", TextTable::eLeft);
  for (const ZuPointTest& test : fit.points) {
    table.AddRow({std::to_string(test.uId), Fixed(test.adResidual[0], iDecimals),
                  Fixed(test.adResidual[1], iDecimals), Fixed(test.adW[0], 2),
                  Fixed(test.adW[1], 2), test.bUsed ? Fixed(test.Redundancy(), 3) : "-",
                  !test.bUsed         ? "set aside"
                  : test.IsRejected() ? "beyond the limit"
                  : test.bControlled  ? ""
                                      : "not controlled"});
  }
  table.Write(text);
}

void FillInnerJson(const ZuFirstTrafo& first, const InnerKind& kind, const ZuReseauFile& reseau,
                   double dRms, const ZuPhoto& photo, Json* pRoot) {
  Json& root = *pRoot;
  const ZuTrafo2dFit& fit = first.fit;
  const ZuTrafo2d trafo = fit.Uncentred();
  root["photo"] = photo.GetId();
  root["reseau"] = reseau.GetName().chars();
  root["type"] = kind.szName;
  root["coefficients"] = Json::array();
  for (size_t i = 0; i < fit.coefficients.size(); ++i) {
    root["coefficients"].push_back(trafo.GetCoef(static_cast<int>(i)));
  }
  root["rms"] = RmsJson(dRms);
  root["sigma0"] = fit.dSigma0;
  root["sigma_kind"] = ZuSigmaKindText(fit.sigmaOfResults);
  root["redundancy"] = fit.iRedundancy;
  root["inverse_error"] =
      fit.kind == ZuTrafo2dKind::Polynomial ? Json(first.dInverseError) : Json();
  root["crosses"] = Json::array();
  for (const ZuPointTest& test : fit.points) {
    Json cross{{"id", test.uId},
               {"used", test.bUsed},
               {"dx", test.adResidual[0]},
               {"dy", test.adResidual[1]}};
    AddTestJson(&test, &cross);
    root["crosses"].push_back(std::move(cross));
  }
  root["not_nominal"] = first.notNominal;
  root["not_measured"] = first.notMeasured;
}

ExitCode Run(const Values& values, Context& context) {
  if (!values.strOut.empty()) CheckProjectEnding(values.strOut);
  ZuProject project;
  ReadProjectFile(values.strProject, context, &project);
  ZuPhoto& photo = InnerPhoto(project, values);
  const ZuReseauFile reseau = ReadReseau(values, photo);
  ZuPointList pixels;
  ReadPoints(values.strCrosses, values.format, context, &pixels);
  CheckAccuracies(NameInMessages(values.strCrosses), pixels, values.format.strColumns);
  const InnerKind& kind =
      *std::find_if(std::begin(kInnerKinds), std::end(kInnerKinds),
                    [&values](const InnerKind& k) { return values.strType == k.szName; });
  ZuFirstTrafo first = FitOf(values, kind, photo, pixels, reseau);
  ZuStoreFirstTrafo(first, reseau, &photo);
  TurnResiduals(&first.fit.points);

  const ZuTrafo2dFit& fit = first.fit;
  double dLargest = 0.0;
  const double dRms = RmsOfCrosses(fit, &dLargest);
  std::ostream& text = context.Text();
  text << "photo " << photo.GetId() << ", reseau \"" << reseau.GetName().chars() << "\", "
       << kind.szName << ": " << Counted(first.common.size(), "cross", "crosses");
  if (fit.iSetAside > 0) text << ", " << fit.iSetAside << " set aside";
  if (!first.notMeasured.empty()) text << ", " << first.notMeasured.size() << " not measured";
  if (!first.notNominal.empty()) text << ", " << first.notNominal.size() << " not in the reseau";
  text << "\nresiduals: nominal minus transformed\n\n";
  WriteCrosses(fit, dLargest, text);
  text << "\nRMS     " << Fixed(dRms, DecimalsFor(dLargest)) << " mm\nsigma0  "
       << SigmaText(fit.dSigma0, fit.sigmaOfResults, fit.iRedundancy) << '\n';
  FillInnerJson(first, kind, reseau, dRms, photo, &context.Root());
  if (context.WantsReport()) context.Report().AddPlaces(reseau.GetCrossList());
  if (!values.strOut.empty()) WriteProjectFile(values.strOut, context, project);
  return fit.iSetAside > 0 ? kNotAcceptable : kGood;
}

}  // namespace

Runner DefinePhotoInner(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("PROJECT", &pValues->strProject, "project file, or its JSON");
  options.Option("--photo", "N", &pValues->uPhoto, "the photo");
  options.Required();
  options.Option("--crosses", "FILE", &pValues->strCrosses,
                 "coordinate file of the measured crosses, x and y in pixels");
  options.Required();
  options.Option("--reseau", "FILE", &pValues->strReseau,
                 "reseau or digital camera file; the one that the photo names, beside the project");
  options.Choice("--type", {"helmert", "affin", "projektiv", "polynom"}, &pValues->strType,
                 "kind of transformation, affin");
  options.Option("--sigma", "S", &pValues->dSigma,
                 "standard deviation of a pixel, where no column dx, dy tells it");
  options.Above(0.0);
  AddTestFlag(options, &pValues->adjust);
  AddTestLimits(options, &pValues->adjust.dAlpha, &pValues->adjust.dAlphaTotal);
  AddPointOptions(options, &pValues->format);
  options.Output("-o,--output", "FILE", &pValues->strOut, "the project as .prj or .json");
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
