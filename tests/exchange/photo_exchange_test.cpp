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
constexpr OneFileFormat kOneFileFormats[] = {{eZuExchangeBal, "p.txt"}};

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

// Cut at any byte, a file gives a project or one sentence.
TEST(OneFileExchange, FaultsNameTheirPlace) {
  const std::string strBal = "1 1 1\n0 0 5 6\n0 0 0 0 0 -5 500 0 0\n1 2 3\n";
  for (const auto& [eFormat, strText, szFault] : Cases<eZuExchange, std::string, const char*>{
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
  for (const auto& [eFormat, strText] : Cases<eZuExchange, std::string>{{eZuExchangeBal, strBal}}) {
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
