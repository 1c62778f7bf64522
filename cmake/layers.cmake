# The folders of the library, lowest first, and the check that a file includes only its own folder and
# folders before it:
#
#   cmake -P cmake/layers.cmake
#
# Forward declarations are free. The few ties that run upward are named file by file.
cmake_minimum_required(VERSION 3.25)

# Folders on the same step do not know each other. The last steps are the components beside the core.
set(ZU_LAYERS foundation points numerics rectify transform photo "cad|cloud|project" adjust
    "image|exchange|geo|mesh")

# "<file> -> <header it may include>", paths below zu/.
set(ZU_UPWARD_TIES
  # A point gives its coordinate as a vector.
  "points/point_vector.cpp -> numerics/vector.h"
  # A selection volume is a set of planes.
  "numerics/select_volume3d.h -> rectify/plane.h"
  # A rectification compensates the distortion of its camera and asks its photo for pixels.
  "rectify/zusp_trafo.h -> photo/camera.h"
  "rectify/zusp_trafo_photo.cpp -> photo/photo.h"
  # A ray ends at a scan point, a plain record.
  "photo/photo_rays.cpp -> cloud/scan_point3d.h"
  # A plane through three points is fitted.
  "numerics/plane3d.cpp -> rectify/calc_plane.h"
)

get_filename_component(_root "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
if(NOT ZU_LAYERS_ROOT)
  set(ZU_LAYERS_ROOT ${_root}/zu)
endif()

set(_step 0)
foreach(_layer IN LISTS ZU_LAYERS)
  string(REPLACE "|" ";" _folders "${_layer}")
  foreach(_folder IN LISTS _folders)
    set(_step_of_${_folder} ${_step})
  endforeach()
  math(EXPR _step "${_step} + 1")
endforeach()

# Adds a fault unless the file's folder may include the header's folder.
function(zu_check_include file header)
  string(REGEX REPLACE "/.*" "" _from "${file}")
  string(REGEX REPLACE "/.*" "" _to "${header}")
  if(NOT header MATCHES "/")
    if(header STREQUAL "zu.h")
      set_property(GLOBAL APPEND PROPERTY ZU_FAULTS
                   "zu/${file}: includes the umbrella zu/zu.h, which is for applications only")
    endif()
    return()  # zu/export.h, zu/version.h
  endif()
  if(NOT DEFINED _step_of_${_to})
    set_property(GLOBAL APPEND PROPERTY ZU_FAULTS
                 "zu/${file}: zu/${header} is in no folder of the table in cmake/layers.cmake")
  elseif(_from STREQUAL _to OR _step_of_${_to} LESS _step_of_${_from})
    return()
  elseif("${file} -> ${header}" IN_LIST ZU_UPWARD_TIES)
    set_property(GLOBAL APPEND PROPERTY ZU_TIES_SEEN "${file} -> ${header}")
  else()
    set_property(GLOBAL APPEND PROPERTY ZU_FAULTS
                 "zu/${file}: includes zu/${header} upward, declare the class forward instead")
  endif()
endfunction()

file(GLOB_RECURSE _files RELATIVE ${ZU_LAYERS_ROOT} ${ZU_LAYERS_ROOT}/*.h ${ZU_LAYERS_ROOT}/*.cpp)
set(_checked 0)
foreach(_file IN LISTS _files)
  if(NOT _file MATCHES "/")
    continue()  # the umbrella and the version
  endif()
  math(EXPR _checked "${_checked} + 1")
  string(REGEX REPLACE "/.*" "" _folder "${_file}")
  if(NOT DEFINED _step_of_${_folder})
    set_property(GLOBAL APPEND PROPERTY ZU_FAULTS "zu/${_file}: the folder is not in the table")
    continue()
  endif()
  file(STRINGS ${ZU_LAYERS_ROOT}/${_file} _lines REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<]")
  foreach(_line IN LISTS _lines)
    if(_line MATCHES "[\"<]zu/([^\">]+)[\">]")
      zu_check_include("${_file}" "${CMAKE_MATCH_1}")
    elseif(_line MATCHES "include[ \t]*\"([^\"]+)\"")
      set_property(GLOBAL APPEND PROPERTY ZU_FAULTS
                   "zu/${_file}: \"${CMAKE_MATCH_1}\" is not spelt from the root, \"zu/...\" would be")
    endif()
  endforeach()
endforeach()

get_property(_seen GLOBAL PROPERTY ZU_TIES_SEEN)
if(ZU_LAYERS_ROOT STREQUAL "${_root}/zu")
  foreach(_tie IN LISTS ZU_UPWARD_TIES)
    if(NOT _tie IN_LIST _seen)
      set_property(GLOBAL APPEND PROPERTY ZU_FAULTS
                   "cmake/layers.cmake: the tie ${_tie} is not used, take it off the list")
    endif()
  endforeach()
endif()

get_property(_faults GLOBAL PROPERTY ZU_FAULTS)
if(_faults)
  list(JOIN _faults "\n  " _text)
  message(FATAL_ERROR "Layers:\n  ${_text}")
endif()
list(LENGTH _seen _ties)
message(STATUS "layers: ${_checked} files, ${_ties} upward ties")
