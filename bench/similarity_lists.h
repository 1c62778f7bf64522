// Lists for the benchmarks of the similarity transformation.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <random>
#include <vector>

#include "zu/points/point_list.h"

// Source and target points with common ids 1 to n and some noise; the source in the order of its
// ids or shuffled. a and b hold the same points by id.
struct SimilarityLists {
  SimilarityLists(int n, bool bShuffled) {
    std::mt19937 rng(9);
    std::normal_distribution<double> coordinate(0.0, 10.0), noise(0.0, 0.001);
    const double c = std::cos(0.7), s = std::sin(0.7), e = std::cos(0.4), f = std::sin(0.4);
    const double r[3][3] = {{c, -s * e, s * f}, {s, c * e, -c * f}, {0.0, f, e}};
    for (int i = 0; i < n; ++i) {
      std::array<double, 3> p = {coordinate(rng), coordinate(rng), coordinate(rng)}, q = {};
      for (std::size_t k = 0; k < 3; ++k) {
        q[k] = 1.5 * (r[k][0] * p[0] + r[k][1] * p[1] + r[k][2] * p[2]) + 100.0 + noise(rng);
      }
      a.push_back(p);
      b.push_back(q);
    }
    std::vector<std::size_t> order(a.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    if (bShuffled) std::shuffle(order.begin(), order.end(), rng);
    for (std::size_t i = 0; i < a.size(); ++i) {
      target.Add(ZuPoint(static_cast<unsigned int>(i) + 1, b[i][0], b[i][1], b[i][2]));
      const std::size_t k = order[i];
      source.Add(ZuPoint(static_cast<unsigned int>(k) + 1, a[k][0], a[k][1], a[k][2]));
    }
  }

  std::vector<std::array<double, 3>> a, b;
  ZuPointList source, target;
};
