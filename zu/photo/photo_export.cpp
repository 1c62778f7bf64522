// The photo's block in a project file, written.
#include "zu/foundation/internal/item_writer.h"
#include "zu/photo/photo.h"

namespace {

using zu::internal::ItemWriter;

// A code of the older form that has no coefficients and leaves those of the current form.
constexpr int kNameAlone = 4;

// PRERESTRAFO { 2 0.5 1 0 479.5 0 -1 }, and with a name PRERESEAU { 4 "reseau" } behind it.
void ExportTrafo(ItemWriter& items, const char* szKeyword, const char* szOlder,
                 const ZuReseauTrafo& trafo, bool bName) {
  const auto write = [&trafo](std::ostream& os) { trafo.Export(os); };
  const auto writeName = [&trafo](std::ostream& os) {
    zu::internal::WriteValues(os, kNameAlone, trafo.GetName());
  };
  if (trafo.GetType() != eZuTrafo2DNone) items.Block(szKeyword, write);
  if (bName && !trafo.GetName().empty()) items.Block(szOlder, writeName);
}

}  // namespace

std::ostream& ZuPosition::Export(std::ostream& stream) const {
  zu::internal::WriteValues(stream, m_dX, m_dY);
  return stream;
}

bool ZuPhoto::KeepsNameOfPreTrafo() const {
  return m_PreTrafo->GetName() == m_ReseauData.GetName() && (IsDigital() || m_strName.empty());
}

std::ostream& ZuPhoto::Export(std::ostream& stream) const {
  ItemWriter items(stream);
  // Reading the name of the pre-transformation moves the name of an analog photo to its comment.
  const bool bPreName = !m_PreTrafo->GetName().empty() && KeepsNameOfPreTrafo();
  const bool bMoved = bPreName && IsAnalog();
  items.Item("PHOTOID", GetId(), bMoved ? m_sComment : GetName());
  if (!bMoved) items.ItemUnless(String(), "COMMENT", m_sComment);
  items.ItemUnless(0, "DIGITALPAGE", m_iDigPictPage);
  items.ItemUnless(0, "DIGITALROT", m_iDigPictRot);
  items.Item("DIGITAL", static_cast<int>(m_ePhototype));
  items.Item("DIGITIZERID", m_uDigitizerId);
  items.ItemUnless(false, "CHECKACTIVE", IsFlagSet(eZuFlagActive) != 0);
  items.Item("STATE", m_iState);
  items.Item("ROTATION", m_iRotation);
  items.Item("SCALE", m_dScale);
  items.Item("ORIENTED", m_bOriented);
  items.Block("DIGIREGION", [this](std::ostream& os) { m_DigiRegion.Export(os); });
  items.Lines("CAMDATA", [this](std::ostream& os) { m_Camera.ExportFullData(os); });
  items.ItemUnless(String(), "RESEAUFILE", m_ReseauData.GetName());
  items.ItemUnless(0u, "RESEAUSUBID", m_ReseauData.GetId());
  ExportTrafo(items, "PRERESTRAFO", "PRERESEAU", *m_PreTrafo, bPreName);
  ExportTrafo(items, "MAINRESTRAFO", "MAINRESEAU", *m_MainTrafo, true);
  ExportTrafo(items, "POLYRESINVTRAFO", "POLYRESINV", *m_PolyInvTrafo, true);
  items.Lines("AORM", [this](std::ostream& os) { m_RotAOR.Export(os); });
  items.Block("AORV", [this](std::ostream& os) { m_PosAOR.Export(os); });
  for (const ZuZuspTrafo* p = m_ZuspList.First(); p != nullptr; p = p->Next()) {
    items.Lines("ZUSPPLANE", [p](std::ostream& os) { p->Export(os); });
  }
  items.ItemUnless(0u, "LASTZUSPID", m_uLastZuspId);
  if (m_ScreenPos.m_dX != 0.0 || m_ScreenPos.m_dY != 0.0) {
    items.Block("SCREENPOS", [this](std::ostream& os) { m_ScreenPos.Export(os); });
  }
  items.ItemUnless(0, "SCREENSIZE", m_iScreenScale);
  items.ItemUnless(0, "SCREENFLAGS", m_iScreenFlags);
  if (!m_RegoiList->IsEmpty()) {
    items.Lines("REGOI", [this](std::ostream& os) {
      m_RegoiList->ZuPointList::Export(os, RegoiList().GetMask());
    });
  }
  items.ItemUnless(String(), "TPS_SETUP_ID", m_sTpsSetupId);
  return stream;
}
