#include "orientation_records.h"

#include <cmath>

#include "exit_code.h"
#include "input_file.h"
#include "text_table.h"

namespace cli {

namespace {

void WriteRecords(const ZuBundleAOBList& records, const std::string& strPath, Context& context) {
  records.Export(context.NewOutput(strPath).Stream());
}

}  // namespace

void WriteOrientations(const ZuProject& project, const std::string& strPath, Context& context) {
  ZuBundleAOBList records;
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    if (!p->HasAOR()) continue;
    ZuBundleAOB record(*p);
    const ZuCovariance* pCovariance = project.Covariances().OfPhoto(p->GetId());
    if (pCovariance != nullptr && pCovariance->m_iRows >= ZuCovariance::kOrientation) {
      record.SetSigmas(pCovariance->m_matrix.data(), pCovariance->m_iColumns);
    }
    records.Add(record);
  }
  WriteRecords(records, strPath, context);
}

void WriteOrientations(const ZuProject& project, const ZuProjectOrientation& orientation,
                       const std::string& strPath, Context& context) {
  ZuBundleAOBList records;
  for (const ZuPhotoOrientation& photo : orientation.photos) {
    const ZuPhoto* p = project.PhotoList().Find(photo.uId);
    if (!photo.IsGood() || p == nullptr) continue;
    ZuBundleAOB record(*p);
    const bool bSure = photo.eWay != ZuOrientationWay::Kept;
    for (size_t k = 0; k < 3 && bSure; ++k) {
      record.m_adSigmaPosition[k] = std::sqrt(photo.pose.covariance[7 * (k + 3)]);
      record.m_adSigmaAngles[k] = std::isfinite(photo.anglesSd[k]) ? photo.anglesSd[k] : 0.0;
    }
    records.Add(record);
  }
  WriteRecords(records, strPath, context);
}

void ReadOrientations(const std::string& strPath, ZuProject* pProject, Context& context) {
  const InputFile file(strPath, "a file of orientations");
  ZuBundleAOBList records;
  if (!records.ReadFile(file.Path().c_str())) {
    const auto& faults = records.GetReadFaults();
    throw CommandError(
        kBadInput,
        file.Name() + ":" + std::to_string(faults.GetLine(0)) +
            ": no block of 13 numbers; { id X0 Y0 Z0 a b c sX sY sZ sa sb sc } a photo would be "
            "right");
  }
  int iApplied = 0;
  for (const ZuBundleAOB* p = records.First(); p != nullptr; p = p->Next()) {
    ZuPhoto* pPhoto = pProject->PhotoList().Find(p->GetId());
    if (pPhoto == nullptr) {
      context.Warn(file.Name() + ": photo " + std::to_string(p->GetId()) +
                   " is not in the project");
    } else if (!p->ApplyTo(pPhoto)) {
      throw CommandError(kBadInput,
                         file.Name() + ": photo " + std::to_string(p->GetId()) +
                             ": a number is not finite; numbers such as 12.345 would be right");
    } else {
      ++iApplied;
    }
  }
  if (iApplied > 0) return;
  throw CommandError(
      kBadInput, file.Name() + ": names no photo of the project; zu project info lists its photos");
}

}  // namespace cli
