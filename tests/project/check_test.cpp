// Files with one fault each, made by one edit of a good one, and files without a finding.
#include "zu/project/check.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/project_fields.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/project/project.h"

namespace {

constexpr char kProject[] =
    "CAMERA { ID 1 C 5 R0 2.5 }\n"
    "PHOTO { PHOTOID 1 \"left01.jpg\" ; first\n"
    "  DIGITAL 1 STATE 0 ORIENTED 1\n"
    "  DIGIREGION { 0 0 639 479 }\n"
    "  CAMDATA { ID 1 C 4.9 XH 0.2 YH 0.1 A1 -0.009 R0 2.5 }\n"
    "  PRERESTRAFO { 2 0.5 1 0 479.5 0 -1 }\n"
    "  MAINRESTRAFO { 1 -3.168 0.0099 -2.376 0 }\n"
    "  AORM { 3 3 1 0 0 0 1 0 0 0 1 }\n"
    "  AORV { 3 182.9 83.8 374.3 } }\n"
    "PHOTO { PHOTOID 2 \"left02.jpg\" DIGITAL 1 DIGIREGION { 0 0 639 479 } CAMDATA { ID 1 C 4.9 }\n"
    "  PRERESTRAFO { 2 0.5 1 0 479.5 0 -1 } MAINRESTRAFO { 1 -3.168 0.0099 -2.376 0 } }\n"
    "PHOTO { PHOTOID 3 \"left03.jpg\" DIGITAL 1 DIGIREGION { 0 0 639 479 } CAMDATA { ID 1 C 4.9 }\n"
    "  PRERESTRAFO { 2 0.5 1 0 479.5 0 -1 } MAINRESTRAFO { 1 -3.168 0.0099 -2.376 0 } }\n"
    "MEASURE { PHOTOID 1 POINTS {\n"
    "  1 244.4 94.1\n"
    "  2 274.4 92.1\n"
    "} }\n"
    "PLANE { 1 \"floor\" 0 0 1 -2 }\n"
    "POINTS {\n 1 0 0 0\n 2 25 0 0\n 3 50 1 0\n 4 75 2 0\n}\n";

constexpr char kCameras[] =
    "CAMERA { ID 1 C 35 A1 0.1 R0 12 }\nCAMERA { ID 2 C 50 A1 0.1 R0 12 }\n";
constexpr char kPoints[] = "1 10.5 20 30\n2 11.5 21 30\n3 12.5 22 31\n4 13.5 23 31\n5 14 24 31\n";

constexpr char kReseau[] =
    "\"left camera\"\n{ -3.3 -2.5 3.3 2.5 }\n{ 0.5 -2.5 3.3 -2 }\n{ 11 -3.1 2.3 2 }\n{ 12 3.1 2.3 "
    "2 }\n";
constexpr char kDigitalCamera[] =
    "{ \"A\" 1 \"left\" 640 480 6.336 4.752 }\n{ \"A\" 2 \"right\" 640 480 6.336 4.752 }\n";
constexpr char kGsi[] =
    "110001+00000101 21.322+12345678 22.322+10000000 81..00+01000000 82..00+02000000\n"
    "110002+00000102 21.322+00045678 22.322+09900000 81..00+01003000 82..00+02001000\n";

struct Fault {
  const char *szOld, *szNew;  // one edit, at the first place of szOld
  const char* szFinding;      // how the line of the finding begins, behind the file
  const char* szRight;        // in it
};

std::string Edited(std::string strText, const Fault& fault) {
  const size_t u = strText.find(fault.szOld);
  EXPECT_NE(u, strText.npos) << fault.szOld;
  return strText.replace(u, std::string(fault.szOld).size(), fault.szNew);
}

std::vector<std::string> Lines(const char* szPath) {
  ZuFindingList findings;
  ZuCheckFile(szPath, &findings);
  std::vector<std::string> lines;
  for (ZuFinding finding : findings) {
    finding.m_strFile.clear();
    lines.push_back(GetZuFindingLine(finding));
  }
  return lines;
}

void ExpectFaults(const char* szGood, const char* szEnding, const std::vector<Fault>& faults) {
  EXPECT_TRUE(Lines(TempFile(szGood, szEnding).Path()).empty());
  for (const Fault& fault : faults) {
    SCOPED_TRACE(fault.szNew);
    const TempFile file(Edited(szGood, fault), szEnding);
    const auto lines = Lines(file.Path());
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0].rfind(fault.szFinding, 0), 0u) << lines[0];
    EXPECT_NE(lines[0].find(fault.szRight), std::string::npos) << lines[0];
    EXPECT_EQ(lines.size(), 1u) << lines.back();
  }
}

TEST(Check, TellsTheOneFaultOfAProject) {
  ExpectFaults(
      kProject, ".prj",
      {{"DIGIREGION", "DIGIREGIN", "4:3: warning: unknown keyword DIGIREGIN", "DIGIREGION"},
       {"STATE 0", "STAT 0", "3:13: warning: unknown keyword STAT", "STATE"},
       {"A1 -0.009", "WIND 3", "5:38: warning: unknown keyword WIND", "skipped"},
       {"MEASURE {", "MEASRE {", "14:1: error: unknown keyword MEASRE", "MEASURE"},
       {"PHOTOID 2", "PHOTOID 1", "10:1: error: photo 1 stands twice, first in line 2",
        "one PHOTO"},
       {"PHOTOID 1 POINTS", "PHOTOID 9 POINTS", "14:1: error: measurements of photo 9", "PHOTOID"},
       {"PHOTOID 1 POINTS", "POINTS", "14:1: error: MEASURE without PHOTOID", "PHOTOID"},
       {"PHOTOID 2 \"left02.jpg\"", "", "10:1: error: PHOTO without PHOTOID", "PHOTOID 1"},
       {"2 274.4", "1 274.4", "16:3: warning: measurement 1 of photo 1 stands twice", "one row"},
       {"244.4", "244,4", "15:5: error: \"244,4\" is no number", "244.4"},
       {"244.4", "24x", "15:5: error: \"24x\" is no number", "a finite number"},
       {"244.4", "944.4", "15:3: warning: point 1 lies outside the image of photo 1", "DIGIREGION"},
       {"274.4 92.1", "274.4", "16:3: error: row of point 2 ends after 2 of 3", "id x y"},
       {"AORM { 3 3 1 0 0 0 1", "AORM { 3 3 1 0 0 0 2", "8:3: warning: the matrix is no rotation",
        "right angles"},
       {"AORM { 3 3 1", "AORM { 3 3 -1", "8:3: warning: the matrix is no rotation", "right-handed"},
       {"AORM { 3 3", "AORM { 3 2", "8:3: error: AORM of 3x2 elements", "3x3"},
       {"374.3 }", "}", "9:3: error: AORV has 2 of 3 elements", "all 3"},
       {"AORV { 3", "AORV { 4", "9:3: error: AORV of 4 elements", "3 elements"},
       {"C 4.9", "C 0.0049", "5:18: warning: the camera constant does not fit", "mm"},
       {"C 4.9", "C 4900", "5:18: warning: the camera constant does not fit", "mm"},
       {"C 4.9", "C 4,9", "5:20: error: \"4,9\" is no number", "4.9"},
       {"XH 0.2", "XH 200", "5:24: warning: the principal point lies outside", "mm"},
       {"CAMDATA { ID 1", "CAMDATA { ID 7", "5:13: warning: camera 7 is not among", "id of one"},
       {"0 479.5 0 -1", "0 0 0 1", "6:3: warning: y is counted the other way", "sign"},
       {"PRERESTRAFO { 2", "PRERESTRAFO { 9", "6:17: error: PRERESTRAFO: type 9", "2 affine"},
       {"-2.376 0 }", "-2.376 }", "7:3: error: MAINRESTRAFO has 3 of 4", "all 4"},
       {"STATE 0", "DIGITALROT 90", "3:13: warning: 90 is no number of quarter turns", "0 to 3"},
       {"AORV {", "ZUSPPLANE { ZUSPID 1 \"f\" PARALLELDEF { DEFLIN { 1 } } } AORV {",
        "9:42: warning: unknown keyword DEFLIN", "DEFLINE"},
       {"STATE 0", "RESEAUSUBID 1", "3:13: warning: photo 1 names no reseau", "RESEAUFILE"},
       {"ORIENTED 1", "ORIENTED yes", "3:30: error: \"yes\" is no whole number", "whole number"},
       {" 3 50 1 0", " 2 50 1 0", "22:2: warning: point 2 stands twice", "one row"},
       {" 3 50 1 0", " 3 50000 1 0", "22:2: warning: point 3 lies some hundred times", "unit"},
       {"PLANE {", "PLANE { 1 \"a\" 0 1 0 5 } PLANE {", "18:25: warning: PLANE 1 stands twice",
        "one block"},
       {"; first", "; \xE4\xF6", "2:34: warning: a byte that is no UTF-8", "UTF-8"},
       {"left01.jpg\"", "left01.jpg", "2:19: error: a text is not closed", "one line"}});
}

TEST(Check, TellsTheOneFaultOfACameraOrCoordinateFile) {
  ExpectFaults(kCameras, ".cam",
               {{"A1 0.1", "AA1 0.1", "1:20: error: unknown keyword AA1", "A1"},
                {"ID 2", "ID 1", "2:1: error: camera 1 stands twice, first in line 1", "one for"},
                {"C 50", "C 5O", "2:17: error: \"5O\" is no number", "a finite number"},
                {"C 50 ", "C \"50\" ", "2:17: error: \"50\" is no number", "a finite number"}});
  ExpectFaults(kPoints, ".coo",
               {{"21 30", "21", "2:", "need 4"},
                {"22 31", "2x 31", "3:8: warning: column y: \"2x\" is no number", "12.345"},
                {"4 13.5", "3 13.5", "4:1: warning: point 3 stands twice, first in line 3", "one"},
                {"12.5", "12500000", "3:1: warning: point 3 lies some hundred times", "unit"},
                {"4 13.5", "-4 13.5", "4:1: ", "a whole number from 1"}});
}

TEST(Check, TellsTheOneFaultOfAReseauOrGsiFile) {
  ExpectFaults(
      kReseau, ".txt",
      {{"-3.3 -2.5", "-3,3 -2.5", "2:3: error: \"-3,3\" is no number", "-3.3"},
       {"3.1 2.3 2 }\n{ 12", "3.1 2.3 }\n{ 12", "4:1: error: the block ends after 3", "more"},
       {"{ 12", "{ 11", "5:1: warning: cross 11 stands twice, first in line 4", "one"},
       {"2.3 2 }\n", "2.3 2 }\nx ", "5:1: error: \"x\" stands here", "a block { ... }"}});
  ExpectFaults(
      kDigitalCamera, ".txt",
      {{"640 480 6.336 4.752 }\n{", "640 48O 6.336 4.752 }\n{",
        "1:20: error: \"48O\" is no whole number", "whole number"},
       {"6.336 4.752 }\n{", "6336 4752 }\n{", "1:1: warning: the sensor does not fit", "mm"},
       {"\"A\" 2", "\"A\" 1", "2:1: warning: A 1 stands twice, first in line 1", "sub id"},
       {"\"right\" 640 480 6.336 4.752 }", "\"right\" 640",
        "2:1: error: the file ends inside { ... }", "whole file"}});
  ExpectFaults(kGsi, ".gsi",
               {{"+00000102", "*00000102", "2:1: warning: ", "a word such as"},
                {"21.322+00045678", "21.323+00045678",
                 "2:17: warning: an angle in degrees (unit 3)", "unit 2"},
                {"22.322+09900000", "22.322+40100000",
                 "2:33: warning: an angle beyond a full circle", "2 gon, 3 degrees"}});
}

// A rotation made of angles in gon that were taken as degrees does not fit what was measured.
TEST(Check, TellsRotationsOfAnglesInTheWrongUnit) {
  std::istringstream stream(kProject);
  ZuProject project;
  project.Read(stream);
  ZuPhoto& photo = *project.PhotoList().First();
  project.ObjectPoints().Destroy();
  project.Measurements(1).Destroy();
  const double adAngles[] = {0.4, -2.5, 3.1};
  const auto turn = [&](double dFactor) {
    photo.SetRotAOR(adAngles[0] * dFactor, adAngles[1] * dFactor, adAngles[2] * dFactor);
  };
  turn(1.0);
  for (unsigned u = 1; u <= 4; ++u) {
    project.Measurements(1).Add(ZuPoint(u, 100.0 * u, u % 2 == 0 ? 60.0 : 400.0));
    ZuPoint image = *project.Measurements(1).Last();
    photo.ConvertBiko(&image, eDigiToBiko);
    photo.ConvertBiko(&image, eBikoToAdjusted);
    ZuPoint object(u, 0.0, 0.0);
    photo.CalcRayEndPoint(&object, &image, 10.0 + u);
    project.ObjectPoints().Add(object);
  }
  const auto findings = [&](double dFactor) {
    turn(dFactor);
    return Lines(TempFile(Exported(project), ".prj").Path());
  };
  EXPECT_TRUE(findings(1.0).empty());
  EXPECT_TRUE(findings(0.5).empty());
  for (const double dFactor : {0.9, 10.0 / 9.0}) {
    const auto lines = findings(dFactor);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(dFactor < 1.0 ? "are degrees in place of gon" : "are gon in place of"),
              std::string::npos)
        << lines[0];
  }
}

TEST(Check, LooksReseausUpBesideTheProject) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::path(TempFile().Path()).string() + ".d";
  fs::create_directory(folder);
  const auto lines = [&](const char* szName, const std::string& strReseau) {
    std::ofstream(folder / "a.prj") << Edited(
        kProject, {"STATE 0", (std::string("STATE 0 RESEAUFILE ") + szName).c_str(), "", ""});
    std::ofstream(folder / "b.txt") << strReseau;
    ZuFindingList findings;
    ZuCheckFile((folder / "a.prj").c_str(), &findings);
    std::string strLines;
    for (const ZuFinding& finding : findings) {
      strLines += GetZuFindingLine(finding).substr(folder.string().size() + 1) + '\n';
    }
    return strLines;
  };
  EXPECT_EQ(lines("\"a\" RESEAUSUBID 2", kDigitalCamera), "");
  EXPECT_EQ(lines("\"b.txt\"", kReseau), "");
  EXPECT_EQ(lines("\"B\"", "not one"), "");
  EXPECT_EQ(
      lines("\"B\"", kDigitalCamera),
      "a.prj:3:21: warning: no reseau \"B\" in the reseau files beside the project; \"A\" with "
      "RESEAUSUBID 1 or \"A\" with RESEAUSUBID 2 would be right\n");
  EXPECT_EQ(lines("\"A\" RESEAUSUBID 1", Edited(kDigitalCamera, {"\"right\"", "right", "", ""})),
            "b.txt:2:9: error: \"right\" is no \"text\"; a \"text\" would be right\n");
  fs::remove_all(folder);
}

// The samples, and good files written in other ways.
TEST(Check, FindsNothingInGoodFiles) {
  int iFiles = 0;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(ZU_SOURCE_DIR "/samples")) {
    const auto ending = entry.path().extension();
    const bool bChecked = ending == ".prj" || ending == ".cam" || ending == ".coo" ||
                          ending == ".pln" || ending == ".pts" || ending == ".gsi" ||
                          entry.path().stem() == "reseau" ||
                          entry.path().stem() == "digital_cameras" || ending == ".ply";
    if (!bChecked) continue;
    ++iFiles;
    const auto lines = Lines(entry.path().c_str());
    EXPECT_TRUE(lines.empty()) << entry.path() << ' ' << lines[0];
  }
  for (const Fault& change :
       {Fault{"\n", "\r\n", "", ""},
        Fault{"CAMERA",
              "\xEF\xBB\xBF"
              "CAMERA",
              "", ""},
        Fault{"left01.jpg", "\xC3\xA4.jpg", "", ""}, Fault{"; first", "! first", "", ""},
        Fault{"0.0099", "9.9e-3", "", ""}, Fault{"C 4.9", "C {4.9}", "", ""}}) {
    ++iFiles;
    EXPECT_TRUE(Lines(TempFile(Edited(kProject, change), ".prj").Path()).empty()) << change.szNew;
  }
  EXPECT_GE(iFiles, 20);
}

}  // namespace
