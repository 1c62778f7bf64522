// Photos of other programs. The first byte picks the reader: 't' COLMAP's text, its three files
// apart by form feeds; 'b' its binary form, their lengths in the two bytes each that follow; 'a'
// Bundle Adjustment in the Large; 'o' calibration files of OpenCV; 'm' camera files
// of Metashape. What is imported can be exported
// and imported again.
#include "fuzz/there_and_back.h"
#include "zu/exchange/photo_exchange.h"
#include "zu/points/point_list.h"
#include "zu/project/project.h"

namespace {

using Files = std::vector<ZuExchangeFile>;

bool Import(eZuExchange eFormat, const Files& files, ZuProject* pProject) {
  ZuExchangeReport report;
  ZuImportOptions options;
  options.dMaxError = 1e300;
  const bool bGood = ZuImportPhotos(eFormat, files, options, pProject, &report);
  Require(bGood == (report.findings.GetErrorCount() == 0));
  for (const ZuFinding& finding : report.findings) Require(!GetZuFindingLine(finding).empty());
  return bGood;
}

Files FilesOf(std::string_view text) {
  const bool bBinary = text[0] == 'b';
  const std::string strEnding = bBinary ? ".bin" : ".txt";
  text.remove_prefix(1);
  Files files;
  for (const char* szName : {"cameras", "images", "points3D"}) {
    std::size_t uLength = std::min(text.find('\f'), text.size());
    if (bBinary) {
      uLength = text.size() < 2 ? 0
                                : static_cast<unsigned char>(text[0]) +
                                      256U * static_cast<unsigned char>(text[1]);
      text.remove_prefix(std::min<std::size_t>(2, text.size()));
    }
    files.push_back({szName + strEnding, std::string(text.substr(0, uLength))});
    text.remove_prefix(std::min(uLength + (bBinary ? 0 : 1), text.size()));
  }
  return files;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  const std::string_view text = input.Text();
  if (text.empty()) return 0;
  const eZuExchange eFormat = text[0] == 'a'   ? eZuExchangeBal
                              : text[0] == 'm' ? eZuExchangeMetashape
                              : text[0] == 'o' ? eZuExchangeOpenCv
                                               : eZuExchangeColmap;
  constexpr const char* endings[] = {".yml", ".xml", ".json"};
  const Files read =
      ZuIsFolderExchange(eFormat) ? FilesOf(text) : Files{{"file", std::string(text.substr(1))}};
  ZuProject project, again;
  if (!Import(eFormat, read, &project)) return 0;
  for (const bool bBinary : {false, true}) {
    Files files;
    ZuExchangeReport report;
    ZuExportOptions options;
    options.dMaxError = 1e300;
    options.bBinary = bBinary;
    options.strName = std::string("f") + endings[text.size() % 3];
    if (!ZuExportPhotos(eFormat, project, {}, options, &files, &report)) continue;
    if (!ZuIsFolderExchange(eFormat)) files.resize(1);  // a file a camera
    Require(Import(eFormat, files, &again));
  }
  return 0;
}
