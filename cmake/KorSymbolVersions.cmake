# kor_symbol_versions(<target>): on ELF systems, a shared library exports only what <target>.map.in beside its
# CMakeLists.txt names. Every name has a version that changes with the SONAME, so that two generations of the library
# can coexist in one process.
include(CheckLinkerFlag)

function(kor_symbol_versions target)
  get_target_property(type ${target} TYPE)
  if(NOT type STREQUAL "SHARED_LIBRARY")
    return()
  endif()
  get_target_property(soVersion ${target} SOVERSION)
  set(map ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  configure_file(${target}.map.in ${map} @ONLY)

  file(WRITE ${PROJECT_BINARY_DIR}/KorProbe.map "KOR_PROBE { local: *; };\n")
  check_linker_flag(C LINKER:--version-script=${PROJECT_BINARY_DIR}/KorProbe.map KOR_LINKER_TAKES_VERSION_SCRIPTS)
  if(KOR_LINKER_TAKES_VERSION_SCRIPTS)
    target_link_options(${target} PRIVATE LINKER:--version-script=${map})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
  endif()
endfunction()
