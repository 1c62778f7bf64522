// Object points on a plane from measurements in single photos, and their comparison with known
// points.
//
//   ZuPlaneMeasurement result;
//   if (!result.FitPlane(planePoints)) ...                  // or SetPlane
//   if (!result.Measure(project, knownPoints, false)) ...   // nothing was met
//   for (const ZuMeasuredPhoto& photo : result.m_photos) show(photo.m_dRms, photo.m_points);
//
// Each pixel is carried to an image point, freed of distortion, and its ray met with the plane. The
// difference to the known point of the same id is formed in the object and in the image.
#pragma once

#include <string>
#include <vector>

#include "zu/export.h"
#include "zu/rectify/plane.h"

class ZuPhoto;
class ZuPoint;
class ZuPointList;
class ZuProject;
template <class T>
class ZuSortHelper;

struct ZU_API ZuMeasuredPoint {
  unsigned m_uId = 0;
  double m_dPixelX = 0.0, m_dPixelY = 0.0;       // measured [pixels]
  double m_dPixelSdX = 0.0, m_dPixelSdY = 0.0;   // their standard deviations; 0: not told
  double m_dX = 0.0, m_dY = 0.0, m_dZ = 0.0;     // met with the plane, object space
  bool m_bChecked = false;                       // there is a known point of the id
  double m_dDX = 0.0, m_dDY = 0.0, m_dDZ = 0.0;  // met less known point
  double m_dResPixelX = 0.0,
         m_dResPixelY = 0.0;  // measured less known point, in the image [pixels]

  // Of the difference in object space.
  double Length() const;
};

// Root mean squares over the checked points; 0.0 without one.
struct ZuMeasureQuality {
  int m_iChecked = 0;
  double m_dRms = 0.0;  // of the lengths
  double m_dRmsX = 0.0, m_dRmsY = 0.0, m_dRmsZ = 0.0;
  double m_dRmsPixels = 0.0;  // of the lengths in the image
};

struct ZU_API ZuMeasuredPhoto : ZuMeasureQuality {
  // The checked point with the longest difference, the first of them; null without one.
  const ZuMeasuredPoint* Worst() const;

  const ZuPhoto* m_pPhoto = nullptr;      // of the project
  std::vector<ZuMeasuredPoint> m_points;  // in the order of the measurements
  int m_iWorst = -1;
};

struct ZuLeftOutPhoto {
  unsigned m_uPhoto = 0;
  int m_iMeasurements = 0;
  std::string m_strWhy;  // "is not oriented: ... would be right"
};

enum eZuMeasureRefusal : int {
  eZuMeasureDoubled,       // its id is measured more than once in the photo
  eZuMeasureOutsideImage,  //
  eZuMeasureNotOneToOne,   // where the camera's model is not one to one
  eZuMeasureParallel,      // its ray is parallel to the plane
  eZuMeasureBehindCamera   // its ray meets the plane there
};

struct ZuRefusedMeasurement {
  unsigned m_uPhoto = 0, m_uId = 0;
  eZuMeasureRefusal m_eWhy = eZuMeasureDoubled;
  std::string m_strWhy;  // "its ray is parallel to the plane"
};

// A point in the mean of its photos.
struct ZuMeanMeasuredPoint {
  unsigned m_uId = 0;
  int m_iPhotos = 0;
  double m_dX = 0.0, m_dY = 0.0, m_dZ = 0.0;
  double m_dScatter = 0.0;  // root mean square of the photos' distances from the mean
};

class ZU_API ZuPlaneMeasurement : public ZuMeasureQuality {
 public:
  // Fits the plane to points by ZuCalcPlane. False where none fits: fewer than three, or all on one
  // line.
  bool FitPlane(ZuPointList& points);
  void SetPlane(const ZuPlane& plane) { m_plane = plane; }
  // A plane fitted to these points elsewhere: with their number and longest deviation.
  void SetPlane(const ZuPlane& plane, const ZuPointList& points);

  // Meets every measurement of every photo with the plane and compares it with the known point of
  // its id. With bFlip y is counted the other way. With bExact distortion is taken off by
  // ZuCamera::AdjustExact, otherwise by Adjust. Left out, each with its reason: photos that lack
  // orientation, camera or the way from pixels to mm, and measurements as eZuMeasureRefusal tells.
  // False where nothing was met. The project keeps its photos while the result is used. Tells its
  // progress as "measuring"; where that asks to stop, the photos before are there.
  bool Measure(ZuProject& project, const ZuPointList& known, bool bFlip, bool bExact = true);

  // The photo with the longest difference of all, the first of them; null without known points.
  const ZuMeasuredPhoto* WorstPhoto() const;
  // Number of checked points with a difference longer than dLength.
  int CountLonger(double dLength) const;
  // By id.
  std::vector<ZuMeanMeasuredPoint> MeanPoints() const;

 private:
  void MeasurePhoto(ZuProject& project, ZuPhoto& photo, const ZuSortHelper<ZuPoint>& known,
                    bool bFlip, bool bExact);
  void Summarize();

 public:
  ZuPlane m_plane;
  int m_iPlanePoints = 0;          // of the fit
  double m_dPlaneSigma0 = 0.0;     // its quality figure
  double m_dPlaneDeviation = 0.0;  // longest distance of one of its points from it
  std::vector<ZuMeasuredPhoto> m_photos;
  int m_iPoints = 0;
  std::vector<ZuLeftOutPhoto> m_leftOut;
  std::vector<ZuRefusedMeasurement> m_refused;
  int m_iWorstPhoto = -1;
};
