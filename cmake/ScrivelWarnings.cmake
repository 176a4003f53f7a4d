# Warnings are for those who work on this library: a parent project never sees them.
add_library(scrivel_warnings INTERFACE)
if(SCRIVEL_IS_TOP_LEVEL)
  target_compile_options(scrivel_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -Wold-style-cast -Woverloaded-virtual)
  # In C++20 g++ 12 takes the insertion in "text" + std::string for a copy that overlaps (its bug 105651).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION MATCHES "^12\\."
     AND CMAKE_CXX_STANDARD GREATER 17)
    target_compile_options(scrivel_warnings INTERFACE -Wno-restrict)
  endif()
  option(SCRIVEL_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)
  if(SCRIVEL_WARNINGS_AS_ERRORS)
    target_compile_options(scrivel_warnings INTERFACE -Werror)
  endif()
endif()
