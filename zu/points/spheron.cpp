#include "zu/points/spheron.h"

ZU_INSTANTIATE_LIST(ZuSpheron);
