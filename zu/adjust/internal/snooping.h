// Data snooping over any adjustment that can be made without some of its groups.
#pragma once

#include <functional>
#include <vector>

namespace zu::internal {

struct SnoopTest {
  double dTest = 0.0;   // T
  double dLimit = 0.0;  // infinite: no test
};

// Adjusts without the groups whose flag is 0 and tests all groups, those by the prediction of the
// rest. *piRedundancy gets that of the adjustment. False where there is no good result.
using SnoopAdjust = std::function<bool(const std::vector<char>& used,
                                       std::vector<SnoopTest>* pTests, int* piRedundancy)>;

struct SetAside {
  int iGroup;
  double dTest;   // when it was set aside
  double dLimit;  // of that test
};

struct SnoopResult {
  bool bGood = false;              // the last adjustment gave a result
  std::vector<char> used;          // by group
  std::vector<SetAside> setAside;  // in the order of setting aside
  // A group beyond its limit stays, since half are aside already, or the rest would not decide the
  // parameters with a redundancy of 1.
  bool bLimited = false;
};

// Sets the group aside whose T is largest against its limit, adjusts anew and takes back one by one
// the groups that fit the result; a group that comes back a second time stays aside. The last call
// of `adjust` is the one of the result. Groups of the same T are taken by their number, so that it
// must not depend on the order of the input.
SnoopResult Snoop(int iGroups, const SnoopAdjust& adjust);

// The same from a start without the groups whose flag is 0: they are aside at first.
SnoopResult Snoop(const std::vector<char>& start, const SnoopAdjust& adjust);

}  // namespace zu::internal
