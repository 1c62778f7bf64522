#include "zu/photo/bundle_aob.h"

#include <algorithm>
#include <cmath>

#include "zu/foundation/internal/item_writer.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/reader.h"
#include "zu/foundation/reader_object.h"
#include "zu/foundation/writer.h"
#include "zu/photo/photo_list.h"

namespace {

constexpr double kSeparate = 1e-8;  // |cos a| below which b and c turn about the same axis [-]

// Rows of (a, b, c) by the turns (wx, wy, wz) about the image axes. With R = Ry(b) Rx(a) Rz(c),
// w = Rz(c)' (da, cos(a) db, 0) + (0, 0, dc - sin(a) db).
void AnglesByTurns(const double* pdAngles, double J[3][3]) {
  const double ca = std::cos(pdAngles[0]), sa = std::sin(pdAngles[0]);
  const double cc = std::cos(pdAngles[2]), sc = std::sin(pdAngles[2]);
  const double rows[3][3] = {
      {cc, -sc, 0.0}, {sc / ca, cc / ca, 0.0}, {sa * sc / ca, sa * cc / ca, 1.0}};
  for (int i = 0; i < 3; ++i) std::copy_n(rows[i], 3, J[i]);
}

double Deviation(double dVariance) { return std::sqrt(std::max(dVariance, 0.0)); }

bool AreAllFinite(const double* pd, int n) {
  return std::all_of(pd, pd + n, [](double d) { return std::isfinite(d); });
}

}  // namespace

ZuBundleAOB::ZuBundleAOB(const ZuPhoto& photo) : ZuListnode(photo.GetId()) {
  photo.GetPosAOR(&m_adPosition[0], &m_adPosition[1], &m_adPosition[2]);
  photo.GetRotAOR(&m_adAngles[0], &m_adAngles[1], &m_adAngles[2]);
}

bool ZuBundleAOB::SetSigmas(const double* pdCovariance, int iStride) {
  if (!AreAllFinite(m_adAngles, 3) || std::fabs(std::cos(m_adAngles[0])) < kSeparate) return false;
  double J[3][3], ad[6];
  AnglesByTurns(m_adAngles, J);
  const auto at = [=](int i, int j) { return pdCovariance[i * iStride + j]; };
  for (int i = 0; i < 3; ++i) {
    ad[i] = Deviation(at(i, i));
    double dVariance = 0.0;
    for (int k = 0; k < 3; ++k) {
      for (int l = 0; l < 3; ++l) dVariance += J[i][k] * at(3 + k, 3 + l) * J[i][l];
    }
    ad[3 + i] = Deviation(dVariance);
  }
  if (!AreAllFinite(ad, 6)) return false;
  std::copy_n(ad, 3, m_adSigmaPosition);
  std::copy_n(ad + 3, 3, m_adSigmaAngles);
  return true;
}

bool ZuBundleAOB::ApplyTo(ZuPhoto* pPhoto) const {
  if (!AreAllFinite(m_adPosition, 3) || !AreAllFinite(m_adAngles, 3)) return false;
  pPhoto->SetPosAOR(m_adPosition[0], m_adPosition[1], m_adPosition[2]);
  pPhoto->SetRotAOR(m_adAngles[0], m_adAngles[1], m_adAngles[2]);
  pPhoto->SetHasAOR(true);
  return true;
}

int ZuBundleAOB::Read(ZuReaderObject* pObject) {
  SetId(pObject->TakeId());
  for (double* pd : {m_adPosition, m_adAngles, m_adSigmaPosition, m_adSigmaAngles}) {
    for (int i = 0; i < 3; ++i) pd[i] = pObject->TakeNumber();
  }
  return 1;
}

std::ostream& ZuBundleAOB::Export(std::ostream& stream) const {
  zu::internal::WriteValues(stream, GetId());
  for (const double* pd : {m_adPosition, m_adAngles, m_adSigmaPosition, m_adSigmaAngles}) {
    for (int i = 0; i < 3; ++i) zu::internal::WriteValue(stream.put(' '), pd[i]);
  }
  return stream;
}

int ZuBundleAOBList::AddBlock(ZuReaderObject* pObject) {
  pObject->TakeBlockOpen();
  ZuBundleAOB orientation;
  orientation.Read(pObject);
  Add(orientation);
  return 1;
}

bool ZuBundleAOBList::ReadFile(const char* szPath) {
  const auto read = [&] {
    m_ReadFaults.Begin();
    ZuReader reader(szPath);
    ZuReaderObject rows(Link(this, &ZuBundleAOBList::AddBlock));
    reader.RegisterObject(rows);
    m_ReadFaults.Follow(&reader);
    reader.DoProcess(false);
    return m_ReadFaults.GetCount() == 0;
  };
  return zu::internal::OrWithoutMemory(read, false);
}

std::ostream& ZuBundleAOBList::Export(std::ostream& stream) const {
  stream << "; orientations: id, X0 Y0 Z0, a b c of R = Ry(b) Rx(a) Rz(c) [rad], their standard "
            "deviations\n";
  for (const ZuBundleAOB* p = First(); p != nullptr; p = p->Next()) {
    p->Export(stream << "{ ") << " }\n";
  }
  return stream;
}

int ZuBundleAOBList::ApplyTo(ZuPhotoList* pPhotos) const {
  int iApplied = 0;
  for (const ZuBundleAOB* p = First(); p != nullptr; p = p->Next()) {
    ZuPhoto* pPhoto = pPhotos->Find(p->GetId());
    if (pPhoto != nullptr && p->ApplyTo(pPhoto)) ++iApplied;
  }
  return iApplied;
}
