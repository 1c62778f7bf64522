// The parameters of a camera by number, in the order c xh yh a1 a2 a3 b1 b2 c1 c2.
#pragma once

#include "zu/adjust/network.h"
#include "zu/photo/internal/camera_measured.h"

namespace zu::internal {

static_assert(int{camera_measured::eA1} == ZuNetworkA1 &&
              int{camera_measured::eB1} == ZuNetworkB1 &&
              int{camera_measured::kParameters} == ZuNetworkParameters);

// Mode 1 has two principal points, whose way from object to image is a search.
inline bool HasModel(const ZuCamera& camera) {
  return camera.m_iMode == eCameraModeZuvo || camera.m_iMode == eCameraModeCap ||
         camera.m_iMode == eCameraModePinhole;
}

inline bool HasParameter(const ZuCamera& camera, int iParameter) {
  switch (camera.m_iMode) {
    case eCameraModeZuvo:
      return iParameter <= ZuNetworkA2;
    case eCameraModeCap:
      return iParameter < ZuNetworkParameters;
    case eCameraModePinhole:
      return iParameter == ZuNetworkC;
    default:
      return false;
  }
}

inline double ZuCamera::*ParameterField(int iParameter) {
  constexpr double ZuCamera::*fields[] = {
      &ZuCamera::m_dC,  &ZuCamera::m_dXh, &ZuCamera::m_dYh, &ZuCamera::m_dA1, &ZuCamera::m_dA2,
      &ZuCamera::m_dA3, &ZuCamera::m_dB1, &ZuCamera::m_dB2, &ZuCamera::m_dC1, &ZuCamera::m_dC2};
  return fields[iParameter];
}
inline double& ParameterValue(ZuCamera& camera, int i) { return camera.*ParameterField(i); }
inline double ParameterValue(const ZuCamera& camera, int i) { return camera.*ParameterField(i); }

}  // namespace zu::internal
