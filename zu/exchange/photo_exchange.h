// Photos with their cameras, orientations, measurements and points in the files of other programs,
// both ways. docs/exchange.md tells what each carries.
//
//   std::vector<ZuExchangeFile> files;
//   ZuExchangeReport report;
//   ZuProject project;
//   if (!ZuReadExchangeFiles(eZuExchangeColmap, "sparse/0", &files, &report.findings) ||
//       !ZuImportPhotos(eZuExchangeColmap, files, {}, &project, &report)) ...
//
// What was imported, exported and imported again is the same project to the last bit. Cameras that
// the other side cannot hold exactly are fitted over the image. Time grows with the files; nothing
// is allocated by a count that a file tells. One thread at a time.
#pragma once

#include <string>
#include <vector>

#include "zu/exchange/export.h"
#include "zu/numerics/pixel_convention.h"
#include "zu/project/finding_list.h"

class ZuPointList;
class ZuProject;

enum eZuExchange : int {
  eZuExchangeColmap,     // a folder: cameras, images, points3D, each .txt or .bin
  eZuExchangeBal,        // a file of Bundle Adjustment in the Large
  eZuExchangeMetashape,  // a camera file of Metashape, XML
  eZuExchangeOpenCv,     // a calibration file of OpenCV: .yml, .yaml, .xml, .json
};

struct ZuExchangeFile {
  std::string strName;  // "cameras.txt"; without folder
  std::string strText;  // its bytes
};

struct ZuImportOptions {
  double dMaxError = 0.05;  // of a fitted camera [px]
  double dPixelSize = 0.0;  // width of a pixel [mm]; 0: as the file tells it, else 1/256
  // Of all images where the file tells none; 0: what their measurements take.
  ZuImageSize imageSize;
  bool bTransform = true;  // to the system of the references, where the file tells the way there
};

struct ZuExportOptions {
  double dMaxError = 0.05;  // of a fitted camera [px]
  bool bBinary = false;     // where the format has a binary form
  std::string strName;      // of the file, where the format is one file; its ending may decide
};

// How a camera came across.
struct ZuExchangedCamera {
  unsigned uId = 0;
  std::string strModel;  // of the other program
  bool bFitted = false;  // false: exact
  double dError = 0.0;   // of a fit: the largest error over the image [px], and the pixel there is
  double dX = 0.0, dY = 0.0;
};

struct ZuExchangeReport {
  ZuFindingList findings;
  std::vector<ZuExchangedCamera> cameras;
  std::size_t uPhotos = 0, uPoints = 0, uMeasurements = 0;
  // Of an export: mean over the points of the mean distance of their measurements from where the
  // written camera sees them [px]; NaN without any.
  double dMeanError = 0.0;
  double dRms = 0.0;  // root of the mean square of those distances [px]
};

// Whether a format is a folder of files; else it is one file.
ZU_EXCHANGE_API bool ZuIsFolderExchange(eZuExchange eFormat);

// The files of a format at a path: those of its folder, or the file itself. False with a finding
// where one is missing or cannot be read.
ZU_EXCHANGE_API bool ZuReadExchangeFiles(eZuExchange eFormat, const std::string& strPath,
                                         std::vector<ZuExchangeFile>* pFiles,
                                         ZuFindingList* pFindings);

// Makes a project, in place of what it holds. False with errors among the findings and an empty
// project. Warnings tell what was left out.
ZU_EXCHANGE_API bool ZuImportPhotos(eZuExchange eFormat, const std::vector<ZuExchangeFile>& files,
                                    const ZuImportOptions& options, ZuProject* pProject,
                                    ZuExchangeReport* pReport);

// Makes the files of the oriented photos of a project that was read, with their cameras and
// measurements and the coordinates of the points: those of the list, else of the project's object
// points. False with errors among the findings and no files.
ZU_EXCHANGE_API bool ZuExportPhotos(eZuExchange eFormat, const ZuProject& project,
                                    const ZuPointList& points, const ZuExportOptions& options,
                                    std::vector<ZuExchangeFile>* pFiles, ZuExchangeReport* pReport);
