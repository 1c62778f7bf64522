#include "lokal_input.h"

#include <map>

#include "exit_code.h"
#include "point_choice.h"
#include "point_input.h"
#include "project_input.h"
#include "zu/foundation/reader.h"
#include "zu/foundation/strict_number.h"

namespace cli {
namespace {

constexpr char kAxisForm[] = "--axis X:1,2 (an axis, the points it runs from and to)";
constexpr char kPlaneForm[] = "--plane XY:3 (XY, YZ or XZ, and a point in it)";
constexpr char kOriginForm[] = "--origin 1 or --origin 1:x,y,z (a point and its coordinates)";
constexpr char kScaleForm[] = "--scale 1,2:5.000 (two points and their distance)";

const std::map<std::string, int> kAxes = {
    {"X", eLokalAxisX}, {"Y", eLokalAxisY}, {"Z", eLokalAxisZ}};
const std::map<std::string, int> kPlanes = {
    {"XY", eLokalPlaneXY}, {"YZ", eLokalPlaneYZ}, {"XZ", eLokalPlaneXZ}};

[[noreturn]] void FailUsage(const std::string& strText, const char* szRight) {
  throw CommandError(kUsage,
                     "\"" + strText + "\" cannot be understood; " + szRight + " would be right");
}

std::vector<std::string> Split(const std::string& strText, char cSeparator) {
  std::vector<std::string> parts(1);
  for (const char c : strText) {
    if (c == cSeparator) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

// "KEY:VALUE" at the last or, for keys of axes and planes, the only colon.
bool SplitAtColon(const std::string& strText, std::string* pLeft, std::string* pRight) {
  const size_t uColon = strText.rfind(':');
  if (uColon == std::string::npos) return false;
  *pLeft = strText.substr(0, uColon);
  *pRight = strText.substr(uColon + 1);
  return true;
}

// Puts option texts into a definition.
class Parser {
 public:
  Parser(const std::string& strPoints, const ZuPointList& points, ZuLokalSystem* pSystem)
      : m_strPoints(strPoints), m_points(points), m_pSystem(pSystem) {}

  void Axis(const std::string& strText) {
    std::string strAxis, strIds;
    if (!SplitAtColon(strText, &strAxis, &strIds) || kAxes.count(strAxis) == 0) {
      FailUsage(strText, kAxisForm);
    }
    m_pSystem->m_iAxisMode = kAxes.at(strAxis);
    Pair(strText, strIds, kAxisForm, &m_pSystem->m_uIdA, &m_pSystem->m_uIdB);
  }

  void Plane(const std::string& strText) {
    std::string strPlane, strId;
    if (!SplitAtColon(strText, &strPlane, &strId) || kPlanes.count(strPlane) == 0) {
      FailUsage(strText, kPlaneForm);
    }
    m_pSystem->m_iPlaneMode = kPlanes.at(strPlane);
    m_pSystem->m_uIdC = Id(strText, strId, kPlaneForm);
  }

  void Origin(const std::string& strText) {
    std::string strId = strText, strOffset;
    double adOffset[3] = {};
    if (SplitAtColon(strText, &strId, &strOffset)) {
      const std::vector<std::string> parts = Split(strOffset, ',');
      if (parts.size() != 3) FailUsage(strText, kOriginForm);
      for (size_t i = 0; i < 3; ++i) {
        if (!ZuParseNumber(parts[i], &adOffset[i])) FailUsage(strText, kOriginForm);
      }
    }
    m_pSystem->m_uIdOrigin = Id(strText, strId, kOriginForm);
    m_pSystem->m_dOffsetX = adOffset[0];
    m_pSystem->m_dOffsetY = adOffset[1];
    m_pSystem->m_dOffsetZ = adOffset[2];
  }

  void Scales(const std::vector<std::string>& texts) {
    ZuLokalSystem& s = *m_pSystem;
    const struct {
      unsigned int *puIdA, *puIdB;
      double* pdDistance;
    } places[] = {{&s.m_uScale1IdA, &s.m_uScale1IdB, &s.m_dScale1Dist},
                  {&s.m_uScale2IdA, &s.m_uScale2IdB, &s.m_dScale2Dist},
                  {&s.m_uScale3IdA, &s.m_uScale3IdB, &s.m_dScale3Dist}};
    if (texts.size() > 3) throw CommandError(kUsage, "--scale may stand three times at most");
    for (size_t i = 0; i < 3; ++i) {
      *places[i].puIdA = *places[i].puIdB = 0;
      *places[i].pdDistance = 0.0;
      if (i >= texts.size()) continue;
      std::string strIds, strDistance;
      if (!SplitAtColon(texts[i], &strIds, &strDistance) ||
          !ZuParseNumber(strDistance, places[i].pdDistance) || !(*places[i].pdDistance > 0.0)) {
        FailUsage(texts[i], kScaleForm);
      }
      Pair(texts[i], strIds, kScaleForm, places[i].puIdA, places[i].puIdB);
    }
  }

 private:
  unsigned int Id(const std::string& strText, const std::string& strPoint, const char* szForm) {
    if (strPoint.empty()) FailUsage(strText, szForm);
    const ZuPoint* p = m_points.Find(String(strPoint.c_str()));
    if (p != nullptr) return p->GetId();
    unsigned int uId = 0;
    if (ZuParseId(strPoint, &uId) && m_points.Find(uId) != nullptr) return uId;
    throw CommandError(kBadInput, m_strPoints + ": no point " + strPoint + ", which \"" + strText +
                                      "\" names" + PointHint(strPoint, {&m_points}));
  }

  void Pair(const std::string& strText, const std::string& strIds, const char* szForm,
            unsigned int* puIdA, unsigned int* puIdB) {
    const std::vector<std::string> ids = Split(strIds, ',');
    if (ids.size() != 2) FailUsage(strText, szForm);
    *puIdA = Id(strText, ids[0], szForm);
    *puIdB = Id(strText, ids[1], szForm);
    if (*puIdA == *puIdB) {
      throw CommandError(kUsage, "\"" + strText + "\" names one point twice; two are needed");
    }
  }

  std::string m_strPoints;
  const ZuPointList& m_points;
  ZuLokalSystem* m_pSystem;
};

// The first LOKAL block of a keyword file; other blocks are passed over.
class DefinitionFile : public LinkHdl {
 public:
  explicit DefinitionFile(const std::string& strPath) {
    const InputFile file(strPath, "a file with LOKAL { ... }");
    CheckValues(file);
    ZuReader reader(file.Path().c_str());
    ZuReaderObject lokal("LOKAL", Link(this, &DefinitionFile::ReadSystem));
    reader.RegisterObject(lokal);
    reader.DoProcess(false);
    const ZuReaderError* pError = reader.GetReaderErrorList().First();
    while (pError != nullptr && pError->m_eStatus <= ParserStatusEOF) pError = pError->Next();
    if (m_iSystems == 0 || pError != nullptr) {
      const unsigned uLine = pError != nullptr ? pError->m_uLine : 0;
      throw CommandError(
          kBadInput, file.Name() + (uLine > 0 ? ":" + std::to_string(uLine) : "") +
                         ": no whole definition; LOKAL { axis A B  plane C  origin x y z  three "
                         "times id id distance } would be right");
    }
  }

  const ZuLokalSystem& System() const { return m_system; }

 private:
  // The keyword reader takes what is no number for the part of it that is one.
  static void CheckValues(const InputFile& file) {
    ZuProject project;
    project.Read(file.Path().c_str());
    std::uint64_t uFirst = 0, uEnd = 0;  // lines of the first definition
    for (const ZuProjectItem& item : project.GetItems()) {
      const std::uint64_t uLine = item.m_pBlock != nullptr ? item.m_pBlock->m_uLine : 0;
      if (uFirst > 0 && uEnd == 0) uEnd = uLine;
      if (uFirst == 0 && item.m_iLocalSystem == 0) uFirst = uLine;
    }
    ZuFindingList values;
    for (const ZuFinding& finding : project.GetFindings()) {
      const bool bInside = finding.m_uLine >= uFirst && (uEnd == 0 || finding.m_uLine <= uEnd);
      if (uFirst > 0 && bInside && finding.m_uColumn > 0) values.Add(finding);
    }
    if (values.GetErrorCount() > 0 && !project.IsCut()) FailOf(values, file);
  }

  int ReadSystem(ZuReaderObject* pObject) {
    ZuLokalSystem system;
    system.Read(pObject);
    if (m_iSystems++ == 0) m_system = system;
    return 1;
  }

  ZuLokalSystem m_system;
  int m_iSystems = 0;
};

void CheckModes(const ZuLokalSystem& system) {
  ZuLokalSystem adjusted(system);
  adjusted.AdjustPlanebyAxisMode();
  const bool bKnown = system.m_iAxisMode >= eLokalAxisX && system.m_iAxisMode <= eLokalAxisZ &&
                      system.m_iPlaneMode >= eLokalPlaneXY && system.m_iPlaneMode <= eLokalPlaneXZ;
  if (!bKnown || adjusted.m_iPlaneMode != system.m_iPlaneMode) {
    throw CommandError(kUsage,
                       "the plane does not hold the axis; X goes with XY or XZ, Y with XY or YZ, "
                       "Z with XZ or YZ");
  }
}

}  // namespace

ZuLokalSystem ReadLokalSystem(const LokalOptions& options, const std::string& strPoints,
                              const ZuPointList& points) {
  ZuLokalSystem system;
  const bool bFile = !options.strDefinition.empty();
  if (bFile) system = DefinitionFile(options.strDefinition).System();
  if (!bFile && (options.strAxis.empty() || options.strPlane.empty())) {
    throw CommandError(kUsage, std::string("a local system needs ") + kAxisForm + "\nand " +
                                   kPlaneForm + "\nor --definition FILE");
  }
  Parser parser(strPoints, points, &system);
  if (!options.strAxis.empty()) parser.Axis(options.strAxis);
  if (!options.strPlane.empty()) parser.Plane(options.strPlane);
  if (!options.strOrigin.empty()) parser.Origin(options.strOrigin);
  if (!bFile && options.strOrigin.empty()) system.m_uIdOrigin = system.m_uIdA;
  if (!options.strScales.empty()) parser.Scales(options.strScales);
  CheckModes(system);
  return system;
}

}  // namespace cli
