#include "commands.h"

namespace cli {

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {
      {"compare", "find the points that moved between two measurements",
       "  zu compare samples/merge/first.coo samples/merge/second.coo --sigma 0.1\n"
       "carries the first epoch onto the second over the points that did not move, found by\n"
       "itself, and tests each; exit code 1 where points moved.",
       DefineCompare},
      {"transform", "carry a point list into the system of control points",
       "  zu transform samples/datum/local.coo --control samples/datum/wgs84.coo -o joined.coo\n"
       "finds scale, rotation and shift from the stations that both files hold, prints the\n"
       "residual of each, and writes all stations in the control system to joined.coo.",
       DefineTransform},
      {"geo", "carry positions on the earth into another system",
       "  zu geo samples/datum/wgs84.coo --from geocentric --to utm -o map.coo\n"
       "finds the zone, prints easting, northing and ellipsoidal height of each station with the\n"
       "convergence and scale of the grid there, and writes them to map.coo.",
       DefineGeo},
      {"mesh", "triangulate points over a plane: areas, volumes, contours",
       "  zu mesh samples/clouds/plane_scan.xyz --fit --max-edge 2 -o scan.ply\n"
       "fits a plane to a scan, triangulates its points over it, prints holes, areas and the\n"
       "volumes above and below the plane, and writes the mesh to scan.ply.",
       DefineMesh},
      {"plane", "fit a plane to points",
       "  zu plane samples/clouds/plane_scan.xyz --columns x,y,z -o feet.xyz\n"
       "fits a plane to a scan without point numbers, prints its coefficients and the distance of\n"
       "each point, largest first, and writes the foot points on the plane to feet.xyz.",
       DefinePlane},
      {"points gsi", "make a coordinate file of what a total station has recorded",
       "  zu points gsi samples/gsi/polar8.gsi --sigma-angle 0.3 --sigma-distance 1 -o polar.coo\n"
       "turns directions, zenith angles and distances from a station into coordinates with "
       "standard\n"
       "deviations, and tells the point whose station is not known.",
       DefinePointsGsi},
      {"local", "put points into a local system defined by named points",
       "  zu local samples/datum/local.coo --axis X:2,1 --plane XY:3 --origin 2:1000,1000,0\n"
       "lays the x axis from station 2 to station 1 and the xy plane through station 3, and gives\n"
       "station 2 the coordinates (1000, 1000, 0).",
       DefineLocal},
      {"merge", "join two point lists although some common points are wrong",
       "  zu merge samples/merge/first.coo samples/merge/second.coo --tolerance 1 -o joined.coo\n"
       "carries the second list into the system of the first, names the common points that do\n"
       "not fit within 1, and writes the others to joined.coo.",
       DefineMerge},
      {"apply", "apply a saved transformation to points, a cloud or a project",
       "  zu transform samples/datum/local.coo --control samples/datum/wgs84.coo --save T.json\n"
       "  zu apply T.json samples/datum/local.coo carried.coo\n"
       "carries all stations into the control system by the transformation that was saved; with\n"
       "--inverse back again. T.json may be a 4 x 4 matrix from another program.",
       DefineApply},
      {"trafo2d", "fit a plane transformation",
       "  zu trafo2d samples/plans/digitised.csv --control samples/plans/map.csv --type affin \\\n"
       "     -o fitted.csv\n"
       "finds the affine transformation by the ids that both files hold, prints its coefficients\n"
       "and residuals, and writes the transformed points to fitted.coo.",
       DefineTrafo2d},
      {"construct arc", "construct an arc in a plane",
       "  zu construct arc samples/constructions/points.coo --points 1,2,3,4,5,6 -o arc.coo\n"
       "fits an arc through six points, prints radius, centre and how far each lies off it, and\n"
       "writes its centre and ends.",
       DefineConstructArc},
      {"construct conditions", "straighten points by parallels, right angles and ratios of lengths",
       "  zu construct conditions samples/constructions/askew.coo \\\n"
       "     --conditions samples/constructions/window.txt -o straight.coo\n"
       "finds the affine map that makes four points the corners of a window, and writes them.",
       DefineConstructConditions},
      {"construct intersection", "find a point from bearings and distances of known ones",
       "  zu construct intersection samples/constructions/points.coo \\\n"
       "     --distance 21:5 --distance 22:5\n"
       "finds the point to the left of 21 to 22 that is 5 from each.",
       DefineConstructIntersection},
      {"construct resection", "find a point from directions to known ones",
       "  zu construct resection samples/constructions/known.coo --direction 31:153.0174 \\\n"
       "     --direction 32:50.0230 --direction 33:375.1739 --direction 34:302.3899\n"
       "finds where the directions were measured, and which bearing their zero has.",
       DefineConstructResection},
      {"construct line", "fit a line to points, whole or in parts",
       "  zu construct line samples/constructions/points.coo --points 41,42,43,44,45,46,47,48 \\\n"
       "     --max-offset 0.05\n"
       "finds the fewest lines that no point lies more than 0.05 off, and where they break.",
       DefineConstructLine},
      {"construct rectangle", "fit a rectangle to corners or to points on its sides",
       "  zu construct rectangle samples/constructions/points.coo --points 11,12,13,14\n"
       "finds the rectangle closest to four measured corners.",
       DefineConstructRectangle},
      {"construct ortho", "find feet and offsets from a line, or points from them",
       "  zu construct ortho samples/constructions/points.coo --line 21,22 --points 11,12\n"
       "tells station and offset of two points from the line 21 to 22.",
       DefineConstructOrtho},
      {"construct match", "join two lines at their corner",
       "  zu construct match samples/constructions/points.coo --lines 41,44,45,48 --plane xy\n"
       "trims or extends both lines to where they meet in plan.",
       DefineConstructMatch},
      {"cloud info", "show the figures of point clouds",
       "  zu cloud info samples/clouds/autzen.pts samples/clouds/milk_carton.ply\n"
       "shows points, limits, centre and normals of each cloud.",
       DefineCloudInfo},
      {"cloud convert", "write point clouds in another format",
       "  zu cloud convert samples/clouds/autzen.pts autzen.zpc\n"
       "writes 1065 points with their intensities and colours as a binary cloud file.",
       DefineCloudConvert},
      {"cloud transform", "move point clouds and their normals",
       "  zu cloud transform samples/clouds/autzen.pts near.pts --translate -635000,-848000,0\n"
       "writes the points with smaller coordinates and shows their new limits.",
       DefineCloudTransform},
      {"cloud normals", "set the normals of point clouds to the direction to the scanner",
       "  zu cloud normals samples/clouds/milk_carton.ply carton.zpc --eye 0,0,0\n"
       "gives each of 13704 points the direction to the camera as its normal; the normals of the\n"
       "surface, which the file holds, are replaced.",
       DefineCloudNormals},
      {"camera info", "show the cameras of a file",
       "  zu camera info samples/chessboard/cameras.cam\n"
       "shows both cameras with their parameters and the radius up to which they invert",
       DefineCameraInfo},
      {"camera adjust", "correct measured image points, or restore them",
       "  echo \"1 -0.74 1.43\" | zu camera adjust samples/chessboard/cameras.cam --id 1\n"
       "prints the point without distortion, reduced to the principal point",
       DefineCameraAdjust},
      {"camera plot", "draw a camera's distortion",
       "  zu camera plot samples/chessboard/left.prj --photo 1 -o curve.svg\n"
       "draws the distortion curve and the displacement over the image",
       DefineCameraPlot},
      {"camera gentri", "print the cameras as lines of the adjustment program",
       "  zu camera gentri samples/chessboard/cameras.cam\n"
       "prints id, c, xh, yh, a1, a2 and r0 of each camera",
       DefineCameraGentri},
      {"photo info", "show the photos of a project",
       "  zu photo info samples/chessboard/left.prj\n"
       "shows thirteen photos with image, camera and exterior orientation.",
       DefinePhotoInfo},
      {"photo convert", "carry points along the chain of image coordinate systems",
       "  echo \"1 244.4 94.2\" | zu photo convert samples/chessboard/left.prj --photo 1 "
       "--mode digi-adjusted\n"
       "prints the pixel in mm, without distortion, from the principal point.",
       DefinePhotoConvert},
      {"photo inner", "find the first transformation of a photo from measured crosses",
       "  printf '11 -0.5 -0.5\\n12 639.5 -0.5\\n21 -0.5 479.5\\n22 639.5 479.5\\n' |\n"
       "     zu photo inner samples/chessboard/pixels.prj --photo 1 --crosses - \\\n"
       "     --reseau samples/chessboard/reseau.txt -o inner.prj\n"
       "fits the affine transformation of the four corners to the reseau, prints what each misses\n"
       "and writes the project with it.",
       DefinePhotoInner},
      {"photo rescale", "adapt photos of a project to resampled images",
       "  zu photo rescale samples/chessboard/left.prj --factor 0.5 -o half.prj\n"
       "writes the project for images of half the width, its measurements carried along.",
       DefinePhotoRescale},
      {"photo undistort", "make the picture of a photo without distortion",
       "  zu photo undistort samples/chessboard/left.prj --photo 1 \\\n"
       "     --image samples/chessboard/left01.jpg -o plain.png\n"
       "writes the picture as a camera without distortion would have taken it, transparent where\n"
       "the photo shows nothing; --project-out gives the project that fits it.",
       DefinePhotoUndistort},
      {"rectify", "carry image points through a rectification, or make a picture of a plane",
       "  echo \"1 -1.0 0.5\" | zu rectify samples/older/facade.prj --photo 1 --zusp 1\n"
       "prints the point of the facade in object coordinates.\n"
       "  zu rectify --image samples/chessboard/left.prj --photo 1,2 \\\n"
       "     --plane samples/chessboard/board.coo --pixel 0.5 -o board.tif\n"
       "makes a picture of the board to scale, each pixel from the photo that shows it best.",
       DefineRectify},
      {"orient", "find where the photos of a project stood",
       "  zu orient samples/network/camcal_unoriented.prj \\\n"
       "     --control samples/network/control_fixed.coo -o oriented.prj\n"
       "orients 21 photos from four control points and what they share, without approximations.",
       DefineOrient},
      {"intersect", "find the points that oriented photos share",
       "  zu intersect samples/network/camcal.prj -o points.coo\n"
       "intersects 100 points measured in 21 photos and writes them with standard deviations.",
       DefineIntersect},
      {"detect board", "find the corners of a chessboard in pictures",
       "  zu detect board --size 9x6 --square 25 samples/chessboard/left*.jpg -o detected.prj \\\n"
       "     --points board.coo --overlay found\n"
       "measures the 54 inner corners in thirteen pictures, numbered as the board numbers them, "
       "and\n"
       "writes a project that zu calibrate takes, the points of the board, and pictures to look "
       "at.",
       DefineDetectBoard},
      {"detect aruco", "find ArUco and AprilTag markers in pictures",
       "  zu detect aruco --family apriltag_36h11 samples/markers/hall.png -o detected.prj\n"
       "measures the four corners of each marker; marker 17 has the points 171 to 174.",
       DefineDetectAruco},
      {"detect targets", "find circular targets in pictures",
       "  zu detect targets --project samples/network/camcal.prj --points "
       "samples/network/approx.coo \\\n"
       "     samples/network/*.JPG -o detected.prj\n"
       "measures 100 dots of a sheet in 21 pictures and numbers them by orientations and points "
       "that\n"
       "are good to some per cent.",
       DefineDetectTargets},
      {"calibrate", "find a camera from photos of a flat board",
       "  zu calibrate samples/chessboard/left.prj --board samples/chessboard/board.coo \\\n"
       "     -o calibrated.prj\n"
       "orients thirteen photos from the board and adjusts camera and orientations to it.",
       DefineCalibrate},
      {"adjust", "adjust the photos of a project with their cameras and points",
       "  zu adjust samples/network/camcal.prj --control samples/network/control_fixed.coo \\\n"
       "     --estimate c,xh,yh,a1,a2,a3,c1,c2 --points-out points.coo\n"
       "calibrates the camera of 21 photos with four fixed control points, and writes 100 points\n"
       "with their standard deviations.",
       DefineAdjust},
      {"measure", "carry measured pixels of photos to object points on a plane",
       "  zu measure samples/chessboard/left.prj --plane samples/chessboard/board.coo \\\n"
       "     --check samples/chessboard/board.coo --unit mm --report report.html\n"
       "meets 702 measurements of thirteen photos with the board, compares them with its points,\n"
       "and writes a report to look at.",
       DefineMeasure},
      {"convert", "write a project as JSON, or back",
       "  zu convert samples/chessboard/left.prj -o left.json\n"
       "writes all of the project as JSON; zu convert left.json -o left.prj writes it back.",
       DefineConvert},
      {"draw", "draw points, lines and polygons as DXF or SVG",
       "  zu draw samples/constructions/points.coo points.dxf\n"
       "writes a plan of the points with their names for a CAD program.",
       DefineDraw},
      {"import", "make a project of the photos of another program",
       "  zu import colmap samples/colmap -o imported.prj\n"
       "makes a project of thirteen photos with their camera, orientations and 702 measurements.",
       DefineImport},
      {"export", "write the photos of a project for another program",
       "  zu export colmap samples/chessboard/left.prj out --points samples/chessboard/board.coo\n"
       "writes cameras.txt, images.txt and points3D.txt to the folder out, and tells how well the\n"
       "other camera model meets this one.",
       DefineExport},
      {"project detect", "tell what the files of a folder are and which belong together",
       "  zu project detect samples/older\n"
       "lists each file with its kind, told by its content, and for each project the pictures and\n"
       "reseaus that it names; exit code 1 where one is missing.",
       DefineProjectDetect},
      {"project info", "show what a project holds",
       "  zu project info samples/chessboard/left.prj\n"
       "counts 13 photos, all oriented, and 702 measurements.",
       DefineProjectInfo},
      {"project merge", "join two projects",
       "  zu project merge samples/chessboard/left.prj samples/older/facade.prj --offset 100 \\\n"
       "     -o both.prj\n"
       "writes the photos of both, those of the second one as 101 and so on.",
       DefineProjectMerge},
      {"project split", "write some photos of a project as a project",
       "  zu project split samples/chessboard/left.prj --photos 1-4 -o four.prj --rest nine.prj\n"
       "writes photos 1 to 4 with their measurements, and the others apart.",
       DefineProjectSplit},
      {"project renumber", "give photos and points of a project new ids",
       "  zu project renumber samples/chessboard/left.prj --start 101 -o left101.prj\n"
       "writes photos 101 to 113 with their measurements.",
       DefineProjectRenumber},
      {"project update", "give object points of a project new coordinates",
       "  zu project update samples/chessboard/left.prj samples/chessboard/board.coo \\\n"
       "     --tolerance 0.05 -o updated.prj\n"
       "adds the points that are new, replaces the others (--mode mean takes the mean by the\n"
       "accuracies of both), and tells those farther than 0.05 from their former place; exit code\n"
       "1 where there are any.",
       DefineProjectUpdate},
      {"log append", "add measurements to a log",
       "  zu log append left.zulog --photo 3 --point 17 --pixel 204.25,173.5 --who Meyer\n"
       "adds one line with the time of now, and returns when the disk has it.",
       DefineLogAppend},
      {"log show", "show the measurements of a log",
       "  zu log append left.zulog --photo 3 --point 17 --pixel 204.25,173.5 --who Meyer\n"
       "  zu log show left.zulog --photos 1-4 --from 2026-11-22\n"
       "lists what was measured in four photos since that day, and tells lines that are damaged.",
       DefineLogShow},
      {"log replay", "put the measurements of a log into a project",
       "  zu log append left.zulog --photo 3 --point 17 --pixel 204.25,173.5 --who Meyer\n"
       "  zu log replay left.zulog samples/chessboard/left.prj -o measured.prj\n"
       "gives each point of each photo its latest measurement, and writes the project.",
       DefineLogReplay},
      {"batch", "run many command lines, several at a time",
       "  zu batch samples/batch/checks.txt --jobs 2 --results checks\n"
       "checks every project of a folder, keeps what each check prints in checks, goes on where "
       "one\n"
       "fails, and tells at the end which did; typed again it runs only what is not done yet.",
       DefineBatch},
      {"examples", "copy small data to try a command on, and print what to type",
       "  zu examples transform\n"
       "copies the points that the example of zu transform needs to zu-examples, and prints its\n"
       "command line.",
       DefineExamples},
      {"check", "find what is wrong or not plausible in files",
       "  zu check samples/chessboard/left.prj samples/chessboard/board.coo\n"
       "finds nothing and ends with 0; what it finds stands one a line, file:line:column: "
       "severity:\n"
       "text, and the exit code is 1 for warnings and 3 for errors.",
       DefineCheck},
  };
  return commands;
}

}  // namespace cli
