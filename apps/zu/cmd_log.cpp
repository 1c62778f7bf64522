// zu log: the log of measurements, and what it gives a project.
#include <cerrno>
#include <cstring>
#include <memory>

#include "commands.h"
#include "id_list.h"
#include "point_input.h"
#include "project_files.h"
#include "reading.h"
#include "text_table.h"
#include "zu/foundation/strict_number.h"
#include "zu/project/measurement_log.h"

namespace cli {
namespace {

constexpr char kTimeForm[] = "2026-11-22T16:28:30Z would be right";

struct Values {
  std::string strLog, strProject, strOut;
  std::string strPhotos, strPoints, strWho, strFrom, strTo;  // of the filter
  std::string strPixel, strTime, strRows;
  unsigned uPhoto = 0, uPoint = 0;
  bool bWho = false, bNoSync = false, bAll = false;
};

std::optional<std::int64_t> TimeOf(const std::string& strText, const char* szOption) {
  if (strText.empty()) return {};
  std::int64_t iTime = 0;
  if (ZuParseLogTime(strText, &iTime)) return iTime;
  throw CommandError(kUsage,
                     std::string(szOption) + ": \"" + strText + "\" is no time; " + kTimeForm);
}

ZuLogFilter FilterOf(const Values& values) {
  ZuLogFilter filter;
  filter.m_photos = ParseIds(values.strPhotos, "--photos");
  filter.m_points = ParseIds(values.strPoints, "--points");
  filter.m_from = TimeOf(values.strFrom, "--from");
  filter.m_to = TimeOf(values.strTo, "--to");
  if (values.bWho) filter.m_who = values.strWho;
  return filter;
}

ZuLogReading ReadLog(const Values& values, Context& context) {
  const InputFile file(values.strLog, "a measurement log");
  ZuLogReading reading = ZuReadMeasurementLog(file.Path().c_str(), FilterOf(values));
  // Each line that is whole counts, whatever became of others.
  TellFindings(reading.m_Findings, file.Name(), true, "", context);
  return reading;
}

// "1204.25,873.5"
void TakePixel(const std::string& strPixel, ZuLoggedMeasurement* pMeasurement) {
  const size_t uComma = strPixel.find(',');
  if (uComma != std::string::npos &&
      ZuParseNumber(strPixel.substr(0, uComma), &pMeasurement->m_dX) &&
      ZuParseNumber(strPixel.substr(uComma + 1), &pMeasurement->m_dY)) {
    return;
  }
  throw CommandError(kUsage,
                     "--pixel: \"" + strPixel + "\" is no pixel; 1204.25,873.5 would be right");
}

std::vector<ZuLoggedMeasurement> MeasurementsOf(const Values& values, Context& context) {
  ZuLoggedMeasurement m;
  m.m_iTime = TimeOf(values.strTime, "--time").value_or(ZuLogTimeNow());
  m.m_strWho = values.strWho;
  std::vector<ZuLoggedMeasurement> measurements;
  const bool bOne = values.uPhoto > 0 && values.uPoint > 0 && !values.strPixel.empty();
  if (bOne == !values.strRows.empty()) {
    throw CommandError(kUsage, "either --photo, --point and --pixel, or --rows");
  }
  if (bOne) {
    m.m_uPhoto = values.uPhoto;
    m.m_uPoint = values.uPoint;
    TakePixel(values.strPixel, &m);
    measurements.push_back(m);
  } else {
    ZuPointList rows;
    ReadPoints(values.strRows, "photo,id,x,y", context, &rows);
    for (const ZuPoint* p = rows.First(); p != nullptr; p = p->Next()) {
      m.m_uPhoto = static_cast<unsigned>(std::max(p->m_iPhoto, 0));
      m.m_uPoint = p->GetId();
      m.m_dX = p->m_dX;
      m.m_dY = p->m_dY;
      measurements.push_back(m);
    }
  }
  for (const ZuLoggedMeasurement& one : measurements) {
    if (ZuIsLoggable(one)) continue;
    throw CommandError(one.m_uPhoto == 0 ? kBadInput : kUsage,
                       one.m_uPhoto == 0 ? values.strRows + ": photos from 1 would be right"
                                         : "--who: at most 200 bytes would be right");
  }
  return measurements;
}

ExitCode RunAppend(const Values& values, Context& context) {
  const auto measurements = MeasurementsOf(values, context);
  ZuMeasurementLog log;
  errno = 0;
  if (!log.Open(values.strLog.c_str()) || !log.Append(measurements, !values.bNoSync)) {
    throw CommandError(kCannotWrite,
                       values.strLog + ": cannot be written (" + std::strerror(errno) + ")");
  }
  context.Text() << Counted(static_cast<long long>(measurements.size()), "measurement")
                 << " added\n";
  context.Root()["added"] = measurements.size();
  return kGood;
}

ExitCode RunShow(const Values& values, Context& context) {
  const ZuLogReading reading = ReadLog(values, context);
  TextTable table;
  table.AddColumn("time", TextTable::eLeft);
  for (const char* szTitle : {"photo", "point", "x", "y"}) table.AddColumn(szTitle);
  table.AddColumn("who", TextTable::eLeft);
  Json& rows = context.Root()["measurements"] = Json::array();
  for (const ZuLoggedMeasurement& m : reading.m_Measurements) {
    const std::string strTime = ZuLogTimeText(m.m_iTime);
    table.AddRow({strTime, std::to_string(m.m_uPhoto), std::to_string(m.m_uPoint), Shortest(m.m_dX),
                  Shortest(m.m_dY), m.m_strWho});
    rows.push_back({{"time", strTime},
                    {"photo", m.m_uPhoto},
                    {"point", m.m_uPoint},
                    {"x", m.m_dX},
                    {"y", m.m_dY},
                    {"who", m.m_strWho}});
  }
  context.Root()["lost_lines"] = reading.m_Findings.m_uDroppedLines;
  table.Write(context.Text());
  return kGood;
}

ExitCode RunReplay(const Values& values, Context& context) {
  CheckProjectEnding(values.strOut);
  const ZuLogReading reading = ReadLog(values, context);
  ZuProject project;
  ReadProjectFile(values.strProject, context, &project);
  const ZuReplayResult result =
      ZuReplayLog(reading.m_Measurements, values.bAll ? eZuReplayAll : eZuReplayLast, &project);
  Json& unknown = context.Root()["unknown_photos"] = Json::array();
  for (const auto& [uPhoto, iCount] : result.m_unknownPhotos) {
    context.WarnAlways("photo " + std::to_string(uPhoto) +
                       " is not in the project: " + Counted(iCount, "measurement") + " left out");
    unknown.push_back(uPhoto);
  }
  context.Root()["added"] = result.m_iAdded;
  context.Root()["replaced"] = result.m_iReplaced;
  context.Root()["superseded"] = result.m_iLater;
  context.Text() << Counted(result.m_iAdded, "measurement") << " added, " << result.m_iReplaced
                 << " replaced, " << result.m_iLater << " superseded by later ones\n";
  WriteProjectFile(values.strOut, context, project);
  return result.m_unknownPhotos.empty() ? kGood : kNotAcceptable;
}

void AddFilter(Options& options, Values* pValues) {
  options.Positional("LOG", &pValues->strLog, "measurement log");
  options.Option("--photos", "IDS", &pValues->strPhotos, "of these photos: 1,4,7-9");
  options.Option("--points", "IDS", &pValues->strPoints, "of these points");
  options.Option("--who", "NAME", &pValues->strWho, "by this person");
  options.Option("--from", "TIME", &pValues->strFrom, "from that time on (UTC, or a date)");
  options.Option("--to", "TIME", &pValues->strTo, "before that time");
}

}  // namespace

Runner DefineLogAppend(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("LOG", &pValues->strLog, "measurement log; made where it is missing");
  options.Option("--photo", "N", &pValues->uPhoto, "id of the photo");
  options.Option("--point", "N", &pValues->uPoint, "id of the point");
  options.Option("--pixel", "X,Y", &pValues->strPixel, "the measurement");
  options.Option("--rows", "FILE", &pValues->strRows, "measurements as lines photo, point, x, y");
  options.Tolerant();
  options.Option("--who", "NAME", &pValues->strWho, "who measured");
  options.Option("--time", "TIME", &pValues->strTime, "when (UTC); now without it");
  options.Flag("--no-sync", &pValues->bNoSync, "return before the disk has it");
  return [pValues](Context& context) { return RunAppend(*pValues, context); };
}

Runner DefineLogShow(Options& options) {
  auto pValues = std::make_shared<Values>();
  AddFilter(options, pValues.get());
  return [pValues, options](Context& context) {
    pValues->bWho = options.Given("--who");
    return RunShow(*pValues, context);
  };
}

Runner DefineLogReplay(Options& options) {
  auto pValues = std::make_shared<Values>();
  AddFilter(options, pValues.get());
  options.Positional("PROJECT", &pValues->strProject, "project file, or its JSON");
  options.Flag("--all", &pValues->bAll,
               "keep every measurement; without it the latest of each point replaces the others");
  options.Output("-o,--output", "FILE", &pValues->strOut, "the result as .prj or .json");
  options.Required();
  return [pValues, options](Context& context) {
    pValues->bWho = options.Given("--who");
    return RunReplay(*pValues, context);
  };
}

}  // namespace cli
