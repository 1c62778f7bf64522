// Two measurements of the same points: which of them moved in between.
//
// The second epoch is compared with the first, carried into its system over the points that did not
// move. These are found by consensus within the accuracies of the points, as long as these are
// known; then every point is tested against the datum of the others with the covariances of both
// epochs: the one that fits least is set aside, one that fits is taken back, until all of the datum
// fit and no other does (congruence test of deformation networks; H. Pelzer, "Zur Analyse
// geodaetischer Deformationsmessungen", 1971; W. Niemeier, "Ausgleichungsrechnung", 2008).
#pragma once

#include <vector>

#include "zu/adjust/export.h"
#include "zu/adjust/similarity.h"
#include "zu/points/point_list.h"

struct ZuEpochOptions {
  ZuSimilarityKind kind = ZuSimilarityKind::Rigid;  // between the two systems
  ZuTestOptions tests;       // bSnoop does not count: points that moved are always set aside
  double dSigmaFirst = 0.0;  // as dSigmaSource and dSigmaTarget of ZuSimilarityOptions
  double dSigmaSecond = 0.0;
  unsigned uSeed = 1;  // of the consensus
};

struct ZuEpochPoint {
  unsigned uId = 0;
  bool bMoved = false;
  double adMove[3] = {};    // second minus carried first epoch
  double adMoveSd[3] = {};  // its standard deviations
  double dTest = 0.0;       // T, against the datum of the stable points
  double dLimit = 0.0;      // infinite where there is no test
};

struct ZuEpochResult {
  // Of the first epoch onto the second; its status and sentence are those of the comparison.
  ZuSimilarityResult similarity;
  std::vector<ZuEpochPoint> points;  // the common points by id

  bool IsGood() const { return similarity.IsGood(); }
  int Moved() const { return static_cast<int>(similarity.setAside.size()); }
};

// Points of the same id are the same; id 0 has no partner.
ZU_ADJUST_API ZuEpochResult ZuCompareEpochs(const ZuPointList& first, const ZuPointList& second,
                                            const ZuEpochOptions& options);
