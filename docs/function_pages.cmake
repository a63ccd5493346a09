# A manual page per function from Doxygen's pages per family, all of them compressed. Every export
# must have its page.
#   cmake -DAWK=... -DGZIP=... -DMAN3=... -DVERSION=... -DROOT=... -P function_pages.cmake
cmake_minimum_required(VERSION 3.25)

file(GLOB families ${MAN3}/zspsc_*.3 ${MAN3}/zspv_*.3 ${MAN3}/zspvoice_*.3)
execute_process(COMMAND ${AWK} -v version=${VERSION} -f ${ROOT}/docs/function_pages.awk ${families}
    COMMAND_ERROR_IS_FATAL ANY)

foreach(list core voice)
    file(STRINGS ${ROOT}/${list}/exports.inc lines REGEX "^ZSPV?_EXPORT")
    foreach(line IN LISTS lines)
        string(REGEX REPLACE "^[A-Z_]+\\(([A-Za-z0-9_]+).*" "\\1" name "${line}")
        if(NOT EXISTS ${MAN3}/${name}.3)
            message(FATAL_ERROR "${name} has no manual page")
        endif()
    endforeach()
endforeach()

execute_process(COMMAND ${GZIP} -9nrf ${MAN3} COMMAND_ERROR_IS_FATAL ANY)
