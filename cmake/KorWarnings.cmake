# KorWarnings: the warnings for all of the project's own code. Link it privately.
add_library(KorWarnings INTERFACE)

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  target_compile_options(KorWarnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wcast-qual -Wcast-align -Wformat=2
    -Wnull-dereference -Wdouble-promotion -Wundef -Wvla
    $<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes -Wmissing-prototypes>
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi>)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(KorWarnings INTERFACE
      -Wlogical-op -Wduplicated-cond)
  endif()
  if(KOR_WARNINGS_AS_ERRORS)
    target_compile_options(KorWarnings INTERFACE -Werror)
  endif()
elseif(MSVC)
  target_compile_options(KorWarnings INTERFACE /W4 /permissive-)
endif()
