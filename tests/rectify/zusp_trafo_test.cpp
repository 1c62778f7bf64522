#include "zu/rectify/zusp_trafo.h"

#include "tests/support/cameras.h"
#include "tests/support/full_sizes.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/reader.h"
#include "zu/photo/photo.h"

namespace {

const double kZusp[9] = {0.5, 0.02, 2.5, -0.01, 0.5, 1.25, 0.002, 0.001, 1.0};
const double kTrans[16] = {1, 0, 0, 100, 0, 0, -1, 200, 0, 1, 0, 50, 0, 0, 0, 1};

ZuZuspTrafo Make() {
  ZuZuspTrafo trafo;
  trafo.SetZuspMat(ZuMatrix(kZusp, 3, 3));
  trafo.SetTransMat(ZuMatrix(kTrans, 4, 4));
  return trafo;
}

struct Handler : public LinkHdl {
  int Read(ZuReaderObject* pObject) { return list.AddTrafo(pObject) != nullptr; }
  ZuZuspTrafoList list;
};

TEST(ZuspTrafo, StagesInTheirOrder) {
  ZU_NEEDS_FULL_SIZES();
  ZuPoint p(7, 3.0, -2.0), q;
  const ZuZuspTrafo identity;
  identity.Transform(&p, &q);
  EXPECT_EQ(q, p);
  EXPECT_EQ(q.GetId(), 7u);

  ZuZuspTrafo trafo = Make();
  trafo.SetDistortCameraParam(test_cameras::ChessboardRadial());
  for (const bool bDistortion : {false, true}) {
    EXPECT_EQ(trafo.SetDistortCameraFlag(bDistortion), bDistortion);
    double x = p.m_dX, y = p.m_dY;
    if (bDistortion) test_cameras::ChessboardRadial().Adjust(&x, &y);
    const double w = 0.002 * x + 0.001 * y + 1.0;
    const double u = (0.5 * x + 0.02 * y + 2.5) / w, v = (-0.01 * x + 0.5 * y + 1.25) / w;
    trafo.Transform(&p, &q);
    EXPECT_NEAR(q.m_dX, u + 100.0, 1e-12);
    EXPECT_NEAR(q.m_dY, 200.0, 1e-12);
    EXPECT_NEAR(q.m_dZ, v + 50.0, 1e-12);
    trafo.InvTransform(&q);
    EXPECT_NEAR(q.m_dX, p.m_dX, bDistortion ? 5e-3 : 1e-12);  // by the camera's table
    EXPECT_NEAR(q.m_dY, p.m_dY, bDistortion ? 5e-3 : 1e-12);
  }
  // On the horizon the plane stage is left out, the next one runs.
  ZuPoint horizon(1, -500.0, 0.0);
  trafo.SetDistortCameraFlag(false);
  EXPECT_TRUE(trafo.Transform(&horizon, &q));
  EXPECT_EQ(q.m_dX, -400.0);
}

TEST(ZuspTrafo, TheInverseStaysInForce) {
  ZuZuspTrafo trafo = Make();
  ZuPoint p(1, 150.0, 200.0, 60.0), before, after;
  trafo.InvTransform(&p, &before);
  trafo.SetZuspMat(ZuMatrix(3, 3));
  trafo.InvTransform(&p, &after);
  EXPECT_EQ(after, before);
  const ZuZuspTrafo copy(trafo);  // takes the cached inverse along
  copy.InvTransform(&p, &after);
  EXPECT_EQ(after, before);
}

TEST(ZuspTrafo, ReadsTheKeywordForm) {
  const TempFile file(
      "ZUSP { ZUSPID 3 \"facade\" MEASPOINTS { 1 0 0 2 5 0 3 5 5 } ACTIV 1\n"
      "  DEFPOINTS { 1 0 0 0 2 10 0 0 3 10 0 10 } KAMERA 1 DISTORTION { 4 35 0 0 0 0 12 \"c\" }\n"
      "  ZUSPTRAFO { 3 3 0.5 0.02 2.5 -0.01 0.5 1.25 0.002 0.001 1 }\n"
      "  TRAFO3D { 3 3 9 9 9 9 9 9 9 9 9 } VALIDREGION { -1 -2 1 2 } REGIONACTIV 1\n"
      "  PARALLELDEF { DEFLINE { 1 1 2 1 0.5 } DEFLINE { 2 2 3 0 0 } CONSTRAINT { 1 2 2 0 } } }\n"
      "ZUSP { ZUSPID 4 \"other\" }\n");
  Handler handler;
  ZuReader reader(file.Path());
  ZuReaderObject keyword("ZUSP", Link(&handler, &Handler::Read));
  reader.RegisterObject(keyword);
  reader.DoProcess(false);
  ASSERT_EQ(handler.list.Count(), 2);
  EXPECT_EQ(reader.GetReadErrorCount(), 1);  // the 3 x 3 where 4 x 4 is needed
  const ZuZuspTrafo& trafo = *handler.list.First();
  EXPECT_ROW("3 -0.01 1 4", trafo.GetId(), trafo.GetZuspMat()[2][1], trafo.GetTransMat()[1][1],
             trafo.GetTransMat().GetZeilen());
  EXPECT_TRUE(trafo.IsActive() && trafo.IsRegionActive() && trafo.CompensateDistortion());
  EXPECT_EQ(trafo.GetRegion().Count(), 4);  // two corners make a rectangle
  EXPECT_ROW("1 3 2", trafo.GetPPList().First()->GetId(), trafo.GetBikoList().Count(),
             trafo.GetParallelDef().GetLines().Count());
  EXPECT_TRUE(trafo.GetParallelDef().HasXAxisDef());
  EXPECT_EQ(trafo.GetParallelDef().GetPoints(), &trafo.GetBikoList().GetPoints());
  const ZuZuspTrafo copy(trafo);
  EXPECT_EQ(copy.GetParallelDef().GetPoints(), &copy.GetBikoList().GetPoints());
  EXPECT_ROW("1 1", IsZuspActive(&trafo), HasZuspRegion(&trafo));
  const ZuZuspTrafo& other = *handler.list.Last();
  EXPECT_FALSE(other.IsActive() || other.HasRegion());
  EXPECT_EQ(other.Area(), -1.0);
}

TEST(ZuspTrafo, AreaLengthAndBorder) {
  ZuZuspTrafo trafo;
  const double doubled[9] = {2, 0, 0, 0, 2, 0, 0, 0, 1};
  trafo.SetZuspMat(ZuMatrix(doubled, 3, 3));
  ZuPhoto photo(1, "a.jpg");
  photo.SetDigiRegion(ZuRegion(0, 0, 90, 45));
  ZuPointList border;
  EXPECT_ROW("4 90", ZuGetZuspBikoPoints(border, &photo, &trafo), border.Get(2)->m_dX);
  trafo.SetDistortCameraParam(ZuCamera(1, 35.0));
  trafo.SetDistortCameraFlag(true);
  EXPECT_ROW("36 10 36 0 5", ZuGetZuspBikoPoints(border, &photo, &trafo), border.Get(1)->m_dX,
             border.Last()->GetId(), border.Last()->m_dX, border.Last()->m_dY);

  trafo.GetRegion().AddPoint(ZuPoint(1, 0.0, 0.0));
  trafo.GetRegion().AddPoint(ZuPoint(2, 3.0, 0.0));
  trafo.GetRegion().AddPoint(ZuPoint(3, 3.0, 4.0));
  EXPECT_EQ(ZuGetZuspBikoPoints(border, &photo, &trafo), 3);
  trafo.SetDistortCameraFlag(false);
  EXPECT_ROW("24 24", trafo.Area(), trafo.Length());
  ZuPoint inside(0, 2.0, 1.0), outside(0, 1.0, 3.0);
  EXPECT_ROW("1 0", trafo.Overlap(&inside), trafo.Overlap(&outside));

  EXPECT_EQ(trafo.GetOriginalPixelArea(nullptr), 0.0);
  EXPECT_EQ(trafo.GetOriginalPixelArea(&photo), 0.0);  // a new photo is inactive
  photo.SetActiveFlag(eZuPhotoStateActive);
  EXPECT_EQ(trafo.GetOriginalPixelArea(&photo), 6.0);
  photo.SetType(eZuPhototypeAnalog);
  EXPECT_EQ(trafo.GetOriginalPixelArea(&photo), 0.0);
}

}  // namespace
