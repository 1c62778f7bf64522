#include "zu/version.h"

#define ZU_TEXT_OF(x) #x
#define ZU_TEXT(x) ZU_TEXT_OF(x)

const char* ZuVersion() {
  return ZU_TEXT(ZU_VERSION_MAJOR) "." ZU_TEXT(ZU_VERSION_MINOR) "." ZU_TEXT(ZU_VERSION_PATCH);
}
