// The written forms of cameras and camera lists.
#include <cmath>
#include <fstream>
#include <locale>
#include <ostream>

#include "zu/foundation/internal/classic_stream.h"
#include "zu/foundation/internal/item_writer.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/writer.h"
#include "zu/photo/camera_list.h"
#include "zu/photo/internal/file_header.h"

using zu::internal::CommentLine;
using zu::internal::WriteTitle;

namespace {

// The comment of the full form, line by line; an empty line follows it.
constexpr const char* kFullHeader[] = {
    "Ident: ID         Camera Id",
    "       NAME       Camera Name",
    "       MD         Mode: 0,1,2",
    "       C          Camera Constant",
    "       CV         Camera Constant Viva",
    "       XH YH      Principial Point",
    "       XHV YHV    Principial Point Viva",
    "       R0 RM      Radial Symmetric Distortion, Rmax",
    "       A1 A2 A3   Radial Symmetric Distortion",
    "       B1 B2      Affine Distortion",
    "       C1 C2      Tangential Distortion",
};

}  // namespace

std::ostream& ZuCamera::Write(std::ostream& stream) const { return stream; }

std::ostream& ZuCamera::WriteFullData(std::ostream& stream, bool) const { return stream; }

std::ostream& ZuCamera::WriteTS15Data(std::ostream& stream) const { return stream; }

std::ostream& ZuCamera::Export(std::ostream& stream) const {
  zu::internal::WriteValues(stream, GetId(), m_dC, m_dXh, m_dYh, m_dA1, m_dA2, m_dR0, GetName());
  return stream;
}

std::ostream& ZuCamera::ExportFullData(std::ostream& stream) const {
  zu::internal::ItemWriter items(stream);
  items.Item("ID", GetId());
  items.ItemUnless(String(), "NAME", GetName());
  items.Item("MD", m_iMode);
  items.Item("C", m_dC);
  items.Item("XH", m_dXh);
  items.Item("YH", m_dYh);
  items.Item("R0", m_dR0);
  items.Item("RM", m_dRMax);
  const struct {
    const char* szKeyword;
    double dValue;
  } values[] = {{"A1", m_dA1},      {"A2", m_dA2},     {"A3", m_dA3}, {"B1", m_dB1},
                {"B2", m_dB2},      {"C1", m_dC1},     {"C2", m_dC2}, {"CV", m_dCViva},
                {"XHV", m_dXhViva}, {"YHV", m_dYhViva}};
  for (const auto& value : values) items.ItemUnless(0.0, value.szKeyword, value.dValue);
  return stream;
}

std::ostream& ZuCamera::WriteGentriFormat(std::ostream& stream) const {
  const zu::internal::ClassicStream classic(stream);
  stream << p8 << w4 << GetId() << w12 << std::fabs(m_dC);
  if (m_iMode == eCameraModeCap) {
    for (int i = 0; i < 5; ++i) stream << w12 << 0;
    return stream;
  }
  for (const double d : {m_dXh, m_dYh, m_dA1, m_dA2, m_dR0}) stream << w12 << d;
  return stream;
}

int ZuCameraList::WriteFile(const String& path, bool bGentri) const {
  if (!bGentri && !ContainsOnlyGentriCams()) return WriteFileFormatFull(path);
  const auto write = [&] {
    std::ofstream stream(path.chars());
    stream.imbue(std::locale::classic());
    WriteFile(stream, bGentri);
    return 1;
  };
  return zu::internal::OrWithoutMemory(write, 1);
}

std::ostream& ZuCameraList::WriteFile(std::ostream& stream, const bool& bGentri) const {
  const ZuWriterStart start;
  if (!bGentri) {
    WriteSimpleHeaderComment(stream);
    return WriteSimpleFormat(stream);
  }
  for (const ZuCamera* p = First(); p != nullptr; p = p->Next()) {
    p->WriteGentriFormat(stream) << '\n';
  }
  return stream;
}

std::ostream& ZuCameraList::WriteSimpleHeaderComment(std::ostream& stream) const {
  WriteTitle(stream, " Simple Camera File");
  CommentLine(stream, "File Format: { Id  C  Xh  Yh  A1  A2  R0 \"Infotext\"}");
  CommentLine(stream, "");
  return stream << '\n';
}

std::ostream& ZuCameraList::WriteSimpleFormat(std::ostream& stream) const {
  for (const ZuCamera* p = First(); p != nullptr; p = p->Next()) {
    stream << ZuBeginBlock;
    p->Write(stream) << ZuEndBlock << Zuendl;
  }
  return stream;
}

int ZuCameraList::WriteFileFormatFull(const String& path) const {
  const ZuWriterStart start;
  const auto write = [&] {
    std::ofstream stream(path.chars());
    stream.imbue(std::locale::classic());
    WriteTitle(stream, " General Purpose Camera File");
    for (const char* szLine : kFullHeader) CommentLine(stream, szLine);
    CommentLine(stream, "");
    stream << '\n';
    for (const ZuCamera* p = First(); p != nullptr; p = p->Next()) {
      stream << s10 << "CAMERA" << ZuBeginBlock << " " << ZuEndBlock << Zuendl;
    }
    return 1;
  };
  return zu::internal::OrWithoutMemory(write, 1);
}
