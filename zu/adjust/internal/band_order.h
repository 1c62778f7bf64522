// Orders of unknowns whose equations stay sparse when they are solved.
#pragma once

#include <vector>

namespace zu::internal {

// The order of nodes in which neighbours stand close to each other: order[k] is the node at place
// k. Nodes flagged as last follow at the end, as do those with very many neighbours.
//
// Source: A. George and J. W. Liu, "Computer solution of large sparse positive definite systems",
// 1981 (reverse Cuthill-McKee from a node at the rim).
std::vector<int> BandOrder(const std::vector<std::vector<int>>& neighbours,
                           const std::vector<char>& last);

}  // namespace zu::internal
