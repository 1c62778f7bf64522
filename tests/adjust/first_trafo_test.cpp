// First transformations from measured crosses of a reseau: made pixels give the transformation that
// made them, in every kind, beside a pre-transformation and with a cross that is wrong.
#include "zu/adjust/first_trafo.h"

#include <gtest/gtest.h>

#include <cmath>

#include "zu/photo/photo.h"
#include "zu/photo/reseau_file.h"

namespace {

// 5 x 5 crosses on a film of 60 mm, digitised at 0.02 mm, y downwards, a little turned; `bend` of
// the polynomial, `tilt` of the projective kind.
struct Film {
  ZuReseauFile reseau;
  ZuPointList pixels;
  ZuPhoto photo{3, "film.tif"};

  Film(double dBend, double dTilt, bool bTurned) {
    for (int i = 0; i < 25; ++i) {
      const unsigned uId = static_cast<unsigned>(10 * (i / 5 + 1) + i % 5 + 1);
      const double x = 15.0 * (i % 5) - 30.0, y = 15.0 * (i / 5) - 30.0;
      reseau.GetCrossList().Add(ZuPoint(uId, x, y));
      const double w = 1.0 + dTilt * (x + 2.0 * y);
      const double u = x + dBend * x * y * y, v = y - dBend * x * x;
      const double px = 1800.0 + (50.0 * u + 0.5 * v) / w, py = 1700.0 + (0.5 * u - 50.0 * v) / w;
      pixels.Add(ZuPoint(uId, px, bTurned ? 3400.0 - py : py));
    }
    photo.SetDigiRegion(ZuRegion(0.0, 0.0, 3599.0, 3399.0));
  }
};

double Miss(const ZuPhoto& photo, const Film& film) {
  double dMost = 0.0;
  for (const ZuPoint* p = film.pixels.First(); p != nullptr; p = p->Next()) {
    const ZuPoint* pCross = film.reseau.GetCrossList().Find(p->GetId());
    ZuPoint biko(*p);
    photo.ConvertBiko(&biko, eDigiToBiko);
    dMost = std::max(dMost, std::hypot(biko.m_dX - pCross->m_dX, biko.m_dY - pCross->m_dY));
  }
  return dMost;
}

}  // namespace

TEST(FirstTrafo, FindsWhatMadeThePixels) {
  const struct {
    ZuTrafo2dKind kind;
    double dBend, dTilt, dMiss;
  } cases[] = {{ZuTrafo2dKind::Helmert, 0.0, 0.0, 6e-8},
               {ZuTrafo2dKind::Affine, 0.0, 0.0, 6e-8},
               {ZuTrafo2dKind::Projective, 0.0, 1e-4, 6e-8},
               {ZuTrafo2dKind::Polynomial, 1e-8, 0.0, 1e-3}};  // the inverse is no polynomial
  for (const auto& c : cases) {
    Film film(c.dBend, c.dTilt, c.kind == ZuTrafo2dKind::Helmert);
    ZuFirstTrafoOptions options;
    options.kind = c.kind;
    const ZuFirstTrafo first = ZuFitFirstTrafo(film.photo, film.pixels, film.reseau, options);
    ASSERT_TRUE(first.IsGood()) << static_cast<int>(c.kind);
    EXPECT_EQ(first.common.size(), 25U);
    ASSERT_TRUE(ZuStoreFirstTrafo(first, film.reseau, &film.photo));
    EXPECT_LT(Miss(film.photo, film), c.dMiss) << static_cast<int>(c.kind);
    ZuPoint there(1, 2000.0, 1000.0);
    film.photo.ConvertBiko(&there, eDigiToBiko);
    film.photo.ConvertBiko(&there, eBikoToDigi);
    EXPECT_NEAR(std::hypot(there.m_dX - 2000.0, there.m_dY - 1000.0), 0.0,
                first.dInverseError + 1e-6);
    EXPECT_LT(first.dInverseError, 0.05);
  }
}

TEST(FirstTrafo, GoesBesideThePreTransformationAndNamesTheWrongCross) {
  Film film(0.0, 0.0, false);
  ZuTrafo2d pre;  // half the pixels, y upwards: the mirror that Helmert's kind cannot be
  ZuMatrix m(3, 3);
  m.SetIdent();
  m[1][1] = 0.5;
  m[2][2] = -0.5;
  m[2][3] = 1700.0;
  pre.SetFromMatrix(m, eZuTrafo2DAffin);
  film.photo.SetReseauPreTrafo(pre);
  film.pixels.Find(33)->m_dX += 5.0;
  film.pixels.Find(11)->SetId(99);
  film.reseau.GetCrossList().Add(ZuPoint(77, 30.0, 30.0, 0.0, 2));  // a corner, not measured
  ZuFirstTrafoOptions options;
  options.kind = ZuTrafo2dKind::Helmert;
  options.dPixelSigma = 0.2;
  options.tests.bSnoop = true;
  const ZuFirstTrafo first = ZuFitFirstTrafo(film.photo, film.pixels, film.reseau, options);
  ASSERT_TRUE(first.IsGood());
  EXPECT_EQ(first.notNominal, std::vector<unsigned>{99});
  EXPECT_EQ(first.notMeasured, std::vector<unsigned>{11});
  EXPECT_EQ(first.fit.iSetAside, 1);
  for (const ZuPointTest& test : first.fit.points) EXPECT_EQ(test.bUsed, test.uId != 33);
  ASSERT_TRUE(ZuStoreFirstTrafo(first, film.reseau, &film.photo));
  ZuPoint p(1, film.pixels.Find(55)->m_dX, film.pixels.Find(55)->m_dY);
  film.photo.ConvertBiko(&p, eDigiToBiko);
  EXPECT_NEAR(std::hypot(p.m_dX - 30.0, p.m_dY - 30.0), 0.0, 6e-8);
}

TEST(FirstTrafo, RefusesWhatDoesNotDetermineIt) {
  Film film(0.0, 0.0, false);
  ZuFirstTrafoOptions options;
  options.kind = ZuTrafo2dKind::Congruence;
  EXPECT_FALSE(ZuFitFirstTrafo(film.photo, film.pixels, film.reseau, options).IsGood());
  ZuPointList line;
  for (const unsigned uId : {11U, 12U, 13U, 14U, 15U}) line.Add(*film.pixels.Find(uId));
  const ZuFirstTrafo first = ZuFitFirstTrafo(film.photo, line, film.reseau);
  EXPECT_EQ(first.fit.eStatus, ZuAdjustStatus::RankDefect);
  EXPECT_FALSE(ZuStoreFirstTrafo(first, film.reseau, &film.photo));
  EXPECT_EQ(ZuFitFirstTrafo(film.photo, ZuPointList(), film.reseau).fit.eStatus,
            ZuAdjustStatus::TooFew);
}
