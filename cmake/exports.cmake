# Reads the list of exports and writes the version script and the module definition file with their
# exact names.
set(ZSPSC_EXPORT_LIST ${PROJECT_SOURCE_DIR}/core/exports.inc)
set(ZSPSC_VERSION_SCRIPT ${PROJECT_BINARY_DIR}/zspsc.map)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ZSPSC_EXPORT_LIST})

file(STRINGS ${ZSPSC_EXPORT_LIST} lines REGEX "^ZSP_EXPORT")
set(ZSPSC_EXPORTS "")
foreach(line IN LISTS lines)
    string(REGEX REPLACE "^ZSP_EXPORT(_AS)?\\(([A-Za-z0-9_]+).*" "\\2" name "${line}")
    list(APPEND ZSPSC_EXPORTS ${name})
endforeach()
list(JOIN ZSPSC_EXPORTS ";\n        " names)
file(CONFIGURE OUTPUT ${ZSPSC_VERSION_SCRIPT} @ONLY CONTENT
"ZSPSC_8.1 {
    global:
        @names@;
    local:
        *;
};
")

set(ZSPSC_MODULE_DEFINITION ${PROJECT_BINARY_DIR}/zspsc.def)
list(JOIN ZSPSC_EXPORTS "\n    " names)
file(CONFIGURE OUTPUT ${ZSPSC_MODULE_DEFINITION} @ONLY CONTENT
"LIBRARY zspsc.dll
EXPORTS
    @names@
")
