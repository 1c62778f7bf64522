// A project file: photos with what was measured on them, orthophotos, cameras, planes, local
// systems. Each record, and the project as a whole, reads back as it was written.
#include <list>

#include "fuzz/photo_use.h"
#include "fuzz/points_use.h"
#include "fuzz/there_and_back.h"
#include "tests/support/project_fields.h"
#include "zu/photo/camera_list.h"
#include "zu/photo/photo_list.h"
#include "zu/rectify/plane_list.h"
#include "zu/transform/lokal_system.h"

namespace {

class Project : public LinkHdl {
 public:
  Project(const char* szPath, bool bGoOn) {
    ZuReaderObject keywords[] = {
        {"PHOTO", Link(&m_Photos, &ZuPhotoList::AddPhoto)},
        {"ORTHOPHOTO", Link(&m_OrthoPhotos, &ZuOrthoPhotoList::AddPhoto)},
        {"CAMERA", Link(&m_Cameras, &ZuCameraList::ReadFormatFull)},
        {"PLANE", Link(&m_Planes, &ZuPlaneList::AddPlane)},
        {"LOKAL", Link(this, &Project::ReadSystem)},
        {"MEASURE", Link(this, &Project::ReadMeasure)},
    };
    ReadKeywords(szPath, keywords, bGoOn);
  }

  void Use() {
    const ZuPlane plane = m_Planes.IsEmpty() ? ZuPlane() : *m_Planes.First();
    int iLeft = 3;  // of many like ones
    for (ZuPhoto* p = m_Photos.First(); p != nullptr && iLeft-- > 0; p = p->Next()) {
      UsePhoto(*p, plane, iLeft == 2);
    }
    iLeft = 3;
    for (ZuOrthoPhoto* p = m_OrthoPhotos.First(); p != nullptr && iLeft-- > 0; p = p->Next()) {
      UseOrthoPhoto(*p);
    }
    iLeft = 3;
    for (const ZuCamera* p = m_Cameras.First(); p != nullptr && iLeft-- > 0; p = p->Next()) {
      UseCamera(*p, false);
    }
    for (const ZuPlane* p = m_Planes.First(); p != nullptr; p = p->Next()) UsePlane(*p);
    UsePoints(m_Measured);
    m_Photos.Sort();
    m_OrthoPhotos.Sort();
    if (ZuPhoto* pPhoto = m_Photos.First()) {
      m_Measured.CopyTo(&pPhoto->GetMeasureList());
      pPhoto->ConvertMeasure(eDigiToAdjusted);
      pPhoto->SetPhotoIdToMeasureList();
    }
  }

 private:
  int ReadMeasure(ZuReaderObject* pObject) {
    ZuReaderObject photo("PHOTOID", &m_uPhoto);
    ZuReaderObject points("POINTS", Link(this, &Project::ReadPoints));
    pObject->RegisterObject(photo);
    pObject->RegisterObject(points);
    return pObject->DoProcess();
  }

  int ReadPoints(ZuReaderObject* pObject) {
    static constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY,
                                                  eZuPointRWEnd};
    m_Measured.SetMask(Columns(kColumns));
    ZuReaderObject rows(Link(&m_Measured, &ZuPointList::Read));
    pObject->RegisterObject(rows);
    return pObject->DoProcess();
  }

  int ReadSystem(ZuReaderObject* pObject) { return m_Systems.emplace_back().Read(pObject); }

  ZuPhotoList m_Photos;
  ZuOrthoPhotoList m_OrthoPhotos;
  ZuCameraList m_Cameras;
  ZuPlaneList m_Planes;
  std::list<ZuLokalSystem> m_Systems;
  ZuPointList m_Measured;
  unsigned int m_uPhoto = 0;
};

// What stands in a file that ends within a block, or that has no photo, need not come back.
void CheckProject(const Input& input) {
  std::istringstream stream{std::string(input.Text())};
  ZuProject project, again;
  const bool bGood = project.Read(stream);
  const std::string strText = Exported(project);
  if (!bGood || !HasLinesToRead(strText)) return;
  std::istringstream written(strText);
  again.Read(written);
  Require(FieldsOfProject(again) == FieldsOfProject(project));
  Require(Exported(again) == strText);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  Project project(input.Path(), (input.Option() & 4U) != 0);
  project.Use();
  CheckProject(input);
  return 0;
}
