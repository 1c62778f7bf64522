# A component beside the core: library zu_<name>, target zu::<name>, a package component of its own.
# Headers and sources are added by the caller; its export.h has the mark of what is exported.
function(zu_add_component name)
  set(_target zu_${name})
  add_library(${_target})
  add_library(zu::${name} ALIAS ${_target})
  target_sources(${_target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR})
  target_link_libraries(${_target} PUBLIC zu::zu PRIVATE $<BUILD_INTERFACE:zu_options>)
  target_include_directories(${_target} PRIVATE ${PROJECT_SOURCE_DIR})
  set_target_properties(${_target} PROPERTIES EXPORT_NAME ${name} INSTALL_RPATH "$ORIGIN"
                        VERIFY_INTERFACE_HEADER_SETS ON VERSION ${PROJECT_VERSION}
                        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  if(BUILD_SHARED_LIBS)
    string(TOUPPER ${name} _upper)
    target_compile_definitions(${_target} PRIVATE ZU_${_upper}_BUILDING)
    if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
      set(_map ${PROJECT_SOURCE_DIR}/cmake/exports.map)
      target_link_options(${_target} PRIVATE "LINKER:--version-script=${_map}")
      set_target_properties(${_target} PROPERTIES LINK_DEPENDS ${_map})
    endif()
  endif()
  set_property(GLOBAL APPEND PROPERTY ZU_COMPONENTS ${name})
endfunction()
