# Installation: headers, libraries, the CMake package, the pkg-config files, and an uninstall target.
include(CMakePackageConfigHelpers)

install(TARGETS KorYuv420C KorYuv420 KorPlatform KorPlatformInOrder EXPORT KorTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/Kor DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h"
  PATTERN Vector EXCLUDE PATTERN KorYuv420Shapes_.h EXCLUDE)

set(korLibraries yuv420 yuv420-c platform)
if(KOR_BUILD_CONFORMANCE AND TARGET KorConformance)
  install(TARGETS KorConformance EXPORT KorTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  # The installed header is self-contained: its table is generated, because the list of functions is not installed.
  file(READ ${PROJECT_SOURCE_DIR}/conformance/KorConformance.h korHeader)
  kor_functions(korTable "    KorConformanceSHAPE NAME;\n")
  string(REGEX REPLACE "#define KOR_FUNCTION[^\n]*\n#include[^\n]*\n" "${korTable}" korHeader "${korHeader}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/conformance/KorConformance.h)
  file(GENERATE OUTPUT KorConformance.h CONTENT "${korHeader}")
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KorConformance.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
  list(APPEND korLibraries conformance)
  # A C program must link the C++ library that the kit was built with.
  set(korCxxLibrary ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
  list(FILTER korCxxLibrary INCLUDE REGEX "^(stdc\\+\\+|c\\+\\+)$")
  list(TRANSFORM korCxxLibrary PREPEND " -l")
  list(JOIN korCxxLibrary "" korCxxLibrary)
endif()

set(korPackageDir ${CMAKE_INSTALL_LIBDIR}/cmake/Kor)
install(EXPORT KorTargets NAMESPACE Kor:: DESTINATION ${korPackageDir} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/KorConfig.cmake.in KorConfig.cmake
  INSTALL_DESTINATION ${korPackageDir})
write_basic_package_version_file(KorConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KorConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/KorConfigVersion.cmake
  DESTINATION ${korPackageDir} COMPONENT development)

# The .pc files derive the prefix from their own location, so that an installed tree can be moved. Packages stay in the
# system's prefix and name it, because pkg-config then omits the directories that compilers search anyway.
file(RELATIVE_PATH korPrefixFromPc
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
set(korPcPrefix "\${pcfiledir}/${korPrefixFromPc}")
if(KOR_DEBIAN_PACKAGES)
  set(korPcPrefix ${CMAKE_INSTALL_PREFIX})
endif()
set(korPcCflags "$<$<BOOL:${BUILD_SHARED_LIBS}>: -DKOR_SHARED>")
set(korPcServices -lKorPlatform)
if(UNIX AND NOT APPLE)
  # Like the CMake target: the order of the libraries does not matter.
  set(korPcServices
    "-Wl,-u,KorRandomGetBytes,-u,KorTblDitherStd4,--push-state,--no-as-needed,-lKorPlatform,--pop-state")
endif()
foreach(library IN LISTS korLibraries)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/kor-${library}.pc.in kor-${library}.pc.config @ONLY)
  file(GENERATE OUTPUT kor-${library}.pc INPUT ${CMAKE_CURRENT_BINARY_DIR}/kor-${library}.pc.config)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kor-${library}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

if(PROJECT_IS_TOP_LEVEL)
  add_custom_target(uninstall
    COMMAND ${CMAKE_COMMAND} -P ${CMAKE_CURRENT_LIST_DIR}/KorUninstall.cmake
    WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
    VERBATIM)
endif()
