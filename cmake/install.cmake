# Installs core and components: headers, CMake package (find_package(zu COMPONENTS ...), targets zu::zu,
# zu::<component>), pkg-config files.
include(CMakePackageConfigHelpers)

install(TARGETS zu EXPORT zu-targets FILE_SET HEADERS
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
set(_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zu)
install(EXPORT zu-targets NAMESPACE zu:: DESTINATION ${_package_dir})
get_property(_components GLOBAL PROPERTY ZU_COMPONENTS)
foreach(_component IN LISTS _components)
  install(TARGETS zu_${_component} EXPORT zu-${_component}-targets FILE_SET HEADERS
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(EXPORT zu-${_component}-targets NAMESPACE zu:: DESTINATION ${_package_dir})
endforeach()
configure_package_config_file(cmake/zu-config.cmake.in ${PROJECT_BINARY_DIR}/zu-config.cmake
                              INSTALL_DESTINATION ${_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zu-config-version.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zu-config.cmake ${PROJECT_BINARY_DIR}/zu-config-version.cmake
        DESTINATION ${_package_dir})

# For zu examples, which looks beside the program.
if(ZU_BUILD_APPS)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/samples DESTINATION ${CMAKE_INSTALL_DATADIR}/zu)
endif()

# The prefix is found from the place of the file, so that an installed tree can be moved.
file(RELATIVE_PATH ZU_PC_PREFIX ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig
     ${CMAKE_INSTALL_PREFIX})
set(ZU_PC_PREFIX "\${pcfiledir}/${ZU_PC_PREFIX}")
set(ZU_PC_STATIC_LIBS)
set(ZU_PC_STATIC_CFLAGS)
if(NOT BUILD_SHARED_LIBS)
  set(ZU_PC_STATIC_LIBS " ${OpenMP_CXX_FLAGS}")
  set(ZU_PC_STATIC_CFLAGS " -DZU_STATIC")
endif()
configure_file(cmake/zu.pc.in ${PROJECT_BINARY_DIR}/zu.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zu.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
foreach(_component IN LISTS _components)
  configure_file(cmake/zu-component.pc.in ${PROJECT_BINARY_DIR}/zu-${_component}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/zu-${_component}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
