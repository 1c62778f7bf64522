// What the writers of drawings share: which parts can be drawn, how far they reach, numbers.
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>

#include "zu/exchange/plan_drawing.h"

namespace zu::internal {

inline bool IsDrawn(const std::array<double, 3>& p) {
  return std::all_of(p.begin(), p.end(), [](double d) { return std::isfinite(d); });
}

inline bool IsDrawn(const ZuPlanLine& line) {
  return line.corners.size() > 1 && std::all_of(line.corners.begin(), line.corners.end(),
                                                [](const auto& p) { return IsDrawn(p); });
}

inline std::string PlanNumber(double dValue) {
  char ac[400];  // without an exponent, which not all readers take
  std::string strText(ac, std::to_chars(ac, ac + 400, dValue, std::chars_format::fixed).ptr);
  if (strText.find('.') == std::string::npos) strText += ".0";
  return strText;
}

class PlanExtent {
 public:
  explicit PlanExtent(const ZuPlanDrawing& drawing) {
    for (const ZuPlanPoint& p : drawing.points) Add(p.adPosition);
    for (const ZuPlanLine& line : drawing.lines) {
      if (IsDrawn(line))
        std::for_each(line.corners.begin(), line.corners.end(), [this](const auto& p) { Add(p); });
    }
  }

  double Least(std::size_t i) const { return m_adLeast[i]; }
  double Most(std::size_t i) const { return m_adMost[i]; }
  // Of text and signs: a hundredth of the larger side, 1 where there is none.
  double TextHeight(const ZuPlanDrawing& drawing) const {
    if (drawing.dTextHeight > 0.0) return drawing.dTextHeight;
    double dSide = 0.0;
    for (std::size_t i = 0; i < 3; ++i) dSide = std::max(dSide, m_adMost[i] - m_adLeast[i]);
    if (!(dSide > 0.0) || !std::isfinite(dSide)) return 1.0;
    // Two digits are enough to look at.
    const double dStep = std::pow(10.0, std::floor(std::log10(dSide)) - 3.0);
    return std::max(1.0, std::nearbyint(dSide / 100.0 / dStep)) * dStep;
  }

 private:
  void Add(const std::array<double, 3>& p) {
    if (!IsDrawn(p)) return;
    for (std::size_t i = 0; i < 3; ++i) {
      if (m_bFirst || p[i] < m_adLeast[i]) m_adLeast[i] = p[i];
      if (m_bFirst || p[i] > m_adMost[i]) m_adMost[i] = p[i];
    }
    m_bFirst = false;
  }

  std::array<double, 3> m_adLeast = {}, m_adMost = {};
  bool m_bFirst = true;
};

}  // namespace zu::internal
