# Compares the prototypes of a public header with the list that releases promised.
#   cmake -DCC=... -DHEADER=... -DPREFIX=zsps -DGOLDEN=... -DWORK_DIR=... -P abi_test.cmake
# A wanted change is made by copying the list that a failure names over the promised one.
cmake_minimum_required(VERSION 3.25)
file(MAKE_DIRECTORY ${WORK_DIR})
file(WRITE ${WORK_DIR}/probe.c "#include \"${HEADER}\"\n")
execute_process(COMMAND ${CC} -fsyntax-only -aux-info ${WORK_DIR}/raw.txt ${WORK_DIR}/probe.c
                COMMAND_ERROR_IS_FATAL ANY)
file(STRINGS ${WORK_DIR}/raw.txt lines REGEX " \\*?${PREFIX}[A-Za-z0-9_]+ \\(")
set(prototypes "")
foreach(line IN LISTS lines)
    # What stands before the prototype is the place of the declaration.
    string(REGEX REPLACE "^/\\*[^*]*\\*/ extern " "" line "${line}")
    list(APPEND prototypes "${line}")
endforeach()
list(REMOVE_ITEM prototypes "")
list(SORT prototypes)
list(JOIN prototypes "\n" text)
file(WRITE ${WORK_DIR}/prototypes.txt "${text}\n")
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${WORK_DIR}/prototypes.txt ${GOLDEN}
                RESULT_VARIABLE different)
if(different)
    message(FATAL_ERROR "${WORK_DIR}/prototypes.txt differs from ${GOLDEN}")
endif()
