# Compile options of everything built here. Contraction of floating point expressions is off on
# every compiler, so that results do not depend on the machine.
add_library(zu_options INTERFACE)
target_compile_options(zu_options INTERFACE -ffp-contract=off -Wall -Wextra -Wpedantic -Wshadow
                       -Wnon-virtual-dtor -Wno-overloaded-virtual)
# g++ 12 warns at -O3 of overlapping copies inside std::string that cannot happen.
target_compile_options(zu_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(ZU_WERROR)
  target_compile_options(zu_options INTERFACE -Werror)
endif()
