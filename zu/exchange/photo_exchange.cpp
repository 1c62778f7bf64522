#include "zu/exchange/photo_exchange.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "zu/exchange/internal/bal.h"
#include "zu/exchange/internal/colmap.h"
#include "zu/exchange/internal/metashape.h"
#include "zu/exchange/internal/opencv_file.h"
#include "zu/foundation/path.h"
#include "zu/project/project.h"

namespace zu::internal {

namespace {

// A format: a reader to a block and a writer from one.
struct Exchange {
  PhotoBlock (*Read)(const std::vector<ZuExchangeFile>& files, const ZuImportOptions& options,
                     ZuExchangeReport* pReport);
  std::vector<ZuExchangeFile> (*Write)(const PhotoBlock& block, const ZuExportOptions& options,
                                       ZuExchangeReport* pReport);
  const BlockNeeds* pNeeds;
  PinholeModel (*ThroughFile)(const PinholeModel& model);
};

Exchange ExchangeOf(eZuExchange eFormat) {
  switch (eFormat) {
    case eZuExchangeBal:
      return {ReadBal, WriteBal, &kBalNeeds, SameModel};
    case eZuExchangeMetashape:
      return {ReadMetashape, WriteMetashape, &kMetashapeNeeds, ThroughMetashape};
    case eZuExchangeOpenCv:
      return {ReadOpenCv, WriteOpenCv, &kOpenCvNeeds, SameModel};
    case eZuExchangeColmap:
      break;
  }
  return {ReadColmap, WriteColmap, &kColmapNeeds, ThroughColmap};
}

// Files as they are sent; none of the formats is read in this form.
void RefusePacked(const ZuExchangeFile& file) {
  const struct {
    std::string_view magic;
    const char* szTool;
  } packers[] = {{"\x1f\x8b", "gunzip"},
                 {"BZh", "bunzip2"},
                 {"PK\x03\x04", "unzip"},
                 {"\xfd"
                  "7zXZ",
                  "unxz"}};
  for (const auto& packer : packers) {
    if (file.strText.rfind(packer.magic, 0) != 0) continue;
    FailExchange(file.strName, 0, "is packed",
                 std::string("what ") + packer.szTool + " makes of it");
  }
}

std::vector<std::string> ColmapFileNames() {
  std::vector<std::string> names;
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

}  // namespace zu::internal

bool ZuIsFolderExchange(eZuExchange eFormat) { return eFormat == eZuExchangeColmap; }

bool ZuReadExchangeFiles(eZuExchange eFormat, const std::string& strPath,
                         std::vector<ZuExchangeFile>* pFiles, ZuFindingList* pFindings) {
  pFiles->clear();
  ZuFinding finding;
  if (ZuIsFolderExchange(eFormat)) {
    for (const std::string& strName : zu::internal::ColmapFileNames()) {
      ZuExchangeFile file{strName, ""};
      if (zu::internal::ReadWhole(ZuJoinPath(strPath, strName), &file.strText)) {
        pFiles->push_back(std::move(file));
      }
    }
    finding.m_strText = "has none of the files that belong to the format";
    finding.m_strRight = "a folder with cameras.txt, images.txt and points3D.txt";
  } else {
    ZuExchangeFile file{strPath.substr(strPath.find_last_of("/\\") + 1), ""};
    if (zu::internal::ReadWhole(strPath, &file.strText)) pFiles->push_back(std::move(file));
    finding.m_strText = "cannot be read";
    finding.m_strRight = "a file";
  }
  if (!pFiles->empty()) return true;
  pFindings->Add(finding);
  return false;
}

bool ZuImportPhotos(eZuExchange eFormat, const std::vector<ZuExchangeFile>& files,
                    const ZuImportOptions& options, ZuProject* pProject,
                    ZuExchangeReport* pReport) {
  pProject->Clear();
  try {
    const zu::internal::Exchange exchange = zu::internal::ExchangeOf(eFormat);
    for (const ZuExchangeFile& file : files) zu::internal::RefusePacked(file);
    BlockToProject(exchange.Read(files, options, pReport), options, exchange.ThroughFile, pProject,
                   pReport);
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
    const zu::internal::Exchange exchange = zu::internal::ExchangeOf(eFormat);
    const zu::internal::PhotoBlock block =
        ProjectToBlock(project, points, *exchange.pNeeds, options, pReport);
    *pFiles = exchange.Write(block, options, pReport);
    return true;
  } catch (const zu::internal::ExchangeFault& fault) {
    pReport->findings.Add(fault.finding);
    return false;
  }
}
