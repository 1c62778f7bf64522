# Compile options of everything built here. Contraction of floating point expressions is off on
# every compiler, so that results do not depend on the machine.
add_library(zu_options INTERFACE)
target_compile_options(zu_options INTERFACE -ffp-contract=off -Wall -Wextra -Wpedantic -Wshadow
                       -Wnon-virtual-dtor -Wno-overloaded-virtual)
if(ZU_WERROR)
  target_compile_options(zu_options INTERFACE -Werror)
endif()
