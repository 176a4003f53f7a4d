# Whether the reader and the program scrivel are built. They need libraries that the rest doesn't need.
#
#   -DSCRIVEL_BUILD_TOOL=ON     they are built, or configuring fails
#   -DSCRIVEL_BUILD_TOOL=OFF    they are left out
#   -DSCRIVEL_BUILD_TOOL=AUTO   they are built where the libraries are there
if(SCRIVEL_IS_TOP_LEVEL)
  set(SCRIVEL_BUILD_TOOL AUTO CACHE STRING "Build the reader and the program scrivel: ON, OFF or AUTO")
else()
  set(SCRIVEL_BUILD_TOOL OFF CACHE STRING "Build the reader and the program scrivel: ON, OFF or AUTO")
endif()
set_property(CACHE SCRIVEL_BUILD_TOOL PROPERTY STRINGS AUTO ON OFF)

set(SCRIVEL_HAS_TOOL OFF)
if(SCRIVEL_BUILD_TOOL)
  set(missing)
  foreach(library LibXml2 CLI11 nlohmann_json)
    find_package(${library} QUIET)
    if(NOT ${library}_FOUND)
      list(APPEND missing ${library})
    endif()
  endforeach()
  list(JOIN missing ", " missing)
  if(NOT missing)
    set(SCRIVEL_HAS_TOOL ON)
  elseif(SCRIVEL_BUILD_TOOL STREQUAL "AUTO")
    message(STATUS "The reader and the program scrivel are left out; missing: ${missing}")
  else()
    message(FATAL_ERROR "The program scrivel needs ${missing}; -DSCRIVEL_BUILD_TOOL=OFF leaves it out")
  endif()

  # Each compressed format is optional.
  find_package(ZLIB QUIET)
  find_path(ZSTD_INCLUDE_DIR zstd.h)
  find_library(ZSTD_LIBRARY zstd)
  mark_as_advanced(ZSTD_INCLUDE_DIR ZSTD_LIBRARY)
endif()
