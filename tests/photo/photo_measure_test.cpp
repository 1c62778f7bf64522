// The measurement lists of a photo: what replaces, what duplicates, what is converted.
#include "tests/support/cameras.h"
#include "tests/support/test.h"
#include "zu/photo/photo.h"

namespace {

constexpr eConvertBikoMode kAsIs = static_cast<eConvertBikoMode>(0);

ZuPhoto MakePhoto() {
  ZuPhoto photo(4, "a.jpg");
  ZuTrafo2d doubled;
  const double matrix[9] = {2, 0, 0, 0, 2, 0, 0, 0, 1};
  doubled.SetFromMatrix(ZuMatrix(matrix, 3, 3), eZuTrafo2DHelmert);
  photo.SetReseauMainTrafo(doubled);  // a pixel is 2 mm
  return photo;
}

TEST(PhotoMeasure, SinglePointsAreConvertedReplacedAndNamed) {
  ZuPhoto photo = MakePhoto();
  EXPECT_EQ(photo.AddImo(static_cast<ZuPoint*>(nullptr), eDigiToBiko), nullptr);
  photo.AddImo(ZuPoint(1, 10.0, 20.0), eDigiToBiko);
  const ZuPoint* p = photo.AddImo(ZuPoint(1, 11.0, 21.0), eDigiToBiko);
  EXPECT_ROW("1 22 4", photo.CountImo(), p->m_dX, p->m_iPhoto);
  photo.AddImoFast(ZuPoint(1, 12.0, 22.0), kAsIs);
  EXPECT_ROW("2 12", photo.CountImo(), photo.LastImo()->m_dX);

  photo.MoveImoToMeasure(9, eBikoToDigi);  // not there
  EXPECT_EQ(photo.CountMeasure(), 0);
  photo.MoveImoToMeasure(1, eBikoToDigi);
  EXPECT_ROW("1 11", photo.CountImo(), photo.FirstMeasure()->m_dX);
  photo.CopyMeasureToImo(1, eDigiToBiko);
  EXPECT_ROW("1 1 22", photo.CountMeasure(), photo.CountImo(), photo.FindImo(1)->m_dX);
  EXPECT_EQ(photo.SubtractMeasure(8u), nullptr);
  delete photo.SubtractMeasure(1u);
  EXPECT_EQ(photo.CountMeasure(), 0);
}

TEST(PhotoMeasure, BulkMovesConvertNothing) {
  ZuPhoto photo = MakePhoto();
  for (unsigned int i = 1; i <= 3; ++i) photo.GetImoList().Add(ZuPoint(i, i, i));
  photo.MoveImoToTemp();
  photo.MoveTempToMeasure();
  EXPECT_ROW("3 3 0", photo.CountMeasure(), photo.LastMeasure()->m_dX,
             photo.FirstMeasure()->m_iPhoto);
  photo.CopyMeasureToImo();
  EXPECT_EQ(photo.CountImo(), 3);
  photo.SetPhotoIdToImoList();
  EXPECT_EQ(photo.LastImo()->m_iPhoto, 4);
  EXPECT_EQ(photo.LastImo()->m_pParent, &photo);
  photo.ConvertMeasure(eDigiToBiko);
  EXPECT_EQ(photo.LastMeasure()->m_dY, 6.0);
  photo.ConvertList(nullptr, eDigiToBiko);
  ZuPointList other;
  photo.MoveMeasureTo(&other);
  EXPECT_EQ(other.Count(), 3);
}

TEST(PhotoMeasure, StatisticsAgainstATolerancesInPixels) {
  ZuPhoto photo = MakePhoto();
  ASSERT_DOUBLE_EQ(photo.GetPixelSize(), 2.0);
  ZuPointList list;
  for (const double d : {0.5, 3.0, 4.0, 6.0}) {
    ZuPoint p(1, 0.0, 0.0);
    p.m_dRedu2 = d;
    list.Add(p);
  }
  photo.UpdateImoStat(100.0, 0.0, 1.0);
  photo.UpdateImoStatFromList(&list, 1.5);  // 3 mm: at the limit is outside
  EXPECT_ROW("1 3 6 13.5", photo.GetImoStatInside(), photo.GetImoStatOutside(),
             photo.GetImoStatMax(), photo.GetImoStatSum());
  photo.UpdateImoStatFromList(nullptr, 1.0);
  EXPECT_EQ(photo.GetImoStatOutside(), 0);
}

}  // namespace
