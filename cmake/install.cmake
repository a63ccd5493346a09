# What "cmake --install" puts where: components runtime (libzspsc and its companion), voice
# (libzspvoice), dev (headers, static libraries, CMake package, pkg-config files) and tool (the host
# zsp and the plug-ins, from their own folders).
include(CMakePackageConfigHelpers)

set(cmake_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zspsc)

install(TARGETS zspsc zspcore EXPORT zspscTargets
    RUNTIME COMPONENT runtime
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT dev
    ARCHIVE COMPONENT dev)
install(TARGETS zspvoice EXPORT zspscTargets
    RUNTIME COMPONENT voice
    LIBRARY COMPONENT voice NAMELINK_COMPONENT dev
    ARCHIVE COMPONENT dev)
install(TARGETS zspsc_static zspcore_static zspvoice_static EXPORT zspscTargets
    ARCHIVE COMPONENT dev)
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(FILES companion/include/zspcore.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)

if(WIN32) # where nothing else says so
    install(FILES LICENSE NOTICE README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)
endif()

install(EXPORT zspscTargets NAMESPACE zspsc:: DESTINATION ${cmake_package_dir} COMPONENT dev)
configure_package_config_file(packaging/zspscConfig.cmake.in
    ${PROJECT_BINARY_DIR}/zspscConfig.cmake INSTALL_DESTINATION ${cmake_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zspscConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zspscConfig.cmake ${PROJECT_BINARY_DIR}/zspscConfigVersion.cmake
    DESTINATION ${cmake_package_dir} COMPONENT dev)

# The prefix is known when something is installed, not before.
set(ZSPSC_PC_PREFIX "@ZSPSC_PC_PREFIX@") # left as it is, for then
foreach(library zspsc zspvoice)
    configure_file(packaging/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc.in @ONLY)
endforeach()
configure_file(cmake/install_pc.cmake.in ${PROJECT_BINARY_DIR}/install_pc.cmake @ONLY)
install(SCRIPT ${PROJECT_BINARY_DIR}/install_pc.cmake COMPONENT dev)
