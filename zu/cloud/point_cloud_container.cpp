#include "zu/cloud/point_cloud_container.h"

#include <ctime>
#include <memory>
#include <new>

#include "zu/foundation/debug.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/points/point_list.h"

ZU_INSTANTIATE_LIST(ZuPointCloud);

namespace {

ZuScanPoint3d ScanPointOf(const ZuPoint& point) {
  ZuScanPoint3d p(point.m_dX, point.m_dY, point.m_dZ, point.m_iColor);
  p.m_fDX = static_cast<float>(point.m_dDX);
  p.m_fDY = static_cast<float>(point.m_dDY);
  p.m_fDZ = static_cast<float>(point.m_dDZ);
  p.m_fNX = point.m_fVX;
  p.m_fNY = point.m_fVY;
  p.m_fNZ = point.m_fVZ;
  p.m_sFlags = static_cast<std::uint16_t>(point.m_snImo);
  return p;
}

}  // namespace

ZuPointCloudContainer::ZuPointCloudContainer() = default;

ZuPointCloudContainer::~ZuPointCloudContainer() {
  // From the cloud added last on, which this observer finds first.
  for (ZuPointCloud* p = m_Clouds.Last(); p; p = p->Previous()) p->RemoveObserver(this);
}

void ZuPointCloudContainer::Notify(ZuNotifyEvent*) { m_Clouds.NotifyChanged(nullptr, nullptr); }

ZuPointCloud* ZuPointCloudContainer::AddCloud() {
  return AddCloudWithId(m_Clouds.GetFreeId(m_uNextIdHint));
}

ZuPointCloud* ZuPointCloudContainer::AddCloudWithId(unsigned int uId) {
  auto spCloud = std::make_unique<ZuPointCloud>();
  spCloud->SetId(uId);
  ZuPointCloud* const pCloud = m_Clouds.Add(spCloud.release());
  ++m_iDirty;
  if (Observe(pCloud)) return pCloud;
  Delete(pCloud);
  throw std::bad_alloc();
}

bool ZuPointCloudContainer::Observe(ZuPointCloud* pCloud) {
  // Without a parent it may enter a further table; it stays on those of the earlier clouds.
  m_pNotifyParent = nullptr;
  return zu::internal::OrWithoutMemory([&] { return pCloud->AddObserver(this); }, false);
}

ZuPointCloud* ZuPointCloudContainer::AddCloud(unsigned int uCount, const char* szName) {
  try {
    ZuPointCloud* const pCloud = AddCloud();
    if (szName) pCloud->SetName(String(szName));
    pCloud->Reserve(uCount);
    return pCloud;
  } catch (...) {
    dbgprintf("Error Create Pointcloud: %d", static_cast<int>(uCount));
    return nullptr;
  }
}

ZuPointCloud* ZuPointCloudContainer::AddCloud(ZuPointList* pList) {
  if (!pList) return nullptr;
  ZuPointCloud* pCloud = nullptr;
  try {
    pCloud = AddCloud();
    pCloud->Reserve(static_cast<unsigned int>(pList->Count()));
    pCloud->SetName(String("Coo Cloud"));
    ZuScanHeader& header = pCloud->GetHeader();
    header.m_iImportStart = header.m_iSecondImportStart = std::time(nullptr);
    for (const ZuPoint* p = pList->First(); p; p = p->Next()) pCloud->AddPoint(ScanPointOf(*p));
    header.m_iImportEnd = header.m_iSecondImportEnd = std::time(nullptr);
    UpdateCenterAndBox(pCloud);
    return pCloud;
  } catch (...) {
    // Required: the number is the cloud's address, as far as it goes into an int.
    const auto uAddress = reinterpret_cast<std::uintptr_t>(pCloud);
    dbgprintf("Error Create Pointcloud COO: %d", static_cast<int>(uAddress & 0xFFFFFFFFu));
    return nullptr;
  }
}

bool ZuPointCloudContainer::Delete(ZuPointCloud* pCloud) {
  if (!pCloud) return false;
  m_Clouds.Subtract(pCloud);
  delete pCloud;
  ++m_iDirty;
  return true;
}

unsigned int ZuPointCloudContainer::Size() const {
  unsigned int uSize = 0;
  for (const ZuPointCloud* p = m_Clouds.First(); p; p = p->Next()) uSize += p->GetPointCount();
  return uSize;
}

void ZuPointCloudContainer::UpdateCenterAndBox(const ZuPointCloud* pCloud) {
  if (!pCloud) return;
  m_Box.Union(pCloud->GetBox());
  m_Center.Add(pCloud->GetCenter());
}
