// Project files on the command line: photos with what was measured on them, orthophotos, cameras,
// planes and local systems.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "context.h"
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
  // Reads everything that can be read. Unknown keywords are skipped with their value or block, and
  // told as warnings with file and line. Throws CommandError (bad input) naming file and line: a
  // file that is missing or has any fault, a file without photos, measurements of no photo.
  Project(const std::string& strPath, Context& context);

  ZuPhotoList& Photos() { return m_Photos; }
  ZuOrthoPhotoList& OrthoPhotos() { return m_OrthoPhotos; }
  ZuCameraList& Cameras() { return m_Cameras; }
  ZuPlaneList& Planes() { return m_Planes; }
  const std::vector<ZuLokalSystem>& LocalSystems() const { return m_LocalSystems; }

  // The photo of that id. Throws CommandError (bad input) that lists those there are.
  ZuPhoto& Photo(unsigned uId);
  // Measurements of a photo in pixels, all its MEASURE blocks in file order: id, x, y.
  ZuPointList& Pixels(unsigned uPhoto) { return m_Pixels[uPhoto]; }

 private:
  int ReadMeasure(ZuReaderObject* pObject);
  int ReadPoints(ZuReaderObject* pObject);
  int ReadLocalSystem(ZuReaderObject* pObject);
  long OnUnknown(ZuReader* pReader);
  long OnFault(ZuReader* pReader);
  void CheckFaults(ZuReader* pReader) const;
  void CheckMeasured() const;

  std::string m_strPath;
  Context* m_pContext;
  ZuPhotoList m_Photos;
  ZuOrthoPhotoList m_OrthoPhotos;
  ZuCameraList m_Cameras;
  ZuPlaneList m_Planes;
  std::vector<ZuLokalSystem> m_LocalSystems;
  std::map<unsigned, ZuPointList> m_Pixels;
  std::map<unsigned, unsigned> m_MeasureLines;  // first MEASURE block of a photo
  ZuPointList m_Rows;
  std::map<unsigned, int> m_Faults;  // line to status
  int m_iUnknown = 0;
};

}  // namespace cli
