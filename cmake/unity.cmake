# ZU_UNITY: sources are compiled in groups, for builds from nothing: what headers and templates cost
# is paid once a group. Files of one group see each other's file-local names, so two files that
# have one in common never share a group.
#
# Groups are found when cmake runs: run it again where a new name meets one of its group. A file that
# must be an object of its own has SKIP_UNITY_BUILD_INCLUSION set.

set(_zu_unity_files 8)      # of a group, at most
set(_zu_unity_bytes 90000)  # of its files together, so that one group does not keep the others waiting

# The names of functions, types and constants that begin a line of FILE.
function(_zu_unity_names file result)
  file(READ ${file} _text)
  # What separates and brackets lists of this language is not needed to find a name.
  string(REPLACE ";" " =" _text "\n${_text}")
  string(REGEX REPLACE "[][\\\\]" " " _text "${_text}")
  string(REGEX MATCHALL
         "\n(struct|class|enum|enum class|union|using) +[A-Za-z_0-9]+|\n[a-z][A-Za-z_0-9:<>,&* ]*[ &*][A-Za-z_0-9]+ *[({=]|\n[A-Z][A-Za-z_0-9:<>,&* ]*[ &*][A-Za-z_0-9]+ *[({=]"
         _found "${_text}")
  set(_names)
  foreach(_one IN LISTS _found)
    if(NOT _one MATCHES "\n(namespace|TEST|template|return) *|::[A-Za-z_0-9]+ *[(]")
      string(REGEX MATCH "[A-Za-z_0-9]+ *[({=]?$" _name "${_one}")
      string(REGEX REPLACE " *[({=]$" "" _name "${_name}")
      list(APPEND _names ${_name})
    endif()
  endforeach()
  # One line may have several constants.
  string(REGEX MATCHALL "\n(constexpr|const) [^\n]*" _lines "${_text}")
  string(REGEX MATCHALL "[A-Za-z_][A-Za-z_0-9]* *=" _found "${_lines}")
  list(TRANSFORM _found REPLACE " *=$" "")
  list(APPEND _names ${_found})
  list(REMOVE_DUPLICATES _names)
  set(${result} "${_names}" PARENT_SCOPE)
endfunction()

# Gives the sources of TARGET their groups: each the first that has room and none of its names.
function(zu_unity target)
  if(NOT ZU_UNITY)
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  # A file that is included may well name what is local to it.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  get_target_property(_sources ${target} SOURCES)
  get_target_property(_folder ${target} SOURCE_DIR)
  set(_last -1)
  foreach(_source IN LISTS _sources)
    if(NOT _source MATCHES "\\.cpp$")
      continue()
    endif()
    cmake_path(ABSOLUTE_PATH _source BASE_DIRECTORY ${_folder} NORMALIZE OUTPUT_VARIABLE _path)
    get_source_file_property(_alone ${_path} TARGET_DIRECTORY ${target} SKIP_UNITY_BUILD_INCLUSION)
    if(_alone)
      continue()
    endif()
    _zu_unity_names(${_path} _names)
    file(SIZE ${_path} _size)
    set(_group -1)
    foreach(_g RANGE 0 ${_last})
      if(_last EQUAL -1 OR _files_${_g} GREATER_EQUAL _zu_unity_files)
        continue()
      endif()
      math(EXPR _sum "${_bytes_${_g}} + ${_size}")
      if(_sum GREATER _zu_unity_bytes)
        continue()
      endif()
      set(_both ${_names_${_g}} ${_names})
      list(LENGTH _both _before)
      list(REMOVE_DUPLICATES _both)
      list(LENGTH _both _after)
      if(_before EQUAL _after)
        set(_group ${_g})
        break()
      endif()
    endforeach()
    if(_group EQUAL -1)
      math(EXPR _last "${_last} + 1")
      set(_group ${_last})
      set(_files_${_group} 0)
      set(_bytes_${_group} 0)
      set(_names_${_group})
    endif()
    math(EXPR _files_${_group} "${_files_${_group}} + 1")
    math(EXPR _bytes_${_group} "${_bytes_${_group}} + ${_size}")
    list(APPEND _names_${_group} ${_names})
    set_source_files_properties(${_path} TARGET_DIRECTORY ${target} PROPERTIES UNITY_GROUP g${_group})
  endforeach()
  math(EXPR _groups "${_last} + 1")
  list(LENGTH _sources _count)
  message(STATUS "Unity: ${target}: ${_count} sources in ${_groups} groups")
endfunction()
