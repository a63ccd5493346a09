# The thread sanitizer reports every family's state when two threads share it.
#   cmake -DPROGRAM=... -P shared_state_test.cmake
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE families OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" families "${families}")
set(silent "")
foreach(family IN LISTS families)
    execute_process(COMMAND ${PROGRAM} ${family} ERROR_VARIABLE report)
    if(NOT report MATCHES "WARNING: ThreadSanitizer: data race")
        list(APPEND silent ${family})
    endif()
endforeach()
if(silent OR NOT families)
    message(FATAL_ERROR "Two threads on one state, and no report: ${silent}")
endif()
