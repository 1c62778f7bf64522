#include "exchange_input.h"

#include "exit_code.h"
#include "reading.h"
#include "text_table.h"
#include "zu/foundation/path.h"

namespace cli {

eZuExchange ExchangeFormat(const std::string& strWord) {
  const struct {
    const char* szWord;
    eZuExchange eFormat;
  } formats[] = {{"colmap", eZuExchangeColmap},
                 {"bal", eZuExchangeBal},
                 {"metashape", eZuExchangeMetashape},
                 {"opencv", eZuExchangeOpenCv}};
  std::string strWords;
  for (const auto& format : formats) {
    if (strWord == format.szWord) return format.eFormat;
    strWords += std::string(strWords.empty() ? "" : ", ") + format.szWord;
  }
  throw CommandError(kUsage, strWord + " is no format; " + strWords + " would be right");
}

void TellExchange(const ZuFindingList& findings, const std::string& strName, Context& context) {
  for (const ZuFinding& finding : findings) {
    std::string strFile = strName;
    if (finding.m_strFile.rfind("photo ", 0) == 0) {
      strFile += ": " + finding.m_strFile;
    } else if (!finding.m_strFile.empty() && ZuExistFolder(strName)) {
      strFile = ZuJoinPath(strName, finding.m_strFile);
    }
    const std::string strText = Placed(finding, strFile);
    if (finding.m_eSeverity == eZuSeverityNote) {
      context.Text() << strText << '\n';
      context.Root()["notes"].push_back(strText);
      continue;
    }
    if (finding.m_eSeverity == eZuSeverityError) throw CommandError(kBadInput, strText);
    if (context.IsStrict()) throw CommandError(kBadInput, strText + '\n' + kWithoutStrict);
    context.Warn(strText);
  }
}

void ShowExchange(const ZuExchangeReport& report, Context& context) {
  Json& root = context.Root();
  root["photos"] = report.uPhotos;
  root["points"] = report.uPoints;
  root["measurements"] = report.uMeasurements;
  root["cameras"] = Json::array();
  if (!root.contains("notes")) root["notes"] = Json::array();
  context.Text() << Counted(static_cast<long long>(report.uPhotos), "photo") << ", "
                 << Counted(static_cast<long long>(report.uPoints), "point") << ", "
                 << Counted(static_cast<long long>(report.uMeasurements), "measurement") << '\n';
  for (const ZuExchangedCamera& camera : report.cameras) {
    Json json{{"id", camera.uId}, {"model", camera.strModel}, {"fitted", camera.bFitted}};
    context.Text() << "camera " << camera.uId << ", " << camera.strModel;
    if (camera.bFitted) {
      json["max_error_px"] = camera.dError;
      json["max_error_at"] = {camera.dX, camera.dY};
      context.Text() << ": fitted, largest error " << Fixed(camera.dError, 6) << " px at ("
                     << Fixed(camera.dX, 1) << ", " << Fixed(camera.dY, 1) << ")\n";
    } else {
      context.Text() << ": exact\n";
    }
    root["cameras"].push_back(json);
  }
}

}  // namespace cli
