// zu points: coordinate files from files of other kinds.
#include <memory>
#include <numbers>

#include "commands.h"
#include "point_input.h"
#include "reading.h"
#include "text_table.h"
#include "zu/points/gsi_survey.h"

namespace cli {
namespace {

constexpr double kGon = std::numbers::pi / 200.0;

struct Values {
  std::string strFile, strOut, strKnown, strDuplicates = "mean";
  int iDecimals = -1;
  bool bMeasured = false, bFlat = false, bPrism = false;
  double dOrientation = 0.0, dPrism = 0.0, dRefraction = 0.13;
  double dSigmaAngle = 0.0, dSigmaDistance = 0.0, dSigmaPpm = 0.0, dSigmaHeight = 0.0;
};

ZuGsiOptions OptionsOf(const Values& values, const ZuPointList& known) {
  ZuGsiOptions options;
  options.m_bMeasured = values.bMeasured;
  options.m_pKnown = &known;
  options.m_dOrientation = values.dOrientation * kGon;
  if (values.bPrism) options.m_prism = values.dPrism * 1e-3;
  options.m_dRefraction = values.dRefraction;
  if (values.bFlat) options.m_dEarthRadius = std::numeric_limits<double>::infinity();
  options.m_dSigmaDirection = options.m_dSigmaZenith = values.dSigmaAngle * 1e-3 * kGon;
  options.m_dSigmaDistance = values.dSigmaDistance * 1e-3;
  options.m_dSigmaDistancePpm = values.dSigmaPpm;
  options.m_dSigmaHeight = values.dSigmaHeight * 1e-3;
  return options;
}

void TellSetups(const ZuGsiReading& reading, Context& context) {
  TextTable table;
  table.AddColumn("station", TextTable::eLeft);
  for (const char* szTitle : {"line", "x", "y", "z", "height", "orientation", "sights", "misfit"}) {
    table.AddColumn(szTitle);
  }
  Json& stations = context.Root()["stations"] = Json::array();
  for (const ZuGsiSetup& setup : reading.m_Setups) {
    std::vector<std::string> row = {setup.m_strName, std::to_string(setup.m_uLine)};
    Json json = {{"line", setup.m_uLine}, {"name", setup.m_strName}};
    for (double d : setup.m_adStation) row.push_back(setup.m_bPlaced ? Fixed(d, 4) : "-");
    if (setup.m_bPlaced) {
      json["x"] = setup.m_adStation[0];
      json["y"] = setup.m_adStation[1];
      json["z"] = setup.m_adStation[2];
    }
    row.push_back(setup.m_instrumentHeight ? Fixed(*setup.m_instrumentHeight, 4) : "-");
    if (setup.m_instrumentHeight) json["height"] = *setup.m_instrumentHeight;
    row.push_back(Fixed(setup.m_dOrientation / kGon, 5));
    row.push_back(std::to_string(setup.m_iSights));
    row.push_back(setup.m_iSights > 0 ? Fixed(setup.m_dLargestMisfit, 4) : "-");
    json["orientation_gon"] = setup.m_dOrientation / kGon;
    json["sights"] = setup.m_iSights;
    if (setup.m_iSights > 0) json["misfit"] = setup.m_dLargestMisfit;
    table.AddRow(row);
    stations.push_back(std::move(json));
  }
  if (!reading.m_Setups.empty()) table.Write(context.Text());
}

std::string ColumnsOf(const ZuPointList& points, bool bDeviations) {
  const ZuPoint* p = points.First();
  while (p != nullptr && p->GetName().empty()) p = p->Next();
  return std::string(p == nullptr ? "id" : "idname") + ",x,y,z" + (bDeviations ? ",dx,dy,dz" : "");
}

Duplicates DuplicatesOfWord(const std::string& strWord) {
  if (strWord == "first") return eDuplicatesFirst;
  if (strWord == "last") return eDuplicatesLast;
  return strWord == "mean" ? eDuplicatesMean : eDuplicatesError;
}

ExitCode RunGsi(const Values& values, Context& context) {
  ZuPointList known, points;
  if (!values.strKnown.empty()) ReadPoints(values.strKnown, PointFormat(), context, &known);
  const InputFile file(values.strFile, "a GSI file of a total station");
  const ZuGsiReading reading =
      ZuReadGsiPoints(file.Path().c_str(), OptionsOf(values, known), points, ReadMode(context));
  TellFindings(reading.m_Findings, file.Name(), false, "--tolerant takes what is there", context);
  if (points.Count() == 0) {
    throw CommandError(kBadInput, file.Name() +
                                      ": holds no point with coordinates; words 81 to 83, "
                                      "or a station and 21, 22, 31, would be right");
  }
  JoinDuplicates(file.Name(), reading.m_aLines, DuplicatesOfWord(values.strDuplicates), context,
                 &points);
  TellSetups(reading, context);
  const bool bDeviations = values.dSigmaAngle > 0.0 || values.dSigmaDistance > 0.0 ||
                           values.dSigmaPpm > 0.0 || values.dSigmaHeight > 0.0;
  const std::string strColumns = ColumnsOf(points, bDeviations);
  context.Root()["points"] = points.Count();
  context.Root()["columns"] = strColumns;
  context.Text() << Counted(points.Count(), "point") << ", columns " << strColumns << '\n';
  WritePoints(&points, strColumns, &context.NewOutput(values.strOut), values.iDecimals);
  return kGood;
}

}  // namespace

Runner DefinePointsGsi(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("FILE", &pValues->strFile, "GSI file of a total station");
  options.Output("-o,--output", "FILE", &pValues->strOut, "coordinate file");
  options.Required();
  options.Option("--known", "FILE", &pValues->strKnown,
                 "coordinate file (number or name, x, y, z) of stations and of points that orient");
  options.Flag("--measured", &pValues->bMeasured,
               "from the measurements, where the file has coordinates too");
  options.Option("--orientation", "GON", &pValues->dOrientation,
                 "bearing of the circle's zero where no known point is sighted");
  options.Option("--prism", "MM", &pValues->dPrism,
                 "true constant of the prism, in place of the one that the file tells");
  options.Option("--refraction", "K", &pValues->dRefraction, "coefficient of refraction");
  options.Flag("--flat", &pValues->bFlat, "neither curvature of the earth nor refraction");
  const struct {
    const char *szName, *szUnit, *szHelp;
    double* pdValue;
  } sigmas[] = {
      {"--sigma-angle", "MGON", "standard deviation of an angle", &pValues->dSigmaAngle},
      {"--sigma-distance", "MM", "of a distance", &pValues->dSigmaDistance},
      {"--sigma-ppm", "MM/KM", "of a distance, by its length", &pValues->dSigmaPpm},
      {"--sigma-height", "MM", "of a height of instrument or reflector", &pValues->dSigmaHeight}};
  for (const auto& sigma : sigmas) {
    options.Option(sigma.szName, sigma.szUnit, sigma.pdValue, sigma.szHelp);
    options.AtLeast(0.0);
  }
  options.Choice("--duplicates", {"error", "first", "last", "mean"}, &pValues->strDuplicates,
                 "what counts of a point that was measured more than once");
  AddDecimals(options, &pValues->iDecimals);
  options.Tolerant();
  return [pValues, options](Context& context) {
    pValues->bPrism = options.Given("--prism");
    return RunGsi(*pValues, context);
  };
}

}  // namespace cli
