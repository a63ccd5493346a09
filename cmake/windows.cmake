# zspsc.dll and zspcore.dll: names without "lib", exports from module definition files, no time
# stamps, a fixed image base.
configure_file(core/zspsc.rc.in ${PROJECT_BINARY_DIR}/zspsc.rc @ONLY)
target_sources(zspsc PRIVATE ${ZSPSC_MODULE_DEFINITION} ${PROJECT_BINARY_DIR}/zspsc.rc)
target_sources(zspcore PRIVATE companion/zspcore.def)
foreach(target zspsc zspcore)
    set_target_properties(${target} PROPERTIES PREFIX "")
    target_link_options(${target} PRIVATE
        -Wl,--no-insert-timestamp,--image-base,0x180000000)
endforeach()

# Other linkers take a short import library, made from the same module definition.
find_program(ZSPSC_DLLTOOL llvm-dlltool-14 llvm-dlltool)
if(ZSPSC_DLLTOOL)
    add_custom_command(TARGET zspsc POST_BUILD COMMAND ${ZSPSC_DLLTOOL}
        -m i386:x86-64 -d ${ZSPSC_MODULE_DEFINITION} -l ${PROJECT_BINARY_DIR}/zspsc.lib)
    install(FILES ${PROJECT_BINARY_DIR}/zspsc.lib DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT dev)
endif()
