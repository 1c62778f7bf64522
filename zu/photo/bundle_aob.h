// Orientation of a photo as a bundle adjustment gives it: position and angles with accuracies.
#pragma once

#include "zu/export.h"
#include "zu/foundation/list.h"

class ZU_API ZuBundleAOB : public ZuListnode {
 public:
  using ZuListnode::ZuListnode;
  ZuBundleAOB() = default;

  ZuBundleAOB* Next() const { return static_cast<ZuBundleAOB*>(m_pNext); }

 public:
  double m_adPosition[3] = {};       // object units
  double m_adAngles[3] = {};         // [rad]
  double m_adSigmaPosition[3] = {};  // standard deviations of both
  double m_adSigmaAngles[3] = {};
};

ZU_DECLARE_LIST(ZuBundleAOB);

class ZU_API ZuBundleAOBList : public TZuListHeader<ZuBundleAOB> {
 public:
  using TZuListHeader<ZuBundleAOB>::operator=;
};
