#include "zu/foundation/array.h"

#include "zu/foundation/id_table.h"
#include "zu/foundation/observer.h"

template class TZuArray<unsigned int>;
template class TZuArray<ZuIdPair>;
template class TZuArray<ZuObserver*>;
