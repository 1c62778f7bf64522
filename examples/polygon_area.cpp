// Area and length of a parcel, and which of two trees stand in it.
#include <zu/rectify/polygon.h>

#include <cstdio>

int main() {
  ZuPolygon parcel(eLPolygonXY);  // the last corner is not repeated as the first
  parcel.AddPoint(ZuPoint(1, 0.0, 0.0));
  parcel.AddPoint(ZuPoint(2, 30.0, 0.0));
  parcel.AddPoint(ZuPoint(3, 30.0, 20.0));
  parcel.AddPoint(ZuPoint(4, 12.0, 20.0));
  parcel.AddPoint(ZuPoint(5, 12.0, 10.0));
  parcel.AddPoint(ZuPoint(6, 0.0, 10.0));
  std::printf("area %.2f m2, length %.2f m\n", parcel.Area(true), parcel.Length(true));

  const ZuPoint oak(7, 20.0, 15.0), lime(8, 6.0, 15.0);
  for (const ZuPoint* pTree : {&oak, &lime}) {
    std::printf("tree %u %s\n", pTree->GetId(), parcel.Overlap(pTree) ? "inside" : "outside");
  }
  return parcel.Area(true) == 480.0 && parcel.Overlap(oak) && !parcel.Overlap(lime) ? 0 : 1;
}
