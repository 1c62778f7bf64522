// A project as the text of a project file.
#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "zu/foundation/internal/item_writer.h"
#include "zu/project/internal/merge_kept.h"
#include "zu/project/project.h"

namespace {

constexpr eZuPointRWMask kMeasured[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWEnd};
constexpr eZuPointRWMask kObject[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                      eZuPointRWEnd};

constexpr eZuPointRWMask kDeviations[] = {eZuPointRWId, eZuPointRWDX, eZuPointRWDY, eZuPointRWEnd};

// The nodes of the lists of a project: what an item of the file refers to may be gone.
template <class... Lists>
std::set<const ZuListnode*> NodesOf(const Lists&... lists) {
  std::set<const ZuListnode*> nodes;
  const auto add = [&nodes](const auto& list) {
    for (const auto* p = list.First(); p != nullptr; p = p->Next()) nodes.insert(p);
  };
  (add(lists), ...);
  return nodes;
}

// Writes the blocks of a project one behind the other, each record once.
class ProjectWriter {
 public:
  ProjectWriter(const ZuProject& project, std::ostream& stream)
      : m_project(project),
        m_stream(stream),
        m_left(NodesOf(project.PhotoList(), project.OrthoPhotoList(), project.CameraList(),
                       project.PlaneList())) {
    for (const ZuProjectItem& item : project.GetItems()) {
      if (item.m_pBlock == nullptr || item.m_pBlock->m_strKeyword != "PHOTO") continue;
      const bool bThere = m_left.count(item.m_pRecord) != 0;
      m_photos.emplace(item.m_pBlock->m_uId, bThere ? As<ZuPhoto>(item)->GetId() : 0);
    }
    for (std::size_t i = 0; i < project.LocalSystems().size(); ++i) m_unlocal.insert(i);
    m_bObjectPoints = !project.ObjectPoints().IsEmpty();
  }

  // What stood in the file, in its order; then what has come since.
  void Write() {
    for (const ZuProjectItem& item : m_project.GetItems()) {
      if (!IsLast(item)) WriteItem(item);
    }
    WriteNew("CAMERA", m_project.CameraList());
    WriteNew("PLANE", m_project.PlaneList());
    while (!m_unlocal.empty()) WriteLocalSystem(*m_unlocal.begin(), nullptr);
    WriteNew("ORTHOPHOTO", m_project.OrthoPhotoList());
    for (const ZuPhoto* p = m_project.PhotoList().First(); p != nullptr; p = p->Next()) {
      if (m_left.count(p) == 0) continue;
      WriteRecord("PHOTO", p, nullptr);
      WriteMeasure(p->GetId(), nullptr);
    }
    for (const auto& [uPhoto, rows] : m_project.GetMeasurements()) WriteMeasure(uPhoto, nullptr);
    WriteObjectPoints(nullptr);
    for (const auto& [key, covariance] : m_project.Covariances().All())
      WriteCovariance(key, nullptr);
    for (const ZuProjectItem& item : m_project.GetItems()) {
      if (IsLast(item)) WriteItem(item);
    }
    for (const ZuFileComment& comment : m_project.GetLastComments()) {
      m_stream << comment.m_strText << '\n';
    }
  }

 private:
  static bool IsLast(const ZuProjectItem& item) {
    return item.m_pUnknown != nullptr && !zu::internal::HasValue(*item.m_pUnknown);
  }

  void WriteItem(const ZuProjectItem& item) {
    if (item.m_pUnknown != nullptr) return zu::internal::WriteUnknown(*item.m_pUnknown, m_stream);
    const ZuKeywordBlock* const pBlock = item.m_pBlock;
    const std::string& strKeyword = pBlock->m_strKeyword;
    if (strKeyword == "MEASURE") return WriteMeasure(*pBlock);
    if (strKeyword == "POINTS") return WriteObjectPoints(pBlock);
    if (strKeyword == "COVARIANCE") return WriteCovariance(item);
    if (strKeyword == "LOKAL") {
      if (item.m_iLocalSystem < 0) return;
      return WriteLocalSystem(static_cast<std::size_t>(item.m_iLocalSystem), pBlock);
    }
    if (m_left.count(item.m_pRecord) == 0) return;
    if (strKeyword == "PHOTO") WriteRecord("PHOTO", As<ZuPhoto>(item), pBlock);
    if (strKeyword == "ORTHOPHOTO") WriteRecord("ORTHOPHOTO", As<ZuOrthoPhoto>(item), pBlock);
    if (strKeyword == "CAMERA") WriteRecord("CAMERA", As<ZuCamera>(item), pBlock);
    if (strKeyword == "PLANE") WriteRecord("PLANE", As<ZuPlane>(item), pBlock);
  }

  template <class Record>
  static const Record* As(const ZuProjectItem& item) {
    return static_cast<const Record*>(item.m_pRecord);
  }

  static void ExportTo(std::ostream& os, const ZuCamera& camera) { camera.ExportFullData(os); }
  template <class Record>
  static void ExportTo(std::ostream& os, const Record& record) {
    record.Export(os);
  }

  template <class Record>
  void WriteRecord(const char* szKeyword, const Record* pRecord, const ZuKeywordBlock* pBlock) {
    m_left.erase(pRecord);
    WriteBlock(szKeyword, pBlock, [pRecord](std::ostream& os) { ExportTo(os, *pRecord); });
  }

  template <class List>
  void WriteNew(const char* szKeyword, const List& list) {
    for (const auto* p = list.First(); p != nullptr; p = p->Next()) {
      if (m_left.count(p) != 0) WriteRecord(szKeyword, p, nullptr);
    }
  }

  void WriteLocalSystem(std::size_t uIndex, const ZuKeywordBlock* pBlock) {
    if (m_unlocal.erase(uIndex) == 0) return;
    const ZuLokalSystem& system = m_project.LocalSystems()[uIndex];
    WriteBlock("LOKAL", pBlock, [&system](std::ostream& os) { system.Export(os); });
  }

  // At its place in the file, under the id that its photo has by now.
  void WriteMeasure(const ZuKeywordBlock& block) {
    const auto found = m_photos.find(block.m_uId);
    const bool bGone = found != m_photos.end() && found->second == 0;
    if (!bGone) WriteMeasure(found != m_photos.end() ? found->second : block.m_uId, &block);
  }

  // All rows of a photo stand in its first block.
  void WriteMeasure(unsigned uPhoto, const ZuKeywordBlock* pBlock) {
    static const ZuPointList none;
    const ZuPointList* const pRows = m_project.FindMeasurements(uPhoto);
    const ZuPointList& rows = pRows != nullptr ? *pRows : none;
    if (rows.IsEmpty() && !zu::internal::HasKept(pBlock)) return;
    if (!m_measured.insert(uPhoto).second) return WriteComments(pBlock);
    const ZuPointList told = m_project.ToldDeviations(uPhoto);
    WriteBlock("MEASURE", pBlock, [&rows, &told, uPhoto](std::ostream& os) {
      zu::internal::ItemWriter items(os);
      items.Item("PHOTOID", uPhoto);
      items.Lines("POINTS", [&rows](std::ostream& stream) { rows.Export(stream, kMeasured); });
      if (told.IsEmpty()) return;
      items.Lines("SIGMA", [&told](std::ostream& stream) { told.Export(stream, kDeviations); });
    });
  }

  void WriteObjectPoints(const ZuKeywordBlock* pBlock) {
    if (!m_bObjectPoints) return WriteComments(pBlock);
    m_bObjectPoints = false;
    const ZuPointList& points = m_project.ObjectPoints();
    WriteBlock("POINTS", pBlock, [&points](std::ostream& os) { points.Export(os, kObject); });
  }

  // Of a block whose rows are written with those of another.
  void WriteComments(const ZuKeywordBlock* pBlock) {
    if (pBlock != nullptr) zu::internal::WriteComments(*pBlock, m_stream);
  }

  // At its place in the file, unless one of its photos is gone.
  void WriteCovariance(const ZuProjectItem& item) {
    if (!item.m_covariance) return;
    ZuCovarianceList::Key key = *item.m_covariance;
    for (unsigned* puPhoto : {&key[0], &key[1]}) {
      const auto found = m_photos.find(*puPhoto);
      if (found == m_photos.end()) continue;
      if (found->second == 0) {
        m_covariances.insert(key);
        return;
      }
      *puPhoto = found->second;
    }
    WriteCovariance(key, item.m_pBlock);
  }

  void WriteCovariance(const ZuCovarianceList::Key& key, const ZuKeywordBlock* pBlock) {
    const ZuCovariance* const pCovariance = m_project.Covariances().Find(key);
    if (pCovariance == nullptr || !m_covariances.insert(key).second) return;
    WriteBlock("COVARIANCE", pBlock, [pCovariance](std::ostream& os) { pCovariance->Export(os); });
  }

  template <class Content>
  void WriteBlock(const char* szKeyword, const ZuKeywordBlock* pBlock, Content&& content) {
    if (!zu::internal::HasKept(pBlock)) {
      zu::internal::ItemWriter(m_stream).Lines(szKeyword, content);
    } else {
      std::ostringstream text;
      zu::internal::ItemWriter(text).Lines(szKeyword, content);
      zu::internal::MergeKept(text.str(), *pBlock, m_stream);
    }
    m_stream << '\n';
  }

  const ZuProject& m_project;
  std::ostream& m_stream;
  std::set<const ZuListnode*> m_left;     // records that are still to be written
  std::map<unsigned, unsigned> m_photos;  // ids in the file to those of now; 0: gone
  std::set<std::size_t> m_unlocal;
  std::set<unsigned> m_measured;                  // photos whose measurements are written
  std::set<ZuCovarianceList::Key> m_covariances;  // that are written
  bool m_bObjectPoints = false;
};

}  // namespace

std::ostream& ZuProject::Export(std::ostream& stream) const {
  const ZuWriterStart start;
  ProjectWriter(*this, stream).Write();
  return stream;
}

bool ZuProject::Export(const char* szPath) const {
  std::ofstream stream(szPath, std::ios::out | std::ios::binary);
  if (!stream) return false;
  Export(stream);
  stream.close();
  return stream.good();
}
