# Compile options of everything built here. Contraction of floating point expressions is off on
# every compiler, so that results do not depend on the machine.
add_library(zu_options INTERFACE)
target_compile_options(zu_options INTERFACE -ffp-contract=off -Wall -Wextra -Wpedantic
                       -Wnon-virtual-dtor -Wno-overloaded-virtual)
# Files of a group see each other's names; by itself each is compiled by every other build.
if(NOT ZU_UNITY)
  target_compile_options(zu_options INTERFACE -Wshadow)
endif()
# At -O3, g++ 12 warns of copies inside std::string that cannot happen (negative lengths, overlap).
# The sanitizer build looks at what does happen.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(zu_options INTERFACE -Wno-restrict -Wno-stringop-overflow -Wno-stringop-overread
                         -Wno-array-bounds)
endif()
# Below another project its compiler may warn of what ours does not know.
if(ZU_WERROR AND PROJECT_IS_TOP_LEVEL)
  target_compile_options(zu_options INTERFACE -Werror)
endif()
# Compilers of whole groups collect their garbage when they are out of 600 MB, not of 128: a tenth of
# their time.
if(ZU_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(zu_options INTERFACE --param=ggc-min-expand=400 --param=ggc-min-heapsize=600000)
endif()
