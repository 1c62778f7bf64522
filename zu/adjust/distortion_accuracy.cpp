#include "zu/adjust/distortion_accuracy.h"

#include <cmath>

#include "zu/adjust/network.h"
#include "zu/photo/internal/camera_measured.h"

bool ZuDistortionAt(const ZuCamera& camera, double x, double y, const std::vector<int>& parameters,
                    const std::vector<double>& cov, ZuDistortion* pResult) {
  double mx, my;
  camera_measured::Derivative d;
  if (!camera_measured::Measured(camera, x, y, &mx, &my, &d)) return false;
  const bool bPinhole = camera.m_iMode == eCameraModePinhole;  // its principal point takes no part
  ZuDistortion& result = *pResult;
  result = {x - (mx - (bPinhole ? 0.0 : camera.m_dXh)), y - (my - (bPinhole ? 0.0 : camera.m_dYh)),
            0.0, 0.0, 0.0};
  const size_t n = cov.size() == parameters.size() * parameters.size() ? parameters.size() : 0;
  for (size_t i = 0; i < n; ++i) {
    for (size_t k = 0; k < n; ++k) {
      const int a = parameters[i], b = parameters[k];
      if (a < ZuNetworkA1 || b < ZuNetworkA1) continue;
      const double c = cov[n * i + k];
      result.dXX += d.parameter[0][a] * c * d.parameter[0][b];
      result.dXY += d.parameter[0][a] * c * d.parameter[1][b];
      result.dYY += d.parameter[1][a] * c * d.parameter[1][b];
    }
  }
  return std::isfinite(result.dx + result.dy + result.dXX + result.dYY);
}
