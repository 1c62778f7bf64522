// Common points of two lists that agree on one similarity transformation although others are wrong.
//
// Random-sample consensus (M. A. Fischler, R. C. Bolles, "Random sample consensus", 1981): samples
// of three common points, each carried on to the points that agree with it by repeated least
// squares (after O. Chum, J. Matas, J. Kittler, "Locally optimized RANSAC", 2003); the sample with
// the most agreeing points wins, of equal ones that with the least residuals. Few points are
// searched exhaustively: nothing is left to chance then.
#pragma once

#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/export.h"
#include "zu/points/point_list.h"

enum class ZuConsensusSearch {
  Automatic,   // exhaustive up to 15 common points, else random
  Exhaustive,  // all samples
  Random       // until the chance of having missed the best is small enough
};

struct ZuConsensusOptions {
  double dTolerance = 0.0;  // longest residual of a point that agrees [unit of the target]; above 0
  ZuConsensusSearch search = ZuConsensusSearch::Automatic;
  unsigned uSeed = 1;     // the same seed gives the same bits, whatever the number of threads
  double dMissed = 1e-9;  // chance of having missed a sample without error that ends the search [-]
  int iMaxSamples = 200000;
  int iLeastAgreeing = 4;  // points, three at least
};

struct ZuConsensusResult {
  // Good; too few common points, or none that agree (rank defect); not finite.
  ZuAdjustStatus status = ZuAdjustStatus::TooFew;
  std::string strReason;                     // empty where good
  std::vector<unsigned> agreeing, rejected;  // ids, ascending
  bool bExhaustive = false;
  long long iSamples = 0;
  // Chance that no sample was drawn from the agreeing points alone; 0 where all were.
  double dMissed = 0.0;

  bool IsGood() const { return status == ZuAdjustStatus::Good; }
};

// The order of the points in their lists changes nothing. Exhaustive time grows with the fourth
// power of the common points, random time with their number over the third power of the share that
// agrees. Runs on the threads of OpenMP.
ZU_ADJUST_API ZuConsensusResult ZuFindConsensus(const ZuPointList& target,
                                                const ZuPointList& source,
                                                const ZuConsensusOptions& options);
