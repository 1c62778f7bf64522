// For tests of figures that depend on how large the library's own tables are.
#pragma once

#include <gtest/gtest.h>

// Leaves the test in a build for fuzzing, whose tables are small and coarse.
#ifdef ZU_SMALL_SIZES
#define ZU_NEEDS_FULL_SIZES() GTEST_SKIP() << "the tables of this build are small"
#else
#define ZU_NEEDS_FULL_SIZES() static_cast<void>(0)
#endif
