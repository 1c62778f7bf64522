#include "zu/transform/trafo3d_data.h"

ZuMatrix ZuTrafo3dData::GetAsMatrix() const {
  ZuMatrix toTarget(4, 4), turn(4, 4), fromSource(4, 4);
  toTarget.SetIdent();
  fromSource.SetIdent();
  for (int i = 1; i <= 3; ++i) {
    toTarget[i][4] = m_vTarget[i];
    fromSource[i][4] = -m_vSource[i];
    for (int j = 1; j <= 3; ++j) turn[i][j] = m_dScale * m_mRot[i][j];
  }
  turn[4][4] = 1.0;
  return toTarget * turn * fromSource;
}
