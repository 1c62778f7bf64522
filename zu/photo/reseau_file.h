// A reseau: the nominal frame of an image format in image coordinates (Bikos, mm), with the size of
// the photo and, for a digital camera, the pixel count of its sensor.
//
// Reseau file: one format a file,
//     "comment" { x1 y1 x2 y2 } { x1 y1 x2 y2 } { id x y code } { id x y code } ...
// (the photo's size, place and size of the comment, the crosses). Digital camera file: one format a
// block, from which four corner crosses are derived,
//     { "type" sub-id "comment" pixels-x pixels-y sensor-x sensor-y }
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/list.h"
#include "zu/foundation/read_faults.h"
#include "zu/foundation/string.h"
#include "zu/points/point_list.h"
#include "zu/rectify/region.h"

class ZuPhoto;
class ZuReaderObject;
class ZuReseauDataDesc;

// The control code of a cross says its kind: 0 small cross, 1 big cross, 2 a corner of the picture.
// Bit value 1 of its flag word marks a cross selected by the user.
class ZU_API ZuReseauFile : public ZuListnode {
 public:
  ZuReseauFile();
  ZuReseauFile(const ZuReseauFile& other);
  explicit ZuReseauFile(const String& path);
  // A format of the photo's own: its file name as comment, its Biko region, its pixel count.
  explicit ZuReseauFile(const ZuPhoto* pPhoto);
  ~ZuReseauFile() override;
  // Takes the format; faults of its reading stay with the source. Throws std::bad_alloc where there
  // is no memory for all crosses.
  ZuReseauFile& operator=(const ZuReseauFile& other);
  ZuReseauFile* Next() const { return static_cast<ZuReseauFile*>(m_pNext); }
  ZuReseauFile* Previous() const { return static_cast<ZuReseauFile*>(m_pPrev); }

  // The name becomes the path's file name. Always 1; IsValid tells whether a format was read, and
  // the operations below what was wrong with the file.
  int ReadFile(const String& path);
  // Faults met by ReadFile, memory that ended among them, and the line and text of the fault i; 0
  // and "ParserStatusOK" where there is none.
  int GetReadErrorCount() const { return m_ReadFaults.GetCount(); }
  unsigned int GetReadErrorLine(int i = 0) const { return m_ReadFaults.GetLine(i); }
  const char* GetReadErrorText(int i = 0) const { return m_ReadFaults.GetText(i); }
  const ZuReadFaults& GetReadFaults() const { return m_ReadFaults; }
  // Handler of the reseau form, entered with the comment in hand. What follows the values of a
  // region or a cross in its block is dropped, and a cross with too few values; another misfit
  // among the crosses leaves by the parser's exception. Crosses before stay. Required: the format
  // is valid once both regions are read, also without a cross.
  int Read(ZuReaderObject* pObject);
  // Handler of one block of the digital form, entered with '{' or with the name in hand.
  int ReadDigitalCameraFormat(ZuReaderObject* pObject);

  // Sensor of w x h pixels and ccdX x ccdY mm: photo region with a margin of 5 percent, four corner
  // crosses 11, 12 (upper), 21, 22 (lower) appended.
  void CreateDigitalFormat(int w, int h, double ccdX, double ccdY);
  // From the pixel and the Biko region of a photo; the pixel count is the plain difference.
  void CreateDigitalFormat(const ZuRegion& pixels, const ZuRegion& bikos);
  // A placeholder to show where no format is known; nothing on a valid format.
  // Required: the format stays invalid, so that a later query still knows that none was found.
  void GenerateDummyData();

  // Extents of the crosses [mm, mm^2]. Required: -20000 for width and height without crosses.
  double GetReseauWidth() const;
  double GetReseauHeight() const;
  double GetReseauArea() const;
  // Mean of both directions [mm a pixel]; 1e-06 while a pixel count is 0.
  double GetCCDPixelSize() const;
  // Width times height in pixels, not in millions.
  double GetCCDMPixel() const;
  // Name, " (sub id)" when not 0, " w * h Pixel".
  // Required: without pixel counts the plain name, the sub id left out.
  String GetDescName() const;

  // The crosses nearest to the photo region's corners (x1, y2) and (x2, y1). Non-zero when the
  // second was found; an id is only written when its cross was found.
  int FindCrossId(unsigned int& uFirst, unsigned int& uSecond) const;
  ZuPoint* FindNearest(const ZuPoint& point, double* pdDistance) const;
  // Selects the crosses of these ids alone, returns how many were found. Null or 0: 0, no change.
  int SelectCross(unsigned int* puIds, int n);
  // Ids of the selected crosses in list order, at most iMax; their number.
  int FindUserSelectedCrosses(unsigned int* puIds, int iMax) const;

  // Required: the two region blocks are written empty.
  std::ostream& Write(std::ostream& stream) const;
  // The reseau form with its regions, as ReadFile takes it to the last bit. Name, sub id and pixel
  // counts are in no such file.
  std::ostream& Export(std::ostream& stream) const;
  std::ostream& WriteHeaderComment(std::ostream& stream) const;
  // One line of the digital form, nothing unless the format has exactly four crosses.
  std::ostream& WriteDigitalCameraFormat(std::ostream& stream) const;
  // The same line as ReadDigitalCameraFormat takes it to the last bit; nothing unless the format
  // has the four crosses that CreateDigitalFormat makes, and no others.
  std::ostream& ExportDigitalCameraFormat(std::ostream& stream) const;

  unsigned int GetSubId() const { return m_uSubId; }
  void SetSubId(unsigned int uSubId) { m_uSubId = uSubId; }
  const String& GetComment() const { return m_sComment; }
  void SetComment(const String& comment) { m_sComment = comment; }
  const ZuRegion& GetPhotoRegion() const { return m_PhotoRegion; }
  void SetPhotoRegion(const ZuRegion& region) { m_PhotoRegion = region; }
  const ZuRegion& GetBoxRegion() const { return m_BoxRegion; }
  void SetBoxRegion(const ZuRegion& region) { m_BoxRegion = region; }
  ZuPointList& GetCrossList() { return m_CrossList; }
  const ZuPointList& GetCrossList() const { return m_CrossList; }
  bool IsValid() const { return m_bValid; }
  int GetExifPixelWidth() const { return m_iExifPixelWidth; }
  int GetExifPixelHeight() const { return m_iExifPixelHeight; }

 protected:
  void AddCross(unsigned int uId, double x, double y, short int sCode);
  void ReadCross(ZuReaderObject* pObject);

  unsigned int m_uSubId = 0;
  String m_sComment;
  ZuRegion m_PhotoRegion;
  ZuRegion m_BoxRegion;
  ZuPointList m_CrossList;
  bool m_bValid = false;
  int m_iExifPixelWidth = 0;
  int m_iExifPixelHeight = 0;
  ZuReadFaults m_ReadFaults;
};

ZU_DECLARE_LIST(ZuReseauFile);

// The loaded formats. Owns its entries.
class ZU_API ZuReseaufileList : public TZuListHeader<ZuReseauFile>, public LinkHdl {
 public:
  using TZuListHeader<ZuReseauFile>::operator=;
  ZuReseaufileList() = default;
  ZuReseaufileList(const ZuReseaufileList& other);
  ZuReseaufileList& operator=(const ZuReseaufileList& other);

  // Takes the formats of a reseau file, in place of one of the same name, or of a digital camera
  // file, beside those it has; other files give nothing. Number of formats taken.
  int ReadReseauFile(const String& path);
  // Faults met by the last ReadReseauFile, as ZuReseauFile tells them; a file that cannot be read
  // is one, a file of another kind is none.
  int GetReadErrorCount() const { return m_ReadFaults.GetCount(); }
  unsigned int GetReadErrorLine(int i = 0) const { return m_ReadFaults.GetLine(i); }
  const char* GetReadErrorText(int i = 0) const { return m_ReadFaults.GetText(i); }
  // First format that matches name and sub id, or null; the second form for a photo's key, null
  // for a null photo.
  ZuReseauFile* FindReseauFile(const ZuReseauDataDesc& desc) const;
  ZuReseauFile* FindReseauFile(const ZuPhoto* pPhoto) const;
  // False when the path does not open, or without memory.
  bool WriteDigitalCameraFormat(const String& path) const;
  // A digital camera file of the same formats that reads back to the last bit.
  std::ostream& ExportDigitalCameraFormat(std::ostream& stream) const;

 private:
  int ReadReseau(const String& path);
  void ReadDigitalBlocks(const String& path);
  int ReadDigitalBlock(ZuReaderObject* pObject);

  ZuReadFaults m_ReadFaults;
};
