#include "zu/foundation/log_item.h"

ZU_INSTANTIATE_LIST(ZuLogItem);
