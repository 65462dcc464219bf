# What `cmake --install` puts under the prefix: the library with its public headers, CMake
# package and pkg-config file; the kalmor command with its manual page; the documentation and
# examples.
include(CMakePackageConfigHelpers)

set(kalmor_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kalmor)

install(TARGETS kalmor EXPORT kalmorTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/kalmor DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT kalmorTargets NAMESPACE kalmor:: DESTINATION ${kalmor_cmake_dir})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/kalmorConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/kalmorConfig.cmake
                              INSTALL_DESTINATION ${kalmor_cmake_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kalmorConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kalmorConfig.cmake ${PROJECT_BINARY_DIR}/kalmorConfigVersion.cmake
        DESTINATION ${kalmor_cmake_dir})

# The pkg-config file finds the prefix from where it lies, as the CMake package does, so that
# the install can go under any prefix (as a package's does, under /usr).
file(RELATIVE_PATH pc_prefix_from_pcfiledir /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${CMAKE_CURRENT_LIST_DIR}/kalmor.pc.in ${PROJECT_BINARY_DIR}/kalmor.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kalmor.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS kalmor_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/docs/kalmor.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The README's links stay true: it keeps docs/ beside it.
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs
        PATTERN kalmor.1 EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
