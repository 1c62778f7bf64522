// Reads the photos of a project file and what was measured on them, as an application would.
#pragma once

#include <map>
#include <string>

#include "zu/foundation/reader.h"
#include "zu/photo/photo_list.h"

class ProjectFile : public LinkHdl {
 public:
  explicit ProjectFile(const std::string& strPath) {
    ZuReader reader(strPath.c_str());
    ZuReaderObject photo("PHOTO", Link(&m_Photos, &ZuPhotoList::AddPhoto));
    ZuReaderObject measure("MEASURE", Link(this, &ProjectFile::ReadMeasure));
    reader.RegisterObject(photo);
    reader.RegisterObject(measure);
    reader.SetParserErrorHdl(Link(this, &ProjectFile::CountFault));
    reader.DoProcess(false);
  }

  ZuPhotoList& Photos() { return m_Photos; }
  // Pixels by the photo's id: id, x, y.
  ZuPointList& Pixels(unsigned int uPhoto) { return m_Pixels[uPhoto]; }
  int Faults() const { return m_iFaults; }

 private:
  int ReadMeasure(ZuReaderObject* pObject) {
    unsigned int uPhoto = 0;
    m_Read.Destroy();
    ZuReaderObject photo("PHOTOID", &uPhoto);
    ZuReaderObject points("POINTS", Link(this, &ProjectFile::ReadPoints));
    pObject->RegisterObject(photo);
    pObject->RegisterObject(points);
    pObject->DoProcess();
    m_Read.MoveTo(&m_Pixels[uPhoto]);
    return 1;
  }
  int ReadPoints(ZuReaderObject* pObject) {
    constexpr eZuPointRWMask kImageRow[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWEnd};
    m_Read.SetMask(kImageRow);
    ZuReaderObject rows(Link(&m_Read, &ZuPointList::Read));
    pObject->RegisterObject(rows);
    return pObject->DoProcess();
  }
  long CountFault(ZuReader*) {
    ++m_iFaults;
    return 1;
  }

  ZuPhotoList m_Photos;
  std::map<unsigned int, ZuPointList> m_Pixels;
  ZuPointList m_Read;
  int m_iFaults = 0;
};
