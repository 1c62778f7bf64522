// Reading clouds on the command line, and what their readers found.
#include "cloud_files.h"
#include "exit_code.h"
#include "input_file.h"
#include "point_columns.h"
#include "point_input.h"
#include "progress_line.h"
#include "reading.h"
#include "zu/exchange/e57_file.h"
#include "zu/foundation/file_name.h"

namespace cli {
namespace {

const char* const kNeeded =
    "a binary cloud file (.zpc), PTS, PLY, LAS, E57, lines of x y z, or a coordinate file with "
    "--columns";

ZuCloudFileOptions FileOptions(const InputFile& file, const CloudOptions& options) {
  ZuCloudFileOptions fileOptions;
  fileOptions.m_strName = file.Name();
  fileOptions.m_Table = options.table;
  fileOptions.m_bPlyByPlaces = options.strPly == "library";
  if (options.strColumns.empty()) return fileOptions;
  const ColumnTable columns = ParseColumns(options.strColumns);
  for (int i = 0; i < columns.Size(); ++i) fileOptions.m_Table.m_aColumns.push_back(columns[i]);
  return fileOptions;
}

// What an option of the program tells is refused with the option.
void CheckCloudFaults(const ZuCloudFileReading& reading, const InputFile& file) {
  const ZuReadFinding* const pFault = reading.m_Findings.First(eZuReadFault);
  if (pFault == nullptr) return;
  const std::string strPlaced = Placed(*pFault, file.Name());
  if (reading.m_eKind == eZuCloudFileEither) {
    throw CommandError(kBadInput, strPlaced +
                                      "; --columns id,x,y,z or --columns x,y,z\nsays which, or a "
                                      "name that ends in .pts, .xyz or .coo");
  }
  if (pFault->m_uLine == 0 && pFault->m_strRight.empty()) {
    throw CommandError(kBadInput, strPlaced + "\n" + kNeeded + " would be right");
  }
  CheckTableFaults(reading.m_Findings, file);
}

// By the reader of the kind; that of E57 files stands beside the others.
ZuCloudFileReading ReadCloudFile(const InputFile& file, const CloudOptions& options,
                                 const Context& context, ZuPointCloudContainer* pClouds) {
  const char* const szPath = file.Path().c_str();
  const ZuCloudFileOptions fileOptions = FileOptions(file, options);
  std::string strWhy;
  if (ZuFindCloudFileKind(szPath, fileOptions, &strWhy) != eZuCloudFileE57) {
    return ZuReadClouds(szPath, *pClouds, fileOptions, ReadMode(context));
  }
  ZuE57Reading e57 = ZuReadE57(szPath, *pClouds);
  ZuCloudFileReading reading;
  reading.m_eKind = eZuCloudFileE57;
  reading.m_eIntensity = e57.m_eIntensity;
  reading.m_Findings = std::move(e57.m_Findings);
  return reading;
}

void NameClouds(ZuPointCloud* p, const std::string& strPath) {
  for (; p != nullptr; p = p->Next()) {
    if (p->GetName().empty()) p->SetName(ZuGetFilenameNoExt(strPath.c_str()));
  }
}

}  // namespace

bool IsCloudFile(const InputFile& file, const CloudOptions& options) {
  std::string strWhy;
  return ZuFindCloudFileKind(file.Path().c_str(), FileOptions(file, options), &strWhy) !=
         eZuCloudFileNone;
}

eZuIntensityScale ReadClouds(const std::string& strPath, const CloudOptions& options,
                             Context& context, ZuPointCloudContainer* pClouds) {
  const LibraryProgress progress(context.IsQuiet());
  const InputFile file(strPath, "a cloud file");
  const ZuPointCloud* const pLast = pClouds->GetClouds().Last();
  const ZuCloudFileReading reading = ReadCloudFile(file, options, context, pClouds);
  CheckCloudFaults(reading, file);
  const bool bTable = reading.m_eKind == eZuCloudFileCoordinates;
  TellFindings(reading.m_Findings, file.Name(), options.bPartial && !bTable,
               bTable ? "--tolerant takes what is there" : "--partial takes what is there",
               context);
  if (bTable) {
    TellTable(reading.m_Form, reading.m_Findings.m_Dialect.m_strColumns, file.Name(), context);
  }
  ZuPointCloud* const pFirst = pLast != nullptr ? pLast->Next() : pClouds->First();
  bool bPoints = reading.m_eKind == eZuCloudFileBinary && pFirst != nullptr;
  for (const ZuPointCloud* p = pFirst; p != nullptr; p = p->Next()) {
    bPoints = bPoints || p->GetPointCount() > 0;
  }
  if (!bPoints) {  // what was cut off is all
    throw CommandError(
        kBadInput, file.Name() + ": no point cloud in the file\n" + kNeeded + " would be right");
  }
  NameClouds(pFirst, file.Name());
  return reading.m_eIntensity;
}

void AddCloudInput(Options& options, CloudOptions* p) {
  AddColumnsOption(options, &p->strColumns);
  AddDecimals(options, &p->iDecimals);
  options.Flag("--partial", &p->bPartial, "take the points of a file that ends too early");
}

}  // namespace cli
