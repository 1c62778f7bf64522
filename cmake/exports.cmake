# Checks that the shared library exports what its installed headers declare and nothing else:
#
#   cmake -D ZU_LIBRARY=libzu.so -D ZU_NM=nm -P cmake/exports.cmake
#
# Every name in an exported symbol, template arguments and parameters left aside, stands in a header.
cmake_minimum_required(VERSION 3.25)
get_filename_component(_root "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)

file(GLOB_RECURSE _headers ${_root}/zu/*.h)
list(FILTER _headers EXCLUDE REGEX "/internal/")
foreach(_header IN LISTS _headers)
  file(READ ${_header} _text)
  string(REGEX MATCHALL "[A-Za-z_][A-Za-z_0-9]*" _words "${_text}")
  foreach(_word IN LISTS _words)
    set(_declared_${_word} 1)
  endforeach()
endforeach()

execute_process(COMMAND ${ZU_NM} -D --defined-only -C ${ZU_LIBRARY} OUTPUT_VARIABLE _symbols
                COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "\\[abi:[a-z0-9]+\\]" "" _symbols "${_symbols}")
string(REGEX REPLACE "[][;]" " " _symbols "${_symbols}")
string(REPLACE "\n" ";" _symbols "${_symbols}")

set(_count 0)
set(_unknown "")
foreach(_line IN LISTS _symbols)
  if(NOT _line MATCHES "^[0-9a-f]+ [A-Za-z] (.*)$")
    continue()
  endif()
  set(_symbol "${CMAKE_MATCH_1}")
  if(_symbol MATCHES "^(__bss_start|_edata|_end)$")
    continue()  # a linker's own, where another library asks for them
  endif()
  math(EXPR _count "${_count} + 1")
  string(REGEX REPLACE "^(vtable|typeinfo name|typeinfo|guard variable|VTT) for |^(non-)?virtual thunk to "
         "" _name "${_symbol}")
  string(REGEX REPLACE "^construction vtable for .*-in-" "" _name "${_name}")
  string(REGEX REPLACE "\\(.*" "" _name "${_name}")
  string(REGEX REPLACE "<.*>" "" _name "${_name}")
  string(REGEX MATCHALL "[A-Za-z_][A-Za-z_0-9]*" _words "${_name}")
  foreach(_word IN LISTS _words)
    if(NOT DEFINED _declared_${_word})
      list(APPEND _unknown "${_symbol}")
      break()
    endif()
  endforeach()
endforeach()

if(_count EQUAL 0)
  message(FATAL_ERROR "${ZU_LIBRARY} exports nothing")
endif()
if(_unknown)
  list(JOIN _unknown "\n  " _unknown)
  message(FATAL_ERROR "exported, but in no installed header:\n  ${_unknown}")
endif()
message(STATUS "${_count} exported symbols, all declared")
