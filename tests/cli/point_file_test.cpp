// Coordinate files on the command line: where they come from, what is read, what is refused, and
// how it is said.
#include <gtest/gtest.h>

#include "tests/cli/program.h"

namespace {

constexpr char kGood[] = "1 0 0 0\n2 1 0 0\n3 0 1 0\n";

}  // namespace

TEST(PointFile, MayBeAPipeAndIsReadOnce) {
  const ScratchFolder folder;
  folder.Write("a.coo", kGood);
  ExpectLines(
      {
          {"mkfifo f; cat a.coo > f & zu plane f --json | cmp - <(zu plane a.coo --json)", 0, "",
           ""},
          {"cat a.coo | zu plane - --json | cmp - <(zu plane a.coo --json)", 0, "", ""},
          {"cat a.coo | zu plane /dev/stdin --json | cmp - <(zu plane a.coo --json)", 0, "", ""},
          {"zu plane - --json < a.coo | cmp - <(zu plane a.coo --json)", 0, "", ""},
          {"zu transform <(cat a.coo) --control <(cat a.coo)", 0, "3 common points", ""},
          {"cat a.coo | zu transform - --control -", 2, "",
           "standard input: has been read already"},
          {"zu transform - --control - < a.coo", 2, "", "standard input: has been read already"},
          {"zu plane /dev/zero", 3, "", "/dev/zero: is a device, not a file; a coordinate file"},
          {"ulimit -f 64; yes 1 2 3 4 | zu plane -", 5, "", "standard input: cannot be kept (File"},
          {"zu plane /dev/null", 3, "", "/dev/null: holds no point"},
          {"zu plane none.coo", 3, "", "none.coo: no such file; a coordinate file is needed"},
          {"zu plane a.coo/b", 3, "", "a.coo/b: no such file"},
          {"zu transform a.coo --control .", 3, "", ".: is a folder; a coordinate file is needed"},
          {"zu local a.coo --definition .", 3, "", ".: is a folder; a file with LOKAL { ... }"},
      },
      folder);
}

// A fourth line behind three good ones: the number of points, or what the message holds.
TEST(PointFile, ALineIsAPointOrNamed) {
  const struct {
    const char* szColumns;
    const char* szLine;
    size_t uPoints;
    const char* szMessage;
  } lines[] = {
      {"id,x,y,z", "4,0,0,1", 4, ""},
      {"id,x,y,z", "4; 0; 0; 1\r", 4, ""},
      {"id,x,y,z", "4\t0\t+0\t1e0 remark", 4, ""},
      {"id,x,y,z", "4 0 0 1 door, 2,5 m, left", 4, ""},
      {"id,x,y,z", "4294967295 0 0 1", 4, ""},
      {"id,x,y,z", "# 4 0 0 1", 3, ""},
      {"id,x,y,z", "number x y z", 3, "points.coo:4: the line is no point, but a title; # in"},
      {"id,x,y,z", "\n\n", 3, ""},
      {"idname,x,y,z", "\"Corner 3\" 0 0 1", 4, ""},
      {"idname,x,y,z", "Corner 3;0;0;1", 4, ""},
      {"idname,x,y,z", "Corner left 0 0 1", 4, ""},
      {"id,x,y,z", "4 0 1", 0,
       "4:6: the file ends within a line: the line has 3 fields, the columns id,x,y,z need 4"},
      {"id,x,y,z", "4;;0;0;1", 0, "4:3: column x: the field is empty"},
      {"id,x,y,z", "4 0 1m 0", 0, "4:5: column y: \"1m\" is no number"},
      {"id,x,y,z", "4 0 1 nan", 0, "4:7: column z: \"nan\" is no number"},
      {"id,x,y,z", "4 1e400 0 0", 0, "4:3: column x: \"1e400\" is no number"},
      {"id,x,y,z", "\n4 0,5 1,25 0,75", 0, "5:3: \"0,5\" has a decimal comma; 0.5 would be right"},
      {"id,x,y,z", "4;0,5;1;0", 0, "4:3: \"0,5\" has a decimal comma"},
      {"id,x,y", "4 12,5", 0, "4:3: \"12,5\" has a decimal comma"},
      {"id,x,y,z", "4.5 0 0 0", 0, "4:1: column id: \"4.5\" is no id"},
      {"id,x,y,z", "12abc 0 0 0", 0, "4:1: column id: \"12abc\" is no id"},
      {"id,x,y,z", "-1 0 0 0", 0,
       "4:1: column id: \"-1\" is no id; a whole number from 1 to 42949"},
      {"id,x,y,z", "4294967296 0 0 0", 0, "column id: \"4294967296\" is no id"},
      {"id,x,y,z", "A 0 0 9", 0, "--columns idname,"},
      {"id,photo,x,y", "4 1.5 0 9", 0, "column photo: \"1.5\" is no whole number"},
      {"idname,x,y,z", "Corner left 0 0 1\nCorner 3 0 0 1", 0,
       "line 4 has a name of several words"},
      {"idname,x,y,z", "Corner 3,1,2,3", 0, "can be read in two ways"},
  };
  for (const auto& line : lines) {
    SCOPED_TRACE(line.szLine);
    const ScratchFolder folder;
    const std::string strPath =
        folder.Write("points.coo", std::string("\xEF\xBB\xBF") + kGood + line.szLine);
    const Outcome outcome = RunZu({"trafo2d", strPath, "--control", strPath, "--type", "affin",
                                   "--columns", line.szColumns, "--json"});
    if (line.uPoints == 0) {
      ExpectFailure(outcome, 3, line.szMessage);
      continue;
    }
    ASSERT_EQ(outcome.iExit, 0) << outcome.strErr;
    EXPECT_EQ(outcome.Json()["points"].size(), line.uPoints);
    EXPECT_EQ(outcome.strErr.empty(), *line.szMessage == '\0');
    EXPECT_NE(outcome.strErr.find(line.szMessage), std::string::npos) << outcome.strErr;
  }
  const ScratchFolder folder;
  folder.Write("long.coo", kGood + ("4 0 0 " + std::string(2000, '0')) + "\n");
  folder.Write("none.coo", std::string("# title\nnumber x y z\n\0 1 2 3\n", 29));
  ExpectLines({{"zu plane long.coo", 3, "", "long.coo:4: the line has 2006 bytes"},
               {"zu plane none.coo", 3, "", "none.coo: holds no point; lines of id"},
               {"head -c 20000 " ZU_PROGRAM " | zu plane -", 3, "", "standard input"}},
              folder);
}

// Names as ids, a control code and a column to pass over: the result file reads back with them.
TEST(PointFile, IsWrittenWithTheColumnsItWasReadWith) {
  const ScratchFolder folder;
  const std::string strSource = folder.Write(
      "source.coo", "A1 - 12 0 0 0\nA2 - 0 1 0 0\n\"A 3\" - 0 0 1 0\n17 - 0 0 0 1\nB - 0 1 1 1\n");
  const std::string strControl = folder.Write(
      "control.coo", "A1 - 12 5 5 5\nA2 - 0 6 5 5\n\"A 3\" - 0 5 6 5\n17 - 0 5 5 6.1\n");
  const std::string strColumns = "idname,skip,code,x,y,z";
  const std::string strOut = folder.Path("out.coo");
  const Outcome outcome = RunZu({"transform", strSource, "--control", strControl, "--columns",
                                 strColumns, "--json", "-o", strOut});
  ASSERT_EQ(outcome.iExit, 0) << outcome.strErr;
  const auto points = outcome.Json()["points"];
  ASSERT_EQ(points.size(), 5U);
  EXPECT_EQ(points[0]["name"], "A1");
  EXPECT_EQ(points[0]["x"], 5.0);  // the code of A1 is 12: X and Y are those of the control point
  EXPECT_EQ(points[0]["y"], 5.0);
  EXPECT_TRUE(points[4]["dx"].is_null());

  const Outcome again =
      RunZu({"transform", strOut, "--control", strOut, "--columns", "idname,code,x,y,z", "--json"});
  ASSERT_EQ(again.iExit, 0) << again.strErr << ReadFile(strOut);
  const auto copies = again.Json()["points"];
  ASSERT_EQ(copies.size(), points.size());
  for (size_t i = 0; i < copies.size(); ++i) {
    EXPECT_EQ(copies[i]["id"], points[i]["id"]);
    EXPECT_NEAR(copies[i]["z"].get<double>(), points[i]["z"].get<double>(), 1e-12);
  }
}

TEST(PointFile, OfATotalStation) {
  const ScratchFolder folder;
  folder.Write("known.coo", "S02 130 200 50\n101 117.678 217.678 50.1\n");
  ExpectLines({{"zu points gsi $S/gsi/polar8.gsi -o a.coo", 0, "3 points, columns id,x,y,z",
                "those of its station \"S02\""},
               {"zu points gsi $S/gsi/polar8.gsi --strict -o b.coo", 3, "",
                ":7: point \"104\" has no coord"},
               {"zu points gsi $S/gsi/polar8.gsi --known known.coo --sigma-angle 1 -o c.coo", 0,
                "4 points, columns id,x,y,z,dx,dy,dz", ""},
               {"zu points gsi known.coo -o d.coo", 3, "", "known.coo:1:1"}},
              folder);
}

// As spreadsheets and total stations write them, into the form in which they came.
TEST(PointFile, MayBeATableOfAnotherProgram) {
  const ScratchFolder folder;
  folder.Write(
      "a.csv",
      "Punkt;Rechtswert [m];Hochwert [m];H\xF6he [m];Code\r\nEcke links oben am Tor;0,00;0;0;1\r\n"
      "B;9,25;0;0;1\r\nC;0;7,5;0;\r\n17;0;0;5;x\r\n");
  folder.Write("b.coo",
               "Name N E Z\n\"Ecke links oben am Tor\" 100 200 0\nB 100 209.25 0\n"
               "C 107.5 200 0\n17 100 200 5\n");
  folder.Write("mm.txt",
               "sheet 1\nName\tX [mm]\tY [mm]\tZ [mm]\nB\t9250\t0\t0\nC\t0\t7500\t0\n"
               "Ecke links oben am Tor\t0\t0\t0\n17\t0\t0\t5000\n");
  folder.Write("plain.txt", "B 0 0 0\nC 1 0 0\nD 0 1 0\n");
  folder.Write("comma.txt", "B;0;0;0\nC;1,5;0;0\nD;0;1;0\n");
  folder.Write("p.gsi",
               "110001+00000001 81..00+00000000 82..00+00000000 83..00+00000000\n"
               "110002+00000002 81..00+00001000 82..00+00000000 83..00+00000000\n"
               "110003+00000003 81..00+00000000 82..00+00001000 83..00+00000000\n");
  ExpectLines(
      {{"zu transform a.csv --control b.coo -o -", 0,
        "Punkt;Rechtswert [m];Hochwert [m];H\xC3\xB6he [m]\r\nEcke links oben am "
        "Tor;200,00000;100,00000;",
        "taken as idname,x,y,z, decimal comma, Latin-1"},
       {"zu transform a.csv --control mm.txt --unit-scale --json", 0, "\"common\": 4",
        "mm.txt: lengths in mm brought to m"},
       {"zu transform a.csv --control b.coo --decimals 1 -o - --quiet", 0, "\nB;209,2;100,0;0,0\r",
        ""},
       {"zu transform b.coo --control b.coo --decimals 2 -o -", 0,
        "\"Ecke links oben am Tor\" 100.00 200.00 0.00\n", ""},
       {"zu plane plain.txt --json", 0, "\"name\": \"C\"", ""},
       {"zu plane comma.txt", 3, "",
        "comma.txt:2:3: \"1,5\" has a decimal comma; 1.5 would be right"},
       {"zu plane comma.txt", 3, "", "--decimal-comma reads them"},
       {"zu plane comma.txt --decimal-comma", 0, "3 points", ""},
       {"zu plane <(sed 's/;/:/g' comma.txt) --decimal-comma --delimiter :", 0, "3 points", ""},
       {"zu transform mm.txt --control mm.txt --skip-lines 2 --columns idname,x,y,z --delimiter "
        "tab",
        0, "4 common points", ""},
       {"zu transform b.coo --control plain.txt --control-columns idname,y,x,z", 4, "", "2 points"},
       {"zu plane plain.txt --delimiter ab", 2, "",
        "tab, comma, semicolon, blank or one character"},
       {"zu plane <(printf 'N E\\n1 2\\n')", 2, "", "\"y,x\" has no column z"},
       {"zu plane p.gsi --json", 0, "GSI", ""},
       {"zu plane <(printf '1 2.690000001 0 1\\n2 1 0 1\\n3 0 1 1\\n') -o - --quiet", 0, "!e-",
        ""}},
      folder);
}

// Where a coordinate file is taken, so are tables and GSI files; what is written of them has no
// exponents.
TEST(PointFile, TablesAreTakenEverywhere) {
  const ScratchFolder folder;
  folder.Write(
      "t.csv",
      "Punkt;Rechtswert [m];Hochwert [m];Hoehe [m]\r\nA1;0,5;0;0\r\nB;9,25;0;0\r\nC;0;7,5;0\r\n");
  ExpectLines(
      {{"(cat t.csv; printf 'B;9,2;0;0\\r\\n') > d.csv; zu check d.csv", 1,
        "d.csv:5:1: warning: point B", ""},
       {"zu check t.csv", 0, "!:", ""},
       {"zu cloud convert t.csv o.xyz && cat o.xyz", 0, "9.25 0 0\n", "taken as idname,x,y,z"},
       {"zu cloud info $S/gsi/station8.gsi", 0, "points", ""},
       {"zu cloud info $S/gsi/polar8.gsi", 0, "3 points", "point \"104\" has no coordinates"},
       {"zu cloud convert <(printf '1e-7 2e-300 1e22\\n') o.csv && cat o.csv", 0,
        "1,0.0000001,0.000", "!e-"},
       {"(echo 'Id;X;Y;Z'; tr ' ' ';' < $S/chessboard/board.coo) > board.csv; zu measure "
        "$S/chessboard/left.prj --plane board.csv --check board.csv --decimals 2 -o m.csv && head "
        "-2 m.csv",
        0, "photo;id;x;y;z\n1;1;", ""},
       {"zu adjust $S/chessboard/pixels.prj --control board.csv --points-out p --decimals 3 && "
        "head -1 p",
        0, "\n1 0.000 125.000 0.000 0.000 0.000 0.000\n", ""},
       {"zu adjust $S/chessboard/pixels.prj --control <(echo 'X Y Z'; echo '1 2 3')", 2, "",
        "no column for the id"}},
      folder);
}
