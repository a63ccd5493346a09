# Reads a list of exports and writes, with their exact names, a version script and a module
# definition file: NAME.map and NAME.def in the build directory.
function(zspsc_write_export_files name version list)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
    file(STRINGS ${list} lines REGEX "^ZSPV?_EXPORT")
    set(exports "")
    foreach(line IN LISTS lines)
        string(REGEX REPLACE "^ZSPV?_EXPORT(_AS)?\\(([A-Za-z0-9_]+).*" "\\2" export "${line}")
        list(APPEND exports ${export})
    endforeach()
    list(JOIN exports ";\n        " names)
    file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/${name}.map @ONLY CONTENT
"@version@ {
    global:
        @names@;
    local:
        *;
};
")
    list(JOIN exports "\n    " names)
    file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/${name}.def @ONLY CONTENT
"LIBRARY @name@.dll
EXPORTS
    @names@
")
endfunction()
