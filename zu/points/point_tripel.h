// Three points by their ids, ordered by the first, then the second, then the third.
#pragma once

#include <tuple>

#include "zu/foundation/array.h"

struct ZuPointTripel {
  unsigned int m_uId1 = 0;
  unsigned int m_uId2 = 0;
  unsigned int m_uId3 = 0;

  bool operator==(const ZuPointTripel& o) const { return Key() == o.Key(); }
  bool operator<(const ZuPointTripel& o) const { return Key() < o.Key(); }
  bool operator<=(const ZuPointTripel& o) const { return Key() <= o.Key(); }

 private:
  std::tuple<unsigned int, unsigned int, unsigned int> Key() const {
    return {m_uId1, m_uId2, m_uId3};
  }
};

using ZuPointTripelTable = TZuArray<ZuPointTripel>;
