// No id index of a photo answers with a point that the photo has deleted.
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "zu/photo/photo.h"

namespace {

constexpr auto kAsIs = static_cast<eConvertBikoMode>(0);

// Points 1 to 4 in both lists, indexed; 4 of the Imo list then moved over to the other.
class Indexed : public LinkHdl {
 public:
  Indexed() {
    for (unsigned int i = 1; i <= 4; ++i) {
      m_photo.AddImoFast(ZuPoint(i, i, 0.0), kAsIs);
      m_photo.AddMeasure(ZuPoint(i, i, 0.0), kAsIs);
    }
    m_photo.SetImoSorted();
    m_photo.SetMeasureSorted();
    delete m_photo.SubtractMeasure(4u);
    m_photo.SetMeasureSorted();
    m_photo.MoveImoToMeasure(4, kAsIs);
    m_imo.SetLink(Link(this, &Indexed::Look));
    m_measure.SetLink(Link(this, &Indexed::Look));
    m_imo.SetNotifyParent(&m_photo.GetImoList());
    m_measure.SetNotifyParent(&m_photo.GetMeasureList());
  }

  // Every answer of an index stands in one of the lists: observers ask too.
  long Look(ZuNotifyEvent* pEvent) {
    if (pEvent != nullptr && pEvent->m_eType == eZuNotifySubtract)
      return 0;  // it may be on its way
    std::set<const ZuPoint*> points;
    for (const ZuPoint* p = m_photo.FirstImo(); p != nullptr; p = p->Next()) points.insert(p);
    for (const ZuPoint* p = m_photo.FirstMeasure(); p != nullptr; p = p->Next()) points.insert(p);
    for (unsigned int i = 1; i <= 4; ++i) {
      for (const ZuPoint* p : {m_photo.FindSortedImo(i), m_photo.FindSortedMeasure(i)}) {
        EXPECT_TRUE(p == nullptr || points.count(p) == 1) << i;
      }
    }
    return 0;
  }

  ZuPhoto m_photo;
  ZuObserver m_imo, m_measure;
};

TEST(PhotoIndex, NeverAnswersWithADeletedPoint) {
  const std::function<void(ZuPhoto&)> deletes[] = {
      [](ZuPhoto& photo) { photo = ZuPhoto(9); },
      [](ZuPhoto& photo) { photo.DestroyImo(); },
      [](ZuPhoto& photo) { photo.DestroyMeasure(); },
      [](ZuPhoto& photo) { photo.AddImo(ZuPoint(2, 5.0, 5.0), kAsIs); },
      [](ZuPhoto& photo) { photo.AddMeasure(new ZuPoint(4, 5.0, 5.0), kAsIs); },
      [](ZuPhoto& photo) { photo.MoveImoToMeasure(3, kAsIs); },
      [](ZuPhoto& photo) { photo.CopyMeasureToImo(1, kAsIs); },
  };
  for (const auto& remove : deletes) {
    SCOPED_TRACE(&remove - deletes);
    Indexed indexed;
    indexed.Look(nullptr);
    remove(indexed.m_photo);
    indexed.Look(nullptr);
  }
  Indexed indexed;
  indexed.m_photo.AddImoFast(ZuPoint(7, 0.0, 0.0), kAsIs);
  EXPECT_EQ(indexed.m_photo.FindSortedImo(7), nullptr);  // what is added changes no index
  const ZuPoint* p = indexed.m_photo.AddImo(ZuPoint(2, 5.0, 5.0), kAsIs);
  EXPECT_EQ(indexed.m_photo.FindSortedImo(2), p);
  EXPECT_EQ(indexed.m_photo.FindSortedMeasure(3)->m_dX, 3.0);
}

TEST(PhotoIndex, AssignmentLeavesWhatIsParked) {
  ZuPhoto photo(1), other(2);
  photo.GetTempList().Add(ZuPoint(1, 0.0, 0.0));
  photo.GetRegoiList().Add(ZuPoint(2, 0.0, 0.0));
  other.GetRegoiList().Add(ZuPoint(3, 0.0, 0.0));
  photo = other;
  EXPECT_EQ(photo.GetTempList().Count(), 1);
  ASSERT_EQ(photo.GetRegoiList().Count(), 1);
  EXPECT_EQ(photo.GetRegoiList().First()->GetId(), 2u);
}

// The size of a pixel after a rescaling does not depend on whether it was asked for before.
TEST(PhotoIndex, RescalingDerivesThePixelSizeAnew) {
  for (const bool bOne : {true, false}) {
    double adSize[2];
    for (const bool bAsked : {false, true}) {
      ZuPhoto photo(4, "a.jpg");
      ZuTrafo2d trafo;
      trafo.SetFromMatrix(photo.GetReseauTrafoMat(), eZuTrafo2DHelmert);
      photo.SetReseauMainTrafo(trafo);
      if (bAsked) photo.GetPixelSize();
      EXPECT_TRUE(bOne ? photo.RescaleTo(4.0) : photo.RescaleTo(4.0, 4.0));
      adSize[bAsked] = photo.GetPixelSize();
    }
    EXPECT_EQ(adSize[0], adSize[1]);
    EXPECT_DOUBLE_EQ(adSize[0], bOne ? 0.25 : 4.0);
  }
}

}  // namespace
