// What least squares say of a merge: the points that agree, tested, and how sure the joined ones
// are.
#pragma once

#include <vector>

#include "similarity_report.h"
#include "zu/adjust/similarity.h"
#include "zu/points/point_list.h"

namespace cli {

// Adjusts B onto A over the common points but for those rejected, which are held against the
// result. With --test agreeing points that do not fit are set aside; they join *pRejected, which
// has ascending ids.
ZuSimilarityResult AdjustMerge(const ZuSortHelper<ZuPoint>& listA, const ZuPointList& listB,
                               const SimilarityValues& values, std::vector<unsigned>* pRejected);

// The same where the adjusted parameters carry the points: those that they leave beyond the
// tolerance are rejected, too, until none is.
ZuSimilarityResult AdjustWithin(double dTolerance, const ZuSortHelper<ZuPoint>& listA,
                                const ZuPointList& listB, const SimilarityValues& values,
                                std::vector<unsigned>* pRejected);

// Puts the standard deviations of joined points into those of pJoined: points of both lists moved
// towards A's by the share dBlend, of B alone, of A alone.
void SetJoinedSds(const ZuSimilarityResult& result, const ZuSortHelper<ZuPoint>& listA,
                  const ZuPointList& listB, double dBlend, ZuPointList* pJoined);

}  // namespace cli
