#include "zu/numerics/vector.h"
#include "zu/points/point.h"

ZuVector ZuPoint::GetAsVector() const { return ZuVector(m_dX, m_dY, m_dZ); }
