# Warnings are for those who work on this library: a parent project never sees them.
add_library(scrivel_warnings INTERFACE)
if(SCRIVEL_IS_TOP_LEVEL)
  target_compile_options(scrivel_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -Wold-style-cast -Woverloaded-virtual)
  option(SCRIVEL_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)
  if(SCRIVEL_WARNINGS_AS_ERRORS)
    target_compile_options(scrivel_warnings INTERFACE -Werror)
  endif()
endif()
