#include "project.h"

#include <filesystem>

#include "exit_code.h"
#include "zu/foundation/reader.h"

namespace cli {

namespace {

constexpr int kUnknownTold = 20;  // unknown keywords that get a warning of their own
constexpr int kFaultsTold = 2;    // faults of the message

const char* WhatIsRight(int iStatus) {
  switch (iStatus) {
    case ParserErrorStream:
      return "the file cannot be read, or a line is longer than 8511 characters";
    case ParserErrorUnterminatedString:
      return "a text is not closed; \"text\" on one line would be right";
    case ParserErrorInvalidNumber:
      return "not a number, or a matrix of the wrong shape; 3x3, 4x4 or 3 elements would be right";
    case ParserErrorNotSpecifiedToken:
      return "not what stands here; a keyword, a number or a \"text\" as the keyword needs it "
             "would "
             "be right";
    default:
      return "fault";
  }
}

void CheckReadable(const std::string& strPath) {
  std::error_code error;
  const auto status = std::filesystem::status(strPath, error);
  if (!std::filesystem::exists(status)) {
    throw CommandError(kBadInput, strPath + ": no such file; a project file is needed");
  }
  if (std::filesystem::is_directory(status)) {
    throw CommandError(kBadInput, strPath + ": is a folder; a project file is needed");
  }
}

}  // namespace

Project::Project(const std::string& strPath, Context& context)
    : m_strPath(strPath), m_pContext(&context) {
  CheckReadable(strPath);
  ZuReader reader(strPath.c_str());
  ZuReaderObject keywords[] = {
      {"PHOTO", Link(&m_Photos, &ZuPhotoList::AddPhoto)},
      {"ORTHOPHOTO", Link(&m_OrthoPhotos, &ZuOrthoPhotoList::AddPhoto)},
      {"CAMERA", Link(&m_Cameras, &ZuCameraList::ReadFormatFull)},
      {"PLANE", Link(&m_Planes, &ZuPlaneList::AddPlane)},
      {"LOKAL", Link(this, &Project::ReadLocalSystem)},
      {"MEASURE", Link(this, &Project::ReadMeasure)},
  };
  for (ZuReaderObject& keyword : keywords) reader.RegisterObject(keyword);
  reader.SkipUnknownToken(false);
  reader.SetUnknownTokenHdl(Link(this, &Project::OnUnknown));
  reader.SetParserErrorHdl(Link(this, &Project::OnFault));
  reader.DoProcess(false);
  if (m_iUnknown > kUnknownTold) {
    context.Warn(strPath + ": " + std::to_string(m_iUnknown - kUnknownTold) +
                 " more unknown keywords skipped");
  }
  CheckFaults(&reader);
  CheckMeasured();
}

// { PHOTOID 1 POINTS { 1 244.4274 94.1646 ... } }
int Project::ReadMeasure(ZuReaderObject* pObject) {
  unsigned int uPhoto = 0;
  const unsigned uLine = pObject->GetLine();
  m_Rows.Destroy();
  ZuReaderObject photo("PHOTOID", &uPhoto);
  ZuReaderObject points("POINTS", Link(this, &Project::ReadPoints));
  pObject->RegisterObject(photo);
  pObject->RegisterObject(points);
  pObject->DoProcess();
  m_Rows.MoveTo(&m_Pixels[uPhoto]);
  m_MeasureLines.emplace(uPhoto, uLine);
  return 1;
}

int Project::ReadPoints(ZuReaderObject* pObject) {
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWEnd};
  m_Rows.SetMask(kColumns);
  ZuReaderObject rows(Link(&m_Rows, &ZuPointList::Read));
  pObject->RegisterObject(rows);
  return pObject->DoProcess();
}

int Project::ReadLocalSystem(ZuReaderObject* pObject) {
  m_LocalSystems.emplace_back();
  return m_LocalSystems.back().Read(pObject);
}

long Project::OnUnknown(ZuReader* pReader) {
  if (++m_iUnknown <= kUnknownTold) {
    const std::string strKeyword = pReader->GetParser().GetToken().m_szText;
    m_pContext->Warn(m_strPath + ":" + std::to_string(pReader->GetParser().GetStatus().m_uLine) +
                     ": unknown keyword " + strKeyword.substr(0, 40) + " skipped");
  }
  pReader->SkipUnknownValue();
  return 1;
}

long Project::OnFault(ZuReader* pReader) {
  const ZuReaderError* pError = pReader->GetReaderErrorList().Last();
  if (pError != nullptr) m_Faults.emplace(pError->m_uLine, pError->m_eStatus);
  return 1;
}

void Project::CheckFaults(ZuReader* pReader) const {
  std::map<unsigned, int> faults = m_Faults;
  for (const ZuReaderError* p = pReader->GetReaderErrorList().First(); p != nullptr;
       p = p->Next()) {
    if (p->m_eStatus > ParserStatusEOF) faults.emplace(p->m_uLine, p->m_eStatus);
  }
  if (faults.empty()) return;
  std::string strText;
  int n = 0;
  for (const auto& [uLine, iStatus] : faults) {
    if (++n > kFaultsTold) break;
    strText +=
        (n > 1 ? "\n" : "") + m_strPath + ":" + std::to_string(uLine) + ": " + WhatIsRight(iStatus);
  }
  if (static_cast<int>(faults.size()) > kFaultsTold) {
    strText += "\nand " + std::to_string(faults.size() - kFaultsTold) + " more lines at fault";
  }
  throw CommandError(kBadInput, strText);
}

void Project::CheckMeasured() const {
  if (m_Photos.IsEmpty() && m_OrthoPhotos.IsEmpty()) {
    throw CommandError(kBadInput, m_strPath +
                                      ": no photo in the file; a project file with PHOTO { "
                                      "... } blocks is needed");
  }
  for (const auto& [uPhoto, uLine] : m_MeasureLines) {
    if (m_Photos.Find(uPhoto) != nullptr) continue;
    throw CommandError(kBadInput,
                       m_strPath + ":" + std::to_string(uLine) + ": measurements of photo " +
                           std::to_string(uPhoto) +
                           ", which is not in the file; PHOTOID of a PHOTO block would be "
                           "right");
  }
}

ZuPhoto& Project::Photo(unsigned uId) {
  ZuPhoto* pPhoto = m_Photos.Find(uId);
  if (pPhoto != nullptr) return *pPhoto;
  std::string strIds;
  for (const ZuPhoto* p = m_Photos.First(); p != nullptr; p = p->Next()) {
    strIds += (strIds.empty() ? "" : ", ") + std::to_string(p->GetId());
  }
  throw CommandError(kBadInput,
                     m_strPath + ": no photo " + std::to_string(uId) + "; the file has " + strIds);
}

}  // namespace cli
