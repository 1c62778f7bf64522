// The files of reseau formats.
#include <fstream>
#include <iomanip>
#include <locale>
#include <memory>
#include <ostream>

#include "zu/foundation/file_name.h"
#include "zu/foundation/internal/classic_stream.h"
#include "zu/foundation/internal/item_writer.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/reader.h"
#include "zu/foundation/writer.h"
#include "zu/photo/detect_files.h"
#include "zu/photo/internal/file_header.h"
#include "zu/photo/reseau_data_desc.h"
#include "zu/photo/reseau_file.h"
#include "zu/rectify/polygon.h"

using zu::internal::CommentLine;
using zu::internal::WriteTitle;

namespace {

// The comment of the reseau form; the kinds of crosses stand behind it.
constexpr const char* kReseauHeader[] = {
    "File Format:",
    "\"Infotext\"         ... Commenttext displayed in a graphical view",
    "{ x1, y1, x2, y2 } ... Size of Photo in Bikos [mm]",
    "{ x1, y1, x2, y2 } ... Pos. and size of Commenttext",
    "{ Id, x, y, Code } ... List of Reseaucrosses",
    "            Code  Description",
    "             0 .. Small Reseaucross",
    "             1 .. Big Reseaucross",
    "             2 .. Not really a cross, a Corner of the Picture",
    "",
};

constexpr const char* kDigitalHeader[] = {
    "File Format:",
    " { \"ExifKameraType\"  SubId \"Comment\"              Pixel_X  Pixel_Y   CCD_X    CCD_Y    }",
    "",
};

template <size_t N>
void WriteHeader(std::ostream& stream, const char* szKind, const char* const (&lines)[N]) {
  WriteTitle(stream, szKind);
  for (const char* szLine : lines) CommentLine(stream, szLine);
  stream << '\n';
}

void WriteDigitalHeader(std::ostream& stream) {
  WriteHeader(stream, " Digital Camera Reseau File", kDigitalHeader);
}

String Quoted(const String& text) {
  String quoted("\"");
  quoted += text;
  quoted += '"';
  return quoted;
}

bool IsReadable(const String& path) {
  std::ifstream stream(path.chars(), std::ios::binary);
  stream.peek();
  return stream.is_open() && !stream.bad();
}

void ReadRegion(ZuReaderObject* pObject, ZuRegion* pRegion) {
  pObject->TakeBlockOpen();
  pRegion->Read(pObject);
  pObject->TakeRestOfBlock();
}

}  // namespace

int ZuReseauFile::ReadFile(const String& path) {
  const auto read = [&] {
    m_ReadFaults.Begin();
    SetName(ZuGetFilename(path));
    ZuReader reader(path.chars());
    ZuReaderObject object(
        Link(this, static_cast<int (ZuReseauFile::*)(ZuReaderObject*)>(&ZuReseauFile::Read)));
    reader.RegisterObject(object);
    m_ReadFaults.Follow(&reader);
    return reader.DoProcess(false);
  };
  return zu::internal::OrWithoutMemory(read, 1);
}

int ZuReseauFile::Read(ZuReaderObject* pObject) {
  m_sComment = pObject->TakeString();
  ReadRegion(pObject, &m_PhotoRegion);
  ReadRegion(pObject, &m_BoxRegion);
  m_bValid = true;
  pObject->ReadRows([&] { ReadCross(pObject); });
  return 1;
}

// { 11 -3.168 2.376 2 }
void ZuReseauFile::ReadCross(ZuReaderObject* pObject) {
  ZuPoint cross;
  pObject->TakeBlockOpen();
  const bool bWhole = pObject->ReadRow([&] { cross.Read(pObject, m_CrossList.GetMask()); });
  pObject->TakeRestOfBlock();
  if (bWhole) zu::internal::Taken(m_CrossList.Add(cross));
}

int ZuReseauFile::ReadDigitalCameraFormat(ZuReaderObject* pObject) {
  if (pObject->IsBlockOpen()) pObject->TakeBlockOpen();
  SetName(pObject->TakeString());
  m_uSubId = pObject->TakeId();
  m_sComment = pObject->TakeString();
  const int w = pObject->TakeInt(), h = pObject->TakeInt();
  const double ccdX = pObject->TakeValue(), ccdY = pObject->TakeValue();
  CreateDigitalFormat(w, h, ccdX, ccdY);
  return 1;
}

std::ostream& ZuReseauFile::WriteHeaderComment(std::ostream& stream) const {
  WriteHeader(stream, " Reseau File", kReseauHeader);
  return stream;
}

std::ostream& ZuReseauFile::Write(std::ostream& stream) const {
  stream << '"' << m_sComment.chars() << '"' << Zuendl;
  stream << ZuBeginBlock;
  m_PhotoRegion.Write(stream) << ZuEndBlock << Zuendl;
  stream << ZuBeginBlock;
  m_BoxRegion.Write(stream) << ZuEndBlock << '\n';
  for (const ZuPoint* p = m_CrossList.First(); p != nullptr; p = p->Next()) {
    stream << ZuBeginBlock;
    p->Write(stream, m_CrossList.GetMask()) << ZuEndBlock << '\n';
  }
  return stream;
}

std::ostream& ZuReseauFile::Export(std::ostream& stream) const {
  zu::internal::WriteValue(stream, m_sComment);
  for (const ZuRegion* pRegion : {&m_PhotoRegion, &m_BoxRegion}) {
    pRegion->Export(stream << Zuendl << "{ ") << " }";
  }
  for (const ZuPoint* p = m_CrossList.First(); p != nullptr; p = p->Next()) {
    p->Export(stream << Zuendl << "{ ", m_CrossList.GetMask()) << " }";
  }
  return stream << Zuendl;
}

std::ostream& ZuReseauFile::WriteDigitalCameraFormat(std::ostream& stream) const {
  if (m_CrossList.Count() != 4) return stream;
  const zu::internal::ClassicStream classic(stream);
  ZuPolygon box(eLPolygonXY);
  box.AddPoint(&m_CrossList);
  stream << '{' << w14 << std::left << Quoted(GetName()).chars() << w4 << m_uSubId << w14
         << std::left << Quoted(m_sComment).chars() << w6 << m_iExifPixelWidth << w6
         << m_iExifPixelHeight << w6 << p6 << box.Width() << w6 << p6 << box.Height() << "  }\n";
  return stream;
}

// Halves are exact, and so are the sums of two.
std::ostream& ZuReseauFile::ExportDigitalCameraFormat(std::ostream& stream) const {
  const ZuPoint* const pLeft = m_CrossList.Find(11);
  const ZuPoint* const pRight = m_CrossList.Find(12);
  const ZuPoint* const pLower = m_CrossList.Find(22);
  if (m_CrossList.Count() != 4 || pLeft == nullptr || pRight == nullptr || pLower == nullptr) {
    return stream;
  }
  stream << "{ ";
  zu::internal::WriteValues(stream, GetName(), m_uSubId, m_sComment, m_iExifPixelWidth,
                            m_iExifPixelHeight, pRight->m_dX - pLeft->m_dX,
                            pRight->m_dY - pLower->m_dY);
  return stream << " }\n";
}

ZuReseaufileList::ZuReseaufileList(const ZuReseaufileList& other)
    : TZuListHeader<ZuReseauFile>(other), LinkHdl() {}

ZuReseaufileList& ZuReseaufileList::operator=(const ZuReseaufileList& other) {
  TZuListHeader<ZuReseauFile>::operator=(other);
  return *this;
}

int ZuReseaufileList::ReadReseauFile(const String& path) {
  const int iBefore = Count();
  const auto read = [&] {
    m_ReadFaults.Begin();
    const ZuDetectZuvoFiles file(path);
    if (file.IsType(eZuvoFileReseau)) return ReadReseau(path);
    if (file.IsType(eZuvoFileDigitalCamera)) {
      ReadDigitalBlocks(path);
    } else if (IsReadable(path)) {
      m_ReadFaults.Clear();
    }
    return Count() - iBefore;
  };
  const int iTaken = zu::internal::OrWithoutMemory(read, -1);
  return iTaken >= 0 ? iTaken : Count() - iBefore;
}

int ZuReseaufileList::ReadReseau(const String& path) {
  auto pReseau = std::make_unique<ZuReseauFile>(path);
  m_ReadFaults = pReseau->GetReadFaults();
  if (!pReseau->IsValid()) return 0;
  ZuReseauFile* pOld = Find(pReseau->GetName(), false);
  if (pOld != nullptr) delete Subtract(pOld);
  Add(pReseau.release());
  return 1;
}

void ZuReseaufileList::ReadDigitalBlocks(const String& path) {
  ZuReader reader(path.chars());
  ZuReaderObject object(Link(this, &ZuReseaufileList::ReadDigitalBlock));
  reader.RegisterObject(object);
  m_ReadFaults.Follow(&reader);
  reader.DoProcess(false);
}

int ZuReseaufileList::ReadDigitalBlock(ZuReaderObject* pObject) {
  auto pReseau = std::make_unique<ZuReseauFile>();
  pReseau->ReadDigitalCameraFormat(pObject);
  if (pReseau->IsValid()) Add(pReseau.release());
  return 1;
}

ZuReseauFile* ZuReseaufileList::FindReseauFile(const ZuReseauDataDesc& desc) const {
  for (ZuReseauFile* p = First(); p != nullptr; p = p->Next()) {
    if (desc.ExactMatch(ZuReseauDataDesc(p))) return p;
  }
  return nullptr;
}

bool ZuReseaufileList::WriteDigitalCameraFormat(const String& path) const {
  const auto write = [&] {
    std::ofstream stream(path.chars());
    if (!stream) return false;
    stream.imbue(std::locale::classic());
    WriteDigitalHeader(stream);
    for (ZuReseauFile* p = First(); p != nullptr; p = p->Next())
      p->WriteDigitalCameraFormat(stream);
    return true;
  };
  return zu::internal::OrWithoutMemory(write, false);
}

std::ostream& ZuReseaufileList::ExportDigitalCameraFormat(std::ostream& stream) const {
  WriteDigitalHeader(stream);
  for (const ZuReseauFile* p = First(); p != nullptr; p = p->Next()) {
    p->ExportDigitalCameraFormat(stream);
  }
  return stream;
}
