// Flag bits of a point that a spatial transformation sets.
#pragma once

constexpr int kTransformed = 0x40;
constexpr int kRejected = 0x800;  // residual above the tolerance
