# Compiles and runs the program on the first page of the public header, as it stands there.
#   cmake -DCC=... -DROOT=... -DLIBRARY=libzspsc.so -DWORK_DIR=... -P header_program_test.cmake
cmake_minimum_required(VERSION 3.25)

file(STRINGS ${ROOT}/include/zspsc.h lines)
set(program "")
set(inside FALSE)
foreach(line IN LISTS lines)
    if(line MATCHES "@endcode")
        break()
    endif()
    if(inside)
        string(REGEX REPLACE "^ \\* ?" "" line "${line}")
        string(APPEND program "${line}\n")
    endif()
    if(line MATCHES "@code")
        set(inside TRUE)
    endif()
endforeach()
file(WRITE ${WORK_DIR}/program.c "${program}")
cmake_path(GET LIBRARY PARENT_PATH library_dir)
execute_process(COMMAND ${CC} -std=c99 -Wall -Wextra -Werror -I${ROOT}/include program.c ${LIBRARY}
        -Wl,-rpath,${library_dir} -o program
    WORKING_DIRECTORY ${WORK_DIR} COMMAND_ERROR_IS_FATAL ANY)

string(REPEAT "speech, more or less" 100 input) # 1000 samples
file(WRITE ${WORK_DIR}/speech.raw "${input}")
execute_process(COMMAND ${WORK_DIR}/program INPUT_FILE ${WORK_DIR}/speech.raw
    OUTPUT_FILE ${WORK_DIR}/speech.g726 COMMAND_ERROR_IS_FATAL ANY)
file(SIZE ${WORK_DIR}/speech.g726 size)
if(NOT size EQUAL 1000)
    message(FATAL_ERROR "${size} code words of 1000 samples")
endif()
