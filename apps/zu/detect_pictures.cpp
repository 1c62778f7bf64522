#include "detect_pictures.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>
#include <tuple>

#include "input_file.h"
#include "progress_line.h"
#include "project_files.h"
#include "project_input.h"
#include "report_output.h"
#include "text_table.h"
#include "zu/image/overlay.h"
#include "zu/image/thumbnail.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

constexpr size_t kMostDrawn = 12;  // pictures of a report

// The photos of a project that pictures become.
class Photos {
 public:
  Photos(const DetectValues& values, ZuProject* pProject) : m_values(values), m_project(*pProject) {
    for (ZuPhoto* p = m_project.PhotoList().First(); p != nullptr; p = p->Next()) {
      m_uLast = std::max(m_uLast, p->GetId());
      m_byName[fs::path(p->GetName().chars()).filename().string()] = p;
      m_uLastCamera = std::max(m_uLastCamera, p->GetCamera().GetId());
    }
  }

  // The photo of the project, or a new one; *pstrNote is what was assumed for it.
  ZuPhoto* Of(const std::string& strPath, const ZuImageInfo& info, std::string* pstrNote) {
    const std::string strName = fs::path(strPath).filename().string();
    if (const auto found = m_byName.find(strName); found != m_byName.end()) {
      CheckSize(*found->second, info, strPath);
      return found->second;
    }
    ZuPhotoStart start = ZuStartPhoto(info, m_values.dPixelSize, m_values.dFocalLength);
    start.m_uCamera = CameraOf(start);
    *pstrNote = start.m_strNote;
    ZuPhoto photo(++m_uLast, NameInProject(strPath).c_str());
    start.SetUp(&photo);
    m_project.PhotoList().Add(photo);
    ZuPhoto* pPhoto = m_project.PhotoList().Find(m_uLast);
    m_byName[strName] = pPhoto;
    return pPhoto;
  }

 private:
  static void CheckSize(const ZuPhoto& photo, const ZuImageInfo& info, const std::string& strPath) {
    const ZuRegion& region = photo.GetDigiRegion();
    const long long iWidth = std::llround(region.Width() + 1.0);
    const long long iHeight = std::llround(region.Height() + 1.0);
    if (iWidth == info.m_iWidth && iHeight == info.m_iHeight) return;
    throw CommandError(kBadInput, strPath + ": " + std::to_string(info.m_iWidth) + " x " +
                                      std::to_string(info.m_iHeight) + " pixels; " +
                                      std::to_string(iWidth) + " x " + std::to_string(iHeight) +
                                      ", as photo " + std::to_string(photo.GetId()) +
                                      " has, would be right");
  }

  // Pictures of one camera and one focal length share its record.
  unsigned CameraOf(const ZuPhotoStart& start) {
    const auto key = std::make_tuple(start.m_strCamera, start.m_iWidth, start.m_iHeight,
                                     start.m_dPixelSize, start.m_dConstant);
    const auto [at, bNew] = m_cameras.try_emplace(key, m_uLastCamera + 1);
    if (bNew) ++m_uLastCamera;
    return at->second;
  }

  // From the folder of the project, so that both can be moved together.
  std::string NameInProject(const std::string& strPath) const {
    if (m_values.strOut == "-") return strPath;
    std::error_code error;
    const fs::path folder = fs::absolute(m_values.strOut, error).parent_path();
    const fs::path name = fs::proximate(fs::absolute(strPath, error), folder, error);
    return name.empty() ? strPath : name.string();
  }

  const DetectValues& m_values;
  ZuProject& m_project;
  unsigned m_uLast = 0, m_uLastCamera = 0;
  std::map<std::string, ZuPhoto*> m_byName;
  std::map<std::tuple<std::string, int, int, double, double>, unsigned> m_cameras;
};

void ReadPicture(const std::string& strPath, Context& context, Picture* pPicture) {
  const InputFile file(strPath, "a JPEG, PNG or TIFF picture");
  ZuFindingList findings;
  pPicture->strPath = strPath;
  const bool bWhole = ZuReadImage(file.Path(), &pPicture->image, &pPicture->info, &findings);
  if (!bWhole) FailOf(findings, file);
  WarnOf(findings, file, context);
}

void Store(const std::vector<ZuDetectedPoint>& found, ZuPointList* pPoints) {
  pPoints->Destroy();
  for (const ZuDetectedPoint& p : found) {
    ZuPoint point(p.m_uId, p.m_dX, p.m_dY);
    point.m_dDX = p.m_dDX;
    point.m_dDY = p.m_dDY;
    pPoints->Add(point);
  }
}

double MedianDeviation(const std::vector<ZuDetectedPoint>& points) {
  std::vector<double> deviations;
  for (const ZuDetectedPoint& p : points) {
    deviations.push_back(std::sqrt((p.m_dDX * p.m_dDX + p.m_dDY * p.m_dDY) / 2));
  }
  std::sort(deviations.begin(), deviations.end());
  return deviations.empty() ? std::nan("") : deviations[deviations.size() / 2];
}

Json JsonOf(const Picture& picture, const Found& found) {
  const ZuCamera& camera = picture.pPhoto->GetCamera();
  Json json{{"id", picture.pPhoto->GetId()},
            {"picture", picture.strPath},
            {"width", picture.info.m_iWidth},
            {"height", picture.info.m_iHeight},
            {"camera",
             {{"id", camera.GetId()},
              {"name", camera.GetName().chars()},
              {"c", camera.m_dC},
              {"pixel_size", picture.pPhoto->GetPixelSize()}}},
            {"points", Json::array()}};
  for (const ZuDetectedPoint& p : found.points) {
    json["points"].push_back(
        Json{{"id", p.m_uId}, {"x", p.m_dX}, {"y", p.m_dY}, {"sx", p.m_dDX}, {"sy", p.m_dDY}});
  }
  if (!found.strText.empty()) json["text"] = found.strText;
  json.update(found.more);
  return json;
}

void WriteOverlay(const std::string& strFolder, const Picture& picture, const Found& found,
                  Context& context) {
  std::error_code error;
  fs::create_directories(strFolder, error);
  const std::string strName = std::to_string(picture.pPhoto->GetId()) + "_" +
                              fs::path(picture.strPath).stem().string() + ".png";
  OutputFile& output = context.NewOutput((fs::path(strFolder) / strName).string());
  ZuExportOverlay(output.Stream(), picture.image, found.points);
}

// The picture, pale, with a ring around each point.
Drawing DetectionFigure(const Picture& picture, const Found& found) {
  constexpr double kWidth = 480.0, kTop = 44.0;
  constexpr size_t kMostLabelled = 120;
  const double dScale = kWidth / picture.image.GetWidth();
  const double dHeight = dScale * picture.image.GetHeight();
  Drawing drawing(kWidth + 2.0, kTop + dHeight + 2.0);
  drawing.SetTitle("Points found in " + picture.strPath);
  const std::string strName = fs::path(picture.strPath).filename().string();
  drawing.Text(1.0, 14.0, "Photo " + std::to_string(picture.pPhoto->GetId()) + ", " + strName, 14.0,
               Anchor::eStart, 0.0, Bold(Ink::kHeading));
  drawing.Text(1.0, 34.0,
               Counted(static_cast<long long>(found.points.size()), "point") + ", median sd " +
                   Fixed(MedianDeviation(found.points), 3) + " px",
               12.0);
  drawing.Picture(1.0, kTop, kWidth, dHeight, ZuMakeThumbnail(picture.image, 960), 0.6);
  drawing.Rect(1.0, kTop, kWidth, dHeight, Pen(Ink::kFrame, 1.0));
  for (const ZuDetectedPoint& p : found.points) {
    const double x = 1.0 + dScale * (p.m_dX + 0.5), y = kTop + dScale * (p.m_dY + 0.5);
    drawing.Circle(x, y, 3.0, Pen(Ink::kRed, 1.2));
    if (found.points.size() > kMostLabelled) continue;
    drawing.Text(x + 4.0, y - 3.0, std::to_string(p.m_uId), 9.0, Anchor::eStart, 0.0,
                 Rimmed(Ink::kBlue));
  }
  return drawing;
}

}  // namespace

void AddDetectOptions(Options& options, DetectValues* pValues) {
  options.Positionals("IMAGE", &pValues->pictures, "pictures: JPEG, PNG or TIFF");
  options.Option("--pixel", "MM", &pValues->dPixelSize,
                 "size of a pixel; else as the picture tells it");
  options.Above(0.0);
  options.Option("--focal", "MM", &pValues->dFocalLength,
                 "focal length; else as the picture tells it");
  options.Above(0.0);
  options.Option("--sigma-floor", "PX", &pValues->dSigmaFloor,
                 "joins the standard deviation that the picture tells of a point, in quadrature: "
                 "what print, lens and sensor add");
  options.AtLeast(0.0);
  options.Option("--overlay", "FOLDER", &pValues->strOverlay,
                 "pictures with what was found in them, for looking");
  options.Output("-o,--output", "PROJECT", &pValues->strOut,
                 "the project with photos and measurements, as .prj or .json");
  options.Required();
}

ExitCode DetectPictures(const DetectValues& values, Context& context, ZuProject* pProject,
                        const std::function<Found(const Picture&)>& detect) {
  CheckProjectEnding(values.strOut);
  Photos photos(values, pProject);
  TextTable table;
  table.AddColumn("photo");
  table.AddColumn("picture", TextTable::eLeft);
  for (const char* szTitle : {"points", "sd px"}) table.AddColumn(szTitle);
  context.Root()["photos"] = Json::array();
  std::set<std::string> notes;
  std::size_t uFound = 0;
  ProgressLine progress("detecting", context.IsQuiet());
  for (std::size_t i = 0; i < values.pictures.size(); ++i) {
    progress.Update(static_cast<double>(i) / static_cast<double>(values.pictures.size()));
    Picture picture;
    ReadPicture(values.pictures[i], context, &picture);
    std::string strNote;
    picture.pPhoto = photos.Of(picture.strPath, picture.info, &strNote);
    if (!strNote.empty() && notes.insert(strNote).second)
      context.Warn(picture.strPath + ": " + strNote);
    const Found found = detect(picture);
    if (!found.strText.empty()) context.Warn(picture.strPath + ": " + found.strText);
    if (!found.points.empty()) ++uFound;
    Store(found.points, &pProject->Measurements(picture.pPhoto->GetId()));
    table.AddRow({std::to_string(picture.pPhoto->GetId()), picture.strPath,
                  std::to_string(found.points.size()), Fixed(MedianDeviation(found.points), 3)});
    context.Root()["photos"].push_back(JsonOf(picture, found));
    if (context.WantsReport() && i < kMostDrawn) {
      context.Report().drawings.push_back(DetectionFigure(picture, found));
    }
    if (!values.strOverlay.empty()) WriteOverlay(values.strOverlay, picture, found, context);
  }
  if (uFound == 0) {
    throw CommandError(
        kUndetermined,
        values.pictures[0] +
            ": nothing was found in any picture; --help tells what is looked for, and zu "
            "examples detect has pictures to compare");
  }
  table.Write(context.Text());
  WriteProjectFile(values.strOut, context, *pProject);
  return uFound == values.pictures.size() ? kGood : kNotAcceptable;
}

}  // namespace cli
