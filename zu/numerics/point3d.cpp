#include "zu/numerics/point3d.h"

#include "zu/numerics/affin_map3d.h"
#include "zu/points/point.h"

ZuPoint3d::ZuPoint3d(const ZuPoint& point) : ZuPoint3d(point.m_dX, point.m_dY, point.m_dZ) {}

ZuPoint3d::ZuPoint3d(const ZuFrame3d& frame, double dX, double dY, double dZ)
    : ZuPoint3d(ZuAffinMap3d(frame) * ZuPoint3d(dX, dY, dZ)) {}

ZuPoint3d& ZuPoint3d::Transform(const ZuAffinMap3d& map) { return *this = map.Transform(*this); }
