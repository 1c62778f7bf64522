// Ids with the nodes that have them, for indexes over large lists.
#pragma once

#include <vector>

#include "zu/export.h"

struct ZuIdEntry {
  unsigned int uId;
  void* pNode;
};

// Sorts by id, ascending; of equal ids the first one stays and the others are dropped. The time is
// linear.
ZU_API void ZuSortIdEntries(std::vector<ZuIdEntry>& entries);
