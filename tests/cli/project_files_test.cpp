// zu convert, zu project and zu photo rescale.
#include "tests/cli/program.h"

namespace {

TEST(ProjectFiles, ConvertMergeSplitRenumberRescale) {
  const ScratchFolder folder;
  ExpectLines(
      {
          {"zu convert $S/chessboard/left.prj -o a.json", 0, "26 items", ""},
          {"zu convert a.json -o a.prj", 0, "26 items", ""},
          {"zu convert $S/chessboard/left.prj -o b.prj && cmp a.prj b.prj", 0, "", ""},
          {"zu convert $S/older/facade.prj -o old.prj", 0, "", "!TS15CAM"},
          {"zu convert old.prj -o - | grep -c TS15CAM", 0, "1", ""},
          {"zu convert a.prj -o a.txt", 2, "", "written as .prj or .json"},
          {"zu convert $S/chessboard/board.coo -o c.prj", 3, "", "project file"},
          {"zu project info a.json", 0, "13 photos", ""},
          {"zu project merge a.prj $S/older/facade.prj -o m.prj", 3, "", "photo 1 is not the same"},
          {"zu project merge a.prj old.prj --offset 100 -o m.prj", 0, "14 photos", ""},
          {"zu project merge a.prj b.prj -o m2.prj && cmp m2.prj a.prj", 0, "702 measurements", ""},
          {"(cat old.prj; echo WORD) > word.prj && zu project merge word.prj b.prj --offset 100 -o "
           "w.prj",
           0, "14 photos", ""},
          {"tail -n 1 w.prj", 0, "WORD", ""},
          {"zu project split m.prj --photos 101 -o one.prj --rest rest.prj", 0, "1 photo", ""},
          {"zu convert rest.prj -o rest2.prj && cmp rest2.prj a.prj", 0, "26 items", ""},
          {"zu project split a.prj --photos 99 -o one.prj", 3, "", "no photo 99"},
          {"zu project split a.prj --photos 4-1 -o one.prj", 2, "", "1,4,7-9 would be right"},
          {"zu project renumber a.prj --start 2 --points-offset 50 -o r.prj", 0, "702", ""},
          {"zu project renumber r.prj --offset -1 --points-offset -50 -o r.json", 0, "702", ""},
          {"zu project renumber a.prj --offset -1 -o r.prj", 2, "", "ids from 1"},
          {"zu photo rescale a.prj --factor 2 -o twice.prj", 0, "0 0 to 1278 958", ""},
          {"zu photo rescale a.prj -o twice.prj", 2, "", "--width"},
      },
      folder);
}

// Of a project each command warns alike, and refuses alike under --strict.
TEST(ProjectFiles, StrictRefusesWhatIsWarnedOf) {
  const ScratchFolder folder;
  std::string strText = ReadFile(Source("samples/chessboard/left.prj"));
  strText.replace(strText.find("STATE 0"), 7, "STAT 0 ");
  folder.Write("stat.prj", strText);
  const std::string strWarning = "unknown keyword STAT skipped; STATE would be right";
  for (const std::string strCommand :
       {"zu photo info stat.prj", "zu convert stat.prj -o -", "zu project info stat.prj",
        "echo 1 2 3 | zu photo convert stat.prj --photo 1 --mode digi-biko"}) {
    ExpectLines({{strCommand.c_str(), 0, "", strWarning.c_str()},
                 {(strCommand + " --strict").c_str(), 3, "", "without --strict this is a warning"}},
                folder);
  }
}

// An image of half the size gives the same points.
TEST(ProjectFiles, RescaledPhotosMeasureTheSame) {
  const ScratchFolder folder;
  const std::string strHalf = folder.Path("half.prj");
  const std::string strBoard = Source("samples/chessboard/board.coo");
  const std::string strLeft = Source("samples/chessboard/left.prj");
  ASSERT_EQ(RunZu({"photo", "rescale", strLeft, "--factor", "0.5", "-o", strHalf}).iExit, 0);
  const auto measure = [&](const std::string& strProject) {
    return RunZu({"measure", strProject, "--plane", strBoard, "--check", strBoard, "--json"})
        .Json();
  };
  const auto full = measure(strLeft), half = measure(strHalf);
  EXPECT_NEAR(full["rms"]["total"], half["rms"]["total"], 1e-12);
  EXPECT_NEAR(full["rms_px"].get<double>(), 2.0 * half["rms_px"].get<double>(), 1e-3);
}

TEST(ProjectFiles, NewCoordinatesOfObjectPoints) {
  const ScratchFolder folder;
  folder.Write("p.prj", ReadFile(Source("samples/chessboard/left.prj")) +
                            "POINTS {\n1 10 2 3\n2 20 2 3\n}\n");
  folder.Write("new.coo", "1 5 2 3 0.01 0.01 0.01\n7 1 1 1 1 1 1\n");
  const std::string strMean =
      "zu project update p.prj new.coo --columns id,x,y,z,dx,dy,dz --mode mean --sigma-old 0.02 "
      "--tolerance 4.9 -o mean.prj";
  ExpectLines({{strMean.c_str(), 1, "1 point added", ""},
               {"cat mean.prj | tr -s ' '", 0, "1 6 2 3", ""},
               {"zu project update p.prj new.coo --mode mean -o m.prj", 0, "1 point changed",
                "equal weights"},
               {"zu project update p.prj new.coo --mode keep --known-only -o - | tr -s ' '", 0,
                "1 10 2 3", ""}},
              folder);
}

TEST(ProjectFiles, TheLogOfMeasurementsIsReplayed) {
  const ScratchFolder folder;
  folder.Write("rows", "1 1 5 6\n99 2 7 8\n");
  ExpectLines(
      {{"zu log append l --photo 1 --point 1 --pixel 1,2 --who A --time 2026-01-01 && "
        "zu log append l --rows rows --who B --time 2026-01-02 --no-sync",
        0, "2 measurements added", ""},
       {"printf cut >> l; zu log show l --who B --photos 1", 0, "2026-01-02T00:00:00Z", "l:4: the"},
       {"zu log replay l $S/chessboard/left.prj -o m.prj", 1, "0 measurements added, 1 replaced, 1",
        "photo 99"},
       {"zu log append l --photo 1 --point 1 --pixel 1x2", 2, "", "is no pixel"},
       {"zu log show l --from noon", 2, "", "2026-11-22T16:28:30Z would be right"},
       {"zu log append none/l --photo 1 --point 1 --pixel 1,2", 5, "", "No such file"}},
      folder);
}

TEST(ProjectFiles, PhotosGoToOtherProgramsAndBack) {
  const ScratchFolder folder;
  ExpectLines(
      {{"zu export colmap $S/chessboard/left.prj m --points $S/chessboard/board.coo", 0,
        "camera 1, FULL_OPENCV: fitted, largest error 0.000043 px", ""},
       {"cmp m/images.txt $S/colmap/images.txt && zu import colmap m -o a.prj", 0,
        "13 photos, 54 points, 702 measurements", ""},
       {"zu export colmap a.prj b --binary && zu import colmap b -o c.prj && cmp a.prj c.prj", 0,
        "", ""},
       {"zu export colmap a.prj m --binary", 2, "", "m/cameras.txt is there, too"},
       {"zu export colmap $S/chessboard/left.prj n --max-error 1e-9", 3, "", "is met to 4.2"},
       {"test ! -e n; zu import colmap n -o d.prj", 3, "", "n: has none of the files"},
       {"zu import map m -o d.prj", 2, "", "map is no format; colmap"},
       {"zu export metashape $S/network/camcal.prj s.xml --points $S/network/approx.coo", 0,
        "camera 1, frame: exact", ""},
       {"zu import metashape s.xml -o s.prj && zu export metashape s.prj s2.xml && "
        "zu import metashape s2.xml -o s2.prj && cmp s.prj s2.prj",
        0, "the chunk's transform is applied", ""},
       {"zu import metashape s.xml -o s3.prj --no-transform && cmp s.prj s3.prj", 0, "not applied",
        ""},
       {"zu export opencv $S/chessboard/left.prj c.yml --points $S/chessboard/board.coo", 0,
        "camera 1, OPENCV_8: fitted, largest error 0.000043 px", ""},
       {"zu import opencv c.yml -o e.prj && zu export opencv e.prj c.json && zu import opencv "
        "c.json -o f.prj && cmp e.prj f.prj",
        0, "13 photos, 54 points, 702 measurements", ""},
       {"zu export opencv e.prj c.txt", 3, "", ".yml, .xml or .json at its end would"},
       {"sed -i 's/cols: 3/cols: 4/' c.yml; zu import opencv c.yml -o d.prj", 3, "",
        "c.yml:8: camera_matrix tells 3 x 4"},
       {"zu export bal $S/network/camcal.prj n.txt --points $S/network/approx.coo", 0,
        "camera 1, BAL: exact", "numbered anew"},
       {"zu import bal n.txt -o n.prj", 0, "--image-size W,H tells it", ""},
       {"zu export bal n.prj n2.txt && zu import bal n2.txt -o n2.prj && cmp n.prj n2.prj", 0, "",
        ""},
       {"printf BZh91AY > n2.txt.bz2; zu import bal n2.txt.bz2 -o d.prj", 3, "",
        "n2.txt.bz2: is packed; what b"},
       {"zu import bal n.txt -o d.prj --image-size 7", 2, "", "is no size; 640,480 would"},
       {"mkdir x; cp m/cameras.txt m/points3D.txt x; echo 1 2 > x/images.txt; "
        "zu import colmap x -o d.prj",
        3, "", "x/images.txt:1: a number is missing"}},
      folder);
}

}  // namespace
