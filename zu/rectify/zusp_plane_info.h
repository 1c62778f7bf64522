// A rectification plane of an orthophoto: carries pixels of the rectified image to object space.
#pragma once

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/foundation/list.h"
#include "zu/points/flag.h"
#include "zu/rectify/zusp_trafo.h"

class ZU_API ZuZuspPlaneInfo : public ZuListnode, public ZuFlag {
 public:
  ZuZuspPlaneInfo() = default;
  explicit ZuZuspPlaneInfo(ZuReaderObject* pObject) { Read(pObject); }

  // Pixel to object coordinates in place, by the maps of the rectification. True always.
  bool Transform(ZuPoint* pPoint) const { return m_Trafo.Transform(pPoint, pPoint); }
  // The pixel lies in the plane's region; a plane without one holds every pixel.
  bool Holds(const ZuPoint& pixel) const;

  ZuZuspTrafo& GetTrafo() { return m_Trafo; }
  const ZuZuspTrafo& GetTrafo() const { return m_Trafo; }

  // The keyword form of a rectification; id and name are its own. Returns 1.
  int Read(ZuReaderObject* pObject);
  // The keywords of the rectification, see ZuZuspTrafo::Export.
  std::ostream& Export(std::ostream& stream) const { return m_Trafo.Export(stream); }

  ZuZuspPlaneInfo* Next() const { return static_cast<ZuZuspPlaneInfo*>(m_pNext); }
  ZuZuspPlaneInfo* Previous() const { return static_cast<ZuZuspPlaneInfo*>(m_pPrev); }

 protected:
  ZuZuspTrafo m_Trafo;
};

ZU_DECLARE_LIST(ZuZuspPlaneInfo);

class ZU_API ZuZuspPlaneInfoList : public TZuListHeader<ZuZuspPlaneInfo>, public LinkHdl {
 public:
  using TZuListHeader<ZuZuspPlaneInfo>::operator=;
  // Handler of a keyword: appends the plane read.
  ZuZuspPlaneInfo* AddPlane(ZuReaderObject* pObject);
  // Pixel to object coordinates by the first plane that holds the pixel; false, point untouched,
  // where none does.
  bool Transform(ZuPoint* pPoint) const;
};
