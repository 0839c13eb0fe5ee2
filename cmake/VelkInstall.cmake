include(CMakePackageConfigHelpers)

# The public headers, and only they, under include/velk/.
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/velk" "${PROJECT_BINARY_DIR}/include/velk"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(TARGETS velk EXPORT velk-targets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")

set(_velk_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/velk")
install(EXPORT velk-targets NAMESPACE velk:: DESTINATION "${_velk_cmake_dir}")
export(EXPORT velk-targets NAMESPACE velk:: FILE "${PROJECT_BINARY_DIR}/velk-targets.cmake")

configure_package_config_file(cmake/velk-config.cmake.in
    "${PROJECT_BINARY_DIR}/velk-config.cmake"
    INSTALL_DESTINATION "${_velk_cmake_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/velk-config-version.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/velk-config.cmake"
              "${PROJECT_BINARY_DIR}/velk-config-version.cmake"
        DESTINATION "${_velk_cmake_dir}")

configure_file(cmake/velk.pc.in "${PROJECT_BINARY_DIR}/velk.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/velk.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
