// Every field of a record that a file holds, as text with all bits of its numbers: what two records
// are compared by. Apart from the writers, so that a field that they forget is missed.
#pragma once

#include <cmath>
#include <cstdio>
#include <string>

#include "zu/photo/ortho_photo.h"
#include "zu/transform/lokal_system.h"

class FieldText {
 public:
  template <class... Values>
  FieldText& operator()(const Values&... values) {
    (Add(values), ...);
    return *this;
  }
  const std::string& Text() const { return m_strText; }

 private:
  void Add(double d) {
    char szText[40];
    std::snprintf(szText, sizeof(szText), std::isnan(d) ? "nan " : "%a ", d);
    m_strText += szText;
  }
  void Add(int i) { m_strText += std::to_string(i) + ' '; }
  void Add(bool b) { Add(b ? 1 : 0); }
  void Add(unsigned u) { m_strText += std::to_string(u) + ' '; }
  void Add(const String& text) { m_strText += '<' + std::string(text.chars()) + "> "; }
  void Add(const ZuRegion& r) { (*this)(r.Left(), r.Bottom(), r.Right(), r.Top()); }
  void Add(const ZuMatrix& m) {
    (*this)(m.GetZeilen(), m.GetSpalten());
    for (int i = 0; i < m.GetZeilen() * m.GetSpalten(); ++i) Add(m.GetData()[i]);
  }
  void Add(const ZuVector& v) {
    for (int i = 1; i <= v.GetSize(); ++i) Add(v.GetElem(i));
  }
  void Add(const ZuCamera& c) {
    (*this)(c.GetId(), c.GetName(), c.m_iMode, c.m_dC, c.m_dXh, c.m_dYh, c.m_dA1, c.m_dA2, c.m_dA3);
    (*this)(c.m_dR0, c.m_dCViva, c.m_dXhViva, c.m_dYhViva, c.m_dC1, c.m_dC2, c.m_dB1, c.m_dB2);
    Add(c.m_dRMax);
  }
  void Add(const ZuPlane& p) { (*this)(p.GetId(), p.GetName(), p.A(), p.B(), p.C(), p.D()); }
  void Add(const ZuReseauTrafo& t) { (*this)(t.GetName(), static_cast<const ZuTrafo2d&>(t)); }
  void Add(const ZuTrafo2d& t) {
    constexpr int kUsed[] = {0, 4, 6, 8, 20};
    Add(static_cast<int>(t.GetType()));
    if (t.GetType() < 0 || t.GetType() > 4) return;
    for (int i = 0; i < kUsed[t.GetType()]; ++i) Add(t.GetCoef(i));
  }
  void Add(const ZuPointList& list) {
    for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
      (*this)(p->GetId(), p->m_dX, p->m_dY, p->m_dZ, p->m_dDX, p->m_dDY, '\n');
    }
  }
  void Add(char c) { m_strText += c; }
  void Add(const ZuZuspTrafo& t) {
    (*this)('\n', t.GetId(), t.GetName(), t.IsActive(), t.IsRegionActive());
    (*this)(t.GetDistortCameraFlag(), t.GetDistortCameraParam(), t.GetZuspMat(), t.GetTransMat());
    (*this)(t.GetPPList().GetPoints(), t.GetBikoList().GetPoints());
    for (const ZuPoint* p = t.GetRegion().First(); p != nullptr; p = p->Next()) {
      (*this)(p->m_dX, p->m_dY);  // older files leave their ids 0
    }
    Add(t.GetParallelDef());
  }
  void Add(const ZuZuspParallelDef& lines) {
    for (const auto* p = lines.GetLines().First(); p != nullptr; p = p->Next()) {
      (*this)(p->GetId(), p->m_uBikoId1, p->m_uBikoId2, p->m_iXAxis, p->m_dValue);
    }
    for (const auto* p = lines.GetConstraints().First(); p != nullptr; p = p->Next()) {
      (*this)(p->m_uLineId1, p->m_uLineId2, static_cast<int>(p->m_eType), p->m_dValue);
    }
  }
  void Add(const ZuPhoto& photo) {
    ZuPhoto& p = const_cast<ZuPhoto&>(photo);  // the regions of interest have no const getter
    (*this)(p.GetId(), p.GetName(), p.GetComment(), p.GetDigPictPage(), p.GetDigPictRot());
    (*this)(static_cast<int>(p.GetPhototype()), p.GetDigitizerId(),
            p.IsFlagSet(eZuFlagActive) != 0);
    (*this)(p.GetActiveFlag(), p.GetRotation(), p.GetScale(), p.HasAOR(), p.GetDigiRegion());
    (*this)(p.GetCamera(), p.GetReseauData().GetName(), p.GetReseauData().GetId());
    (*this)(p.GetReseauPreTrafo(), p.GetReseauMainTrafo(), p.GetReseauPolyInv(), p.GetRotAOR());
    (*this)(p.GetPosAOR(), p.GetLastZuspId(), p.GetScreenPos().m_dX, p.GetScreenPos().m_dY);
    (*this)(p.GetScreenScale(), p.GetScreenFlags(), p.GetTpsSetupId(), p.GetRegoiList());
    for (const ZuZuspTrafo* t = p.FirstZuspTrafo(); t != nullptr; t = t->Next()) Add(*t);
  }
  void Add(const ZuOrthoPhoto& p) {
    (*this)(p.GetId(), p.GetName(), p.GetComment(), p.GetStatPixel(), p.GetStatTime(),
            p.GetScale());
    (*this)(p.GetMaxAngle(), p.GetDigPictRot(), p.GetMirrorInfo(), p.GetDigiRegion());
    Add(p.GetObjectRegion());
    for (const auto* t = p.ZuspPlaneList().First(); t != nullptr; t = t->Next()) Add(t->GetTrafo());
  }
  void Add(const ZuLokalSystem& s) {
    (*this)(s.m_iAxisMode, s.m_uIdA, s.m_uIdB, s.m_iPlaneMode, s.m_uIdC, s.m_uIdOrigin);
    (*this)(s.m_dOffsetX, s.m_dOffsetY, s.m_dOffsetZ, s.m_uScale1IdA, s.m_uScale1IdB);
    (*this)(s.m_dScale1Dist, s.m_uScale2IdA, s.m_uScale2IdB, s.m_dScale2Dist, s.m_uScale3IdA);
    (*this)(s.m_uScale3IdB, s.m_dScale3Dist);
  }

  std::string m_strText;
};

// A record, or the records of a list one a line.
template <class Record>
std::string FieldsOf(const Record& record) {
  return FieldText()(record).Text();
}

template <class List>
std::string FieldsOfList(const List& list) {
  FieldText text;
  for (const auto* p = list.First(); p != nullptr; p = p->Next()) text(*p, '\n');
  return text.Text();
}
