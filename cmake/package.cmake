# Debian packages: libzspsc8 (the blocks and their companion), libzspvoice1 (whole voice functions),
# libzspsc-dev (headers, static libraries, CMake package and pkg-config files of both: one package,
# as they share the export set) and zsp (the command-line host and the plug-ins).
#   cpack -G DEB --config build/package/CPackConfig.cmake
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME zspsc)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The zspsc authors <maintainers@zspsc.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The zspsc authors <maintainers@zspsc.example>")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(CPACK_COMPONENTS_ALL runtime voice dev)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzspsc${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)

set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
"Speech coding (G.726, G.722), voice activity detection (GSM-AMR, AMR-WB), DTX
and ISF quantisation, correlation primitives, sub-band echo cancellation, tone
detection and level control behind a plain C interface.
This package holds the shared libraries.")

set(blocks_package "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION}-1)")

set(CPACK_DEBIAN_VOICE_PACKAGE_NAME libzspvoice${ZSPVOICE_SOVERSION})
set(CPACK_DEBIAN_VOICE_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_VOICE_PACKAGE_DEPENDS "${blocks_package}")
set(CPACK_DEBIAN_VOICE_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
set(CPACK_COMPONENT_VOICE_DESCRIPTION
"Whole voice functions for telephony and conferencing: codecs with concealment,
RTP payloads and format parameters, comfort noise, echo cancellation and voice
activity detection behind a plain C interface.
This package holds the shared library.")
set(voice_package "${CPACK_DEBIAN_VOICE_PACKAGE_NAME} (= ${PROJECT_VERSION}-1)")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libzspsc-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${blocks_package}, ${voice_package}")
set(CPACK_COMPONENT_DEV_DESCRIPTION
"Headers, static libraries, CMake package and pkg-config files of the zspsc
speech-coding library and of zspvoice, the whole voice functions built on it.")

if(TARGET zsp)
    list(APPEND CPACK_COMPONENTS_ALL tool)
    set(CPACK_DEBIAN_TOOL_PACKAGE_NAME zsp)
    set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION sound)
    set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${blocks_package}, ${voice_package}")
    set(CPACK_COMPONENT_TOOL_DESCRIPTION
"Codes, detects, levels and cancels echo in audio files with the zspsc
speech-coding library, and writes reports about it. With plug-ins for programs
that load LADSPA.")
endif()

foreach(part runtime voice dev tool)
    string(TOUPPER ${part} upper)
    set(name ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    if(name)
        install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${part})
        install(FILES ${PROJECT_BINARY_DIR}/changelog.Debian.gz
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${part})
    endif()
endforeach()
execute_process(COMMAND gzip -9 -n -c ${PROJECT_SOURCE_DIR}/packaging/changelog
    OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.Debian.gz)

include(CPack)
