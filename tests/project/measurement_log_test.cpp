// The log of measurements: what is appended is read, and what is damaged costs itself.
#include "zu/project/measurement_log.h"

#include <filesystem>
#include <thread>

#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/project/project.h"

namespace {

std::vector<ZuLoggedMeasurement> SomeMeasurements() {
  return {{-62135596800000000, 1, 1, -0.1, 1e300, "", 1},
          {0, 4294967295, 7, 5e-324, -1e22, "-", 2},
          {951782399999999, 2, 4294967295, 0.1, 1.0 / 3.0, "A. %20 \"M\x7f\n\xc3\xbc", 3},
          {253402300799999999, 2, 2, -0.0, 1204.25, std::string(200, ' '), 4}};
}

std::string Tell(const std::vector<ZuLoggedMeasurement>& measurements) {
  std::string str;
  for (const ZuLoggedMeasurement& m : measurements) {
    str += Row{m.m_iTime, m.m_uPhoto, m.m_uPoint, m.m_dX, m.m_dY, m.m_strWho, m.m_uLine}.str + '|';
  }
  return str;
}

std::string Tell(const ZuLogReading& reading) { return Tell(reading.m_Measurements); }

}  // namespace

TEST(MeasurementLog, TimesAreThoseOfTheCalendar) {
  // Seconds since 1970 as date(1) of the GNU tools tells them.
  for (const auto& [szText, iSeconds] :
       Cases<const char*, std::int64_t>{{"1970-01-01T00:00:00Z", 0},
                                        {"2000-02-29T23:59:59Z", 951868799},
                                        {"1600-02-29T12:00:00Z", -11670955200},
                                        {"2026-11-22T16:28:30Z", 1795364910}}) {
    std::int64_t iTime = 0;
    EXPECT_TRUE(ZuParseLogTime(szText, &iTime));
    EXPECT_ROW(Row(iSeconds * 1000000, szText).str, iTime, ZuLogTimeText(iTime));
  }
  std::int64_t iTime = 5;
  for (const char* szText :
       {"", "2026-02-29", "2026-13-01", "0000-01-01", "2026-1-01", "+026-01-01", "2026-01-01T",
        "2026-01-01T24:00:00Z", "2026-01-01T00:00:60Z", "2026-01-01T00:00:00", "2026-01-01T00:00Z",
        "2026-01-01T00:00:00.Z", "2026-01-01T00:00:00.1234567Z", "2026-01-01T00:00:00Zx"}) {
    EXPECT_FALSE(ZuParseLogTime(szText, &iTime)) << szText;
  }
  EXPECT_ROW("5 9999-12-31T23:59:59.999999Z 0001-01-01T00:00:00Z", iTime, ZuLogTimeText(INT64_MAX),
             ZuLogTimeText(INT64_MIN));
}

TEST(MeasurementLog, WhatIsAppendedIsReadWhereverTheFileIsCut) {
  const TempFile file;
  ZuMeasurementLog log;
  ASSERT_TRUE(log.Open(file.Path()));
  ASSERT_TRUE(log.Append(SomeMeasurements()));
  EXPECT_EQ(Tell(ZuReadMeasurementLog(file.Path())), Tell(SomeMeasurements()));

  const std::string strWhole = file.Read();
  for (std::size_t u = 0; u < strWhole.size(); ++u) {
    const TempFile cut(strWhole.substr(0, u));
    // With its check sum a line is whole, with its end or without.
    const auto iLines =
        std::count(strWhole.begin(), strWhole.begin() + static_cast<long>(u) + 1, '\n');
    const bool bCut = u > 0 && strWhole[u - 1] != '\n' && strWhole[u] != '\n';
    const ZuLogReading reading = ZuReadMeasurementLog(cut.Path());
    ASSERT_EQ(static_cast<long>(reading.m_Measurements.size()), iLines) << u;
    ASSERT_EQ(reading.m_Findings.First(eZuReadCut) != nullptr, bCut) << u;
    // Who goes on behind a cut line loses nothing of his own.
    ZuMeasurementLog again;
    ASSERT_TRUE(again.Open(cut.Path()) && again.Append({SomeMeasurements()[0]}, false));
    ASSERT_EQ(static_cast<long>(ZuReadMeasurementLog(cut.Path()).m_Measurements.size()),
              iLines + 1);
  }
}

TEST(MeasurementLog, EveryDamagedByteIsNoticed) {
  const std::string strLine = ZuLogLine(SomeMeasurements()[2]);
  for (std::size_t u = 0; u < strLine.size(); ++u) {
    for (int iBit = 0; iBit < 8; ++iBit) {
      std::string strDamaged = strLine;
      strDamaged[u] = static_cast<char>(strDamaged[u] ^ (1 << iBit));
      ZuLoggedMeasurement m;
      ASSERT_FALSE(ZuParseLogLine(strDamaged, &m)) << strDamaged;
    }
  }
  const TempFile file("# title\n\n" + strLine + "\nnonsense\n" + std::string(5000, 'x') + '\n' +
                      strLine + "\r\n");
  const ZuLogReading reading = ZuReadMeasurementLog(file.Path());
  ASSERT_EQ(reading.m_Measurements.size(), 2U);
  EXPECT_ROW("3 6 2 4", reading.m_Measurements[0].m_uLine, reading.m_Measurements[1].m_uLine,
             reading.m_Findings.m_uDroppedLines, reading.m_Findings.First(eZuReadDropped)->m_uLine);
}

TEST(MeasurementLog, WritersDoNotMix) {
  const TempFile file;
  std::vector<std::thread> writers;
  for (unsigned uWriter = 1; uWriter <= 4; ++uWriter) {
    writers.emplace_back([&file, uWriter] {
      ZuMeasurementLog log;
      if (!log.Open(file.Path())) return;
      for (unsigned u = 1; u <= 200; ++u) log.Append({{0, uWriter, u, 1.0, 2.0, "", 0}}, false);
    });
  }
  for (std::thread& writer : writers) writer.join();
  const ZuLogReading reading = ZuReadMeasurementLog(file.Path());
  EXPECT_EQ(reading.m_Measurements.size(), 800U);
  EXPECT_TRUE(reading.m_Findings.IsEmpty());
}

TEST(MeasurementLog, RefusesWhatCannotBeReadAgain) {
  const TempFile file;
  ZuMeasurementLog log;
  EXPECT_FALSE(log.Append({}));
  EXPECT_FALSE(log.Open("/no/such/folder/log") || log.Open(nullptr));
  ASSERT_TRUE(log.Open(file.Path()));
  const ZuLoggedMeasurement good = SomeMeasurements()[0];
  for (auto change : {+[](ZuLoggedMeasurement* m) { m->m_uPhoto = 0; },
                      +[](ZuLoggedMeasurement* m) { m->m_uPoint = 0; },
                      +[](ZuLoggedMeasurement* m) { m->m_dX = NAN; },
                      +[](ZuLoggedMeasurement* m) { m->m_dY = INFINITY; },
                      +[](ZuLoggedMeasurement* m) { m->m_iTime = INT64_MAX; },
                      +[](ZuLoggedMeasurement* m) { m->m_strWho.assign(201, 'x'); }}) {
    ZuLoggedMeasurement bad = good;
    change(&bad);
    EXPECT_FALSE(log.Append({good, bad}));
  }
  EXPECT_EQ(file.Read(), "");
}

TEST(MeasurementLog, FiltersAndReplays) {
  const std::vector<ZuLoggedMeasurement> all = {{30, 1, 5, 3.0, 3.0, "b", 1},
                                                {10, 1, 5, 1.0, 1.0, "a", 2},
                                                {30, 1, 5, 4.0, 4.0, "a", 3},
                                                {20, 1, 6, 2.0, 2.0, "a", 4},
                                                {20, 9, 6, 2.0, 2.0, "a", 5}};
  ZuLogFilter filter;
  filter.m_from = 20;
  filter.m_to = 30;
  filter.m_photos = {1, 2};
  filter.m_who = "a";
  std::string strTaken;
  for (const auto& m : all) strTaken += filter.Takes(m) ? std::to_string(m.m_uLine) : "";
  EXPECT_EQ(strTaken, "4");

  const Cases<eZuReplay, const char*> modes = {
      {eZuReplayLast, "1 1 2 1 | 5 4 0 | 7 8 0 | 6 2 0"},
      {eZuReplayAll, "4 0 0 1 | 5 9 0.5 | 5 8 0 | 7 8 0 | 5 1 0 | 6 2 0 | 5 3 0 | 5 4 0"}};
  for (const auto& [eMode, szExpected] : modes) {
    ZuProject project;
    auto* pPhoto = new ZuPhoto;
    pPhoto->SetId(1);
    project.PhotoList().Add(pPhoto);
    for (const auto& [uId, x] : Cases<unsigned, double>{{5, 9.0}, {5, 8.0}, {7, 8.0}}) {
      project.Measurements(1).Add(ZuPoint(uId, x, 0.0));
    }
    project.Measurements(1).First()->m_dDX = 0.5;
    const ZuReplayResult result = ZuReplayLog(all, eMode, &project);
    std::string str = Row{result.m_iAdded, result.m_iReplaced, result.m_iLater,
                          static_cast<int>(result.m_unknownPhotos.size())}
                          .str;
    for (const ZuPoint* p = project.Measurements(1).First(); p != nullptr; p = p->Next()) {
      str += " | " + Row{p->GetId(), p->m_dX, p->m_dDX}.str;
    }
    EXPECT_EQ(str, szExpected);
  }
}
