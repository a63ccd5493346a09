# What "cmake --install" puts where: component runtime (the shared libraries), dev (headers, static
# libraries, CMake package, pkg-config file) and tool (the host zsp, from its own folder).
include(CMakePackageConfigHelpers)

set(cmake_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zspsc)

install(TARGETS zspsc zspcore EXPORT zspscTargets
    RUNTIME COMPONENT runtime
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT dev
    ARCHIVE COMPONENT dev)
install(TARGETS zspsc_static zspcore_static EXPORT zspscTargets ARCHIVE COMPONENT dev)
install(FILES include/zspsc.h companion/include/zspcore.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)

install(EXPORT zspscTargets NAMESPACE zspsc:: DESTINATION ${cmake_package_dir} COMPONENT dev)
configure_package_config_file(packaging/zspscConfig.cmake.in
    ${PROJECT_BINARY_DIR}/zspscConfig.cmake INSTALL_DESTINATION ${cmake_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zspscConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zspscConfig.cmake ${PROJECT_BINARY_DIR}/zspscConfigVersion.cmake
    DESTINATION ${cmake_package_dir} COMPONENT dev)

configure_file(packaging/zspsc.pc.in ${PROJECT_BINARY_DIR}/zspsc.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zspsc.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
