#include "zu/exchange/photo_exchange.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "zu/exchange/internal/colmap.h"
#include "zu/foundation/path.h"
#include "zu/project/project.h"

namespace {

// The names that a folder of the format may have.
std::vector<std::string> NamesOf(eZuExchange eFormat) {
  std::vector<std::string> names;
  if (eFormat != eZuExchangeColmap) return names;
  for (const char* szEnding : {".bin", ".txt"}) {
    for (const char* szName : {"cameras", "images", "points3D"}) {
      names.push_back(std::string(szName) + szEnding);
    }
  }
  return names;
}

bool ReadWhole(const std::string& strPath, std::string* pText) {
  std::error_code error;
  if (std::filesystem::is_directory(std::filesystem::u8path(strPath), error)) return false;
  std::ifstream stream(std::filesystem::u8path(strPath), std::ios::in | std::ios::binary);
  if (!stream) return false;
  pText->assign(std::istreambuf_iterator<char>(stream), {});
  return !stream.bad();
}

}  // namespace

bool ZuReadExchangeFiles(eZuExchange eFormat, const std::string& strPath,
                         std::vector<ZuExchangeFile>* pFiles, ZuFindingList* pFindings) {
  pFiles->clear();
  for (const std::string& strName : NamesOf(eFormat)) {
    ZuExchangeFile file{strName, ""};
    if (ReadWhole(ZuJoinPath(strPath, strName), &file.strText)) pFiles->push_back(std::move(file));
  }
  if (!pFiles->empty()) return true;
  ZuFinding finding;
  finding.m_strText = "has none of the files that belong to the format";
  finding.m_strRight = "a folder with cameras.txt, images.txt and points3D.txt";
  pFindings->Add(finding);
  return false;
}

bool ZuImportPhotos(eZuExchange eFormat, const std::vector<ZuExchangeFile>& files,
                    const ZuImportOptions& options, ZuProject* pProject,
                    ZuExchangeReport* pReport) {
  pProject->Clear();
  try {
    (void)eFormat;
    const zu::internal::PhotoBlock block = zu::internal::ReadColmap(files, pReport);
    BlockToProject(block, options, zu::internal::ThroughColmap, pProject, pReport);
    return true;
  } catch (const zu::internal::ExchangeFault& fault) {
    pProject->Clear();
    pReport->findings.Add(fault.finding);
    return false;
  }
}

bool ZuExportPhotos(eZuExchange eFormat, const ZuProject& project, const ZuPointList& points,
                    const ZuExportOptions& options, std::vector<ZuExchangeFile>* pFiles,
                    ZuExchangeReport* pReport) {
  pFiles->clear();
  try {
    (void)eFormat;
    const zu::internal::PhotoBlock block = zu::internal::ProjectToBlock(
        project, points, zu::internal::kColmapParameters, options, pReport);
    *pFiles = WriteColmap(block, options.bBinary, pReport);
    return true;
  } catch (const zu::internal::ExchangeFault& fault) {
    pReport->findings.Add(fault.finding);
    return false;
  }
}
