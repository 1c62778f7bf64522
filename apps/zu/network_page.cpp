#include "network_page.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "adjust_report.h"
#include "cmd_adjust_output.h"
#include "html_page.h"
#include "network_figures.h"
#include "svg.h"
#include "text_table.h"
#include "zu/project/project.h"

namespace cli {

namespace {

constexpr size_t kMostFigures = 24;
constexpr size_t kWorst = 20;
constexpr size_t kMostTexts = 40;
constexpr double kPyramid = 0.08;  // length of a camera's pyramid over the extent of the network
constexpr double kMilligon = 200.0e3 / std::numbers::pi;
constexpr const char* kAxes[] = {"X", "Y", "Z"};

size_t Index(int i) { return static_cast<size_t>(i); }

std::string Id(unsigned uId) { return std::to_string(uId); }

std::string WithSd(double dSd) { return Fixed(dSd, DecimalsFor(dSd)); }

double PointSd(const std::array<double, 6>& c) { return std::sqrt(c[0] + c[1] + c[2]); }

struct PhotoData {
  std::vector<ImageResidual> residuals;
  double dSum = 0.0;
  int iUsed = 0;

  double Rms() const { return iUsed > 0 ? std::sqrt(dSum / iUsed) : std::nan(""); }
};

// The report is put together by one object that knows all of the network.
class Page {
 public:
  Page(const NetworkPage& page, const ZuNetworkOfProject& made, const ZuNetworkResult& result,
       const ZuProject& project)
      : m_page(page), m_made(made), m_network(made.network), m_result(result), m_project(project) {
    m_photos.resize(m_network.photos.size());
    for (size_t i = 0; i < m_network.images.size(); ++i) {
      const ZuNetworkImagePoint& image = m_network.images[i];
      const ZuNetworkTest& test = m_result.imageTests[i];
      const auto v = ZuToPixels(m_made.pixels[i], test.adV);
      PhotoData& photo = m_photos[Index(image.iPhoto)];
      photo.residuals.push_back({m_made.pixels[i].x, m_made.pixels[i].y, v[0], v[1], test.bUsed});
      if (!test.bUsed) continue;
      photo.dSum += v[0] * v[0] + v[1] * v[1];
      ++photo.iUsed;
      m_iImages += 1;
      m_dSum += v[0] * v[0] + v[1] * v[1];
    }
    for (size_t i = 0; i < m_result.points.size(); ++i) {
      if (!m_result.pointUsed[i]) continue;
      ++m_iPoints;
      const double dSd = PointSd(m_result.pointCovariance[i]);
      if (!std::isfinite(dSd)) continue;
      m_dPointSum += dSd * dSd;
      if (m_iWorst < 0 || dSd > PointSd(m_result.pointCovariance[Index(m_iWorst)])) {
        m_iWorst = static_cast<int>(i);
      }
    }
  }

  AdjustReport Report() {
    m_report.strTitle = "Adjustment of a network";
    m_report.strUnit = m_page.strUnit;
    m_report.strVerdict = Verdict();
    m_report.inputs = m_page.inputs;
    m_report.strViews = "Network";
    AddFacts();
    AddCameras();
    AddViews();
    m_report.strSections = Warnings() + MeanResiduals() + Distortions() + Residuals();
    AddTests();
    AddTables();
    return m_report;
  }

 private:
  std::string Verdict() const {
    const double s = m_result.dSigma0;
    std::string strFit = "the residuals are as long as the standard deviations told";
    if (s > 1.2) strFit = "the residuals are " + Fixed(s, 2) + " times as long as told";
    if (s < 0.8) strFit = "the residuals are only " + Fixed(s, 2) + " times as long as told";
    std::string strText = Counted(Used(m_result.photoUsed), "photo") + ", " +
                          Counted(m_iPoints, "point") + ", " + Counted(m_iImages, "image point") +
                          ": sigma0 " + Fixed(s, 4) + ", " + strFit + ". RMS in the images " +
                          Fixed(std::sqrt(m_dSum / std::max(m_iImages, 1)), 3) + " pixels.";
    if (m_iWorst >= 0 && m_dPointSum > 0.0) {
      const double dRms = std::sqrt(m_dPointSum / m_iPoints);
      const double dWorst = PointSd(m_result.pointCovariance[Index(m_iWorst)]);
      strText += " A point is known to " + WithSd(dRms) + " " + m_page.strUnit + ", the worst, " +
                 Id(m_network.points[Index(m_iWorst)].uId) + ", to " + WithSd(dWorst) + ".";
    }
    const auto iAside = static_cast<long long>(m_result.setAside.size());
    if (iAside > 0) strText += " " + Counted(iAside, "observation") + " set aside.";
    return strText;
  }

  static long long Used(const std::vector<char>& flags) {
    return std::count_if(flags.begin(), flags.end(), [](char b) { return b != 0; });
  }

  void AddFacts() {
    auto& facts = m_report.facts;
    facts.emplace_back("sigma0 a posteriori", Fixed(m_result.dSigma0, 6));
    facts.emplace_back("standard deviations",
                       std::string("with sigma0 ") + ZuSigmaKindText(m_result.sigmaKind));
    facts.emplace_back("image coordinates", m_page.strSigma + ", where none is told");
    facts.emplace_back("observations", std::to_string(m_result.iObservations));
    facts.emplace_back("unknowns", std::to_string(m_result.iUnknowns));
    facts.emplace_back("inner conditions", std::to_string(m_result.iDefect));
    facts.emplace_back("redundancy", std::to_string(m_result.iRedundancy));
    facts.emplace_back("steps", std::to_string(m_result.iSteps));
  }

  std::vector<int> Estimated(size_t iCamera) const {
    std::vector<int> parameters;
    for (int k = 0; k < ZuNetworkParameters; ++k) {
      if (m_network.cameras[iCamera].adSd[Index(k)] > 0.0) parameters.push_back(k);
    }
    return parameters;
  }

  void AddCameras() {
    m_report.strParameters =
        "Of each camera what was estimated. A coefficient shorter than 1.96 of its standard "
        "deviations is not significant; the camera is better off without it.";
    for (size_t i = 0; i < m_result.cameras.size(); ++i) {
      const ZuCamera& camera = m_result.cameras[i];
      for (const int k : Estimated(i)) {
        const double dValue = ZuNetworkParameterValue(camera, k);
        const double dSd = m_result.cameraSd[i][Index(k)];
        const int iDecimals =
            dSd > 0.0 ? std::clamp(2 - static_cast<int>(std::floor(std::log10(dSd))), 3, 15) : 6;
        const bool bWeak = k >= ZuNetworkA1 && std::fabs(dValue) < 1.96 * dSd;
        m_report.parameters.push_back({"camera " + Id(camera.GetId()) + "  " +
                                           ZuNetworkParameterName(k) +
                                           (bWeak ? "  (not significant)" : ""),
                                       Fixed(dValue, iDecimals), Fixed(dSd, iDecimals), "mm"});
      }
    }
  }

  // Longest side of the box of points and projection centres.
  double Extent() const {
    double adLow[3], adHigh[3];
    bool bFirst = true;
    const auto add = [&](const std::array<double, 3>& p) {
      for (size_t k = 0; k < 3; ++k) {
        adLow[k] = bFirst ? p[k] : std::min(adLow[k], p[k]);
        adHigh[k] = bFirst ? p[k] : std::max(adHigh[k], p[k]);
      }
      bFirst = false;
    };
    for (size_t i = 0; i < m_result.points.size(); ++i) {
      if (m_result.pointUsed[i]) add(m_result.points[i]);
    }
    for (size_t i = 0; i < m_result.photos.size(); ++i) {
      if (m_result.photoUsed[i]) add(m_result.photos[i].adPosition);
    }
    double d = 0.0;
    for (int k = 0; k < 3 && !bFirst; ++k) d = std::max(d, adHigh[k] - adLow[k]);
    return d;
  }

  // From the projection centre to the corners of the image and around them.
  std::vector<std::array<double, 3>> Pyramid(size_t iPhoto, double dLength) const {
    const ZuNetworkPhoto& photo = m_result.photos[iPhoto];
    const ZuCamera& camera = m_result.cameras[Index(photo.iCamera)];
    const double c = std::fabs(camera.m_dC);
    ImageExtent image = CameraExtent(camera);
    const ZuPhoto* pPhoto = m_project.PhotoList().Find(photo.uId);
    if (pPhoto != nullptr && pPhoto->GetDigiRegion().Area() != 0.0) image = PhotoExtent(*pPhoto);
    const double adCorners[4][2] = {{image.dLeft, image.dBottom},
                                    {image.dRight, image.dBottom},
                                    {image.dRight, image.dTop},
                                    {image.dLeft, image.dTop}};
    std::array<double, 3> corners[4];
    for (size_t i = 0; i < 4; ++i) {
      const double v[3] = {adCorners[i][0], adCorners[i][1], -c};
      corners[i] = photo.adPosition;
      for (size_t k = 0; k < 3; ++k) {
        for (size_t j = 0; j < 3; ++j) {
          corners[i][k] += photo.adRotation[3 * k + j] * v[j] * dLength / c;
        }
      }
    }
    const auto& apex = photo.adPosition;
    return {apex, corners[0], corners[1], apex,       corners[2], corners[3],
            apex, corners[3], corners[0], corners[1], corners[2]};
  }

  void AddViews() {
    const double dLength = kPyramid * Extent();
    for (const auto& [u, v] : {std::pair<size_t, size_t>{0, 1}, {0, 2}, {1, 2}}) {
      ReportView view;
      view.strTitle =
          std::string(u == 0 && v == 1 ? "Plan" : "View") + ", " + kAxes[u] + " and " + kAxes[v];
      view.strAxisX = kAxes[u];
      view.strAxisY = kAxes[v];
      view.strNote = "Pyramids: cameras; dots: points with their ellipses of 95 %.";
      constexpr size_t kMixed[3][3] = {{0, 3, 4}, {3, 1, 5}, {4, 5, 2}};
      for (size_t i = 0; i < m_result.points.size(); ++i) {
        if (!m_result.pointUsed[i]) continue;
        const auto& cov = m_result.pointCovariance[i];
        ReportView::Item item;
        item.x = m_result.points[i][u];
        item.y = m_result.points[i][v];
        item.cxx = cov[u];
        item.cyy = cov[v];
        item.cxy = cov[kMixed[u][v]];
        item.bArrow = false;
        item.strLabel = Id(m_network.points[i].uId);
        view.items.push_back(item);
      }
      for (size_t i = 0; i < m_result.photos.size(); ++i) {
        if (!m_result.photoUsed[i]) continue;
        ReportView::Line line;
        for (const auto& p : Pyramid(i, dLength)) line.points.emplace_back(p[u], p[v]);
        line.strLabel = Id(m_result.photos[i].uId);
        view.lines.push_back(std::move(line));
      }
      m_report.views.push_back(std::move(view));
    }
  }

  // Without its folder: a title is short.
  std::string NameOf(size_t iPhoto) const {
    const std::string& strName = m_made.photoNames[iPhoto];
    return strName.substr(strName.find_last_of("/\\") + 1);
  }

  std::string PictureOf(size_t iPhoto) const {
    const ZuPhoto* pPhoto = m_project.PhotoList().Find(m_network.photos[iPhoto].uId);
    return pPhoto != nullptr && m_page.picture ? m_page.picture(*pPhoto) : std::string();
  }

  ZuRegion FrameOf(size_t iPhoto) const {
    const ZuPhoto* pPhoto = m_project.PhotoList().Find(m_network.photos[iPhoto].uId);
    return ImageFrame(pPhoto != nullptr ? pPhoto->GetDigiRegion() : ZuRegion(),
                      m_photos[iPhoto].residuals);
  }

  std::string Warnings() const {
    std::vector<std::string> texts = m_made.warnings;
    texts.insert(texts.end(), m_result.warnings.begin(), m_result.warnings.end());
    for (const ZuNetworkSetAside& aside : m_result.setAside) {
      texts.push_back(SetAsideText(m_made, aside));
    }
    if (texts.empty()) return "";
    std::string strItems;
    for (size_t i = 0; i < std::min(kMostTexts, texts.size()); ++i) {
      strItems += "<li>" + XmlText(texts[i]) + "</li>\n";
    }
    if (texts.size() > kMostTexts) {
      strItems += "<li>and " + std::to_string(texts.size() - kMostTexts) + " more</li>\n";
    }
    return LongSection("What to look at", "", "<ul>\n" + strItems + "</ul>\n");
  }

  std::string MeanResiduals() const {
    std::string strFigures;
    for (size_t i = 0; i < m_result.cameras.size(); ++i) {
      std::vector<ImageResidual> all;
      ZuRegion frame;
      for (size_t k = 0; k < m_photos.size(); ++k) {
        if (Index(m_network.photos[k].iCamera) != i || m_photos[k].iUsed == 0) continue;
        if (all.empty()) frame = FrameOf(k);
        all.insert(all.end(), m_photos[k].residuals.begin(), m_photos[k].residuals.end());
      }
      if (all.empty() || !(frame.Width() > 0.0)) continue;
      const std::string strTitle = "Camera " + Id(m_result.cameras[i].GetId());
      const auto figure = MeanResidualFigure(strTitle, frame, all);
      if (figure) strFigures += "<figure>" + SvgOf(*figure) + "</figure>\n";
    }
    if (strFigures.empty()) return "";
    return LongSection("What the cameras' models left",
                       "Mean residual of each part of the image over all photos of a camera. Red: "
                       "more than three standard deviations from zero; red arrows that turn or "
                       "grow together ask for another parameter.",
                       "<div class='row'>\n" + strFigures + "</div>\n");
  }

  std::string Distortions() const {
    std::string strFigures;
    for (size_t i = 0; i < m_result.cameras.size(); ++i) {
      const ZuCamera& camera = m_result.cameras[i];
      if (camera.m_iMode == eCameraModePinhole) continue;
      ImageExtent image = CameraExtent(camera);
      for (size_t k = 0; k < m_photos.size(); ++k) {
        const ZuPhoto* p = m_project.PhotoList().Find(m_network.photos[k].uId);
        if (Index(m_network.photos[k].iCamera) != i || p == nullptr) continue;
        if (p->GetDigiRegion().Area() != 0.0) image = PhotoExtent(*p);
        break;
      }
      std::vector<ZuNetworkUnknown> unknowns;
      for (const int k : Estimated(i)) {
        unknowns.push_back({ZuNetworkUnknown::Camera, static_cast<int>(i), k});
      }
      const auto figure =
          DistortionBandFigure(camera, image, Estimated(i), m_result.Covariance(unknowns));
      if (figure) strFigures += "<figure>" + SvgOf(*figure) + "</figure>\n";
    }
    if (strFigures.empty()) return "";
    return LongSection("Distortion",
                       "Corrected less measured, away from the principal point, to the corner of "
                       "the image; dashed: the bounds of 95 %, from the coefficients alone.",
                       "<div class='row'>\n" + strFigures + "</div>\n");
  }

  std::string Residuals() const {
    std::vector<size_t> order;
    std::vector<ImageResidual> all;
    double dWidest = 0.0;
    for (size_t i = 0; i < m_photos.size(); ++i) {
      if (m_photos[i].iUsed == 0) continue;
      order.push_back(i);
      all.insert(all.end(), m_photos[i].residuals.begin(), m_photos[i].residuals.end());
      dWidest = std::max(dWidest, FrameOf(i).Width());
    }
    if (order.empty() || !(dWidest > 0.0)) return "";
    const bool bAll = order.size() <= kMostFigures;
    if (!bAll) {
      std::stable_sort(order.begin(), order.end(),
                       [&](size_t a, size_t b) { return m_photos[a].Rms() > m_photos[b].Rms(); });
      order.resize(kMostFigures);
      std::sort(order.begin(), order.end());
    }
    const double dFactor = ResidualFactor(all, dWidest);
    std::string strFigures;
    for (const size_t i : order) {
      const ZuRegion frame = FrameOf(i);
      if (!(frame.Width() > 0.0)) continue;
      strFigures += SvgOf(ResidualFigure(
          "Photo " + Id(m_network.photos[i].uId) + ", " + NameOf(i),
          "RMS " + Significant(m_photos[i].Rms()) + " px, " + Counted(m_photos[i].iUsed, "point"),
          frame, m_photos[i].residuals, dFactor, PictureOf(i)));
    }
    return LongSection("Residuals in the photos",
                       "Adjusted less measured, drawn " + SvgNumber(dFactor) +
                           " times as long in every photo; the frame is the image, y down. Red: "
                           "set aside; yellow: cut, with the length [px]." +
                           (bAll ? "" : " The 24 photos of the largest RMS."),
                       "<div class='row photos'>\n" + strFigures + "</div>\n");
  }

  void AddTests() {
    for (const auto* pTests : {&m_result.imageTests, &m_result.controlTests,
                               &m_result.distanceTests, &m_result.differenceTests}) {
      for (const ZuNetworkTest& test : *pTests) {
        for (int k = 0; test.bUsed && k < test.n; ++k) m_report.w.push_back(test.adW[k]);
      }
    }
    m_report.dLimit = ZuNormalLimit(m_page.dAlpha);
    m_report.strTest = "w, a priori";
  }

  void AddTables() {
    AddPhotoTable();
    AddWorstTable();
    AddControlTable();
    AddPointTable();
  }

  void AddPhotoTable() {
    const std::string strIn = " [" + m_page.strUnit + "]";
    AdjustReport::Table table{"Photos",
                              "sd rot: the largest of the three small rotations.",
                              {{"photo"}, {"file", true}, {"points"}, {"RMS [px]"}},
                              {}};
    for (const char* sz : {"X0", "Y0", "Z0", "sX", "sY", "sZ"})
      table.columns.push_back({sz + strIn});
    table.columns.push_back({"sd rot [mgon]"});
    for (size_t i = 0; i < m_result.photos.size(); ++i) {
      if (!m_result.photoUsed[i]) continue;
      std::vector<std::string> cells = {Id(m_result.photos[i].uId), m_made.photoNames[i],
                                        std::to_string(m_photos[i].iUsed),
                                        Fixed(m_photos[i].Rms(), 3)};
      const auto& sd = m_result.photoSd[i];
      for (const double d : m_result.photos[i].adPosition) cells.push_back(Fixed(d, 4));
      for (size_t k = 0; k < 3; ++k) cells.push_back(WithSd(sd[k]));
      cells.push_back(Fixed(std::max({sd[3], sd[4], sd[5]}) * kMilligon, 2));
      table.rows.push_back(cells);
    }
    m_report.tables.push_back(table);
  }

  void AddWorstTable() {
    std::vector<size_t> order;
    const auto test = [&](size_t i) { return m_result.imageTests[i].dTest; };
    for (size_t i = 0; i < m_result.imageTests.size(); ++i) {
      if (m_result.imageTests[i].bUsed && std::isfinite(test(i))) order.push_back(i);
    }
    const size_t uRows = std::min(kWorst, order.size());
    std::partial_sort(
        order.begin(), order.begin() + static_cast<std::ptrdiff_t>(uRows), order.end(),
        [&](size_t a, size_t b) { return test(a) != test(b) ? test(a) > test(b) : a < b; });
    AdjustReport::Table table{
        "The worst image points",
        "By the test T of both coordinates, with its limit; r: the share of an error that "
        "shows in the residual.",
        {{"photo"},
         {"point"},
         {"x [px]"},
         {"y [px]"},
         {"vx [px]"},
         {"vy [px]"},
         {"wx"},
         {"wy"},
         {"T"},
         {"limit"},
         {"r"}},
        {}};
    for (size_t i = 0; i < uRows; ++i) {
      const ZuNetworkTest& t = m_result.imageTests[order[i]];
      const ZuNetworkImagePoint& image = m_network.images[order[i]];
      const ZuNetworkPixel& pixel = m_made.pixels[order[i]];
      const auto v = ZuToPixels(pixel, t.adV);
      table.rows.push_back({Id(m_network.photos[Index(image.iPhoto)].uId),
                            Id(m_network.points[Index(image.iPoint)].uId), Fixed(pixel.x, 2),
                            Fixed(pixel.y, 2), Fixed(v[0], 3), Fixed(v[1], 3), Fixed(t.adW[0], 2),
                            Fixed(t.adW[1], 2), Fixed(t.dTest, 2), Fixed(t.dLimit, 2),
                            Fixed(0.5 * (t.adR[0] + t.adR[1]), 2)});
    }
    m_report.tables.push_back(table);
  }

  void AddControlTable() {
    AdjustReport::Table table{"Control and distances",
                              "What carries a standard deviation; residuals are adjusted less "
                              "given.",
                              {{"observation", true}, {"v [" + m_page.strUnit + "]"}, {"w"}, {"r"}},
                              {}};
    const auto add = [&](const std::string& strName, const ZuNetworkTest& t, int k) {
      table.rows.push_back({strName, Fixed(t.adV[k], 5), Fixed(t.adW[k], 2), Fixed(t.adR[k], 2)});
    };
    for (size_t i = 0; i < m_result.controlTests.size(); ++i) {
      const ZuNetworkPoint& point = m_network.points[i];
      int n = 0;
      for (int k = 0; k < 3 && m_result.controlTests[i].bUsed; ++k) {
        if (!(point.iControl >> k & 1) || !(point.adGivenSd[Index(k)] > 0.0)) continue;
        add("point " + Id(point.uId) + " " + kAxes[k], m_result.controlTests[i], n++);
      }
    }
    for (size_t i = 0; i < m_result.distanceTests.size(); ++i) {
      if (!m_result.distanceTests[i].bUsed) continue;
      const ZuNetworkDistance& d = m_network.distances[i];
      add("distance " + Id(m_network.points[Index(d.iFrom)].uId) + " to " +
              Id(m_network.points[Index(d.iTo)].uId),
          m_result.distanceTests[i], 0);
    }
    m_report.tables.push_back(table);
  }

  void AddPointTable() {
    const std::string strIn = " [" + m_page.strUnit + "]";
    std::vector<size_t> order;
    for (size_t i = 0; i < m_result.points.size(); ++i) {
      if (m_result.pointUsed[i]) order.push_back(i);
    }
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
      return m_network.points[a].uId < m_network.points[b].uId;
    });
    AdjustReport::Table table{"Points", "Standard deviations 0: fixed.", {{"point"}, {"rays"}}, {}};
    for (const char* sz : {"X", "Y", "Z", "sX", "sY", "sZ"}) table.columns.push_back({sz + strIn});
    for (const size_t i : order) {
      std::vector<std::string> cells = {Id(m_network.points[i].uId),
                                        std::to_string(m_result.pointRays[i])};
      for (const double d : m_result.points[i]) cells.push_back(Fixed(d, 4));
      for (size_t k = 0; k < 3; ++k)
        cells.push_back(WithSd(std::sqrt(m_result.pointCovariance[i][k])));
      table.rows.push_back(cells);
    }
    m_report.tables.push_back(table);
  }

  const NetworkPage& m_page;
  const ZuNetworkOfProject& m_made;
  const ZuNetwork& m_network;
  const ZuNetworkResult& m_result;
  const ZuProject& m_project;
  AdjustReport m_report;
  std::vector<PhotoData> m_photos;
  double m_dSum = 0.0, m_dPointSum = 0.0;
  int m_iImages = 0, m_iPoints = 0, m_iWorst = -1;
};

}  // namespace

AdjustReport NetworkReport(const NetworkPage& page, const ZuNetworkOfProject& made,
                           const ZuNetworkResult& result, const ZuProject& project) {
  return Page(page, made, result, project).Report();
}

}  // namespace cli
