# The Debian package python3-kor: the Python package for Debian's interpreter, and the example.
set(korPythonPackage python3-kor)
install(FILES ${korPackagingDir}/changelog.Debian.gz ${korPackagingDir}/changelog.gz
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${korPythonPackage} COMPONENT python EXCLUDE_FROM_ALL)
install(PROGRAMS ${PROJECT_SOURCE_DIR}/examples/archive/archive.py
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${korPythonPackage}/examples COMPONENT python EXCLUDE_FROM_ALL)

list(APPEND CPACK_COMPONENTS_ALL python)
math(EXPR korPythonNext "${korPythonMinor} + 1")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME ${korPythonPackage})
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "python3 (>= 3.${korPythonMinor}~), python3 (<< 3.${korPythonNext}), python3-numpy")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS python3-distributed)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_LIST_DIR}/debian/postinst ${CMAKE_CURRENT_LIST_DIR}/debian/prerm)
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
"Video pixel-format conversions, exact to the bit, for Python
${korAboutTheLibrary}
.
This package calls them on NumPy arrays, without copies. It contains the
library; every function runs without the interpreter lock.")
