// A rectification that is read anew, and the border of one.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/temp_file.h"
#include "zu/foundation/reader.h"
#include "zu/rectify/zusp_trafo.h"

namespace {

class Record : public LinkHdl {
 public:
  explicit Record(const std::string& strText) {
    const TempFile file(strText);
    ZuReader reader(file.Path());
    ZuReaderObject keywords[] = {{"NEW", Link(&m_trafo, &ZuZuspTrafo::Read)},
                                 {"OLD", Link(&m_trafo, &ZuZuspTrafo::ReadV50)},
                                 {"USE", Link(this, &Record::Use)}};
    for (ZuReaderObject& keyword : keywords) reader.RegisterObject(keyword);
    reader.DoProcess(false);
    EXPECT_EQ(reader.GetReadErrorCount(), 0);
  }
  // There and back: the kept inverses are those of the maps.
  int Use(ZuReaderObject*) {
    ZuPoint p(1, 2.0, 3.0);
    m_trafo.Transform(&p, &p);
    m_trafo.InvTransform(&p);
    EXPECT_NEAR(p.m_dX, 2.0, 1e-12);
    EXPECT_NEAR(p.m_dY, 3.0, 1e-12);
    return ++m_iUses;
  }
  ZuZuspTrafo m_trafo;
  int m_iUses = 0;
};

std::string Keywords(const char* szScale) {
  return "NEW { ZUSPTRAFO { 3 3 " + std::string(szScale) + " 0 0 0 1 0 0 0 1 } } USE 1\n";
}

// The nine numbers stand column by column from the third to the first.
std::string Positional(const char* szScale) {
  return "OLD { 1 \"f\" 1 0 0 1 0 1 0 " + std::string(szScale) +
         " 0 0 { 4 4 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 9 3D } { 0 0 9 9 } 0 0 9 0 9 9 0 9 } USE 1\n";
}

TEST(ZuspReread, TheKeptInversesGo) {
  for (const std::string& strText :
       {Keywords("2") + Keywords("4"), Positional("2") + Positional("4"),
        Keywords("2") + Positional("4"), Positional("2") + Keywords("4")}) {
    Record record(strText);
    EXPECT_EQ(record.m_iUses, 2);
    EXPECT_EQ(record.m_trafo.GetZuspMat()[1][1], 4.0);
  }
  EXPECT_EQ(Record(Positional("2") + Positional("4")).m_trafo.GetBikoList().Count(), 4);
}

TEST(ZuspReread, BorderIntoTheRegionsOwnList) {
  Record record("NEW { VALIDREGION { 0 0 9 0 5 5 } }");
  ZuPointList& region = record.m_trafo.GetRegion().GetPoints();
  ASSERT_EQ(ZuGetZuspBikoPoints(region, nullptr, &record.m_trafo), 3);
  EXPECT_EQ(region.Last()->m_dX, 5.0);
}

}  // namespace
