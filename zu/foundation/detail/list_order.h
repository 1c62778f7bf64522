// Sorts chains of list nodes by their comparison. For the lists alone (list.h).
#pragma once

#include "zu/export.h"

class ZuBaseListnode;

class ZU_API ZuNodeOrder {
 public:
  using Compare = int (*)(const ZuBaseListnode* pNode, const ZuBaseListnode* pOther);

  // Puts a chain, given by its ends, in the order that results when each node in turn is placed in
  // front of the first one whose comparison with it is above 0, or at the tail, by about n log n
  // comparisons, and gives the number of nodes.
  //
  // False, chain untouched: there is no memory for 16 bytes a node, or the comparison is no order
  // on these nodes and only the insertion itself can tell the result.
  static bool Sort(ZuBaseListnode** ppFirst, ZuBaseListnode** ppLast, Compare pfnCompare,
                   int* piCount);
};
