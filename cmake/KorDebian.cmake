# The Debian packages, one for each component of the installation:
#
#   libkorX.Y     runtime      the three shared libraries. They have one version and one SONAME version, are released
#                              together and are small, so one package carries them all. A program with services of its
#                              own, or of the portable set alone, leaves the others unused.
#   libkor-dev    development  headers, static libraries, conformance kit, CMake package, pkg-config files, examples
#   korframe      tools        the command-line tool
#   gstreamer1.0-kor   gstreamer   the GStreamer plugin, with KOR_BUILD_GSTREAMER
#   python3-kor   python       the Python package, with KOR_BUILD_PYTHON
if(NOT BUILD_SHARED_LIBS)
  message(FATAL_ERROR "KOR_DEBIAN_PACKAGES needs the shared libraries: set BUILD_SHARED_LIBS to ON.")
endif()
set(KOR_PACKAGE_CONTACT "Kor maintainers <maintainers@kor.invalid>" CACHE STRING "Maintainer named by the packages")

get_target_property(korSoVersion KorYuv420C SOVERSION)
set(korRuntimePackage libkor${korSoVersion})
set(korDevelopmentPackage libkor-dev)
set(korToolsPackage korframe)

# The static libraries consist of the shared ones' objects, which are position-independent anyway. A plain installation
# omits rules that only packages need.
foreach(library KorYuv420 KorYuv420C KorPlatform)
  add_library(${library}Archive STATIC $<TARGET_OBJECTS:${library}>)
  set_target_properties(${library}Archive PROPERTIES OUTPUT_NAME ${library} LINKER_LANGUAGE C)
  install(TARGETS ${library}Archive
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development EXCLUDE_FROM_ALL)
endforeach()
foreach(target IN LISTS korVectorTargets)
  target_sources(KorYuv420Archive PRIVATE $<TARGET_OBJECTS:KorYuv420${target}>)
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${korDevelopmentPackage} COMPONENT development EXCLUDE_FROM_ALL
  REGEX "/examples/CMakeLists\\.txt$" EXCLUDE
  PATTERN archive EXCLUDE)  # the Python package's

# Every package has the project's changelog and a packaging changelog.
find_program(KOR_GZIP gzip REQUIRED)
function(kor_gzip from to)
  execute_process(COMMAND ${KOR_GZIP} --best --no-name --stdout ${from} OUTPUT_FILE ${to} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
set(korPackagingDir ${PROJECT_BINARY_DIR}/debian)
string(TIMESTAMP korPackagingDate "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in ${korPackagingDir}/changelog @ONLY)
kor_gzip(${korPackagingDir}/changelog ${korPackagingDir}/changelog.Debian.gz)
kor_gzip(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${korPackagingDir}/changelog.gz)
foreach(component Runtime Development Tools)
  string(TOLOWER ${component} componentName)
  install(FILES ${korPackagingDir}/changelog.Debian.gz ${korPackagingDir}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${kor${component}Package} COMPONENT ${componentName} EXCLUDE_FROM_ALL)
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/runtime.lintian-overrides.in
  ${korPackagingDir}/overrides/${korRuntimePackage} @ONLY)
install(FILES ${korPackagingDir}/overrides/${korRuntimePackage}
  DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT runtime EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/CompressManuals.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE ${korSourceName})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${KOR_PACKAGE_CONTACT})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Dependencies: between these packages by component, on the system's libraries by what the files need.
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/Kor ${PROJECT_BINARY_DIR}/platform)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

# The first line of each description is its summary; CPack would put the same line before all three.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(korAboutTheLibrary
"Kor converts raw video frames: captures (RGB, YUY2, UYVY, Yuv2, M420,
interleaved chroma) to planar I420 and I444, rotated and flipped on the way;
I420 and I444 back to RGB or packed YUV, dithered on request; and lays one
picture over another. Every machine produces the same bytes.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${korRuntimePackage})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
"Video pixel-format conversions, exact to the bit
${korAboutTheLibrary}
.
This package contains the shared libraries: the conversions for the processor
that they find, the portable conversions, and the default services that
provide their random bytes and dither noise.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${korDevelopmentPackage})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"Video pixel-format conversions, development files
${korAboutTheLibrary}
.
This package contains headers, static libraries, the CMake package,
pkg-config files and examples; and the conformance kit, which checks faster
variants of the conversions against the portable ones.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${korToolsPackage})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION video)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
"Raw video frames on the command line
korframe converts, rotates, renders and blends raw video frames, Y4M clips
and pictures (PNG, JPEG, PPM) with the conversions of the Kor library.")

if(KOR_BUILD_GSTREAMER)
  include(${PROJECT_SOURCE_DIR}/integrations/gstreamer/KorGstreamerDebian.cmake)
endif()
if(KOR_BUILD_PYTHON)
  include(${PROJECT_SOURCE_DIR}/integrations/python/KorPythonDebian.cmake)
endif()
