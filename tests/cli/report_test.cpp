// The report of a measurement: one blunder hides nothing, and its size has a bound.
#include <gtest/gtest.h>

#include <string>

#include "tests/cli/program.h"

namespace {

std::string Report(const std::string& strProject) {
  const ScratchFolder folder;
  const std::string strBoard = Source("samples/chessboard/board.coo");
  const Outcome outcome =
      RunZu({"measure", folder.Write("p.prj", strProject), "--plane", strBoard, "--check", strBoard,
             "--unit", "mm", "--report", folder.Path("r.html")});
  EXPECT_EQ(outcome.iExit, 0) << outcome.strErr;
  return ReadFile(folder.Path("r.html"));
}

std::string Left() { return ReadFile(Source("samples/chessboard/left.prj")); }

std::string Replaced(std::string strText, const std::string& strFrom, const std::string& strTo) {
  const size_t uPlace = strText.find(strFrom);
  EXPECT_NE(uPlace, std::string::npos) << strFrom;
  return strText.replace(uPlace, strFrom.size(), strTo);
}

// Between the two words, from the first place of the first.
std::string Between(const std::string& strText, const std::string& strFrom, const char* szTo) {
  const size_t uFrom = strText.find(strFrom) + strFrom.size();
  return strText.substr(uFrom, strText.find(szTo, uFrom) - uFrom);
}

TEST(Report, ABlunderIsCutAndLabelledAndTheOthersStayAsTheyAre) {
  const std::string strGood = Report(Left());
  const std::string strBad = Report(Replaced(Left(), "23 372.4008", "23 397.4008"));
  EXPECT_EQ(Between(strGood, "check point, drawn ", " times"),
            Between(strBad, "check point, drawn ", " times"));
  EXPECT_EQ(strGood.find(">25</text>"), std::string::npos);
  EXPECT_NE(strBad.find(">25</text>"), std::string::npos);  // its length in pixels
  const std::string strFirstRow = Between(strBad, "<table id='worst'", "</tr>\n</tbody>");
  EXPECT_NE(strFirstRow.find("<td>1</td><td>23</td><td>397.40</td>"), std::string::npos);
  // Photo 2 has no blunder: the same drawing, stroke by stroke.
  EXPECT_EQ(Between(strGood, "Residuals of photo 2<", "</svg>"),
            Between(strBad, "Residuals of photo 2<", "</svg>"));
}

TEST(Report, StandsAloneWithFiguresScaleBarsAndBothColourSchemes) {
  const std::string strReport = Report(Left());
  for (const char* szNeeded :
       {"RMS 0.1377 mm", "RMS [mm]", "left14.jpg", "times as long", "CRC-32",
        "Lengths of the residuals", "RMS [px]", "0.5 px</text>", "mm</text>", "Object coordinates",
        "the RMS is 0.205 pixels", "prefers-color-scheme:dark", "max-width:640px",
        "break-after:avoid", "min-width:12ch'>file"}) {
    EXPECT_NE(strReport.find(szNeeded), std::string::npos) << szNeeded;
  }
  EXPECT_LT(strReport.size(), 300000U);
  for (const char* szForbidden : {"-0.0000", "<script", "src=", "href=", "@import", "url("}) {
    EXPECT_EQ(strReport.find(szForbidden), std::string::npos) << szForbidden;
  }
}

TEST(Report, GrowsNoMoreWithTheMeasurements) {
  std::string strText = Left();
  strText.resize(strText.find("PHOTO {", strText.find("MEASURE")));
  const size_t uEnd = strText.rfind("    }\n}");
  const auto sized = [&](int nPoints) {
    std::string strRows;
    for (int i = 0; i < nPoints; ++i) {
      strRows += std::to_string(100 + i) + " " + std::to_string(10 + i % 600) + " " +
                 std::to_string(10 + i / 600 % 450) + "\n";
    }
    return Report(strText.substr(0, uEnd) + strRows + strText.substr(uEnd)).size();
  };
  EXPECT_NEAR(static_cast<double>(sized(6000)), static_cast<double>(sized(24000)), 20000.0);
}

TEST(Report, IsRefusedWithTheSameWordsByEveryCommand) {
  const ScratchFolder folder;
  for (const char* szCall : {"zu plane $S/planes/facade.coo", "zu check $S/planes/facade.coo",
                             "zu transform $S/datum/local.coo --control $S/datum/wgs84.coo"}) {
    const std::string strCall = szCall;
    const auto run = [&](const char* szOption, int iExit, const char* szErr) {
      const std::string strLine = strCall + szOption;
      ExpectLines({{strLine.c_str(), iExit, "", szErr}}, folder);
    };
    run(" --plot a.jpg", 2, "--plot a.jpg: a picture is written as .svg, .pdf or .png");
    run(" --report a.pdf", 2, "--report a.pdf: a report is written as .html");
    run(" --plot none/a.svg", 5, "mkdir -p");
    run(" --report a.html --plot a.html", 2, "both write");
  }
  EXPECT_TRUE(folder.Names().empty());
}

TEST(Report, OfACommandEscapesWhatComesFromFiles) {
  const ScratchFolder folder;
  folder.Write("a.csv", "name,x,y,z\n<b>&,0,0,0\nB,10,0,0\nC,0,10,0\nD\xFF,10,10,1\n");
  for (const char* szCall : {"zu local a.csv --axis 'X:<b>&,B' --plane XY:C",
                             "zu transform a.csv --control a.csv", "zu plane a.csv --axis"}) {
    const Outcome outcome = RunLine(std::string(szCall) + " --report r.html --plot p.svg", folder);
    ASSERT_EQ(outcome.iExit, 0) << szCall << outcome.strErr;
    for (const char* szFile : {"r.html", "p.svg"}) {
      const std::string strText = ReadFile(folder.Path(szFile));
      EXPECT_NE(strText.find("&lt;b&gt;&amp;</text>"), std::string::npos) << szCall << szFile;
      EXPECT_EQ(strText.find("<b>"), std::string::npos) << szCall << szFile;
    }
  }
}

// Observations set aside stand in the list; nothing that is no number stands anywhere.
TEST(Report, OfANetworkTellsCamerasPointsAndWhatWasSetAside) {
  const ScratchFolder folder;
  const std::string strSample = Source("samples/network/");
  const Outcome outcome =
      RunZu({"adjust", strSample + "camcal.prj", "--control", strSample + "control_fixed.coo",
             "--estimate", "c,xh,yh,a1,a2,a3,c1,c2", "--test", "--alpha", "0.0001", "--unit", "m",
             "--report", folder.Path("r.html")});
  ASSERT_LE(outcome.iExit, 1) << outcome.strErr;
  const std::string strReport = ReadFile(folder.Path("r.html"));
  for (const char* szNeeded :
       {"21 photos, 100 points", "sigma0", "<h2>Network</h2>", "Plan, X and Y", "95 %",
        "What the cameras&#39; models left", "Distortion of camera", "Photo 1,", "limit",
        "The worst image points", "<h2>Points</h2>", "set aside: T"}) {
    EXPECT_NE(strReport.find(szNeeded), std::string::npos) << szNeeded;
  }
  for (const char* szForbidden : {"nan", "inf,", "<script", "src=", "href="}) {
    EXPECT_EQ(strReport.find(szForbidden), std::string::npos) << szForbidden;
  }
  EXPECT_LT(strReport.size(), 500000U);
}

}  // namespace
