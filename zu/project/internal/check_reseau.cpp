#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "zu/photo/detect_files.h"
#include "zu/photo/reseau_data_desc.h"
#include "zu/project/internal/check_kinds.h"
#include "zu/project/internal/keyword_text.h"
#include "zu/project/internal/text_reader.h"
#include "zu/project/project.h"

namespace zu::internal {

namespace {

constexpr double kSmallestPixel = 1e-4, kLargestPixel = 0.1;  // [mm]
constexpr std::uintmax_t kLargestFile = 1 << 20;              // of a folder, looked at [bytes]
constexpr int kMostFiles = 1000;
constexpr std::size_t kNamesTold = 5;

void Warn(const ZuKeywordBlock& block, const std::string& strFile, const std::string& strText,
          const char* szRight, ZuFindingList* pFindings) {
  pFindings->Add(
      {strFile, block.m_uLine, block.m_uColumn, eZuSeverityWarning, "", strText, szRight});
}

void CheckCrosses(const KeywordText& text, const std::string& strFile, ZuFindingList* pFindings) {
  constexpr std::size_t kRegions = 2;
  const auto& blocks = text.Blocks();
  if (blocks.size() < kRegions && pFindings->GetErrorCount() == 0) {
    pFindings->Add({strFile, 0, 0, eZuSeverityError, "",
                    "the reseau has no size or no place of its comment",
                    "\"comment\" { x1 y1 x2 y2 } { x1 y1 x2 y2 } { id x y code } ..."});
  }
  std::map<unsigned, unsigned> lines;
  for (std::size_t u = kRegions; u < blocks.size(); ++u) {
    const auto [place, bFirst] = lines.emplace(blocks[u].m_uId, blocks[u].m_uLine);
    if (bFirst) continue;
    Warn(blocks[u], strFile,
         "cross " + std::to_string(blocks[u].m_uId) + " stands twice, first in line " +
             std::to_string(place->second),
         "one for each id", pFindings);
  }
}

void CheckSensors(const KeywordText& text, const std::string& strFile, ZuFindingList* pFindings) {
  ZuReseaufileList formats;
  formats.ReadReseauFile(strFile.c_str());
  std::map<std::pair<std::string, unsigned>, unsigned> lines;
  auto block = text.Blocks().begin();
  for (const ZuReseauFile* p = formats.First(); p != nullptr && block != text.Blocks().end();
       p = p->Next(), ++block) {
    const auto [place, bFirst] =
        lines.emplace(std::pair(p->GetName().chars(), p->GetSubId()), block->m_uLine);
    if (!bFirst) {
      Warn(*block, strFile,
           std::string(p->GetName().chars()) + ' ' + std::to_string(p->GetSubId()) +
               " stands twice, first in line " + std::to_string(place->second),
           "one block for each type and sub id", pFindings);
    }
    const double dPixel = p->GetCCDPixelSize();
    if (dPixel < kSmallestPixel || dPixel > kLargestPixel) {
      Warn(*block, strFile, "the sensor does not fit its number of pixels",
           "pixels, then the sensor in mm", pFindings);
    }
  }
}

// The reseau and digital camera files of a folder, and what is wrong in them.
class ReseauFolder {
 public:
  explicit ReseauFolder(const std::string& strFolder) {
    std::error_code error;
    int iFiles = 0;
    std::set<std::string> paths;
    for (std::filesystem::directory_iterator entry(strFolder, error), end;
         !error && entry != end && iFiles < kMostFiles; entry.increment(error), ++iFiles) {
      std::error_code none;
      if (entry->is_regular_file(none) && entry->file_size(none) <= kLargestFile) {
        paths.insert(entry->path().string());
      }
    }
    for (const std::string& strPath : paths) Take(strPath);
  }

  bool IsEmpty() const { return !m_bFile; }
  const ZuFindingList& Findings() const { return m_findings; }

  // Required: a sub id of 0 in the photo means any.
  bool Has(const ZuReseauDataDesc& wanted) const {
    for (const ZuReseauFile* p = m_formats.First(); p != nullptr; p = p->Next()) {
      if (ZuReseauDataDesc(p) == wanted) return true;
    }
    return false;
  }

  // "a", "b" or "c"
  std::string Names() const {
    std::set<std::string> names;
    for (const ZuReseauFile* p = m_formats.First(); p != nullptr; p = p->Next()) {
      const std::string strSub =
          p->GetSubId() > 0 ? " with RESEAUSUBID " + std::to_string(p->GetSubId()) : "";
      names.insert('"' + std::string(p->GetName().chars()) + '"' + strSub);
    }
    std::string strNames;
    std::size_t uTold = 0;
    for (const std::string& strName : names) {
      if (uTold++ == kNamesTold) break;
      strNames += (strNames.empty() ? "" : " or ") + strName;
    }
    return strNames;
  }

 private:
  void Take(const std::string& strPath) {
    const eZuvoFile eKind = ZuDetectZuvoFiles(strPath.c_str()).GetType();
    if (eKind != eZuvoFileReseau && eKind != eZuvoFileDigitalCamera) return;
    // Other files begin with a text in a block, too, such as JSON.
    if (m_formats.ReadReseauFile(strPath.c_str()) == 0) return;
    m_bFile = true;
    std::string strText;
    std::ifstream stream(strPath, std::ios::in | std::ios::binary);
    if (ReadWhole(stream, &strText)) {
      CheckReseau(strText, strPath, eKind == eZuvoFileDigitalCamera, &m_findings);
    }
  }

  bool m_bFile = false;
  ZuReseaufileList m_formats;
  ZuFindingList m_findings;
};

}  // namespace

void CheckReseau(std::string_view text, const std::string& strFile, bool bDigital,
                 ZuFindingList* pFindings) {
  const KeywordText keywords(text, strFile, bDigital ? DigitalCameraRules() : ReseauRules(), false);
  ZuFindingList found = keywords.Findings();
  if (bDigital) {
    CheckSensors(keywords, strFile, &found);
  } else {
    CheckCrosses(keywords, strFile, &found);
  }
  for (const ZuFinding& finding : found) pFindings->Add(finding);
}

void CheckReseauNames(const ZuProject& project, const std::string& strFile,
                      const std::string& strFolder, ZuFindingList* pFindings) {
  std::map<const ZuPhoto*, ZuKeywordPlace> named;
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    const ZuKeywordBlock* const pBlock = project.FindPhotoBlock(p->GetId());
    if (pBlock == nullptr || !pBlock->Has("RESEAUFILE")) continue;
    named[p] = pBlock->PlaceOf("RESEAUFILE");
  }
  if (named.empty()) return;
  const ReseauFolder folder(strFolder);
  if (folder.IsEmpty()) return;
  for (const auto& [pPhoto, place] : named) {
    const ZuReseauDataDesc& key = pPhoto->GetReseauData();
    if (folder.Has(key)) continue;
    const std::string strSub = key.GetId() > 0 ? ' ' + std::to_string(key.GetId()) : "";
    pFindings->Add({strFile, place.m_uLine, place.m_uColumn, eZuSeverityWarning, "RESEAUFILE",
                    std::string("no reseau \"") + key.GetName().chars() + '"' + strSub +
                        " in the reseau files beside the project",
                    folder.Names()});
  }
  for (const ZuFinding& finding : folder.Findings()) pFindings->Add(finding);
}

}  // namespace zu::internal
