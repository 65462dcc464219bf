# `cpack -G DEB` in the build folder makes kalmor_<version>_<arch>.deb of what `cmake --install`
# puts under /usr. Its Depends are computed from the binaries by dpkg-shlibdeps (dpkg-dev).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kalmor)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "writes the pages of a schematic design as DXF release-12 files")
string(CONCAT CPACK_PACKAGE_DESCRIPTION
    "kalmor writes every page of an electronic design's schematics as a DXF release-12 file, for "
    "mechanical CAD, documentation and manufacturing tools. The package holds libkalmor, which a "
    "schematic-capture application calls through its host-database interface, with its headers, "
    "CMake package and pkg-config file, and the kalmor command, which exports JSON design "
    "documents.")
set(CPACK_PACKAGE_CONTACT "kalmor maintainers <kalmor@localhost>"
    CACHE STRING "The package's Maintainer field")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Installs run ldconfig, and other packages can depend on the library by its soname.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
include(CPack)
