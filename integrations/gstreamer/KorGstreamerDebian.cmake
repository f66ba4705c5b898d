# The Debian package gstreamer1.0-kor: the plugin, where GStreamer finds it.
set(korGstreamerPackage gstreamer1.0-kor)
install(FILES ${korPackagingDir}/changelog.Debian.gz ${korPackagingDir}/changelog.gz
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${korGstreamerPackage} COMPONENT gstreamer EXCLUDE_FROM_ALL)

list(APPEND CPACK_COMPONENTS_ALL gstreamer)
set(CPACK_DEBIAN_GSTREAMER_PACKAGE_NAME ${korGstreamerPackage})
set(CPACK_DEBIAN_GSTREAMER_PACKAGE_SECTION video)
set(CPACK_COMPONENT_GSTREAMER_DESCRIPTION
"Video pixel-format conversions, exact to the bit, for GStreamer
${korAboutTheLibrary}
.
This package contains the elements korconvert, which converts, rotates, flips
and dithers, and korblend, which lays a picture or a second stream over a
video. It contains the library.")
