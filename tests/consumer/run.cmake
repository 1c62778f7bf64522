# Installs the build tree BUILD_DIR, builds this folder against it, with the compiler and flags of the
# build, and runs what came out. WORK_DIR is emptied.
function(step)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE _result OUTPUT_VARIABLE _text
                  ERROR_VARIABLE _text)
  if(NOT _result EQUAL 0)
    list(JOIN ARGN " " _command)
    message(FATAL_ERROR "${_command}\n${_text}")
  endif()
  set(_text "${_text}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
# Moved after the install: nothing in the tree may depend on the prefix it was made for.
step(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/first)
file(RENAME ${WORK_DIR}/first ${WORK_DIR}/moved)
set(ENV{PKG_CONFIG_PATH} ${WORK_DIR}/moved/${LIBDIR}/pkgconfig)
step(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK_DIR}/build -G Ninja
     -DCMAKE_BUILD_TYPE=${BUILD_TYPE} -DCMAKE_CXX_COMPILER=${CXX} "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
     -DCMAKE_PREFIX_PATH=${WORK_DIR}/moved -DEXPECTED_VERSION=${VERSION}
     "-DCOMPONENTS=${COMPONENTS}")
step(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
# Without C++20 the compiler says what is missing, and nothing else but that it stops.
execute_process(COMMAND ${CXX} -std=c++17 -fsyntax-only -I${WORK_DIR}/moved/include
                        ${CMAKE_CURRENT_LIST_DIR}/main.cpp
                RESULT_VARIABLE _result OUTPUT_VARIABLE _text ERROR_VARIABLE _text)
string(REGEX MATCHALL "error: " _errors "${_text}")
list(LENGTH _errors _errors)
if(_result EQUAL 0 OR NOT _errors EQUAL 2 OR NOT _text MATCHES "Zu needs C\\+\\+20")
  message(FATAL_ERROR "compiled as C++17:\n${_text}")
endif()
foreach(_program by_package by_pkg_config)
  if(EXISTS ${WORK_DIR}/build/${_program})
    step(${WORK_DIR}/build/${_program} ${VERSION})
    message(STATUS "${_program}: good")
  endif()
endforeach()
# A user's own program, as docs/recipes.md has it.
set(_root ${CMAKE_CURRENT_LIST_DIR}/../..)
step(${CMAKE_COMMAND} -S ${_root}/examples/own_program -B ${WORK_DIR}/own -G Ninja
     -DCMAKE_BUILD_TYPE=${BUILD_TYPE} -DCMAKE_CXX_COMPILER=${CXX} "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
     -DCMAKE_PREFIX_PATH=${WORK_DIR}/moved)
step(${CMAKE_COMMAND} --build ${WORK_DIR}/own)
step(${WORK_DIR}/own/join_lists ${_root}/samples/datum/local.coo ${_root}/samples/datum/wgs84.coo)
if(NOT _text MATCHES "points, scale 1")
  message(FATAL_ERROR "own_program: ${_text}")
endif()
if(EXISTS ${WORK_DIR}/moved/bin/zu)
  step(${WORK_DIR}/moved/bin/zu --version)
endif()
