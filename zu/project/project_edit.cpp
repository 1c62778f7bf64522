#include "zu/project/project_edit.h"

#include <cmath>
#include <limits>
#include <sstream>

#include "zu/project/internal/merge_kept.h"
#include "zu/project/project.h"

namespace {

// Moves an id; 0 stays. False where it leaves the range.
bool Offset(unsigned* puId, long long iOffset, bool bChange) {
  if (*puId == 0) return true;
  const long long iId = static_cast<long long>(*puId) + iOffset;
  if (iId < 1 || iId > std::numeric_limits<unsigned>::max()) return false;
  if (bChange) *puId = static_cast<unsigned>(iId);
  return true;
}

bool OffsetList(ZuPointList* pList, long long iOffset, bool bChange) {
  for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) {
    unsigned uId = p->GetId();
    if (!Offset(&uId, iOffset, bChange)) return false;
    p->SetId(uId);
  }
  return true;
}

bool OffsetAll(ZuProject* pProject, long long iOffset, bool bChange) {
  for (const auto& [uPhoto, rows] : pProject->GetMeasurements()) {
    if (!OffsetList(&pProject->Measurements(uPhoto), iOffset, bChange)) return false;
  }
  if (!OffsetList(&pProject->ObjectPoints(), iOffset, bChange)) return false;
  for (ZuLokalSystem& s : pProject->LocalSystems()) {
    for (unsigned* puId :
         {&s.m_uIdA, &s.m_uIdB, &s.m_uIdC, &s.m_uIdOrigin, &s.m_uScale1IdA, &s.m_uScale1IdB,
          &s.m_uScale2IdA, &s.m_uScale2IdB, &s.m_uScale3IdA, &s.m_uScale3IdB}) {
      if (!Offset(puId, iOffset, bChange)) return false;
    }
  }
  return true;
}

// All that a file holds of a record.
std::string TextOf(const ZuPhoto& photo, const ZuProject& project) {
  std::ostringstream os;
  photo.Export(os) << '\n';
  const ZuPointList* pRows = project.FindMeasurements(photo.GetId());
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX,  eZuPointRWY,
                                         eZuPointRWDX, eZuPointRWDY, eZuPointRWEnd};
  if (pRows != nullptr) pRows->Export(os, kColumns);
  return os.str();
}

std::string TextOf(const ZuCamera& camera, const ZuProject&) {
  std::ostringstream os;
  camera.ExportFullData(os);
  return os.str();
}

std::string TextOf(const ZuPlane& plane, const ZuProject&) {
  std::ostringstream os;
  plane.Export(os);
  return os.str();
}

std::string TextOf(const ZuPoint& point, const ZuProject&) {
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                         eZuPointRWEnd};
  std::ostringstream os;
  point.Export(os, kColumns);
  return os.str();
}

// Deletes what stands alike in the other list, tells what stands there otherwise. gone(id) is
// called for each that is deleted.
template <class List, class Gone>
void DropCommon(List* pList, const ZuProject& project, const List& others, const ZuProject& other,
                const char* szName, std::vector<std::string>* pDifferent, Gone&& gone) {
  std::map<unsigned, std::string> texts;
  for (const auto* p = others.First(); p != nullptr; p = p->Next()) {
    texts.emplace(p->GetId(), TextOf(*p, other));
  }
  for (auto* p = pList->First(); p != nullptr;) {
    auto* const pNext = p->Next();
    const auto found = texts.find(p->GetId());
    if (found != texts.end() && found->second == TextOf(*p, project)) {
      gone(p->GetId());
      delete pList->Subtract(p);
    } else if (found != texts.end()) {
      pDifferent->push_back(szName + std::to_string(p->GetId()));
    }
    p = pNext;
  }
}

}  // namespace

bool ZuRenumberPhotos(ZuProject* pProject, const std::map<unsigned, unsigned>& ids) {
  std::set<unsigned> taken;
  std::size_t uFound = 0;
  for (const ZuPhoto* p = pProject->PhotoList().First(); p != nullptr; p = p->Next()) {
    const auto found = ids.find(p->GetId());
    uFound += found != ids.end() ? 1 : 0;
    const unsigned uId = found != ids.end() ? found->second : p->GetId();
    if (uId == 0 || !taken.insert(uId).second) return false;
  }
  if (uFound != ids.size()) return false;
  std::map<unsigned, ZuPointList> moved;
  for (const auto& [uOld, uNew] : ids) {
    if (pProject->FindMeasurements(uOld) == nullptr) continue;
    pProject->Measurements(uOld).MoveTo(&moved[uNew]);
  }
  for (auto& [uNew, rows] : moved) rows.MoveTo(&pProject->Measurements(uNew));
  for (ZuPhoto* p = pProject->PhotoList().First(); p != nullptr; p = p->Next()) {
    const auto found = ids.find(p->GetId());
    if (found != ids.end()) p->SetId(found->second);
  }
  pProject->Covariances().RenumberPhotos(ids);
  return true;
}

bool ZuOffsetPointIds(ZuProject* pProject, long long iOffset) {
  return OffsetAll(pProject, iOffset, false) && OffsetAll(pProject, iOffset, true);
}

void ZuKeepPhotos(ZuProject* pProject, const std::set<unsigned>& ids) {
  for (ZuPhoto* p = pProject->PhotoList().First(); p != nullptr;) {
    ZuPhoto* const pNext = p->Next();
    if (ids.count(p->GetId()) == 0) {
      pProject->Measurements(p->GetId()).Destroy();
      pProject->Covariances().ErasePhoto(p->GetId());
      delete pProject->PhotoList().Subtract(p);
    }
    p = pNext;
  }
}

std::vector<std::string> ZuDropCommonRecords(ZuProject* pProject, const ZuProject& other) {
  std::vector<std::string> different;
  const auto none = [](unsigned) {};
  const auto measured = [pProject](unsigned uPhoto) {
    pProject->Measurements(uPhoto).Destroy();
    pProject->Covariances().ErasePhoto(uPhoto);
  };
  const ZuProject& project = *pProject;
  DropCommon(&pProject->PhotoList(), project, other.PhotoList(), other, "photo ", &different,
             measured);
  DropCommon(&pProject->OrthoPhotoList(), project, other.OrthoPhotoList(), other, "orthophoto ",
             &different, none);
  DropCommon(&pProject->CameraList(), project, other.CameraList(), other, "camera ", &different,
             none);
  DropCommon(&pProject->PlaneList(), project, other.PlaneList(), other, "plane ", &different, none);
  DropCommon(&pProject->ObjectPoints(), project, other.ObjectPoints(), other, "object point ",
             &different, none);
  for (const auto& [key, covariance] : other.Covariances().All()) {
    pProject->Covariances().Erase(key);
  }
  return different;
}

bool ZuJoinProjects(const ZuProject& first, const ZuProject& second, ZuProject* pJoined) {
  std::ostringstream text, last;
  first.Export(text);
  for (const ZuProjectItem& item : first.GetItems()) {
    if (item.m_pUnknown == nullptr || zu::internal::HasValue(*item.m_pUnknown)) continue;
    zu::internal::WriteUnknown(*item.m_pUnknown, last);
  }
  for (const ZuFileComment& comment : first.GetLastComments()) last << comment.m_strText << '\n';
  std::stringstream joined;
  joined << text.str().substr(0, text.str().size() - last.str().size());
  second.Export(joined) << last.str();
  return pJoined->Read(joined);
}

bool ZuRescalePhoto(ZuProject* pProject, unsigned uPhoto, double dFactor) {
  ZuPhoto* const pPhoto = pProject->PhotoList().Find(uPhoto);
  if (pPhoto == nullptr || !(dFactor > 0.0) || !std::isfinite(dFactor)) return false;
  const ZuTrafo2d before(pPhoto->GetReseauPreTrafo());
  if (before.GetType() < eZuTrafo2DNone || before.GetType() > eZuTrafo2DAffin) return false;
  pPhoto->RescaleTo(dFactor);
  if (before.GetType() == eZuTrafo2DAffin) {
    ZuMatrix pre(3, 3), scaling(3, 3);
    before.BuildMatrix(&pre);
    scaling.SetIdent();
    scaling[1][1] = scaling[2][2] = 1.0 / dFactor;
    ZuTrafo2d affine;
    affine.SetFromMatrix(pre * scaling, eZuTrafo2DAffin);
    pPhoto->SetReseauPreTrafo(affine);
  }
  for (ZuPoint* p = pProject->Measurements(uPhoto).First(); p != nullptr; p = p->Next()) {
    for (double* pd : {&p->m_dX, &p->m_dY, &p->m_dDX, &p->m_dDY}) *pd *= dFactor;
  }
  return true;
}
