// Draws subsets of an array of ids for a random-sample consensus: by the standard generator, whose
// state the application seeds, and a subset that came before is drawn anew.
#pragma once

#include <set>
#include <vector>

#include "zu/export.h"
#include "zu/foundation/id_table.h"

class ZU_API ZuGenerateRandomIndex {
 public:
  ZuGenerateRandomIndex() = default;
  ZuGenerateRandomIndex(const ZuGenerateRandomIndex&) = default;
  virtual ~ZuGenerateRandomIndex() = default;
  ZuGenerateRandomIndex& operator=(const ZuGenerateRandomIndex&) = default;

  // Draws k (at most all) of the ids; the indices of the subset, ascending from 0, replace the last
  // ones. All draws of one object are from the same ids with the same k. A subset seen before is
  // drawn anew, up to 40 times, and then taken all the same. Draws of almost all of many ids take
  // long, from some thousand ids on practically without end: an index at the ends of n comes with a
  // probability of about 5 / n^3.
  //
  // Required: an index comes from the sum of three numbers of `rand`, so that those in the middle
  // of the list are drawn more often than those at its ends; a merge made again from the same state
  // of `rand` draws the same subsets. Where neighbours in the list are neighbours in space, mix it
  // first: samples from one corner of the object tell little of the turns.
  //
  // One thread at a time: `rand` has one state for the process.
  const std::vector<unsigned int>& Draw(const ZuIdTable& ids, int k);

  const std::vector<unsigned int>& GetIndices() const { return m_vIndices; }
  // Number of subsets; an exact value comes out one too large, 0.0 for k > n and before a draw.
  double GetCombinations() const { return m_dCombinations; }

 protected:
  void DrawOnce(int n, int k);
  bool IsNew(const ZuIdTable& ids);

  std::vector<unsigned int> m_vIndices;
  std::set<unsigned int> m_sDraw;
  std::set<unsigned int> m_sSeen;  // checksums of the subsets so far
  double m_dCombinations = 0.0;
};
