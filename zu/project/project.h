// A project file: photos with what was measured on them, orthophotos, cameras, planes, local
// systems and object points.
//
//   ZuProject project;
//   if (!project.Read("house.prj")) ...
//   for (const ZuFinding& finding : project.GetFindings()) show(GetZuFindingLine(finding));
//   for (ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) ...
//
// It prints nothing and throws nothing of its own but std::bad_alloc: what was assumed, dropped or
// at fault becomes a finding. What stands in a file and no record holds, such as a keyword of a
// newer writer, is kept as text with its place (GetItems, ZuKeywordBlock::m_unknown).
//
// One thread at a time.
#pragma once

#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/foundation/parser.h"
#include "zu/photo/camera_list.h"
#include "zu/photo/ortho_photo.h"
#include "zu/photo/photo_list.h"
#include "zu/points/point_list.h"
#include "zu/project/covariance.h"
#include "zu/project/finding_list.h"
#include "zu/project/keyword_block.h"
#include "zu/rectify/plane_list.h"
#include "zu/transform/lokal_system.h"

class ZuReader;
class ZuReaderObject;

namespace zu::internal {
class KeywordText;
}

// How much of a file is wanted.
enum eZuProjectPart : int {
  eZuProjectWhole,   // a file that ends inside a block is at fault
  eZuProjectPartial  // that is a warning; a record that is not whole is left out
};

// What a computation needs of a photo, as bits.
enum eZuPhotoNeed : unsigned {
  eZuNeedPixels = 1,  // the way from pixels to mm
  eZuNeedCamera = 2,
  eZuNeedOrientation = 4
};

// What stands at the top level of the file, in its order.
struct ZuProjectItem {
  // Of a known keyword, PHOTO for example: its place and what stands inside; null for an unknown
  // one.
  const ZuKeywordBlock* m_pBlock = nullptr;
  const ZuUnknownKeyword* m_pUnknown = nullptr;  // null for a known one
  // The record read from the block, in its list: of PHOTO, ORTHOPHOTO, CAMERA and PLANE. Null where
  // none was read. An application that takes a record from its list leaves the pointer behind:
  // compare it with the nodes of the list before it is used.
  ZuListnode* m_pRecord = nullptr;
  int m_iLocalSystem = -1;  // of LOKAL: index in LocalSystems; -1: none
  // Of COVARIANCE: its key in Covariances.
  std::optional<ZuCovarianceList::Key> m_covariance;
};

class ZU_API ZuProject : public LinkHdl {
 public:
  ZuProject();
  ~ZuProject();
  ZuProject(const ZuProject&) = delete;
  ZuProject& operator=(const ZuProject&) = delete;

  // Reads everything that can be read, in place of what was there. True without errors; warnings
  // leave it true. Needs memory for the text of the file besides the records; the time grows with
  // its size.
  bool Read(const char* szPath, eZuProjectPart ePart = eZuProjectWhole);
  // From the place where the stream stands to its end. strName is the file of the findings.
  bool Read(std::istream& stream, const std::string& strName = "",
            eZuProjectPart ePart = eZuProjectWhole);
  // Nothing read, no records.
  void Clear();

  // Writes the project so that Read makes it again to the last bit: what was read in the order of
  // its file, unknown keywords and blocks as the text they were at their places, then the records
  // that have come since, and nothing of those that are gone. What is read and written again is
  // the same text. Records are written in their current form (see the Export of each), all
  // measurements of a photo in its first block. Comments stay beside what they belong to, as far as
  // it is written, or near. One line holds at most 8511 characters. The form with a path creates or
  // overwrites a file and is true when all of it was written.
  std::ostream& Export(std::ostream& stream) const;
  bool Export(const char* szPath) const;

  // By line and column; none before a file was read.
  const ZuFindingList& GetFindings() const;
  // Another kind of file: none of a project's blocks is in it, and nothing was read.
  bool IsForeign() const { return m_bForeign; }
  // The file ends inside a block.
  bool IsCut() const;

  ZuPhotoList& PhotoList() { return m_Photos; }
  const ZuPhotoList& PhotoList() const { return m_Photos; }
  ZuOrthoPhotoList& OrthoPhotoList() { return m_OrthoPhotos; }
  const ZuOrthoPhotoList& OrthoPhotoList() const { return m_OrthoPhotos; }
  ZuCameraList& CameraList() { return m_Cameras; }
  const ZuCameraList& CameraList() const { return m_Cameras; }
  ZuPlaneList& PlaneList() { return m_Planes; }
  const ZuPlaneList& PlaneList() const { return m_Planes; }
  std::vector<ZuLokalSystem>& LocalSystems() { return m_LocalSystems; }
  const std::vector<ZuLokalSystem>& LocalSystems() const { return m_LocalSystems; }

  // Object points, in file order: id, x, y, z.
  ZuPointList& ObjectPoints() { return m_ObjectPoints; }
  const ZuPointList& ObjectPoints() const { return m_ObjectPoints; }

  // Measurements of a photo in pixels, in file order: id, x, y, and their standard deviations
  // m_dDX, m_dDY, both 0 where they are not told. The first form makes an empty list where the
  // photo has none; the second gives null there.
  ZuPointList& Measurements(unsigned uPhoto) { return m_Measurements[uPhoto]; }
  const ZuPointList* FindMeasurements(unsigned uPhoto) const;
  // Those of a photo whose standard deviations are told.
  ZuPointList ToldDeviations(unsigned uPhoto) const;
  // Of all photos, by their ids; 0: those that name no photo.
  const std::map<unsigned, ZuPointList>& GetMeasurements() const { return m_Measurements; }
  // What an adjustment told of photos and cameras; it belongs to the orientations and cameras as
  // they are, and whoever changes them drops it.
  ZuCovarianceList& Covariances() { return m_Covariances; }
  const ZuCovarianceList& Covariances() const { return m_Covariances; }
  // The rows of the file whose id is measured more than once in the photo.
  const std::vector<ZuDoubledRow>& GetDoubled(unsigned uPhoto) const;

  // The file in its order; good until the next reading.
  const std::vector<ZuProjectItem>& GetItems() const { return m_aItems; }
  // Comments behind its last item.
  const std::vector<ZuFileComment>& GetLastComments() const;
  // The block of a photo, the first of its id; null where the file has none.
  const ZuKeywordBlock* FindPhotoBlock(unsigned uPhoto) const;

  // What the photo lacks for a computation (bits of eZuPhotoNeed), and what would be right: "has no
  // AORM: its rotation would be right". Empty where nothing is lacking. A photo that was added
  // since is judged by its values; one without id is not whole.
  std::string Lacks(const ZuPhoto& photo, unsigned uNeeds) const;
  // The same for a rectification of a photo.
  std::string LacksRectification(unsigned uPhoto, unsigned uRectification) const;

 private:
  bool ReadText(const std::string& strText, const std::string& strName, eZuProjectPart ePart);
  void ReadRecords(const std::string& strText);
  int ReadPhoto(ZuReaderObject* pObject);
  int ReadOrthoPhoto(ZuReaderObject* pObject);
  int ReadCamera(ZuReaderObject* pObject);
  int ReadPlane(ZuReaderObject* pObject);
  int ReadLocalSystem(ZuReaderObject* pObject);
  int ReadMeasure(ZuReaderObject* pObject);
  int ReadMeasuredRows(ZuReaderObject* pObject);
  int ReadDeviations(ZuReaderObject* pObject);
  void ApplyDeviations(const ZuProjectItem* pItem);
  int ReadCovariance(ZuReaderObject* pObject);
  int ReadObjectPoints(ZuReaderObject* pObject);
  ZuProjectItem* ItemAt(ZuReaderObject* pObject);
  struct KeptRecord {
    ZuProjectItem* pItem;  // null where the look at the text saw none
    ZuListnode* pRecord;
  };
  static int Keep(const KeptRecord& kept);
  void MakeItems();
  long OnUnknown(ZuReader* pReader);
  long OnFault(ZuReader* pReader);
  void AddFault(unsigned uLine, eZuParserStatus eStatus);
  void AddFaults();
  bool HasFinding(unsigned uLine) const;
  void Error(const ZuKeywordBlock& block, const std::string& strText, const std::string& strRight);
  void CheckBlocks();
  void CheckPhoto(const ZuKeywordBlock& block);
  void CheckMeasure(const ZuKeywordBlock& block);
  void CheckCovariance(const ZuProjectItem& item);
  void DropCutRecord();

  ZuPhotoList m_Photos;
  ZuOrthoPhotoList m_OrthoPhotos;
  ZuCameraList m_Cameras;
  ZuPlaneList m_Planes;
  std::vector<ZuLokalSystem> m_LocalSystems;
  ZuPointList m_ObjectPoints;
  std::map<unsigned, ZuPointList> m_Measurements;
  ZuCovarianceList m_Covariances;

  std::unique_ptr<zu::internal::KeywordText> m_pText;
  std::vector<ZuProjectItem> m_aItems;
  std::map<unsigned, const ZuKeywordBlock*> m_photoBlocks, m_measureBlocks;  // by the photo's id
  std::string m_strName;
  bool m_bForeign = false;
  ZuPointList m_Rows, m_Deviations;              // of the MEASURE being read
  std::map<unsigned, eZuParserStatus> m_Faults;  // of the reader: line to status
};
