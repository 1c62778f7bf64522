#include "zu/image/photo_start.h"

#include <algorithm>
#include <cmath>

#include "zu/photo/photo.h"

namespace {

constexpr double kFrame = 36.0;  // longer side of the frame that focal lengths are compared on [mm]

ZuTrafo2d Trafo(eZuTrafo2DType eType, double dScale, double dScaleY, double dX, double dY) {
  ZuMatrix matrix(3, 3);
  matrix[1][1] = dScale;
  matrix[2][2] = dScaleY;
  matrix[1][3] = dX;
  matrix[2][3] = dY;
  matrix[3][3] = 1.0;
  ZuTrafo2d trafo;
  trafo.SetFromMatrix(matrix, eType);
  return trafo;
}

}  // namespace

void ZuPhotoStart::SetUp(ZuPhoto* pPhoto) const {
  pPhoto->SetPhototype(eZuPhototypeDigital);
  pPhoto->SetActiveFlag(eZuPhotoStateActive);
  pPhoto->SetScale(1.0);
  pPhoto->SetDigiRegion(ZuRegion(0.0, 0.0, m_iWidth - 1.0, m_iHeight - 1.0));
  pPhoto->SetReseauPreTrafo(Trafo(eZuTrafo2DAffin, 1.0, -1.0, 0.5, m_iHeight - 0.5));
  pPhoto->SetReseauMainTrafo(Trafo(eZuTrafo2DHelmert, m_dPixelSize, m_dPixelSize,
                                   -m_iWidth * m_dPixelSize / 2, -m_iHeight * m_dPixelSize / 2));
  ZuCamera camera(m_uCamera);
  camera.m_iMode = eCameraModeCap;
  camera.m_dC = m_dConstant;
  camera.m_dRMax = 0.0;
  camera.SetName(m_strCamera.c_str());
  pPhoto->SetCamera(camera);
}

ZuPhotoStart ZuStartPhoto(const ZuImageInfo& info, double dPixelSize, double dFocalLength) {
  ZuPhotoStart start;
  start.m_iWidth = info.m_iWidth;
  start.m_iHeight = info.m_iHeight;
  const ZuExif& exif = info.m_Exif;
  // Makers repeat their name in that of the model.
  const bool bRepeated = exif.m_strModel.starts_with(exif.m_strMake);
  start.m_strCamera = bRepeated ? exif.m_strModel : exif.m_strMake + " " + exif.m_strModel;
  std::replace(start.m_strCamera.begin(), start.m_strCamera.end(), '"', '\'');

  bool bNominal = false;
  const double dAssumed = kFrame / std::max({info.m_iWidth, info.m_iHeight, 1});
  if (dPixelSize > 0.0) {
    start.m_dPixelSize = dPixelSize;
    start.m_dConstant = exif.m_dFocalLength;
  } else if (exif.GetPixelSize(info.m_iWidth, info.m_iHeight, &start.m_dPixelSize, &bNominal)) {
    start.m_dConstant = exif.m_dFocalLength;
    if (bNominal) start.m_strNote = "the size of a pixel comes from the focal length on 36 mm film";
  } else {
    start.m_dPixelSize = dAssumed;
    start.m_dConstant = exif.m_dFocalLength35;
    start.m_strNote =
        "the picture does not tell the size of a pixel: its longer side is taken as 36 mm";
  }
  if (dFocalLength > 0.0) start.m_dConstant = dFocalLength;
  if (!(start.m_dConstant > 0.0)) {
    start.m_strNote += start.m_strNote.empty() ? "" : "; ";
    start.m_strNote += exif.m_dFocalLength > 0.0 ? "its focal length in mm means nothing without it"
                                                 : "the focal length is not known";
  }
  return start;
}
