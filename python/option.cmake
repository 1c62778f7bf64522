# ZU_BUILD_PYTHON: whether the Python module is built. Without a word of the caller it is where the
# headers of Python, numpy and pybind11 are there, and all parts of the library that the module shows;
# not with a sanitizer, whose run-time a plain interpreter does not load.

# The headers and numpy that come as packages belong to the interpreter of the system, whatever stands
# in front of it on the PATH; inside a virtual environment it is that one's.
if(PROJECT_IS_TOP_LEVEL AND NOT DEFINED Python_EXECUTABLE AND NOT DEFINED Python_ROOT_DIR AND NOT DEFINED ENV{VIRTUAL_ENV}
   AND EXISTS /usr/bin/python3)
  set(Python_EXECUTABLE /usr/bin/python3 CACHE FILEPATH "The Python of the module")
endif()

macro(_zu_find_python)
  set(PYBIND11_FINDPYTHON ON)
  find_package(Python 3.9 ${ARGN} COMPONENTS Interpreter Development.Module NumPy)
  if(Python_FOUND)
    find_package(pybind11 2.10 ${ARGN} CONFIG)
  endif()
endmacro()

if(DEFINED ZU_BUILD_PYTHON)
  if(ZU_BUILD_PYTHON)
    _zu_find_python(REQUIRED)
  endif()
else()
  set(_zu_python OFF)
  if(NOT PROJECT_IS_TOP_LEVEL OR NOT ZU_BUILD_ADJUST)
    set(_zu_why "parts of the library are left out")
  elseif(CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    set(_zu_why "built with a sanitizer")
  else()
    _zu_find_python(QUIET)
    if(pybind11_FOUND)
      set(_zu_python ON)
      set(_zu_why "Python ${Python_VERSION}, numpy ${Python_NumPy_VERSION}, pybind11 ${pybind11_VERSION}")
    else()
      set(_zu_why "no headers of Python, numpy or pybind11")
    endif()
  endif()
  option(ZU_BUILD_PYTHON "Build the Python module" ${_zu_python})
  message(STATUS "Python module: ${ZU_BUILD_PYTHON} (${_zu_why})")
endif()
