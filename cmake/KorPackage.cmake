# Packages: the source archive from any build (target package_source), the Debian packages (target package) from a build
# with KOR_DEBIAN_PACKAGES; scripts/package makes both.
set(CPACK_PACKAGE_VENDOR "Kor")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_GENERATOR TGZ)

# The source archive holds the tree without ignored files, builds, and git itself. The patterns match whole paths, so
# they start with the path of this tree.
string(TOLOWER ${PROJECT_NAME} korSourceName)
set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME ${korSourceName}-${PROJECT_VERSION})
string(REGEX REPLACE "([][+.*()^$?|\\])" "\\\\\\1" korTree ${PROJECT_SOURCE_DIR})
string(REGEX REPLACE "([][+.*()^$?|\\])" "\\\\\\1" korBuild ${PROJECT_BINARY_DIR})
set(CPACK_SOURCE_IGNORE_FILES "^${korTree}/(build|demo|\\.git)(/|$)" "^${korBuild}/" "~$" "\\.swp$")

if(KOR_DEBIAN_PACKAGES)
  include(${CMAKE_CURRENT_LIST_DIR}/KorDebian.cmake)
endif()
include(CPack)
