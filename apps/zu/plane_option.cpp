#include "plane_option.h"

#include <cmath>
#include <filesystem>
#include <vector>

#include "exit_code.h"
#include "zu/cad/cad_plane.h"
#include "zu/foundation/strict_number.h"
#include "zu/points/name_line.h"

namespace cli {

namespace {

bool FindRecord(const std::string& strPlane, const ZuProject& project, ZuPlane* pPlane) {
  unsigned uId = 0;
  const bool bId = ZuParseId(strPlane, &uId);
  for (const ZuPlane* p = project.PlaneList().First(); p != nullptr; p = p->Next()) {
    if (!(bId && p->GetId() == uId) && strPlane != p->GetName().chars()) continue;
    *pPlane = *p;
    return true;
  }
  return false;
}

bool FindCoefficients(const std::vector<std::string>& words, ZuPlane* pPlane) {
  double* const apd[] = {&pPlane->A(), &pPlane->B(), &pPlane->C(), &pPlane->D()};
  if (words.size() != 4) return false;
  for (size_t k = 0; k < 4; ++k) {
    if (!ZuParseNumber(words[k], apd[k])) return false;
  }
  return true;
}

const ZuPoint* FindObjectPoint(const std::string& strName, const ZuProject& project) {
  const ZuPointList& points = project.ObjectPoints();
  unsigned uId = 0;
  const bool bId = ZuParseId(strName, &uId);
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    if (!p->GetName().empty() && strName == p->GetName().chars()) return p;
  }
  return bId ? points.TZuListHeader<ZuPoint>::Find(uId) : nullptr;
}

}  // namespace

bool FindToldPlane(const std::string& strPlane, const ZuProject& project,
                   const std::string& strWhere, ZuPlane* pPlane) {
  std::vector<std::string> words;
  const bool bWords = strPlane.find(',') != std::string::npos && ZuParseNameLine(strPlane, &words);
  if (FindRecord(strPlane, project, pPlane) || FindCoefficients(words, pPlane)) {
    if (pPlane->IsValid() != 0) return true;
    throw CommandError(kUndetermined, strWhere + ": plane " + strPlane + " has no normal");
  }
  if (std::filesystem::exists(strPlane)) return false;
  if (bWords && words.size() == 3) {
    ZuPoint3d corners[3];
    for (size_t k = 0; k < 3; ++k) {
      const ZuPoint* p = FindObjectPoint(words[k], project);
      if (p == nullptr) {
        throw CommandError(
            kBadInput, strWhere + ": no object point \"" + words[k] + "\" for --plane " + strPlane);
      }
      corners[k] = ZuPoint3d(*p);
    }
    ZuCadPlane through;
    if (!ZuCadPlane::Through(corners[0], corners[1], corners[2], &through)) {
      throw CommandError(kUndetermined,
                         strWhere + ": the points of --plane " + strPlane + " stand in a line");
    }
    const _MVector& n = through.GetFrame().v3();
    pPlane->A() = n.x;
    pPlane->B() = n.y;
    pPlane->C() = n.z;
    pPlane->D() = -(n.x * corners[0].x + n.y * corners[0].y + n.z * corners[0].z);
    return true;
  }
  unsigned uId = 0;
  if (!ZuParseId(strPlane, &uId) && !bWords) return false;
  throw CommandError(kBadInput,
                     strWhere + ": no plane " + strPlane +
                         ", and no coordinate file of that name; id or name of a plane of the "
                         "project,\nA,B,C,D, three of its points, or a file of points that a "
                         "plane is fitted to would be right");
}

}  // namespace cli
