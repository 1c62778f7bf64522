// Text of records does not follow the form of numbers that an application has given its stream.
#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

#include "zu/numerics/matrix.h"
#include "zu/transform/lokal_system.h"
#include "zu/transform/trafo2d.h"

namespace {

template <class Record>
void ExpectSameText(const Record& record) {
  std::ostringstream plain, bent;
  bent << std::hex << std::showbase << std::showpos << std::scientific << std::uppercase
       << std::setfill('*');
  record.Write(plain);
  record.Write(bent);
  EXPECT_EQ(bent.str(), plain.str());
  bent.str("");
  bent << std::setw(5) << 26;
  EXPECT_EQ(bent.str(), "*0X1A") << "the stream keeps its form";
}

}  // namespace

TEST(PlainNumbers, TransformationAndLocalSystem) {
  ZuTrafo2d trafo;
  ZuMatrix m(3, 3);
  m.SetIdent();
  m[1][3] = 12.5;
  trafo.SetFromMatrix(m, eZuTrafo2DAffin);
  ExpectSameText(trafo);

  ZuLokalSystem system;
  system.m_uIdA = system.m_uIdOrigin = 26;
  system.m_dOffsetX = 1234.5;
  ExpectSameText(system);
}
