// Writing clouds, by the ending of the file.
#include <charconv>
#include <cmath>
#include <filesystem>

#include "cloud_files.h"
#include "exit_code.h"
#include "point_input.h"
#include "progress_line.h"
#include "text_table.h"
#include "zu/cloud/las_file.h"
#include "zu/cloud/ply_file.h"
#include "zu/cloud/pts_file.h"
#include "zu/exchange/e57_file.h"
#include "zu/foundation/strict_number.h"

namespace cli {
namespace {

// What a format keeps beside the coordinates.
enum Kept { eColors = 1, eIntensities = 2, eNormals = 4 };

// What the points of the clouds have.
int UsedBy(const ZuPointCloudContainer& clouds) {
  int iUsed = 0;
  for (const ZuPointCloud* p = clouds.First(); p != nullptr; p = p->Next()) {
    for (const ZuScanPoint3d& point : p->GetPoints()) {
      iUsed |= (point.GetColor() != 0 ? eColors : 0) |
               (point.m_uColor >> 24 != 0 ? eIntensities : 0) |
               (point.HasNormVector() ? eNormals : 0);
    }
  }
  return iUsed;
}

bool WriteCoordinates(const ZuPointCloudContainer& clouds, OutputFile* pOutput) {
  ZuPointList list;
  unsigned int uId = 0;
  for (const ZuPointCloud* pCloud = clouds.First(); pCloud != nullptr; pCloud = pCloud->Next()) {
    for (const ZuScanPoint3d& p : pCloud->GetPoints()) list.Add(ZuPoint(++uId, p.x, p.y, p.z));
  }
  WritePoints(&list, "id,x,y,z", pOutput);
  return true;
}

bool WriteCsv(const ZuPointCloudContainer& clouds, OutputFile* pOutput) {
  pOutput->Stream() << "id,x,y,z\n";
  unsigned int uId = 0;
  for (const ZuPointCloud* pCloud = clouds.First(); pCloud != nullptr; pCloud = pCloud->Next()) {
    for (const ZuScanPoint3d& p : pCloud->GetPoints()) {
      char acLine[1200];
      char* pOut = std::to_chars(acLine, acLine + 16, ++uId).ptr;
      for (const double dValue : {p.x, p.y, p.z}) {
        *pOut++ = ',';
        pOut = std::to_chars(pOut, pOut + 390, dValue, std::chars_format::fixed).ptr;
      }
      *pOut++ = '\n';
      pOutput->Stream().write(acLine, pOut - acLine);
    }
  }
  return true;
}

struct Job {
  ZuPointCloudContainer* pClouds;
  const CloudOptions& options;
  eZuIntensityScale eIntensity;
  OutputFile* pOutput;
  Context& context;

  const char* Path() const { return pOutput->TempPath().c_str(); }
};

bool WriteBinary(const Job& job) { return job.pClouds->Write(job.Path()) != 0; }

bool WritePtsFile(const Job& job) {
  const std::string& strDialect = job.options.strPts;
  ZuPtsOptions pts;
  pts.m_eIntensity = job.eIntensity;
  pts.m_eDialect = strDialect == "plain"       ? eZuPtsPlain
                   : strDialect == "intensity" ? eZuPtsIntensity
                   : strDialect == "rgb"       ? eZuPtsRgb
                                               : eZuPtsAuto;
  return ZuWritePts(job.Path(), *job.pClouds, pts);
}

bool WriteXyz(const Job& job) {
  return ZuWritePts(job.Path(), *job.pClouds, {eZuPtsPlain, eZuIntensityNone, false});
}

bool WritePlyFile(const Job& job) {
  const std::string& strForm = job.options.strPly;
  if (strForm == "library") return job.pClouds->ExportPlyFile(job.Path()) != 0;
  const eZuPlyForm eForm = strForm == "binary"       ? eZuPlyBinaryLittle
                           : strForm == "binary-big" ? eZuPlyBinaryBig
                                                     : eZuPlyAscii;
  return ZuWritePly(job.Path(), *job.pClouds, eForm, job.eIntensity);
}

// Tells the resolution, which the file has and the points may not.
void TellLas(const ZuLasWriting& las, Context& context) {
  std::ostream& text = context.Text();
  text << "resolution";
  for (const double d : las.m_adResolution) text << ' ' << Shortest(d);
  text << ", offset";
  for (const double d : las.m_adOffset) text << ' ' << Shortest(d);
  text << '\n';
  context.Root()["resolution"] = las.m_adResolution;
  context.Root()["offset"] = las.m_adOffset;
}

bool WriteLasFile(const Job& job) {
  ZuLasOptions options;
  options.m_dResolution = job.options.dResolution;
  options.m_eIntensity = job.eIntensity;
  options.m_iMinorVersion = job.options.strLas == "1.2" ? 2 : job.options.strLas == "1.4" ? 4 : 0;
  const ZuLasWriting las = ZuWriteLas(job.Path(), *job.pClouds, options);
  if (!las.m_strFault.empty()) {
    throw CommandError(kUsage, job.pOutput->Path() + ": " + las.m_strFault);
  }
  if (las.m_uLeftOut > 0) {
    job.context.WarnAlways(job.pOutput->Path() + ": " + Counted(las.m_uLeftOut, "point") +
                           " with coordinates that are not finite, left out");
  }
  TellLas(las, job.context);
  return las.m_bGood;
}

bool WriteE57File(const Job& job) {
  const ZuE57Writing e57 =
      ZuWriteE57(job.Path(), *job.pClouds, {job.options.dResolution, job.eIntensity, {}});
  if (!e57.m_strFault.empty()) {
    throw CommandError(kUsage, job.pOutput->Path() + ": " + e57.m_strFault);
  }
  return e57.m_bGood;
}

constexpr struct Format {
  const char* szEnding;
  int iKept;
  bool (*pfnWrite)(const Job&);
} kFormats[] = {
    {".zpc", eColors | eIntensities | eNormals, WriteBinary},
    {".ply", eColors | eIntensities | eNormals, WritePlyFile},
    {".pts", eColors | eIntensities, WritePtsFile},
    {".las", eColors | eIntensities, WriteLasFile},
    {".e57", eColors | eIntensities | eNormals, WriteE57File},
    {".xyz", 0, WriteXyz},
    {".csv", 0, [](const Job& job) { return WriteCsv(*job.pClouds, job.pOutput); }},
    {".coo", 0, [](const Job& job) { return WriteCoordinates(*job.pClouds, job.pOutput); }},
    {".txt", 0, [](const Job& job) { return WriteCoordinates(*job.pClouds, job.pOutput); }}};

const Format& FormatOf(const std::string& strPath) {
  std::string strEnding = std::filesystem::path(strPath).extension().string();
  for (char& c : strEnding) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
  for (const Format& format : kFormats) {
    if (strEnding == format.szEnding) return format;
  }
  throw CommandError(
      kUsage, "OUT: \"" + strPath +
                  "\" does not end in .zpc, .pts, .ply, .las, .e57, .xyz, .csv, .coo or .txt, "
                  "which tells the format");
}

void WarnOfLosses(int iLost, const std::string& strPath, Context& context) {
  if (iLost == 0) return;
  std::string strWhat;
  const struct {
    int iBit;
    const char* szName;
  } names[] = {{eColors, "colours"}, {eIntensities, "intensities"}, {eNormals, "normals"}};
  for (const auto& name : names) {
    if ((iLost & name.iBit) != 0)
      strWhat += (strWhat.empty() ? "" : " and ") + std::string(name.szName);
  }
  context.Warn(strPath + ": the format has no place for " + strWhat + ", which are left out");
}

eZuIntensityScale ScaleOf(const std::string& strOption, eZuIntensityScale eRead) {
  if (strOption == "255") return eZuIntensity255;
  if (strOption == "65535") return eZuIntensity65535;
  if (strOption == "2000") return eZuIntensity2000;
  return eRead;
}

// Each coordinate becomes the double of its text with so many decimals, which all text forms write.
void RoundPoints(int iDecimals, ZuPointCloudContainer* pClouds) {
  for (ZuPointCloud* p = pClouds->GetClouds().First(); p != nullptr; p = p->Next()) {
    ZuPointCloud rounded;
    rounded.Reserve(p->GetPointCount());
    for (ZuScanPoint3d point : p->GetPoints()) {
      for (double* pd : {&point.x, &point.y, &point.z}) {
        if (std::isfinite(*pd)) ZuParseNumber(Fixed(*pd, iDecimals), pd);
      }
      rounded.AddPoint(point);
    }
    rounded.SetId(p->GetId());
    rounded.SetName(p->GetName());
    *p = rounded;
  }
}

}  // namespace

void AddCloudOutput(Options& options, CloudOptions* p) {
  options.Option("--resolution", "R", &p->dResolution,
                 "step of the coordinates of a LAS or E57 file (default: holds all digits; LAS, "
                 "which cannot: the finest)");
  options.Above(0);
  options.Choice("--las", {"auto", "1.2", "1.4"}, &p->strLas, "version of a LAS file");
  options.Choice("--ply", {"ascii", "binary", "binary-big", "library"}, &p->strPly,
                 "form of a PLY file; library reads and writes nine fixed columns");
  options.Choice("--pts-dialect", {"auto", "plain", "intensity", "rgb"}, &p->strPts,
                 "columns of a PTS file: x y z, with intensity, with colour, too");
  options.Choice("--pts-intensity", {"auto", "255", "65535", "2000"}, &p->strIntensity,
                 "scale of the intensities that are written; auto is that of IN");
}

void CheckCloudEnding(const std::string& strPath) { FormatOf(strPath); }

void WriteClouds(ZuPointCloudContainer* pClouds, const std::string& strPath,
                 const CloudOptions& options, eZuIntensityScale eIntensity, Context& context) {
  const LibraryProgress progress(context.IsQuiet());
  const Format& format = FormatOf(strPath);
  OutputFile& output = context.NewOutput(strPath);
  // A binary file keeps its doubles, and with them what only it has a place for.
  if (options.iDecimals >= 0 && format.pfnWrite != WriteBinary)
    RoundPoints(options.iDecimals, pClouds);
  const Job job = {pClouds, options, ScaleOf(options.strIntensity, eIntensity), &output, context};
  if (!format.pfnWrite(job)) {
    throw CommandError(kCannotWrite, strPath + ": not all bytes could be written");
  }
  WarnOfLosses(UsedBy(*pClouds) & ~format.iKept, strPath, context);
}

}  // namespace cli
