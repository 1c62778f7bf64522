// Photos as programs of computer vision know them: what lies between a project and their files.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "zu/exchange/internal/photo_camera.h"
#include "zu/exchange/photo_exchange.h"
#include "zu/numerics/rotation_convention.h"

namespace zu::internal {

struct BlockCamera {
  unsigned uId = 0;
  std::string strModel;  // its name in the other program
  std::string strName;   // of the record; empty: strModel
  ZuImageSize size;
  PinholeModel model;
  double dPixelSize = 0.0;  // width of a pixel [mm]; 0 where the other program tells none
};

struct BlockMeasure {
  unsigned uPoint = 0;
  ZuPixel pixel;
};

struct BlockImage {
  unsigned uId = 0, uCamera = 0;
  std::string strName;
  bool bOriented = true, bActive = true;
  ZuCameraPose pose;
  std::vector<BlockMeasure> measures;  // each point once
};

struct BlockPoint {
  unsigned uId = 0;
  std::array<double, 3> X{};
};

struct PhotoBlock {
  std::vector<BlockCamera> cameras;
  std::vector<BlockImage> images;
  std::vector<BlockPoint> points;
};

// What ends the reading or writing of a format.
struct ExchangeFault {
  ZuFinding finding;
};
[[noreturn]] void FailExchange(const std::string& strFile, std::uint64_t uLine,
                               const std::string& strText, const std::string& strRight);
void WarnExchange(const std::string& strFile, const std::string& strText,
                  ZuExchangeReport* pReport);
// Nothing is wrong; the user may want to know.
void NoteExchange(const std::string& strFile, const std::string& strText,
                  ZuExchangeReport* pReport);

// The pose that goes into another form and comes back the same to the bit (see Settled), and
// whether its numbers are finite.
ZuCameraPose SettledPose(const ZuCameraPose& pose,
                         ZuCameraPose (*ThereAndBack)(const ZuCameraPose&));
bool IsFinitePose(const ZuCameraPose& pose);
// Orthonormal to a millionth, by rows, and no reflection.
bool IsRotation(const std::array<double, 9>& r);
// A name as a record's: quotes and control characters become '_'.
std::string PlainName(std::string strName);

// Takes out what an image measures of a point again; gives the number.
std::size_t DropSecondMeasures(BlockImage* pImage);
// Tells how many of them were left out, if any.
void WarnSecondMeasures(const std::string& strFile, std::size_t uDropped,
                        ZuExchangeReport* pReport);

// Where an image sees a point; false behind the camera.
bool SeePoint(const BlockImage& image, const PinholeModel& model, const BlockPoint& point,
              ZuPixel* pPixel);

// The file of a format that is one file.
const ZuExchangeFile& OneFile(const std::vector<ZuExchangeFile>& files);
// Of files that count pixels and parameters as PinholeModel does (see HoldCamera).
PinholeModel SameModel(const PinholeModel& model);

// Throws where a photo cannot have that name: empty, with control characters or quotes, or a path
// that leads out of its folder.
void CheckPhotoName(const std::string& strName, const std::string& strFile, std::uint64_t uLine);
// Throws for what is no size of an image.
void CheckImageSize(const ZuImageSize& size, const std::string& strFile, std::uint64_t uLine);

// Both throw ExchangeFault. ThroughFile: see HoldCamera.
void BlockToProject(const PhotoBlock& block, const ZuImportOptions& options,
                    PinholeModel (*ThroughFile)(const PinholeModel&), ZuProject* pProject,
                    ZuExchangeReport* pReport);
// What a format takes of a project.
struct BlockNeeds {
  std::vector<unsigned> parameters;  // of cameras, see TellCamera
  bool bOrientation = true;          // photos without one are left out
  bool bPoints = true;               // measurements of points without coordinates are left out
};
PhotoBlock ProjectToBlock(const ZuProject& project, const ZuPointList& points,
                          const BlockNeeds& needs, const ZuExportOptions& options,
                          ZuExchangeReport* pReport);

}  // namespace zu::internal
