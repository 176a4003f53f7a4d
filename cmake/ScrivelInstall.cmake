# How a library of this project is installed: relocatable, with a package configuration file that
# find_package reads (the layer is a component of its own) and a pkg-config file for each library.
if(SCRIVEL_INSTALL)
  include(GNUInstallDirs)
  include(CMakePackageConfigHelpers)
  set(SCRIVEL_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/ScrivelXmlGen)
  set(SCRIVEL_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/ScrivelXmlGen)
endif()

# A shared library shows the symbols that the version script names and no other. A pattern can't tell a
# member of a class from a lambda inside it, which is inline.
function(scrivel_export_only target version_script)
  set_target_properties(${target} PROPERTIES VISIBILITY_INLINES_HIDDEN ON)
  target_link_options(${target} PRIVATE LINKER:--version-script=${version_script})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${version_script})
endfunction()

# Installs a library target and its files for find_package and pkg-config. Its headers are the caller's.
# The components are those of the libraries that write logs, unless others are named.
function(scrivel_install target)
  if(NOT SCRIVEL_INSTALL)
    return()
  endif()
  cmake_parse_arguments(arg "" "RUNTIME;DEVELOPMENT" "" ${ARGN})
  if(NOT arg_RUNTIME)
    set(arg_RUNTIME runtime)
    set(arg_DEVELOPMENT development)
  endif()
  target_include_directories(${target} PUBLIC $<INSTALL_INTERFACE:${SCRIVEL_INSTALL_INCLUDEDIR}>)
  # Wherever the folder is moved, its libraries find each other.
  set_target_properties(${target} PROPERTIES INSTALL_RPATH $ORIGIN)
  install(TARGETS ${target} EXPORT ${target}Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${arg_RUNTIME} NAMELINK_COMPONENT ${arg_DEVELOPMENT}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${arg_DEVELOPMENT})
  install(EXPORT ${target}Targets NAMESPACE ScrivelXmlGen::
    DESTINATION ${SCRIVEL_INSTALL_CMAKEDIR} COMPONENT ${arg_DEVELOPMENT})

  set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  file(RELATIVE_PATH prefix_from_pkgconfig /prefix/${pkgconfig_dir} /prefix)
  string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${target}.pc.in ${PROJECT_BINARY_DIR}/${target}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${target}.pc
    DESTINATION ${pkgconfig_dir} COMPONENT ${arg_DEVELOPMENT})
endfunction()

if(SCRIVEL_INSTALL)
  configure_package_config_file(cmake/ScrivelXmlGenConfig.cmake.in ScrivelXmlGenConfig.cmake
    INSTALL_DESTINATION ${SCRIVEL_INSTALL_CMAKEDIR}
    NO_SET_AND_CHECK_MACRO)
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/ScrivelXmlGenConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
  install(FILES
      ${PROJECT_BINARY_DIR}/ScrivelXmlGenConfig.cmake
      ${PROJECT_BINARY_DIR}/ScrivelXmlGenConfigVersion.cmake
    DESTINATION ${SCRIVEL_INSTALL_CMAKEDIR} COMPONENT development)
endif()
