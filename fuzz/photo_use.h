// What is done with cameras, planes, rectifications and photos read from a file.
#pragma once

#include <cmath>
#include <sstream>

#include "fuzz/input.h"
#include "zu/numerics/line3d.h"
#include "zu/photo/camera.h"
#include "zu/photo/ortho_photo.h"
#include "zu/photo/photo_region_tiles.h"
#include "zu/photo/rotate_photo_base.h"
#include "zu/rectify/plane.h"
#include "zu/transform/trafo2d.h"

// Image points at which cameras and photos are asked: near, far, and beyond all bounds.
inline constexpr double kImagePoints[][2] = {{0.0, 0.0},     {1.5, -2.0},     {-3.9, 0.25},
                                             {640.0, 480.0}, {1e300, -1e300}, {HUGE_VAL, 1.0}};

// A measured point that the exact inverse found maps back.
inline void CheckExactInverse(const ZuCamera& camera, double x, double y) {
  double xFound = x, yFound = y;
  const eCameraInverse eStatus = camera.InvAdjustExact(&xFound, &yFound);
  Require(GetCameraInverseText(eStatus) != nullptr);
  if (eStatus != eCameraInverseOk) {
    Require(IsSame(xFound, x) && IsSame(yFound, y));
    return;
  }
  double xBack = xFound, yBack = yFound;
  Require(camera.AdjustExact(&xBack, &yBack) == eCameraInverseOk);
  Require(std::hypot(xBack - x, yBack - y) <= 1e-9 + 1e-12 * std::hypot(x, y));
}

// Both directions; that by the table, which is large outside of a build for fuzzing, where bTable
// is true.
inline void UseCamera(const ZuCamera& camera, bool bTable) {
  for (const auto& point : kImagePoints) {
    double x = point[0], y = point[1];
    if (!camera.Adjust(&x, &y)) Require(x == point[0] && y == point[1]);
    CheckExactInverse(camera, x, y);
    camera.Calc_drForGraph(x, y);
    if (!bTable) continue;
    const double xBefore = x, yBefore = y;
    if (!camera.InvAdjust(&x, &y)) Require(IsSame(x, xBefore) && IsSame(y, yBefore));
  }
  camera.GetValidRadius();
  camera.GetXhYhRadius();
  std::ostringstream os;
  camera.WriteGentriFormat(os);
  camera.WriteFullData(os, false);
  if (bTable) ZuCamera::DeleteInvAdjustTables();
}

inline void UsePlane(const ZuPlane& plane) {
  const ZuPlane other(plane);
  ZuVector point(3), direction(3);
  plane.CalcIntersection(point, direction, other);
  plane.CalcPlaneVectorForSip();
  plane.Dist(1.0, 2.0, 3.0);
  Require(plane.IsValid() == other.IsValid());
  plane.IsParallel(other);
  plane.IsNormal(other);
}

inline void UseTrafo2d(const ZuTrafo2d& trafo) {
  for (const auto& point : kImagePoints) {
    double x = point[0], y = point[1];
    const bool bGood = trafo.Transform(&x, &y);
    if (!bGood) Require(x == point[0] && y == point[1]);
    trafo.TransInvHelmert(&x, &y);
  }
  ZuMatrix matrix(3, 3);
  trafo.BuildMatrix(&matrix);
  ZuTrafo2d copy;
  copy.SetFromMatrix(matrix, trafo.GetType());
  Require(copy.GetType() == trafo.GetType() && trafo.GetTrafoName() != nullptr);
}

inline void UseRectification(ZuZuspTrafo& trafo, ZuPhoto* pPhoto) {
  for (const auto& xy : kImagePoints) {
    ZuPoint point(1, xy[0], xy[1]);
    trafo.Transform(&point, &point);
    trafo.InvTransform(&point);
    trafo.Overlap(&point);
  }
  trafo.Area();
  trafo.Length();
  trafo.GetOriginalPixelArea(pPhoto);
  ZuPointList border;
  Require(ZuGetZuspBikoPoints(border, pPhoto, &trafo) == border.Count());

  ZuZuspTrafo copy(trafo);
  ZuZuspParallelDef& lines = copy.GetParallelDef();
  lines.CheckAndRepair();
  lines.HasXAxisDef();
  ZuPoint p1, p2;
  for (const ZuZuspDefLine* p = lines.GetLines().First(); p != nullptr; p = p->Next()) {
    lines.GetLine(p1, p2, p);
  }
  const auto& constraints = lines.GetConstraints();
  for (const ZuZuspDefLineConstraint* p = constraints.First(); p != nullptr; p = p->Next()) {
    lines.GetConstraintLine(p1, p2, p);
  }
  lines.MakeDefLineFromLastTwoBikos();
  lines.MakeConstraintDefFromLastTwoDefLines(eConstraintParallel);
  lines.MakeLastTwoParallelConstraintsPerpendicular();
  std::ostringstream os;
  lines.Write(os);
}

struct PhotoTurner : public ZuRotatePhotoBase {
  using ZuRotatePhotoBase::ZuRotatePhotoBase;
  void Turn(int iRotation) { AdjustReseauOrZuspTrafo(0, iRotation); }
};

// The conversions of a photo; those that need the table of the inverse camera where bTable is true.
inline void ConvertPoints(const ZuPhoto& photo, bool bTable) {
  for (int iMode = 0; iMode <= eObjectToDigi + 1; ++iMode) {
    const bool bInverse = iMode == eAdjustedToBiko || iMode == eAdjustedToDigi ||
                          iMode == eObjectToBiko || iMode == eObjectToDigi;
    if (bInverse && !bTable) continue;
    const auto eMode = static_cast<eConvertBikoMode>(iMode);
    const ZuBikoTransform transform(&photo, eMode, iMode % 2 == 0);
    for (const auto& xy : kImagePoints) {
      ZuPoint point(1, xy[0], xy[1], 2.0);
      transform.Transform(&point);
      photo.ConvertBiko(&point, eMode);
      transform.IsInPhotoView(xy[0], xy[1], 2.0);
    }
  }
}

inline void MeetPlane(ZuPhoto& photo, const ZuPlane& plane) {
  ZuPointList list;
  for (const auto& xy : kImagePoints) {
    const ZuPoint point(list.GetFreeId(0), xy[0], xy[1]);
    ZuPoint result;
    photo.CalcSip(&result, plane, &point);
    photo.CalcSipNoErrorCheck(&result, plane, &point);
    list.Add(point);
  }
  photo.CalcSipList(&list, plane, eDigiToAdjusted);
  ZuLine3d line;
  photo.SetBikoTransform(eDigiToAdjusted, true);
  photo.CalcRay(line, list.First());
  photo.CalcRayDirection(line, 1.0, 2.0);
}

inline void MeasureOn(ZuPhoto& photo) {
  for (const auto& xy : kImagePoints) {
    photo.AddImo(ZuPoint(photo.GetFreeBikoId(), xy[0], xy[1]), eDigiToBiko);
    photo.AddMeasure(ZuPoint(photo.GetFreeBikoId(), xy[0], xy[1]), eDigiToPre);
  }
  photo.SetImoSorted();
  photo.FindSortedImo(1);
  photo.UpdateImoStatFromImoList(1.0);
  photo.CopyImoToMeasure();
  photo.MoveMeasureToTemp();
  int ix = 0, iy = 0;
  ZuPhotoRegionTiles(&photo, 3, 4).GetFieldIndex(ix, iy, photo.FirstImo());
  Require(ix >= 0 && ix < 3 && iy >= 0 && iy < 4);
}

inline void UsePhoto(ZuPhoto& photo, const ZuPlane& plane, bool bTable) {
  UseCamera(photo.GetCamera(), bTable);
  for (const ZuTrafo2d* pTrafo :
       {&photo.GetReseauPreTrafo(), &photo.GetReseauMainTrafo(), &photo.GetReseauPolyInv()}) {
    UseTrafo2d(*pTrafo);
  }
  photo.GetPixelSize();
  photo.GetMaxBikoRadius();
  Require(photo.GetRotAOR().GetZeilen() == 3 && photo.GetPosAOR().GetSize() == 3);
  ZuPoint orientation;
  photo.GetAOR(&orientation, true);
  photo.CalcFieldOfViewPlanes();
  photo.IsInPhotoView(ZuPoint(1, 1.0, 2.0, 3.0), true);
  ConvertPoints(photo, bTable);
  MeetPlane(photo, plane);
  int iLeft = 4;
  for (ZuZuspTrafo* p = photo.FirstZuspTrafo(); p != nullptr && iLeft-- > 0; p = p->Next()) {
    UseRectification(*p, &photo);
  }
  ZuPhoto copy(photo);
  Require(copy.CalcAngle(photo) == photo.CalcAngle(copy) || std::isnan(photo.CalcAngle(copy)));
  MeasureOn(copy);
  PhotoTurner(&copy).Turn(photo.GetDigPictRot());
  copy.RescaleTo(0.5);
  copy.RescaleTo(2.0, 0.25);
  Require(ZuPhotoGuiString(&photo, true).OK());
}

inline void UseOrthoPhoto(ZuOrthoPhoto& photo) {
  for (const auto& xy : kImagePoints) {
    ZuPoint point(1, xy[0], xy[1]);
    photo.AdjustPixelRotation(&point);
    photo.Transform(&point);
    photo.InvAdjustPixelRotation(&point);
  }
  ZuPoint a, b, c, d;
  Require(photo.GetImageCorners(&a, &b, &c, &d) == !photo.ZuspPlaneList().IsEmpty());
  photo.GetPixelSize();
  ZuOrthoPhoto copy(photo);
  Require(copy.ZuspPlaneList().Count() == photo.ZuspPlaneList().Count());
}
