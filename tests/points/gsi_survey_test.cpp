// Stations and measurements of total stations, and the points that follow from them. Expected
// coordinates and deviations were computed with forty digits, the latter by numeric derivatives.
#include "zu/points/gsi_survey.h"

#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/alnum_id.h"

namespace {

using std::numbers::pi;

const char kSample[] = ZU_SOURCE_DIR "/samples/gsi/polar8.gsi";

ZuPointList KnownPoints() {
  ZuPointList known;
  ZuPoint station(0, 130.0, 200.0, 50.0);
  station.SetName("S02");
  station.SetId(GetIdFromAlphaNumericString("S02"));
  known.Add(station);
  known.Add(ZuPoint(101, 117.678, 217.678, 50.1));
  return known;
}

void ExpectAt(const ZuPoint* p, unsigned uId, double x, double y, double z) {
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(p->GetId(), uId);
  EXPECT_NEAR(p->m_dX, x, 2e-13 * 300.0);
  EXPECT_NEAR(p->m_dY, y, 2e-13 * 300.0);
  EXPECT_NEAR(p->m_dZ, z, 2e-13 * 300.0);
}

}  // namespace

TEST(GsiSurvey, EveryWordInEveryUnit) {
  const Cases<const char*, std::optional<double> ZuGsiRecord::*, double> words = {
      {"21.102+05000000", &ZuGsiRecord::m_direction, pi / 4.0},
      {"21.103-04512345", &ZuGsiRecord::m_direction, -45.12345 / 180.0 * pi},
      {"21.104+04530300", &ZuGsiRecord::m_direction, (45.0 + 30.5 / 60.0) / 180.0 * pi},
      {"21.105+16000000", &ZuGsiRecord::m_direction, pi / 2.0},
      {"22.102+30000000", &ZuGsiRecord::m_zenith, 1.5 * pi},
      {"31..08+01234567", &ZuGsiRecord::m_distance, 12.34567},
      {"31..01+00010000", &ZuGsiRecord::m_distance, 3.048},
      {"51....+0012-034", &ZuGsiRecord::m_prism, -0.034},
      {"58..16+00000344", &ZuGsiRecord::m_prism, 0.0344},
      {"58....-00000344", &ZuGsiRecord::m_prism, -0.0344},
      {"87..10+00001500", &ZuGsiRecord::m_targetHeight, 1.5},
      {"88..06+00016000", &ZuGsiRecord::m_instrumentHeight, 1.6}};
  for (const auto& [szWord, pMember, dValue] : words) {
    for (const bool b16 : {false, true}) {
      std::string strWord = szWord;
      if (b16) strWord.insert(7, "00000000");
      SCOPED_TRACE(strWord);
      ZuGsiSurvey survey;
      ASSERT_TRUE(survey.Read(TempFile((b16 ? "*" : "") + strWord + "\n").Path()));
      ASSERT_EQ(survey.GetRecords().size(), 1U);
      EXPECT_NEAR(*(survey.GetRecords()[0].*pMember), dValue, 1e-15 * std::fabs(dValue));
    }
  }
}

TEST(GsiSurvey, DamageIsToldWithItsPlaceAndCostsItsLine) {
  for (const char* szWord :
       {"21.104+04560000", "21.104+04530600", "21.100+05000000", "31..02+00012345",
        "51....+0012 034", "51....+00120034", "58..1x+00000344", "22.102+0500x000"}) {
    const TempFile file("110001+00000001 81..00+00001000\n110002+00000002 " + std::string(szWord) +
                        "\n110003+00000003 81..00+00001000\n");
    ZuPointList strict, tolerant;
    const ZuGsiReading reading = ZuReadGsiPoints(file.Path(), {}, strict);
    ASSERT_NE(reading.m_Findings.First(eZuReadFault), nullptr) << szWord;
    EXPECT_ROW("2 17 1", reading.m_Findings.First(eZuReadFault)->m_uLine,
               reading.m_Findings.First(eZuReadFault)->m_uColumn, strict.Count());
    EXPECT_TRUE(ZuReadGsiPoints(file.Path(), {}, tolerant, eZuReadTolerant).m_Findings.IsWhole());
    EXPECT_EQ(tolerant.Count(), 2);
  }
}

TEST(GsiSurvey, MeasurementsBecomeCoordinates) {
  ZuPointList points;
  const ZuGsiReading plain = ZuReadGsiPoints(kSample, {}, points);
  EXPECT_TRUE(plain.m_Findings.IsWhole());
  ASSERT_EQ(points.Count(), 3);  // the second station is not known
  EXPECT_EQ(Text(static_cast<int>(plain.m_Findings.m_uDroppedLines)), "1");
  ExpectAt(points.Get(0), 101, 117.67766952966369, 217.67766952966369, 50.100042680533752);
  ExpectAt(points.Get(1), 102, 117.67766952966369, 217.67766952966369, 50.100042680533752);
  ExpectAt(points.Get(2), 103, 202.52969844552054, 131.44062985915743, 55.468208335809347);

  const ZuPointList known = KnownPoints();
  ZuGsiOptions options;
  options.m_pKnown = &known;
  points.Destroy();
  const ZuGsiReading oriented = ZuReadGsiPoints(kSample, options, points);
  ASSERT_EQ(points.Count(), 4);
  ASSERT_EQ(oriented.m_Setups.size(), 2U);
  EXPECT_NEAR(oriented.m_Setups[1].m_dOrientation, -0.60872622557654696, 1e-15);
  EXPECT_ROW("S01 1 S02 1", oriented.m_Setups[0].m_strName, oriented.m_Setups[0].m_iSights,
             oriented.m_Setups[1].m_strName, oriented.m_Setups[1].m_iSights);
  ExpectAt(points.Last(), 104, 212.03770566269699, 257.18229489624122, 49.900682888540031);
}

TEST(GsiSurvey, DeviationsAndPrismFollowTheirFormulas) {
  ZuGsiOptions options;
  options.m_prism = 0.040;  // the file tells 34 mm
  options.m_dSigmaDirection = options.m_dSigmaZenith = 0.001 * pi / 200.0;
  options.m_dSigmaDistance = 0.002;
  options.m_dSigmaDistancePpm = 2.0;
  options.m_dSigmaHeight = 0.001;
  ZuPointList points;
  ZuReadGsiPoints(kSample, options, points);
  const ZuPoint& p = *points.Get(2);
  ExpectAt(&p, 103, 202.53468138857677, 131.43729787396131, 55.46846928141607);
  EXPECT_NEAR(p.m_dDX, 0.0019914117720911861, 1e-15);
  EXPECT_NEAR(p.m_dDY, 0.0019617963767959818, 1e-15);
  EXPECT_NEAR(p.m_dDZ, 0.0024003407594618124, 1e-15);
}

TEST(GsiSurvey, RecordedCoordinatesComeAsTheOtherReaderHasThem) {
  for (const char* szFile : {"station8.gsi", "station16.gsi", "polar8.gsi"}) {
    const std::string strPath = ZU_SOURCE_DIR "/samples/gsi/" + std::string(szFile);
    ZuPointList recorded, all;
    ZuGsiOptions options;
    options.m_dSigmaDistance = NAN;
    ZuReadGsi(strPath.c_str(), recorded);
    ZuReadGsiPoints(strPath.c_str(), options, all);
    for (const ZuPoint *p = recorded.First(), *q = all.First(); p; p = p->Next(), q = q->Next()) {
      EXPECT_EQ((Row{p->GetId(), p->GetName(), p->m_dX, p->m_dY, p->m_dZ}.str),
                (Row{q->GetId(), q->GetName(), q->m_dX, q->m_dY, q->m_dZ}.str));
    }
  }
  ZuPointList none;
  EXPECT_FALSE(ZuReadGsiPoints("/no/such/file", {}, none).m_Findings.IsWhole());
  EXPECT_FALSE(ZuGsiSurvey().Read(nullptr));
}
