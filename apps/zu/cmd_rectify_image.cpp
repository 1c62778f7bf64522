// zu rectify --image: the plane, the picture, what is told of them.
#include "cmd_rectify_image.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>

#include "adjust_options.h"
#include "id_list.h"
#include "plane_option.h"
#include "project_files.h"
#include "project_input.h"
#include "rectify_conditions.h"
#include "rectify_control.h"
#include "svg.h"
#include "text_table.h"
#include "zu/adjust/fit_primitives.h"
#include "zu/adjust/zusp_line_fit.h"
#include "zu/foundation/strict_number.h"
#include "zu/image/rectify.h"
#include "zu/photo/photo_view.h"
#include "zu/rectify/calc_zusp.h"
#include "zu/rectify/plane_frame.h"

namespace cli {

namespace {

constexpr double kMostPixels = 4294967295.0;  // of a result
constexpr double kMostSheetPixels = 6e7;      // of the picture on a sheet
constexpr double kDegree = 3.14159265358979323846 / 180.0;

bool IsIdentity(const ZuMatrix& m) {
  for (int i = 0; i < 9; ++i) {
    if (m.GetData()[i] != (i % 4 == 0 ? 1.0 : 0.0)) return false;
  }
  return true;
}

// A photo with its picture and its way to the plane.
struct Source {
  const ZuPhoto* pPhoto;
  ZuImage image;
  std::unique_ptr<ZuPixelMap> pMap;
};

class RectifyImage {
 public:
  RectifyImage(const RectifyImageValues& values, Context& context)
      : m_values(values),
        m_context(context),
        m_file(values.strProject, kProjectFile),
        m_strName(m_file.Name()) {}

  ExitCode Run() {
    CheckCall();
    ReadProjectFile(m_values.strProject, m_context, &m_project);
    for (const unsigned uId : ParseIds(m_values.strPhotos, "--photo")) {
      m_photos.push_back(&FindPhoto(m_project, uId, m_file));
    }
    if (!m_values.strPlane.empty()) {
      TakePlane();
    } else {
      TakeRectification();
    }
    MakeRaster();
    MakePicture();
    if (m_values.sheet.IsAsked()) WriteSheet();
    if (!m_values.strProjectOut.empty()) WriteOrthoPhoto();
    Report();
    return m_bControl ? m_control.eCode : kGood;
  }

 private:
  [[noreturn]] void Fail(const std::string& strText, ExitCode eCode = kUndetermined) const {
    throw CommandError(eCode, m_strName + ": " + strText);
  }

  void CheckCall() const {
    const bool bZusp = m_values.uZusp != 0, bConditions = !m_values.strConditions.empty();
    const int iWays =
        !m_values.strPlane.empty() + !m_values.strControl.empty() + (bZusp || bConditions ? 1 : 0);
    if (iWays != 1) {
      throw CommandError(kUsage,
                         "--image needs one of --plane, --zusp, --control and --conditions; of "
                         "these --zusp and --conditions go together");
    }
    if (bConditions && m_values.bLines) {
      throw CommandError(kUsage,
                         "--conditions and --lines are two ways to the same: leave one out");
    }
    if (m_values.strOut.empty()) throw CommandError(kUsage, "--image needs -o FILE");
    if (!(m_values.dPixel > 0.0)) {
      throw CommandError(kUsage, "--image needs --pixel, the size of a pixel in object units");
    }
    CheckPictureEnding(m_values.strOut);
    if (!m_values.strProjectOut.empty()) CheckProjectEnding(m_values.strProjectOut);
    CheckSheetOptions(m_values.sheet);
  }

  // --- The plane -----------------------------------------------------------------------------

  void TakePlane() {
    for (const ZuPhoto* p : m_photos) {
      CheckNothingLacks(m_project, *p, eZuNeedPixels | eZuNeedCamera | eZuNeedOrientation, m_file);
    }
    FindPlane();
    TurnToViewers();
    ZuMakePlaneFrame(m_plane, &m_raster.m_toObject);
    m_bMap = ZuIsMapPlane(m_plane);
    if (!m_points.IsEmpty()) RegionOfPoints();
    for (const ZuPhoto* p : m_photos) {
      ZuRegion region;
      if (!m_points.IsEmpty() || !m_values.strRegion.empty()) break;
      if (!ZuPhotoFootprint(*p, m_plane, m_raster.m_toObject, m_values.bFlip, &region)) {
        Fail("photo " + std::to_string(p->GetId()) +
             " sees beyond the plane; --region would be right");
      }
      if (p != m_photos.front()) {
        region = m_region.Union(region);
        region.Sort();
      }
      m_region = region;
    }
  }

  // A plane that is told, or the one through the points of a file.
  void FindPlane() {
    if (FindToldPlane(m_values.strPlane, m_project, m_strName, &m_plane)) return;
    ReadPoints(m_values.strPlane, m_values.format, m_context, &m_points);
    ZuFitOptions options;
    options.tests.bSnoop = false;
    const ZuPlaneFit fit = ZuFitPlane(FitPointsOf(m_points, m_values.format.strColumns), options);
    if (fit.fit.eStatus != ZuAdjustStatus::Good) {
      throw CommandError(kUndetermined,
                         NameInMessages(m_values.strPlane) + ": " +
                             ZuAdjustStatusText(fit.fit.eStatus) +
                             "; three or more points spread over the plane would be right");
    }
    m_plane = fit.plane;
  }

  // A wall is looked at against its normal; a map keeps its sense.
  void TurnToViewers() {
    double dSide = 0.0;
    for (const ZuPhoto* p : m_photos) {
      const ZuVector& X0 = p->GetPosAOR();
      dSide += m_plane.Dist(X0[1], X0[2], X0[3]);
    }
    if (dSide >= 0.0) return;
    for (double* pd : {&m_plane.A(), &m_plane.B(), &m_plane.C(), &m_plane.D()}) *pd = -*pd;
  }

  void RegionOfPoints() {
    int iError = 0;
    ZuMatrix fromObject(m_raster.m_toObject);
    fromObject.Invert(&iError);
    for (const ZuPoint* p = m_points.First(); p != nullptr; p = p->Next()) {
      double x = p->m_dX, y = p->m_dY, z = p->m_dZ;
      fromObject.PTrans3D(&x, &y, &z);
      m_labels.push_back({p->GetId(), x, y});
      Grow(x, y);
    }
  }

  void Grow(double x, double y) {
    if (m_labels.size() == 1) m_region.Set(x, y, x, y);
    m_region.Left() = std::min(m_region.Left(), x);
    m_region.Right() = std::max(m_region.Right(), x);
    m_region.Bottom() = std::min(m_region.Bottom(), y);
    m_region.Top() = std::max(m_region.Top(), y);
  }

  // --- A rectification -----------------------------------------------------------------------

  void TakeRectification() {
    if (m_photos.size() != 1) {
      throw CommandError(kUsage, "several photos are joined with --plane alone");
    }
    const ZuPhoto& photo = *m_photos[0];
    if (!m_values.strConditions.empty()) {
      FitConditions(photo);
    } else if (m_values.uZusp != 0) {
      TakeStored(photo);
    } else {
      FitControl(photo);
    }
    m_raster.m_toObject = m_trafo.GetTransMat();
    const double* M = m_raster.m_toObject.GetData();
    constexpr double adLevel[] = {1, 0, 0, 1};
    m_bMap = !m_bLines && !m_bConditions && M[0] == adLevel[0] && M[1] == adLevel[1] &&
             M[4] == adLevel[2] && M[5] == adLevel[3];
  }

  void FindStored(const ZuPhoto& photo) {
    const ZuZuspTrafo* p = photo.FindZuspTrafo(m_values.uZusp);
    if (p == nullptr) {
      Fail("photo " + std::to_string(photo.GetId()) + " has no rectification " +
               std::to_string(m_values.uZusp),
           kBadInput);
    }
    m_trafo = *p;
  }

  void TakeStored(const ZuPhoto& photo) {
    FindStored(photo);
    const std::string strLacks = m_project.LacksRectification(photo.GetId(), m_values.uZusp);
    if (!strLacks.empty()) Fail("rectification " + std::to_string(m_values.uZusp) + " " + strLacks);
    const bool bEmpty = IsIdentity(m_trafo.GetZuspMat());
    const bool bPoints = m_trafo.GetPPList().Count() > 0;
    if (m_values.bLines || (bEmpty && !bPoints && m_trafo.IsByParallelDef())) {
      FitLines(photo);
    } else if (bEmpty && bPoints) {
      ComputeStored();
    }
    if (!ZuZuspFootprint(photo, m_trafo, &m_region) && m_values.strRegion.empty()) {
      Fail("rectification " + std::to_string(m_values.uZusp) +
           " has no valid region before the horizon; --region would be right");
    }
  }

  // From what is parallel, perpendicular or of known length in the picture.
  void FitLines(const ZuPhoto& photo) {
    ZuZuspLineOptions options;
    options.bEstimateC = m_values.bEstimateC;
    m_lines = ZuFitZuspLines(m_trafo, photo.GetCamera(), options);
    if (m_lines.eStatus != ZuAdjustStatus::Good) {
      Fail("rectification " + std::to_string(m_values.uZusp) + ", its lines: " + m_lines.strWhy);
    }
    m_lines.Store(&m_trafo);
    m_bLines = true;
  }

  // From a file of conditions between the points of the record, or between those measured.
  void FitConditions(const ZuPhoto& photo) {
    if (m_values.uZusp != 0) {
      FindStored(photo);
    } else {
      DefineByMeasured(photo, Measured(photo), &m_trafo);
    }
    m_conditions = FitConditionsOf(
        m_values.strConditions, m_strName + ", photo " + std::to_string(photo.GetId()), &m_trafo);
    m_bConditions = true;
    for (const RectifyConditions::Point& p : m_conditions.points) {
      m_labels.push_back({p.uId, p.x, p.y});
      Grow(p.x, p.y);
    }
    if (m_trafo.HasRegion()) ZuZuspFootprint(photo, m_trafo, &m_region);
  }

  // A record that has its points and no matrices yet.
  void ComputeStored() {
    ZuCalcZusp calc;
    if (!calc.Calc(&m_trafo)) {
      Fail("rectification " + std::to_string(m_values.uZusp) + " has no matrices, and " +
           calc.GetStatusText() + " in DEFPOINTS and MEASPOINTS to compute them");
    }
    m_context.Warn("rectification " + std::to_string(m_values.uZusp) +
                   " is computed from its points, sigma0 " + Significant(calc.GetSigma0()));
    m_context.Root()["sigma0"] = calc.GetSigma0();
  }

  // Pixels as the photo's transformations take them.
  ZuPointList Measured(const ZuPhoto& photo) const {
    const ZuPointList* pMeasured = m_project.FindMeasurements(photo.GetId());
    ZuPointList measured;
    if (pMeasured != nullptr) measured = *pMeasured;
    for (ZuPoint* p = measured.First(); p != nullptr; p = p->Next()) {
      if (m_values.bFlip) p->m_dY = ZuTurnPixelY(photo, p->m_dY);
    }
    return measured;
  }

  void FitControl(const ZuPhoto& photo) {
    const ZuPointList measured = Measured(photo);
    ReadPoints(m_values.strControl, m_values.format, m_context, &m_points);
    ZuTrafo2dOptions options;
    options.dSigma = m_values.adjust.dSigma;
    options.tests = TestsOf(m_values.adjust, m_values.adjust.bTest);
    const PointRoles roles(m_values.choice, NameInMessages(m_values.strControl), {&m_points});
    const ZuPointList checks = roles.TakeOut(measured, &m_points);
    m_control = FitRectification(photo, measured, m_points, m_values.format.strColumns, options,
                                 m_strName + ", photo " + std::to_string(photo.GetId()), &m_trafo);
    m_bControl = true;
    CheckControl(photo, measured, checks, m_values.choice, roles, m_trafo, &m_control, m_context);
    for (const ZuTrafo2dPair& pair : m_control.pairs) {
      m_labels.push_back({pair.uId, pair.adTarget[0], pair.adTarget[1]});
      Grow(pair.adTarget[0], pair.adTarget[1]);
    }
  }

  // --- The picture ---------------------------------------------------------------------------

  void MakeRaster() {
    if (!m_values.strRegion.empty()) {
      double ad[4];
      size_t uBegin = 0;
      for (int i = 0; i < 4; ++i) {
        const size_t uEnd =
            std::min(m_values.strRegion.find(',', uBegin), m_values.strRegion.size());
        const bool bLast = uEnd == m_values.strRegion.size();
        if (uBegin > uEnd || bLast != (i == 3) ||
            !ZuParseNumber(m_values.strRegion.substr(uBegin, uEnd - uBegin), ad + i)) {
          throw CommandError(kUsage, "--region: x1,y1,x2,y2 are needed, such as 0,0,12.5,8");
        }
        uBegin = uEnd + 1;
      }
      m_region = ZuRegion(ad[0], ad[1], ad[2], ad[3]);
    }
    if (!m_raster.SetRegion(m_region, m_values.dPixel) ||
        1.0 * m_raster.m_iWidth * m_raster.m_iHeight > kMostPixels) {
      throw CommandError(
          kUsage, "a region of " + Shortest(m_region.Width()) + " x " +
                      Shortest(m_region.Height()) + " with pixels of " + Shortest(m_values.dPixel) +
                      " makes no picture; 1 to a million pixels a side, 4294967295 in all");
    }
  }

  // The picture of a photo stands where the project names it, or beside the project.
  std::string PictureOf(const ZuPhoto& photo) const {
    namespace fs = std::filesystem;
    const fs::path given(m_values.strPictures);
    if (!given.empty() && !fs::is_directory(given)) {
      if (m_photos.size() == 1) return given.string();
      throw CommandError(kUsage, "--pictures: a folder is needed for several photos");
    }
    std::string strName = photo.GetName().chars();
    if (strName.empty()) {
      Fail("photo " + std::to_string(photo.GetId()) +
           " names no picture; --pictures FILE tells it");
    }
    std::replace(strName.begin(), strName.end(), '\\', '/');
    const fs::path name(strName);
    const fs::path folder = given.empty() ? fs::path(m_values.strProject).parent_path() : given;
    if (given.empty() && fs::exists(folder / name)) return (folder / name).string();
    return (folder / name.filename()).string();
  }

  std::unique_ptr<ZuPixelMap> MakeMap(const ZuPlaneRaster& raster, const ZuPhoto& photo) const {
    if (!m_values.strPlane.empty()) {
      return std::make_unique<ZuPlaneToPhotoMap>(raster, photo, m_values.bFlip);
    }
    auto pMap = std::make_unique<ZuZuspToPhotoMap>(raster, m_trafo, photo, m_values.bFlip);
    if (!pMap->IsValid()) Fail("the rectification has a singular matrix");
    return pMap;
  }

  void MakePicture() {
    ZuResampler resampler(m_raster.m_iWidth, m_raster.m_iHeight, m_values.picture.Kernel());
    for (const ZuPhoto* p : m_photos) {
      Source source;
      source.pPhoto = p;
      source.pMap = MakeMap(m_raster, *p);
      source.image = ReadPicture(PictureOf(*p), *p, m_context);
      m_sources.push_back(std::move(source));
    }
    for (const Source& source : m_sources) {
      if (resampler.AddSource(&source.image, source.pMap.get())) continue;
      Fail("photo " + std::to_string(source.pPhoto->GetId()) +
               " has other colours or bits than the ones before; pictures of one kind would be "
               "right",
           kBadInput);
    }
    ZuImageWriteOptions options;
    const double d = m_raster.m_dPixel;
    const ZuImageGrid grid{m_raster.m_dLeft + 0.5 * d, m_raster.m_dTop - 0.5 * d, d};
    if (m_bMap) options.m_map = grid;
    options.m_iEpsg = static_cast<int>(m_values.uEpsg);
    WritePicture(&resampler, m_values.strOut, options, m_values.picture, m_context);
    m_used = resampler.GetUsed();
    if (std::all_of(m_used.begin(), m_used.end(), [](std::int64_t n) { return n == 0; })) {
      Fail("the photos show nothing of the region " + RegionText());
    }
    m_context.NewOutput(ZuWorldFileName(m_values.strOut)).Stream() << ZuWorldFileText(grid);
  }

  std::string RegionText() const {
    const ZuRegion region = m_raster.GetRegion();
    // To a millionth of a pixel: what is less is rounding.
    const double dPower =
        std::pow(10.0, std::clamp(6.0 - std::floor(std::log10(m_raster.m_dPixel)), 0.0, 12.0));
    const auto bound = [dPower](double d) { return Shortest(std::round(d * dPower) / dPower); };
    return bound(region.Left()) + "," + bound(region.Bottom()) + "," + bound(region.Right()) + "," +
           bound(region.Top());
  }

  // The picture of the sheet is made anew, in the pixels of print, where these are coarser.
  void WriteSheet() {
    const ZuRegion region = m_raster.GetRegion();
    const double dArea = region.Width() * region.Height();
    ZuPlaneRaster raster = m_raster;
    raster.SetRegion(region, std::max({m_raster.m_dPixel, SheetPixel(m_values.sheet),
                                       std::sqrt(dArea / kMostSheetPixels)}));
    std::vector<std::unique_ptr<ZuPixelMap>> maps;
    ZuResampler resampler(raster.m_iWidth, raster.m_iHeight, m_values.picture.Kernel());
    for (const Source& source : m_sources) {
      maps.push_back(MakeMap(raster, *source.pPhoto));
      resampler.AddSource(&source.image, maps.back().get());
    }
    SheetContent content;
    content.strTitle = std::filesystem::path(m_values.strOut).stem().string();
    content.region = raster.GetRegion();
    content.strJpeg = MakeJpeg(&resampler, m_values.strOut);
    for (const Label& label : m_labels) {
      content.points.push_back({std::to_string(label.uId), label.x, label.y});
    }
    const std::string strFile = m_values.sheet.FileBeside(m_values.strOut);
    m_context.NewOutput(strFile).Stream() << MakeSheet(content, m_values.sheet, strFile);
    m_context.Root()["sheet"] = strFile;
  }

  void WriteOrthoPhoto() {
    unsigned uId = 0;
    for (const ZuPhoto* p = m_project.PhotoList().First(); p != nullptr; p = p->Next()) {
      uId = std::max(uId, p->GetId());
    }
    for (const ZuPhoto* p = m_project.OrthoPhotoList().First(); p != nullptr; p = p->Next()) {
      uId = std::max(uId, p->GetId());
    }
    const std::string strFile = std::filesystem::path(m_values.strOut).filename().string();
    m_project.OrthoPhotoList().Add(new ZuOrthoPhoto(ZuMakeOrthoPhoto(uId + 1, strFile, m_raster)));
    WriteProjectFile(m_values.strProjectOut, m_context, m_project);
    m_context.Root()["orthophoto"] = uId + 1;
  }

  // --- What is told --------------------------------------------------------------------------

  // Degrees between the ray to the middle of the picture and the normal; NaN without a plane.
  double AngleOf(const ZuPhoto& photo) const {
    if (m_values.strPlane.empty()) return NAN;
    const ZuRegion region = m_raster.GetRegion();
    double P[3];
    m_raster.ToObject(region.GetCenter().m_dX, region.GetCenter().m_dY, P);
    const ZuVector& X0 = photo.GetPosAOR();
    const double v[3] = {X0[1] - P[0], X0[2] - P[1], X0[3] - P[2]};
    const double dCos =
        (m_plane.A() * v[0] + m_plane.B() * v[1] + m_plane.C() * v[2]) /
        (std::hypot(v[0], v[1], v[2]) * std::hypot(m_plane.A(), m_plane.B(), m_plane.C()));
    return std::acos(std::clamp(std::fabs(dCos), 0.0, 1.0)) / kDegree;
  }

  void Report() {
    Json& root = m_context.Root();
    const ZuRegion region = m_raster.GetRegion();
    root["width"] = m_raster.m_iWidth;
    root["height"] = m_raster.m_iHeight;
    root["pixel"] = m_raster.m_dPixel;
    root["region"] = {region.Left(), region.Bottom(), region.Right(), region.Top()};
    root["map"] = m_bMap;
    root["to_object"] = Json::array();
    for (int i = 1; i <= 4; ++i) {
      const double* p = m_raster.m_toObject[i] + 1;
      root["to_object"].push_back({p[0], p[1], p[2], p[3]});
    }
    if (m_bControl) {
      root["control"] = ControlJson(m_control);
      WriteControl(m_control, m_context.Text());
    }
    if (m_bLines) ReportLines();
    if (m_bConditions) {
      root["conditions"] = ConditionsJson(m_conditions);
      WriteConditions(m_conditions, m_context.Text());
    }
    m_context.Text() << m_values.strOut << ": " << m_raster.m_iWidth << " x " << m_raster.m_iHeight
                     << " pixels of " << Shortest(m_raster.m_dPixel) << ", region " << RegionText()
                     << (m_bMap ? ", a map" : "") << "\n\n";
    TextTable table;
    table.AddColumn("photo");
    table.AddColumn("file", TextTable::eLeft);
    for (const char* szTitle : {"share", "pixel on the plane", "angle"}) table.AddColumn(szTitle);
    root["photos"] = Json::array();
    for (size_t i = 0; i < m_sources.size(); ++i) {
      const ZuPhoto& photo = *m_sources[i].pPhoto;
      const double dShare = static_cast<double>(m_used[i]) / m_raster.m_iWidth / m_raster.m_iHeight;
      double dLong = NAN, dShort = NAN;
      ZuPixelScaleAt(*m_sources[i].pMap, 0.5 * (m_raster.m_iWidth - 1),
                     0.5 * (m_raster.m_iHeight - 1), &dLong, &dShort);
      dLong *= m_raster.m_dPixel;
      dShort *= m_raster.m_dPixel;
      const double dAngle = AngleOf(photo);
      table.AddRow({std::to_string(photo.GetId()), photo.GetName().chars(),
                    Fixed(100.0 * dShare, 1) + " %",
                    std::isfinite(dLong) ? Significant(dShort) + " x " + Significant(dLong) : "-",
                    std::isfinite(dAngle) ? Fixed(dAngle, 1) : "-"});
      root["photos"].push_back(Json{{"id", photo.GetId()},
                                    {"name", photo.GetName().chars()},
                                    {"share", dShare},
                                    {"pixel_on_plane", {dShort, dLong}},
                                    {"angle_deg", dAngle}});
    }
    table.Write(m_context.Text());
  }

  void ReportLines() {
    std::ostream& text = m_context.Text();
    text << Counted(static_cast<long long>(m_lines.lines.size()), "line")
         << ", residuals: across the line in the image [mm], angle [gon] and length in the "
            "plane\n\n";
    TextTable table;
    for (const char* szTitle : {"line", "across", "angle", "length"}) table.AddColumn(szTitle);
    table.AddColumn("", TextTable::eLeft);
    Json lines = Json::array();
    constexpr double kGon = 200.0 / 3.14159265358979323846;
    for (const ZuZuspLineResidual& line : m_lines.lines) {
      table.AddRow({std::to_string(line.uLine), Fixed(line.dAcross, 5),
                    Fixed(line.dAngle * kGon, 4), Significant(line.dLength),
                    line.bUsed ? "" : "no condition"});
      lines.push_back(Json{{"id", line.uLine},
                           {"used", line.bUsed},
                           {"across", line.dAcross},
                           {"angle_rad", line.dAngle},
                           {"length", line.dLength}});
    }
    table.Write(text);
    text << "\nsigma0  " << Significant(m_lines.dSigma0) << " mm, " << m_lines.iRedundancy
         << " redundant\nc       " << Shortest(m_lines.dC)
         << (m_lines.dCSd > 0.0 ? "  sd " + Significant(m_lines.dCSd) : "")
         << (m_lines.bScaled
                 ? ""
                 : "\nno line has a length: the unit is the photo's distance from the plane")
         << "\n\n";
    m_context.Root()["lines"] =
        Json{{"sigma0", m_lines.dSigma0}, {"redundancy", m_lines.iRedundancy}, {"c", m_lines.dC},
             {"c_sd", m_lines.dCSd},      {"scaled", m_lines.bScaled},         {"lines", lines}};
  }

  struct Label {
    unsigned uId;
    double x, y;
  };

  const RectifyImageValues& m_values;
  Context& m_context;
  InputFile m_file;
  std::string m_strName;
  ZuProject m_project;
  std::vector<ZuPhoto*> m_photos;
  ZuPlane m_plane;
  ZuPointList m_points;         // of the plane, or control
  std::vector<Label> m_labels;  // these in the plane
  ZuZuspTrafo m_trafo;
  RectifyControl m_control;
  ZuZuspLineFit m_lines;
  RectifyConditions m_conditions;
  bool m_bControl = false, m_bLines = false, m_bConditions = false, m_bMap = false;
  ZuRegion m_region;
  ZuPlaneRaster m_raster;
  std::vector<Source> m_sources;
  std::vector<std::int64_t> m_used;
};

}  // namespace

void AddRectifyImageOptions(Options& options, RectifyImageValues* pValues) {
  options.Option(
      "--plane", "PLANE", &pValues->strPlane,
      "--image: plane of the project by id or name; A,B,C,D; three points of the project, as "
      "1,2,P7; or coordinate file of points that a plane is fitted to");
  options.Option("--control", "POINTS", &pValues->strControl,
                 "--image: coordinate file of points in the plane, measured in the photo");
  options.Flag("--lines", &pValues->bLines,
               "--image: compute --zusp from the lines and constraints of its PARALLELDEF");
  options.Flag("--estimate-c", &pValues->bEstimateC,
               "--image: find the camera constant from these lines, too");
  options.Option("--conditions", "FILE", &pValues->strConditions,
                 "--image: what is known of lines between measured points, one a line: parallel, "
                 "right or equal A B C D, ratio A B C D R, length A B L, xaxis A B; with --zusp "
                 "between its points, beside its constraints");
  options.Option("--pixel", "S", &pValues->dPixel, "--image: size of a pixel in object units");
  options.Above(0.0);
  options.Option("--region", "X1,Y1,X2,Y2", &pValues->strRegion,
                 "--image: part of the plane (that of the points, or what the photos show)");
  options.Option("--pictures", "PATH", &pValues->strPictures,
                 "--image: folder of the photos' pictures, or the picture (beside the project)");
  AddPictureOptions(options, &pValues->picture);
  AddSheetOptions(options, &pValues->sheet);
  options.Option("--epsg", "N", &pValues->uEpsg, "--image: code of the map system, for GeoTIFF");
  options.AtMost(65534);
  options.Flag("--flip", &pValues->bFlip,
               "--image: y of the pixels counts the other way than the transformations take it");
  AddPointChoice(options, &pValues->choice);
  AddTestFlag(options, &pValues->adjust);
  options.Option("--sigma", "S", &pValues->adjust.dSigma, kSigmaOfControl);
  options.AtLeast(0.0);
  AddTestLimits(options, &pValues->adjust.dAlpha, &pValues->adjust.dAlphaTotal);
  AddPointOptions(options, &pValues->format);
  options.Output("--project-out", "FILE", &pValues->strProjectOut,
                 "--image: the project with the picture as an orthophoto, as .prj or .json");
}

ExitCode RunRectifyImage(const RectifyImageValues& values, Context& context) {
  return RectifyImage(values, context).Run();
}

}  // namespace cli
