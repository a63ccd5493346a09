# DLLs with names without "lib", exports from module definition files, no time stamps and a fixed
# image base.
function(zspsc_make_dll target definition)
    target_sources(${target} PRIVATE ${definition})
    set_target_properties(${target} PROPERTIES PREFIX "")
    target_link_options(${target} PRIVATE -Wl,--no-insert-timestamp,--image-base,0x180000000)
endfunction()

# The same with a version resource, and with a short import library for other linkers, made from the
# module definition that the list of exports gave.
#   zspsc_make_library_dll(NAME VERSION BUILD TEXT PRODUCT DESCRIPTION)
find_program(ZSPSC_DLLTOOL llvm-dlltool-14 llvm-dlltool)
function(zspsc_make_library_dll name version build text product description)
    set(definition ${PROJECT_BINARY_DIR}/${name}.def)
    zspsc_make_dll(${name} ${definition})
    string(REPLACE "." "," numbers "${version}.${build}")
    configure_file(${PROJECT_SOURCE_DIR}/cmake/dll.rc.in ${PROJECT_BINARY_DIR}/${name}.rc @ONLY)
    target_sources(${name} PRIVATE ${PROJECT_BINARY_DIR}/${name}.rc)
    if(ZSPSC_DLLTOOL)
        add_custom_command(TARGET ${name} POST_BUILD COMMAND ${ZSPSC_DLLTOOL}
            -m i386:x86-64 -d ${definition} -l ${PROJECT_BINARY_DIR}/${name}.lib)
        install(FILES ${PROJECT_BINARY_DIR}/${name}.lib DESTINATION ${CMAKE_INSTALL_LIBDIR}
            COMPONENT dev)
    endif()
endfunction()
