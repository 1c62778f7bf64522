// What readers and writers of files do when memory ends: they let nothing out.
#pragma once

#include <new>

namespace zu::internal {

// The result of the work, or the other one where it finds no memory.
template <class Result, class Work>
Result OrWithoutMemory(Work work, Result without) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return without;
  }
}

// The copy that a list has taken; a list gives null where it found no memory for it.
template <class Node>
Node* Taken(Node* pNode) {
  if (pNode == nullptr) throw std::bad_alloc();
  return pNode;
}

// Appends copies of all nodes. A list leaves out those for which it finds no memory.
template <class List>
void CopyAll(const List& from, List* pTo) {
  if (from.CopyTo(pTo) != from.Count()) throw std::bad_alloc();
}

}  // namespace zu::internal
