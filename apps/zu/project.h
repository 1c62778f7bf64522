// A project file: photos with what was measured on them, orthophotos, cameras, planes and local
// systems. It prints nothing and throws nothing of its own: what was assumed, dropped or at fault
// becomes a finding.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "keyword_text.h"
#include "zu/foundation/link.h"
#include "zu/photo/camera_list.h"
#include "zu/photo/ortho_photo.h"
#include "zu/photo/photo_list.h"
#include "zu/rectify/plane_list.h"
#include "zu/transform/lokal_system.h"

class ZuReader;
class ZuReaderObject;

namespace cli {

class Project : public LinkHdl {
 public:
  // What a computation needs of a photo.
  enum eNeed : unsigned { eNeedPixels = 1, eNeedCamera = 2, eNeedOrientation = 4 };
  using Row = KeywordBlock::Row;

  // Reads everything that can be read. Where the file is cut inside a block, that is an error; with
  // bPartial a warning, and a record that is not whole is left out.
  Project(const std::string& strPath, bool bPartial);
  Project(const Project&) = delete;
  Project& operator=(const Project&) = delete;

  // By line. The first KeywordText::kKept of each kind; the counts are of all.
  const std::vector<Finding>& Findings() const { return m_findings; }
  size_t Errors() const { return m_text.Errors(); }
  size_t Warnings() const { return m_text.Warnings(); }
  // Another kind of file: none of a project's blocks is in it, and nothing was read.
  bool IsForeign() const { return m_text.IsForeign(); }

  ZuPhotoList& Photos() { return m_Photos; }
  ZuOrthoPhotoList& OrthoPhotos() { return m_OrthoPhotos; }
  ZuCameraList& Cameras() { return m_Cameras; }
  ZuPlaneList& Planes() { return m_Planes; }
  const std::vector<ZuLokalSystem>& LocalSystems() const { return m_LocalSystems; }

  // Measurements of a photo in pixels, in file order: id, x, y. Then the rows whose id stands more
  // than once in it.
  ZuPointList& Pixels(unsigned uPhoto) { return m_Pixels[uPhoto]; }
  const std::vector<Row>& Doubled(unsigned uPhoto) const;

  // What the photo, or its rectification, lacks for a computation (bits of eNeed), and what would
  // be right; empty where nothing is lacking.
  std::string Lacks(const ZuPhoto& photo, unsigned uNeeds) const;
  std::string LacksRectification(unsigned uPhoto, unsigned uRectification) const;

 private:
  void ReadRecords();
  int ReadMeasure(ZuReaderObject* pObject);
  int ReadPoints(ZuReaderObject* pObject);
  int ReadLocalSystem(ZuReaderObject* pObject);
  long OnUnknown(ZuReader* pReader);
  long OnFault(ZuReader* pReader);
  void AddFault(unsigned uLine, int iStatus);
  void CheckBlocks();
  void CheckMeasure(const KeywordBlock& block);
  void DropCutRecord();
  bool HasFinding(unsigned uLine) const;
  void Error(const KeywordBlock& block, const std::string& strText, const std::string& strRight);

  std::string m_strPath;
  KeywordText m_text;
  std::vector<Finding> m_findings;
  std::map<unsigned, const KeywordBlock*> m_photoBlocks, m_measureBlocks;  // by the photo's id

  ZuPhotoList m_Photos;
  ZuOrthoPhotoList m_OrthoPhotos;
  ZuCameraList m_Cameras;
  ZuPlaneList m_Planes;
  std::vector<ZuLokalSystem> m_LocalSystems;
  std::map<unsigned, ZuPointList> m_Pixels;
  ZuPointList m_Rows;
  std::map<unsigned, int> m_Faults;  // of the reader: line to status
};

}  // namespace cli
