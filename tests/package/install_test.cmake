# Installs the build into an empty prefix and uses it as somebody else would: through the CMake
# package and through pkg-config, shared and static, in C and in C++.
#   cmake -DBUILD_DIR=... -DCONSUMER_DIR=... -DWORK_DIR=... -P install_test.cmake

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# CMake package
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/build -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
set(shared_programs shared_c shared_cpp shared_voice_c shared_voice_cpp)
set(static_programs static_c static_cpp static_voice_c static_voice_cpp)
foreach(program IN LISTS shared_programs static_programs)
    run(${WORK_DIR}/build/${program})
    message(STATUS "${program}: ${output}")
endforeach()

# The static programs bring the load routine along and no shared library of ours.
foreach(program IN LISTS static_programs)
    run(nm ${WORK_DIR}/build/${program})
    if(NOT output MATCHES "zspLoadAnchor")
        message(FATAL_ERROR "${program}: the linker dropped the load routine")
    endif()
    run(readelf -d ${WORK_DIR}/build/${program})
    if(output MATCHES "zsp")
        message(FATAL_ERROR "${program} needs a shared library of ours")
    endif()
endforeach()

# pkg-config, which finds the prefix of this installation in the files
file(GLOB_RECURSE pc_file ${prefix}/*/zspsc.pc)
cmake_path(GET pc_file PARENT_PATH pc_dir)
cmake_path(GET pc_dir PARENT_PATH lib_dir)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
foreach(library zspsc zspvoice)
    set(source_zspsc consumer.c)
    set(source_zspvoice voice.c)
    run(pkg-config --variable=prefix ${library})
    string(STRIP "${output}" found)
    if(NOT found STREQUAL prefix)
        message(FATAL_ERROR "${library}.pc says ${found} instead of ${prefix}")
    endif()
    foreach(mode "" "--static")
        run(pkg-config ${mode} --cflags --libs ${library})
        separate_arguments(flags UNIX_COMMAND "${output}")
        if(mode)
            list(PREPEND flags -static)
        endif()
        run(cc ${CONSUMER_DIR}/${source_${library}} -o ${WORK_DIR}/pkg_config ${flags}
            -Wl,-rpath,${lib_dir})
        run(${WORK_DIR}/pkg_config)
        message(STATUS "pkg-config ${mode}: ${output}")
    endforeach()
endforeach()
