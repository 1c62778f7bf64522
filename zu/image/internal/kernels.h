// Kernels of resampling: the weights of kTaps pixels at the fraction f behind the pixel kBefore.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace zu::internal {

struct Bilinear {
  static constexpr int kTaps = 2, kBefore = 0;
  static void Weights(float f, float* w) {
    w[0] = 1.0f - f;
    w[1] = f;
  }
};

struct Cubic {
  static constexpr int kTaps = 4, kBefore = 1;
  static void Weights(float f, float* w) {
    w[0] = ((1.0f - 0.5f * f) * f - 0.5f) * f;
    w[1] = (1.5f * f - 2.5f) * f * f + 1.0f;
    w[2] = ((2.0f - 1.5f * f) * f + 0.5f) * f;
    w[3] = (0.5f * f - 0.5f) * f * f;
  }
};

struct Lanczos {
  static constexpr int kTaps = 8, kBefore = 3;
  static constexpr int kSteps = 1024;  // of the table, which is interpolated: good to 1e-6
  using Table = std::array<std::array<float, kTaps>, kSteps + 1>;

  static double Sinc(double x) {
    constexpr double kPi = 3.14159265358979323846;
    return x == 0.0 ? 1.0 : std::sin(kPi * x) / (kPi * x);
  }
  static Table MakeTable() {
    Table table;
    for (int k = 0; k <= kSteps; ++k) {
      double adWeight[kTaps], dSum = 0.0;
      for (int i = 0; i < kTaps; ++i) {
        const double x = i - kBefore - static_cast<double>(k) / kSteps;
        adWeight[i] = std::fabs(x) < kTaps / 2 ? Sinc(x) * Sinc(x / (kTaps / 2)) : 0.0;
        dSum += adWeight[i];
      }
      for (int i = 0; i < kTaps; ++i) {
        table[static_cast<std::size_t>(k)][static_cast<std::size_t>(i)] =
            static_cast<float>(adWeight[i] / dSum);
      }
    }
    return table;
  }
  static void Weights(float f, float* w) {
    static const Table table = MakeTable();
    const float s = f * kSteps;
    const int k = std::min(static_cast<int>(s), kSteps - 1);
    const float g = s - static_cast<float>(k);
    const float* a = table[static_cast<std::size_t>(k)].data();
    const float* b = table[static_cast<std::size_t>(k) + 1].data();
    for (int i = 0; i < kTaps; ++i) w[i] = a[i] + g * (b[i] - a[i]);
  }
};

}  // namespace zu::internal
