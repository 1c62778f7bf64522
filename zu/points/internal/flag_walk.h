// Walks over the nodes of a list that have any flag bit of a mask: from a node on, or from its
// neighbour; null at the end.
#pragma once

namespace zu::internal {

template <class T>
T* FlagNext(T* p, int iMask) {
  for (p = p->Next(); p != nullptr && p->IsFlagSet(iMask) == 0;) p = p->Next();
  return p;
}

template <class T>
T* FlagPrevious(T* p, int iMask) {
  for (p = p->Previous(); p != nullptr && p->IsFlagSet(iMask) == 0;) p = p->Previous();
  return p;
}

template <class T>
T* FlagFirst(T* p, int iMask) {
  return p->IsFlagSet(iMask) != 0 ? p : FlagNext(p, iMask);
}

}  // namespace zu::internal
