// Two lists of points joined in the system of the first although some common points are wrong, and
// how sure the joined points are.
//
//   ZuMergeOptions options;
//   options.dTolerance = 0.02;
//   const ZuMergeResult merged = ZuMergePoints(a, b, options);
//   if (merged.IsGood()) show(merged.joined);
//
// The points that agree are found by consensus (ZuFindConsensus). They carry B over in closed form,
// or, where accuracies or tests are asked for, by least squares, which then also rejects what they
// leave beyond the tolerance.
#pragma once

#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/consensus.h"
#include "zu/adjust/export.h"
#include "zu/adjust/similarity.h"
#include "zu/points/point_list.h"
#include "zu/transform/trafo3d.h"

struct ZuMergeOptions {
  double dTolerance = 0.0;  // longest residual of a point that agrees; above 0 [unit of A]
  bool bRelative = false;   // it is a share of the longest side of the common points' box in A
  double dBlend = 0.0;      // of agreeing points towards A's, from 0 (not at all) to 1
  int iMinPoints = 3;       // common points needed
  int iExtraPoints = 1;     // that agree beyond these, as far as there are so many
  ZuConsensusSearch search = ZuConsensusSearch::Automatic;
  unsigned uSeed = 1;
  // Least squares carry the points. Else they only tell how sure the closed form is.
  bool bAdjust = false;
  // With tests.bSnoop agreeing points that do not fit are rejected, too; kind and startAside do not
  // count unless bAdjust.
  ZuSimilarityOptions similarity;
};

struct ZuMergeResult {
  ZuAdjustStatus status = ZuAdjustStatus::TooFew;
  std::string strReason;  // empty where good
  ZuConsensusResult consensus;
  int iCommon = 0;
  double dTolerance = 0.0;  // absolute
  ZuTrafo3d trafo;          // of B into the system of A
  // The agreeing points, those only B has, those only A has; with standard deviations where
  // `adjusted` is good. Residuals are A minus carried B.
  ZuPointList joined;
  ZuPointList rejected;         // of B, carried
  ZuPointList rejectedControl;  // of A, of the same ids
  std::vector<unsigned> aside;  // ids of the rejected points, ascending
  ZuSimilarityResult adjusted;  // over the points that agree

  bool IsGood() const { return status == ZuAdjustStatus::Good; }
};

// Points of the same id are the same. Neither list is changed. Without bAdjust a result may be good
// whose `adjusted` is not, as of points on one line: then it tells nothing of standard deviations.
ZU_ADJUST_API ZuMergeResult ZuMergePoints(const ZuPointList& a, const ZuPointList& b,
                                          const ZuMergeOptions& options);
