// Two lists of the same points in different systems, some of them wrong.
#pragma once

#include <cmath>
#include <numeric>
#include <set>
#include <utility>
#include <vector>

#include "tests/support/random_geometry.h"
#include "zu/points/point_list.h"

struct PlantedLists {
  ZuPointList listA, listB;
  std::set<unsigned int> wrong;  // ids

  // n common points with ids from 101 on, a cube of 20 units in B, twice as large and turned in A.
  // Good ones differ by up to a fifth of the tolerance in each coordinate, iWrong of them by a
  // vector of 100 tolerances in a direction of its own.
  PlantedLists(RandomGeometry& random, int n, int iWrong, double dTolerance) {
    std::vector<unsigned int> ids(static_cast<std::size_t>(n));
    std::iota(ids.begin(), ids.end(), 101u);
    for (int i = 0; i < n; ++i) {
      std::swap(ids[static_cast<std::size_t>(i)], ids[static_cast<std::size_t>(random.Index(n))]);
    }
    wrong.insert(ids.begin(), ids.begin() + iWrong);
    const ZuAffinMap3d turn = random.Rotation();
    const ZuPoint3d shift = random.Point(100.0);
    for (int i = 0; i < n; ++i) {
      const unsigned int uId = 101u + static_cast<unsigned int>(i);
      const ZuPoint3d b = random.Point(10.0);
      const ZuPoint3d turned = turn * b;
      const ZuVector3d direction = random.Direction();
      const double dError = wrong.count(uId) != 0 ? 100.0 * dTolerance : 0.0;
      const ZuPoint3d noise = random.Point(0.2 * dTolerance);
      listB.Add(ZuPoint(uId, b.x, b.y, b.z));
      listA.Add(ZuPoint(uId, 2.0 * turned.x + shift.x + dError * direction.x + noise.x,
                        2.0 * turned.y + shift.y + dError * direction.y + noise.y,
                        2.0 * turned.z + shift.z + dError * direction.z + noise.z));
    }
  }
};

inline std::set<unsigned int> IdsOf(const ZuPointList& list) {
  std::set<unsigned int> ids;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) ids.insert(p->GetId());
  return ids;
}

inline std::vector<unsigned int> IdOrder(const ZuPointList& list) {
  std::vector<unsigned int> ids;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) ids.push_back(p->GetId());
  return ids;
}
