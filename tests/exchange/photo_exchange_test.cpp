#include "zu/exchange/photo_exchange.h"

#include <filesystem>
#include <fstream>

#include "tests/support/other_program.h"
#include "tests/support/random_geometry.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/numerics/rotation_convention.h"
#include "zu/photo/photo.h"
#include "zu/points/point_list.h"
#include "zu/project/project.h"

namespace {

using Files = std::vector<ZuExchangeFile>;

std::string ProjectText(const ZuProject& project) {
  std::ostringstream os;
  project.Export(os);
  return os.str();
}

std::string FirstError(const ZuExchangeReport& report) {
  for (const ZuFinding& finding : report.findings) {
    if (finding.m_eSeverity == eZuSeverityError) return GetZuFindingLine(finding);
  }
  return "";
}

// Cameras of the given lines, with photos in random places that see six points each.
Files ColmapModel(const std::string& strCameras, int iCameras, RandomGeometry* pRandom) {
  std::string strImages = "# images\n", strPoints;
  for (int i = 1; i <= 40; ++i) {
    std::string strImage = std::to_string(3 * i), strFeatures = "7.25 8.5 -1";
    for (int k = 0; k < 4; ++k) strImage += ' ' + Text(pRandom->Value(1.0));
    for (int k = 0; k < 3; ++k) strImage += ' ' + Text(pRandom->Value(1000.0));
    strImages +=
        strImage + ' ' + std::to_string(i % iCameras + 1) + " a/b" + std::to_string(i) + ".jpg\n";
    for (int k = 1; k <= 6; ++k) {
      strFeatures += ' ' + Text(320.0 + pRandom->Value(320.0)) + ' ' +
                     Text(240.0 + pRandom->Value(240.0)) + ' ' + std::to_string(k);
    }
    strImages += strFeatures + '\n';
  }
  for (int k = 1; k <= 6; ++k) {
    strPoints += std::to_string(k) + ' ' + Text(pRandom->Value(10.0)) + ' ' +
                 Text(pRandom->Value(10.0)) + " 5 1 2 3 0.5";
    for (int i = 1; i <= 40; ++i)
      strPoints += ' ' + std::to_string(3 * i) + ' ' + std::to_string(k);
    strPoints += '\n';
  }
  return {{"cameras.txt", strCameras}, {"images.txt", strImages}, {"points3D.txt", strPoints}};
}

constexpr char kCameras[] =
    "1 SIMPLE_PINHOLE 640 480 500.3 320 240\n2 PINHOLE 640 480 501.123 499.7 0.1 240.4\n"
    "3 SIMPLE_RADIAL 640 480 600 319.2 255.7 -0.123456789\n4 RADIAL 640 480 600.5 320 240 -0.1 "
    "0.03\n"
    "5 OPENCV 640 480 533.33 531.1 318.7 242.2 -0.28 0.07 0.0012 -0.0007\n"
    "6 FULL_OPENCV 640 480 533.3 531.1 318.7 242.2 -0.28 0.07 0.0012 -0.0007 0.013 0 0 0\n";

}  // namespace

// A project that was exported and imported again is the same to the last bit, and so are the files.
TEST(Colmap, ThereAndBackIsTheSame) {
  RandomGeometry random(7);
  const Files files = ColmapModel(kCameras, 6, &random);
  for (const bool bBinary : {false, true}) {
    ZuProject project, again;
    ZuExchangeReport report;
    ASSERT_TRUE(ZuImportPhotos(eZuExchangeColmap, files, {}, &project, &report))
        << FirstError(report);
    EXPECT_ROW("40 6 240 6 40", report.uPhotos, report.uPoints, report.uMeasurements,
               report.cameras.size(), report.findings.GetFindings().size() + 39);
    Files there, back;
    ZuExportOptions options;
    options.bBinary = bBinary;
    ASSERT_TRUE(ZuExportPhotos(eZuExchangeColmap, project, {}, options, &there, &report))
        << FirstError(report);
    ASSERT_TRUE(ZuImportPhotos(eZuExchangeColmap, there, {}, &again, &report))
        << FirstError(report);
    EXPECT_TRUE(ProjectText(again) == ProjectText(project));
    ASSERT_TRUE(ZuExportPhotos(eZuExchangeColmap, again, {}, options, &back, &report));
    for (size_t i = 0; i < 3; ++i) EXPECT_EQ(there[i].strText, back[i].strText) << there[i].strName;
    for (const ZuExchangedCamera& camera : report.cameras)
      EXPECT_FALSE(camera.bFitted) << camera.uId;
    const std::string strKept = "\n3 SIMPLE_RADIAL 640 480 600 319.2 255.7 -0.123456789\n";
    EXPECT_EQ(there[0].strText.find(strKept) != std::string::npos, !bBinary) << there[0].strText;
  }
}

// The record sees an object point where the formula of OPENCV puts it.
TEST(Colmap, PhotosSeeWhatTheFormulaSays) {
  RandomGeometry random(9);
  ZuProject project;
  ZuExchangeReport report;
  ASSERT_TRUE(ZuImportPhotos(
      eZuExchangeColmap,
      ColmapModel(
          std::string(kCameras).substr(std::string(kCameras).find("5 OPENCV")).replace(0, 1, "1"),
          1, &random),
      {}, &project, &report))
      << FirstError(report);
  const ZuPhoto& photo = *project.PhotoList().First();
  ZuCameraPose pose{ZuRotation(photo.GetRotAOR()), {}};
  photo.GetPosAOR(&pose.X0[0], &pose.X0[1], &pose.X0[2]);
  const ZuPoseOpenCv cv = ZuToOpenCv(pose);
  ZuBikoTransform transform(&photo, eObjectToDigi, false);
  transform.SetExact(true);
  for (int i = 0; i < 100; ++i) {
    const double x = random.Value(0.55), y = random.Value(0.4), z = 3.0 + random.Value(1.0);
    const double v[] = {x * z - cv.t[0], y * z - cv.t[1], z - cv.t[2]};
    double X[3] = {};
    for (size_t k = 0; k < 9; ++k) X[k % 3] += cv.R.r[k] * v[k / 3];
    const double r2 = x * x + y * y, d = 1.0 + r2 * (-0.28 + 0.07 * r2), p1 = 0.0012, p2 = -0.0007;
    const double u = 533.33 * (x * d + 2.0 * p1 * x * y + p2 * (r2 + 2.0 * x * x)) + 318.7 - 0.5;
    const double w = 531.1 * (y * d + 2.0 * p2 * x * y + p1 * (r2 + 2.0 * y * y)) + 242.2 - 0.5;
    ASSERT_TRUE(transform.Transform(&X[0], &X[1], &X[2]));
    EXPECT_NEAR(X[0], u, 1e-9);
    EXPECT_NEAR(X[1], w, 1e-9);
  }
}

// Models with other terms are fitted, and told so, or refused with the error and its place.
TEST(Colmap, OtherModelsAreFittedOrRefused) {
  const auto Import = [](const std::string& strCamera, double dMaxError,
                         ZuExchangeReport* pReport) {
    RandomGeometry random(1);
    ZuProject project;
    ZuImportOptions options;
    options.dMaxError = dMaxError;
    return ZuImportPhotos(eZuExchangeColmap, ColmapModel(strCamera, 1, &random), options, &project,
                          pReport);
  };
  ZuExchangeReport fitted, fisheye, refused;
  EXPECT_TRUE(
      Import("1 FULL_OPENCV 640 480 900 905 320 240 -0.1 0.05 0.001 0.002 0.01 0.02 0.03 0.01\n",
             0.05, &fitted))
      << FirstError(fitted);
  EXPECT_TRUE(fitted.cameras.at(0).bFitted);
  EXPECT_GT(fitted.cameras[0].dError, 0.0);
  EXPECT_TRUE(Import("1 OPENCV_FISHEYE 640 480 900 900 320 240 0.01 0 0 0\n", 0.05, &fisheye))
      << FirstError(fisheye);
  EXPECT_FALSE(Import("1 OPENCV_FISHEYE 640 480 300 300 320 240 0.01 0 0 0\n", 0.05, &refused));
  EXPECT_NE(FirstError(refused).find("a larger --max-error"), std::string::npos)
      << FirstError(refused);
  ZuExchangeReport beyond;
  EXPECT_FALSE(Import("1 OPENCV_FISHEYE 640 480 150 150 320 240 0 0 0 0\n", 1e9, &beyond));
  EXPECT_NE(FirstError(beyond).find("90 degrees"), std::string::npos) << FirstError(beyond);
}

TEST(Colmap, FaultsNameTheirPlace) {
  const std::string strCamera = "1 PINHOLE 640 480 500 500 320 240\n";
  const std::string strImage = "1 1 0 0 0 0 0 0 1 a.jpg\n10 20 7\n",
                    strPoint = "7 1 2 3 0 0 0 1 1 0\n";
  for (const auto& [szCameras, szImages, szPoints, szFault] :
       Cases<std::string, std::string, std::string, const char*>{
           {"# c\n1 PINHOLE 640 480 500 500 320\n", strImage, strPoint,
            "cameras.txt:2: error: PINHOLE with 3 parameters"},
           {"1 FISH 640 480 5\n", strImage, strPoint, "\"FISH\" is not known"},
           {"1 PINHOLE 640 0 500 500 320 240\n", strImage, strPoint, "640 x 0 pixels"},
           {"1 PINHOLE 640 480 0 500 320 240\n", strImage, strPoint, "focal lengths above 0"},
           {strCamera + strCamera, strImage, strPoint,
            "cameras.txt:2: error: camera 1 stands there twice"},
           {strCamera, "1 1 0 0 0 0 0 0 2 a.jpg\n\n", "",
            "has camera 2, which the cameras have not"},
           {strCamera, "1 0 0 0 0 0 0 0 1 a.jpg\n\n", "",
            "images.txt:1: error: image 1 has no orientation"},
           {strCamera, "1 1 0 0 0 0 0 0 1 ../a.jpg\n\n", "", "leads out of its folder"},
           {strCamera, "1 1 0 0 0 0 0 0 1 C:\\a.jpg\n\n", "", "leads out of its folder"},
           {strCamera, "1 1 0 0 0 0 0 1,5 1 a.jpg\n\n", "", "has a decimal comma"},
           {strCamera, "1 1 0 0 0 0 0 0 1 a.jpg\n10 20\n", "",
            "images.txt:2: error: a feature without its point"},
           {strCamera, strImage, "", "which points3D.txt has not"},
           {strCamera, strImage, "7 1 2 3 0 0 0 1 1 1\n", "names feature 1 of image 1"},
           {strCamera, strImage, "7 1 2 3 0 0 0 1\n",
            "the tracks name 0 features, but the images have 1"},
           {strCamera, strImage, "5000000000 1 2 3 0 0 0 1 1 0\n",
            "points3D.txt:1: error: point 5000000000 has no place"}}) {
    ZuProject project;
    ZuExchangeReport report;
    const Files files{
        {"cameras.txt", szCameras}, {"images.txt", szImages}, {"points3D.txt", szPoints}};
    EXPECT_FALSE(ZuImportPhotos(eZuExchangeColmap, files, {}, &project, &report)) << szFault;
    EXPECT_NE(FirstError(report).find(szFault), std::string::npos) << FirstError(report);
    EXPECT_TRUE(project.PhotoList().IsEmpty());
  }
}

// A binary model cut anywhere, or with a count that lies, ends with a sentence.
TEST(Colmap, CutAndLyingBinaryFiles) {
  ZuProject project, cut;
  ZuExchangeReport report;
  ASSERT_TRUE(project.Read(ZU_SOURCE_DIR "/samples/chessboard/left.prj"));
  ZuPointList points;
  points.Add(new ZuPoint(1, 0.0, 0.0));
  points.Add(new ZuPoint(2, 25.0, 0.0));
  Files files;
  ZuExportOptions options;
  options.bBinary = true;
  ASSERT_TRUE(ZuExportPhotos(eZuExchangeColmap, project, points, options, &files, &report))
      << FirstError(report);
  for (size_t i = 0; i < files.size(); ++i) {
    for (size_t u = 0; u < files[i].strText.size(); u += 1 + u / 300) {
      Files damaged = files;
      damaged[i].strText.resize(u);
      ZuExchangeReport told;
      EXPECT_FALSE(ZuImportPhotos(eZuExchangeColmap, damaged, {}, &cut, &told));
      EXPECT_NE(FirstError(told).find(files[i].strName), std::string::npos) << FirstError(told);
    }
    Files lying = files;
    lying[i].strText[6] = '\x10';
    ZuExchangeReport told;
    EXPECT_FALSE(ZuImportPhotos(eZuExchangeColmap, lying, {}, &cut, &told));
    EXPECT_NE(FirstError(told).find("but has room for"), std::string::npos) << FirstError(told);
  }
}

// COLMAP's adjustment starts from our errors, and its analysis tells our mean.
TEST(Colmap, TheProgramFindsOurErrors) {
  ZuProject project;
  Files sample;
  ZuExchangeReport read;
  ASSERT_TRUE(ZuReadExchangeFiles(eZuExchangeColmap, ZU_SOURCE_DIR "/samples/colmap", &sample,
                                  &read.findings));
  ASSERT_TRUE(ZuImportPhotos(eZuExchangeColmap, sample, {}, &project, &read)) << FirstError(read);
  const std::filesystem::path folder =
      std::filesystem::path(TempFile().Path()).replace_extension(".d");
  for (const bool bBinary : {false, true}) {
    Files files;
    ZuExchangeReport report;
    ZuExportOptions options;
    options.bBinary = bBinary;
    ASSERT_TRUE(ZuExportPhotos(eZuExchangeColmap, project, {}, options, &files, &report))
        << FirstError(report);
    std::filesystem::create_directories(folder / "out");
    for (const ZuExchangeFile& file : files)
      std::ofstream(folder / file.strName, std::ios::binary) << file.strText;
    const std::string strPath = folder.string();
    const auto Told = [](const std::string& strOut, const char* szWord) {
      const size_t uAt = strOut.find(szWord);
      return uAt == std::string::npos
                 ? -1.0
                 : std::strtod(strOut.c_str() + strOut.find(": ", uAt) + 2, nullptr);
    };
    const std::string strMean = RunOther("colmap model_analyzer --path " + strPath);
    const std::string strCost =
        RunOther("colmap bundle_adjuster --BundleAdjustment.max_num_iterations 0 --input_path " +
                 strPath + " --output_path " + strPath + "/out");
    std::filesystem::remove_all(folder);
    if (strMean.empty()) GTEST_SKIP() << "needs colmap";
    EXPECT_NEAR(Told(strMean, "Mean reprojection error"), report.dMeanError, 1e-5);
    EXPECT_NEAR(Told(strCost, "Initial cost"), 0.5 * report.dRms, 1e-5);
  }
}

namespace {

// Formats of one file, and the name that it gets.
struct OneFileFormat {
  eZuExchange eFormat;
  const char* szName;
};
constexpr OneFileFormat kOneFileFormats[] = {{eZuExchangeBal, "p.txt"},
                                             {eZuExchangeOpenCv, "p.yml"},
                                             {eZuExchangeOpenCv, "p.xml"},
                                             {eZuExchangeOpenCv, "p.json"},
                                             {eZuExchangeMetashape, "p.xml"}};

// Two sensors, of which one is not used; a camera that is aligned, one that is not, one that is
// switched off; the chunk is turned by a right angle, doubled and moved.
std::string MetashapeText(const std::string& strPixel) {
  return "<?xml version=\"1.0\"?>\n<document version=\"1.5.0\"><chunk label=\"c\">\n<sensors>"
         "<sensor id=\"0\" label=\"A\" type=\"frame\"><resolution width=\"640\" height=\"480\"/>\n"
         "<property name=\"pixel_width\" value=\"0.005\"/><calibration "
         "class=\"adjusted\"><f>1000</f>"
         "<cx>5</cx><cy>-3</cy><b1>2</b1><b2>0.5</b2><k1>-0.1</k1><k2>0.03</k2><k3>0.01</k3>"
         "<p1>0.001</p1><p2>-0.002</p2></calibration></sensor><sensor id=\"1\"/></sensors>\n"
         "<cameras><camera id=\"0\" sensor_id=\"0\" component_id=\"0\" label=\"a &amp; "
         "b\"><transform>"
         "1 0 0 1 0 1 0 2 0 0 1 3\n0 0 0 1</transform></camera><group><camera id=\"7\" "
         "sensor_id=\"0\" label=\"c\"/></group>\n<camera id=\"8\" sensor_id=\"0\" label=\"d\" "
         "enabled=\"false\"/></cameras>\n<markers><marker id=\"0\"><reference x=\"6.2\" "
         "y=\"22.4\" z=\"38\"/></marker><marker "
         "id=\"3\"/></markers>\n<frames><frame><markers><marker "
         "marker_id=\"0\"><location camera_id=\"0\" " +
         strPixel +
         "/></marker>\n<marker marker_id=\"3\">"
         "<location camera_id=\"7\" x=\"1\" "
         "y=\"2\"/></marker></markers></frame></frames>\n<transform><rotation>"
         "0 -1 0 1 0 0 0 0 1</rotation><translation>10 20 "
         "30</translation><scale>2</scale></transform>\n"
         "</chunk></document>\n";
}

// A file of the format, of the network with its points.
Files NetworkAs(const OneFileFormat& format, ZuExchangeReport* pReport) {
  ZuProject network;
  EXPECT_TRUE(network.Read(ZU_SOURCE_DIR "/samples/network/camcal.prj"));
  ZuPointList points;
  constexpr eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                        eZuPointRWEnd};
  points.ReadFile(ZU_SOURCE_DIR "/samples/network/approx.coo",
                  TZuFormatTable<eZuPointRWMask>(columns));
  Files files;
  ZuExportOptions options;
  options.strName = format.szName;
  EXPECT_TRUE(ZuExportPhotos(format.eFormat, network, points, options, &files, pReport))
      << FirstError(*pReport);
  return files;
}

}  // namespace

TEST(OneFileExchange, ThereAndBackIsTheSame) {
  for (const OneFileFormat& format : kOneFileFormats) {
    SCOPED_TRACE(format.szName);
    ZuExchangeReport report;
    Files files = NetworkAs(format, &report), again;
    EXPECT_NEAR(report.dRms, 115.593288, 1e-6);
    std::string strProject;
    for (int i = 0; i < 2; ++i) {
      ZuProject project;
      ZuExchangeReport read, written;
      ASSERT_TRUE(ZuImportPhotos(format.eFormat, files, {}, &project, &read)) << FirstError(read);
      EXPECT_ROW("21 100 2074", read.uPhotos, read.uPoints, read.uMeasurements);
      ZuExportOptions options;
      options.strName = format.szName;
      ASSERT_TRUE(ZuExportPhotos(format.eFormat, project, {}, options, &again, &written));
      EXPECT_NEAR(written.dRms, report.dRms, 1e-9);
      if (i > 0) {
        EXPECT_EQ(again[0].strText, files[0].strText);
        EXPECT_TRUE(ProjectText(project) == strProject);
      }
      strProject = ProjectText(project);
      files = again;
    }
  }
}

// Rodrigues' formula and the polynomial of the format, on the numbers of a file.
TEST(Bal, PhotosSeeWhatTheFormulaSays) {
  const std::string strText =
      "2 2 4\n0 0 310.5 -20.25\n0 1 -42 77\n1 1 5 6\n1 0 -0.125 8\n"
      "0.3 -0.2 0.1 0.5 -0.25 -6 520 -0.2 0.05\n-0.1 0.4 2.9 0 0 -7 610.5 0.1 -0.02\n"
      "1 2 0.5\n-1.5 0.25 1\n";
  std::istringstream stream(strText);
  double aN[3], aSeen[4][4], aCamera[2][9], aPoint[2][3], dSquares = 0.0;
  for (double& d : aN) stream >> d;
  for (auto& row : aSeen)
    for (double& d : row) stream >> d;
  for (auto& row : aCamera)
    for (double& d : row) stream >> d;
  for (auto& row : aPoint)
    for (double& d : row) stream >> d;
  for (const auto& seen : aSeen) {
    const double* c = aCamera[static_cast<int>(seen[0])];
    const double* X = aPoint[static_cast<int>(seen[1])];
    const double a = std::hypot(c[0], c[1], c[2]),
                 kX = (c[0] * X[0] + c[1] * X[1] + c[2] * X[2]) / a;
    double P[3];
    for (int i = 0; i < 3; ++i) {
      const int j = (i + 1) % 3, k = (i + 2) % 3;
      P[i] = X[i] * std::cos(a) + (c[j] * X[k] - c[k] * X[j]) / a * std::sin(a) +
             c[i] / a * kX * (1.0 - std::cos(a)) + c[3 + i];
    }
    const double x = -P[0] / P[2], y = -P[1] / P[2], r = x * x + y * y;
    const double f = c[6] * (1.0 + c[7] * r + c[8] * r * r);
    dSquares += (f * x - seen[2]) * (f * x - seen[2]) + (f * y - seen[3]) * (f * y - seen[3]);
  }
  ZuProject project;
  ZuExchangeReport read, report;
  Files files;
  ASSERT_TRUE(ZuImportPhotos(eZuExchangeBal, {{"b", strText}}, {}, &project, &read));
  ASSERT_TRUE(ZuExportPhotos(eZuExchangeBal, project, {}, {}, &files, &report));
  EXPECT_NEAR(report.dRms, std::sqrt(dSquares / 4.0), 1e-9);
  EXPECT_EQ(project.PhotoList().First()->GetDigiRegion().Width(), 621.0);
}

// The formula of the description, of a point that stands at (0.2, -0.1, 1) of the first camera.
TEST(Metashape, PhotosSeeWhatTheFormulaSays) {
  const double x = 0.2, y = -0.1, r = x * x + y * y;
  const double d = 1.0 + r * (-0.1 + r * (0.03 + r * 0.01)), p1 = 0.001, p2 = -0.002;
  const double u = x * d + p1 * (r + 2.0 * x * x) + 2.0 * p2 * x * y;
  const double v = y * d + p2 * (r + 2.0 * y * y) + 2.0 * p1 * x * y;
  const std::string strText = MetashapeText("x=\"" + Text(320.0 + 5.0 + 1002.0 * u + 0.5 * v) +
                                            "\" y=\"" + Text(240.0 - 3.0 + 1000.0 * v) + '"');
  ZuProject project;
  ZuExchangeReport read, report;
  Files files;
  ASSERT_TRUE(ZuImportPhotos(eZuExchangeMetashape, {{"f", strText}}, {}, &project, &read))
      << FirstError(read);
  ASSERT_TRUE(ZuExportPhotos(eZuExchangeMetashape, project, {}, {}, &files, &report));
  EXPECT_LT(report.dRms, 1e-9);
  EXPECT_ROW("3 1 2 1", read.uPhotos, read.uPoints, read.uMeasurements, read.cameras.size());
  const ZuPhoto& first = *project.PhotoList().First();
  EXPECT_ROW("1 a & b 1 8 0 9 0", first.GetId(), first.GetName(), first.IsActive(),
             first.Next()->GetId(), first.Next()->HasAOR(), first.Next()->Next()->GetId(),
             first.Next()->Next()->IsActive());
  EXPECT_EQ(first.GetCamera().m_dC, 0.005 * 1002.0);
  ZuImportOptions options;
  options.bTransform = false;
  ASSERT_TRUE(ZuImportPhotos(eZuExchangeMetashape, {{"f", strText}}, options, &project, &read));
  double X[3];
  project.PhotoList().First()->GetPosAOR(&X[0], &X[1], &X[2]);
  EXPECT_ROW("1 2 3", X[0], X[1], X[2]);
}

// Cut at any byte, a file gives a project or one sentence.
TEST(OneFileExchange, FaultsNameTheirPlace) {
  const std::string strBal = "1 1 1\n0 0 5 6\n0 0 0 0 0 -5 500 0 0\n1 2 3\n";
  const std::string strYaml =
      "%YAML:1.0\n---\nimage_width: 640\nimage_height: 480\ncamera_matrix: !!opencv-matrix\n"
      "   rows: 3\n   cols: 3\n   dt: d\n   data: [ 500., 0., 320., 0., 500., 240., 0., 0., 1. ]\n"
      "rvecs: [ 0, 0, 0.1 ]\ntvecs: [ 1, 2, 3 ]\nimages:\n   - \"a b.jpg\"\n"
      "image_points:\n   - [ 1, 2, .Nan, .Nan ]\n";
  const std::string strXml =
      "<?xml version=\"1.0\"?>\n<opencv_storage><image_width>640</image_width>\n"
      "<image_height>480</image_height>\n<K type_id=\"opencv-matrix\"><rows>3</rows>\n"
      "<cols>3</cols><dt>d</dt><data>500 0 320 0 500 240 0 0 1</data></K></opencv_storage>\n";
  const auto Replaced = [&](const std::string& strWhat, const std::string& strBy) {
    std::string strText = MetashapeText("x=\"5\" y=\"6\"");
    return strText.replace(strText.find(strWhat), strWhat.size(), strBy);
  };
  const auto With = [&](const std::string& strWhat, const std::string& strBy) {
    std::string strText = strYaml;
    return strText.replace(strText.find(strWhat), strWhat.size(), strBy);
  };
  for (const auto& [eFormat, strText, szFault] : Cases<eZuExchange, std::string, const char*>{
           {eZuExchangeOpenCv, With("rows: 3", "rows: 999999999"),
            "f:6: error: camera_matrix tells 999999999 x 3 elements, but has 9"},
           {eZuExchangeOpenCv, With("500.,", "-1,"), "f:6: error: is no camera matrix"},
           {eZuExchangeOpenCv, With("rvecs", "distCoeffs"),
            "f:10: error: 3 distortion coefficients; 4, 5"},
           {eZuExchangeOpenCv, With("image_width: 640", "image_width: 0.5"),
            "an image of 0.5 x 480 pixels"},
           {eZuExchangeOpenCv, With("[ 1, 2, 3 ]", "[ 1, 2 ]"),
            "f:10: error: has 3 numbers, and the translations 2"},
           {eZuExchangeOpenCv, With("a b.jpg", "../a.jpg"), "leads out of its folder"},
           {eZuExchangeOpenCv, With("]\nimages", "\nimages"),
            "f:12: error: a comma or the closing"},
           {eZuExchangeOpenCv, With("   - [ 1", "   - [ 7 ]\n   - [ 1"),
            "2 views with image points, 1 with"},
           {eZuExchangeOpenCv, With("[ 1, 2, .N", std::string(99, '[') + ".N"),
            "f:15: error: is nested too deep"},
           {eZuExchangeOpenCv, With("b.jpg\"", "b.jpg"),
            "f:13: error: a text without its closing quote"},
           {eZuExchangeOpenCv, "<!DOCTYPE a [<!ENTITY b \"c\">]>\n" + strXml,
            "f:1: error: has a document type"},
           {eZuExchangeOpenCv, strXml + "<!-- &b; -->&b;", "f:6: error: has an entity of its own"},
           {eZuExchangeOpenCv, strXml.substr(0, 200), ": error: is no XML: "},
           {eZuExchangeOpenCv, "<a>", "f:1: error: is no XML"},
           {eZuExchangeOpenCv, "<a/>", "f:1: error: is XML, but no file of FileStorage"},
           {eZuExchangeMetashape, "<a/>", "f:1: error: is XML, but no camera file"},
           {eZuExchangeMetashape, MetashapeText("x=\"1\" y=\"b\""),
            "f:9: error: <location> has \"b\""},
           {eZuExchangeMetashape, MetashapeText("x=\"1\""), "f:9: error: <location> without y"},
           {eZuExchangeMetashape, Replaced("sensor_id=\"0\"", "sensor_id=\"9\""),
            "f:5: error: camera 0 has sensor 9"},
           {eZuExchangeMetashape, Replaced("1 0 0 1 0", "2 0 0 1 0"),
            "f:5: error: <transform> is no rotation"},
           {eZuExchangeMetashape, Replaced("1 0 0 1 0", "1 0 0 1"),
            "f:5: error: <transform> has 15 numbers"},
           {eZuExchangeMetashape, Replaced("a &amp; b", "../b"), "leads out of its folder"},
           {eZuExchangeMetashape, Replaced("<scale>2", "<scale>0"),
            ": error: a scale that is not above 0"},
           {eZuExchangeMetashape, Replaced("id=\"7\"", "id=\"0\""),
            ": error: <camera> 0 stands there twice"},
           {eZuExchangeBal, "1 1\n1x 0" + std::string(40, ' '),
            "f:2: error: \"1x\" is no whole number"},
           {eZuExchangeBal, "99999999999999 1 1\n0 0",
            "f:1: error: 99999999999999 cameras, but the"},
           {eZuExchangeBal, "1 1 1\n0 1 5 6\n" + std::string(40, ' '),
            "f:2: error: an observation has point 1 of 1"},
           {eZuExchangeBal, "1 1 1\n0 0 5 nan\n" + std::string(40, ' '),
            "f:2: error: \"nan\" is no number"},
           {eZuExchangeBal, "1 1 1\n0 0 5 1e9\n" + std::string(40, ' '),
            "f:2: error: an observation lies"},
           {eZuExchangeBal, "1 1 1\n0 0 5 6\n0 0 0 0 0 -5 -500 0 0\n",
            "f:3: error: a focal length"},
           {eZuExchangeBal, strBal + "7", "f:5: error: more numbers than"},
           {eZuExchangeBal, "BZh91AY", "f: error: is packed; what bunzip2 makes of it"}}) {
    ZuProject project;
    ZuExchangeReport report;
    EXPECT_FALSE(ZuImportPhotos(eFormat, {{"f", strText}}, {}, &project, &report)) << szFault;
    EXPECT_NE(FirstError(report).find(szFault), std::string::npos) << FirstError(report);
    EXPECT_TRUE(project.PhotoList().IsEmpty());
  }
  for (const auto& [eFormat, strText] :
       Cases<eZuExchange, std::string>{{eZuExchangeBal, strBal},
                                       {eZuExchangeOpenCv, strYaml},
                                       {eZuExchangeOpenCv, strXml},
                                       {eZuExchangeMetashape, MetashapeText("x=\"5\" y=\"6\"")}}) {
    for (size_t u = 0; u < strText.size(); ++u) {
      ZuProject project;
      ZuExchangeReport report;
      const bool bGood =
          ZuImportPhotos(eFormat, {{"f", strText.substr(0, u)}}, {}, &project, &report);
      EXPECT_EQ(report.findings.GetErrorCount(), bGood ? 0U : 1U) << u;
      EXPECT_EQ(project.PhotoList().IsEmpty(), !bGood) << u;
    }
  }
}

namespace {

// Files of a folder of their own, which goes with them.
class FilesBeside {
 public:
  FilesBeside() : m_path(std::filesystem::path(TempFile().Path()).replace_extension(".d")) {
    std::filesystem::create_directories(m_path);
  }
  ~FilesBeside() { std::filesystem::remove_all(m_path); }
  FilesBeside(const FilesBeside&) = delete;
  FilesBeside& operator=(const FilesBeside&) = delete;

  std::string Path(const std::string& strName = "") const { return (m_path / strName).string(); }
  void Write(const std::string& strName, const std::string& strText) const {
    std::ofstream(m_path / strName, std::ios::binary) << strText;
  }

 private:
  std::filesystem::path m_path;
};

// Pixels of a grid with the directions that the photo's record gives them: rows x/z y/z, pixel.
std::string GridOfSights(const ZuPhoto& photo, int iAcross) {
  ZuBikoTransform transform(&photo, eDigiToAdjusted, false);
  transform.SetExact(true);
  const double c = photo.GetCamera().m_dC;
  std::string strRows;
  for (int i = 0; i <= iAcross * iAcross + 2 * iAcross; ++i) {
    const double u = photo.GetDigiRegion().Width() * (i % (iAcross + 1)) / iAcross;
    const double w = photo.GetDigiRegion().Height() * (i / (iAcross + 1)) / iAcross;
    double x = u, y = w, z = 0.0;
    EXPECT_TRUE(transform.Transform(&x, &y, &z)) << u << ' ' << w;
    strRows += Row(x / c, -y / c, u, w).str + '\n';
  }
  return strRows;
}

std::string CalibrationText(const std::string& strCoefficients) {
  return "%YAML:1.0\n---\nimage_width: 640\nimage_height: 480\n"
         "camera_matrix: [ 533.33, 0, 318.7, 0, 531.1, 242.2, 0, 0, 1 ]\n"
         "distortion_coefficients: [ " +
         strCoefficients +
         " ]\n"
         "extrinsic_parameters: [ 0.3, -0.2, 1.5, 0.1, -0.4, 5 ]\nimages: a b.jpg\n"
         "image_points: [ 100.25, 200.5 ]\nobject_points: [ 0.1, 0.2, 0.3 ]\n";
}

}  // namespace

// OpenCV reads our files and sees 10200 points within a millionth of a pixel of where our photo
// does; from what it writes of them the same project comes back, to the last bit.
TEST(OpenCvFile, TheProgramReadsAndWritesTheSame) {
  const FilesBeside beside;
  RandomGeometry random(3);
  std::vector<std::string> projects;
  const std::tuple<const char*, const char*> forms[] = {
      {"yml", "-0.28, 0.07, 0.0012, -0.0007"},
      {"xml", "-0.28, 0.07, 0.0012, -0.0007, 0.013"},
      {"json", "-0.28, 0.07, 0.0012, -0.0007, 0.013, 0, 0, 0"}};
  for (const auto& form : forms) {
    const std::string strForm = std::get<0>(form);
    ZuProject project;
    ZuExchangeReport report;
    Files files;
    ZuExportOptions options;
    options.strName = "cal." + strForm;
    ASSERT_TRUE(ZuImportPhotos(eZuExchangeOpenCv, {{"f", CalibrationText(std::get<1>(form))}}, {},
                               &project, &report))
        << FirstError(report);
    ASSERT_TRUE(ZuExportPhotos(eZuExchangeOpenCv, project, {}, options, &files, &report))
        << FirstError(report);
    EXPECT_FALSE(report.cameras.at(0).bFitted || report.cameras.at(1).bFitted);
    beside.Write(files[0].strName, files[0].strText);
    projects.push_back(ProjectText(project));
    ZuBikoTransform transform(project.PhotoList().First(), eObjectToDigi, false);
    transform.SetExact(true);
    const ZuRotation R(project.PhotoList().First()->GetRotAOR());
    ZuCameraPose pose{R, {}};
    project.PhotoList().First()->GetPosAOR(&pose.X0[0], &pose.X0[1], &pose.X0[2]);
    std::string strRows;
    for (int i = 0; i < 3400; ++i) {
      const double z = 4.0 + random.Value(2.0);
      const double v[] = {random.Value(0.55) * z, random.Value(0.4) * z, -z};
      double X[3], at[3];
      for (size_t k = 0; k < 3; ++k) {
        at[k] = X[k] =
            pose.X0[k] + R.r[3 * k] * v[0] + R.r[3 * k + 1] * v[1] + R.r[3 * k + 2] * v[2];
      }
      ASSERT_TRUE(transform.Transform(&at[0], &at[1], &at[2]));
      strRows += Row(X[0], X[1], X[2], at[0], at[1]).str + '\n';
    }
    beside.Write("rows." + strForm, strRows);
  }
  const std::string strOut = RunPython(R"(
import sys, cv2, numpy as np
for form in ["yml", "xml", "json"]:
    f = cv2.FileStorage(sys.argv[1] + "/cal." + form, cv2.FILE_STORAGE_READ)
    g = cv2.FileStorage(sys.argv[1] + "/back." + form, cv2.FILE_STORAGE_WRITE)
    a = np.loadtxt(sys.argv[1] + "/rows." + form)
    K, D, E = [f.getNode(k).mat() for k in ["camera_matrix", "distortion_coefficients", "extrinsic_parameters"]]
    p = cv2.projectPoints(np.ascontiguousarray(a[:, :3]), E[0, :3], E[0, 3:], K, D)[0].reshape(-1, 2)
    for k in ["image_width", "image_height", "camera_id"]: g.write(k, int(f.getNode(k).real()))
    g.write("camera_name", f.getNode("camera_name").string())
    for k in ["camera_matrix", "distortion_coefficients", "extrinsic_parameters", "photo_ids", "object_point_ids", "object_points"]:
        g.write(k, f.getNode(k).mat())
    g.startWriteStruct("image_names", cv2.FILE_NODE_SEQ)
    names = f.getNode("image_names"); g.write("", (names.at(0) if names.isSeq() else names).string())
    g.endWriteStruct()
    for k in ["image_points", "point_ids"]:
        g.startWriteStruct(k, cv2.FILE_NODE_SEQ)
        g.write("", f.getNode(k).at(0).mat())
        g.endWriteStruct()
    g.release()
    print(len(D.ravel()), len(a), np.abs(p - a[:, 3:]).max())
)",
                                       beside.Path());
  if (strOut.empty()) GTEST_SKIP() << "needs python3-opencv";
  std::istringstream told(strOut);
  size_t i = 0;
  for (const auto& form : forms) {
    size_t uCoefficients = 0, uRows = 0;
    double dLargest = 1.0;
    told >> uCoefficients >> uRows >> dLargest;
    EXPECT_ROW(i == 0 ? "4 3400" : "5 3400", uCoefficients, uRows);
    EXPECT_LT(dLargest, 1e-6);
    Files back;
    ZuExchangeReport report;
    ZuProject project;
    ASSERT_TRUE(ZuReadExchangeFiles(eZuExchangeOpenCv,
                                    beside.Path(std::string("back.") + std::get<0>(form)), &back,
                                    &report.findings));
    ASSERT_TRUE(ZuImportPhotos(eZuExchangeOpenCv, back, {}, &project, &report))
        << FirstError(report);
    EXPECT_EQ(ProjectText(project), projects[i++]);
  }
}

// The largest error that a fit tells is that of a dense grid, projected by OpenCV or by the
// formula.
TEST(PhotoExchange, FitsTellTheirLargestError) {
  const FilesBeside beside;
  RandomGeometry random(1);
  std::string strCases;
  std::vector<double> stated;
  const auto Add = [&](const ZuProject& project, const ZuExchangedCamera& camera,
                       const std::string& strCase) {
    EXPECT_TRUE(camera.bFitted) << strCase;
    beside.Write("rows" + std::to_string(stated.size()),
                 GridOfSights(*project.PhotoList().First(), 90));
    stated.push_back(camera.dError);
    strCases += strCase + '\n';
  };
  ZuImportOptions all;
  all.dMaxError = 1e9;
  // Of COLMAP from the corner of the first pixel.
  for (const auto& [szColmap, szCase] : Cases<const char*, const char*>{
           {"FULL_OPENCV 640 480 900 905 320.5 240.5 -0.1 0.05 0.001 0.002 0.01 0.02 0.03 0.01",
            "plain 900 905 320 240 -0.1 0.05 0.001 0.002 0.01 0.02 0.03 0.01"},
           {"OPENCV_FISHEYE 640 480 900 905 320.5 240.5 0.01 -0.02 0.003 0.001",
            "fisheye 900 905 320 240 0.01 -0.02 0.003 0.001"},
           {"SIMPLE_RADIAL_FISHEYE 640 480 600 320.5 240.5 0.02",
            "fisheye 600 600 320 240 0.02 0 0 0"},
           {"RADIAL_FISHEYE 640 480 500 310.5 250.5 0.02 -0.01",
            "fisheye 500 500 310 250 0.02 -0.01 0 0"},
           {"FOV 640 480 700 705 320.5 240.5 0.9", "fov 700 705 320 240 0.9"},
           {"THIN_PRISM_FISHEYE 640 480 700 705 320.5 240.5 0.01 0.02 0.001 -0.002 0.01 0.001 "
            "0.004 -0.003",
            "prism 700 705 320 240 0.01 0.02 0.001 -0.002 0.01 0.001 0.004 -0.003"}}) {
    ZuProject project;
    ZuExchangeReport report;
    ASSERT_TRUE(ZuImportPhotos(eZuExchangeColmap,
                               ColmapModel("1 " + std::string(szColmap) + '\n', 1, &random), all,
                               &project, &report))
        << FirstError(report);
    Add(project, report.cameras[0], szCase);
  }
  for (const char* szCoefficients :
       {"-0.3, 0.1, 0.001, 0.002, 0.02, 0.1, 0.05, 0.01",
        "-0.2, 0.05, 0.001, -0.001, 0.01, 0.02, 0.01, 0.003, 0.004, -0.002, 0.003, 0.001",
        "-0.2, 0.05, 0.001, -0.001, 0.01, 0.02, 0.01, 0.003, 0.004, -0.002, 0.003, 0.001, 0.02, "
        "-0.03"}) {
    ZuProject project;
    ZuExchangeReport report;
    ASSERT_TRUE(ZuImportPhotos(eZuExchangeOpenCv, {{"f", CalibrationText(szCoefficients)}}, all,
                               &project, &report))
        << FirstError(report);
    std::string strCase = std::string("plain 533.33 531.1 318.7 242.2 ") + szCoefficients;
    strCase.erase(std::remove(strCase.begin(), strCase.end(), ','), strCase.end());
    Add(project, report.cameras[0], strCase);
  }
  // Going out: what the file says of a camera of another mode.
  ZuProject project;
  ZuExchangeReport report;
  Files files;
  ZuExportOptions options;
  options.strName = "c.yml";
  ASSERT_TRUE(project.Read(ZU_SOURCE_DIR "/samples/chessboard/left.prj"));
  ASSERT_TRUE(ZuExportPhotos(eZuExchangeOpenCv, project, {}, options, &files, &report))
      << FirstError(report);
  beside.Write("c.yml", files[0].strText);
  Add(project, report.cameras.at(0), "file");
  beside.Write("cases", strCases);
  const std::string strOut = RunPython(R"(
import sys, cv2, numpy as np
o = np.zeros(3)
for i, line in enumerate(open(sys.argv[1] + "/cases")):
    w = line.split(); a = np.loadtxt(sys.argv[1] + "/rows" + str(i)); n = a[:, :2]; P = np.c_[n, np.ones(len(n))]
    if w[0] == "file":
        f = cv2.FileStorage(sys.argv[1] + "/c.yml", cv2.FILE_STORAGE_READ)
        K, d = f.getNode("camera_matrix").mat(), f.getNode("distortion_coefficients").mat()
    else:
        fx, fy, cx, cy, *d = map(float, w[1:]); K = np.array([[fx, 0, cx], [0, fy, cy], [0, 0, 1]]); d = np.array(d)
    r = np.maximum(np.hypot(n[:, :1], n[:, 1:]), 1e-300)
    if w[0] == "fisheye": p = cv2.fisheye.projectPoints(P[:, None, :], o, o, K, d)[0].reshape(-1, 2)
    elif w[0] == "fov": p = n * np.arctan(2 * r * np.tan(d[0] / 2)) / (r * d[0]) * [fx, fy] + [cx, cy]
    elif w[0] == "prism":
        m = n * np.arctan(r) / r; u, v = m.T; q = u * u + v * v
        m = m * (1 + d[0] * q + d[1] * q**2 + d[4] * q**3 + d[5] * q**4)[:, None]
        m += np.c_[2 * d[2] * u * v + d[3] * (q + 2 * u * u) + d[6] * q, 2 * d[3] * u * v + d[2] * (q + 2 * v * v) + d[7] * q]
        p = m * [fx, fy] + [cx, cy]
    else: p = cv2.projectPoints(P, o, o, K, d)[0].reshape(-1, 2)
    print(np.hypot(*(p - a[:, 2:]).T).max())
)",
                                       beside.Path());
  if (strOut.empty()) GTEST_SKIP() << "needs python3-opencv";
  std::istringstream told(strOut);
  for (const double d : stated) {
    double dDense = 0.0;
    told >> dDense;
    EXPECT_NEAR(d, dDense, 0.05 * dDense) << strOut;
  }
}
