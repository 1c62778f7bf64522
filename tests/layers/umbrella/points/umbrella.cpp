#include "zu/zu.h"
