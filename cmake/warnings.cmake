# Interface target with the warnings of this project, and the sanitizers when asked for.
add_library(zspsc_warnings INTERFACE)
target_compile_options(zspsc_warnings INTERFACE
    $<$<COMPILE_LANGUAGE:C,CXX>:-Wall;-Wextra;-Wconversion;-Wsign-conversion;-Wshadow>
    $<$<AND:$<COMPILE_LANGUAGE:C,CXX>,$<BOOL:${ZSPSC_WERROR}>>:-Werror>)

if(ZSPSC_SANITIZE)
    add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-fsanitize=${ZSPSC_SANITIZE}>
                        $<$<COMPILE_LANGUAGE:C,CXX>:-fno-sanitize-recover=all>
                        $<$<COMPILE_LANGUAGE:C,CXX>:-fno-omit-frame-pointer>)
    if(CMAKE_CXX_COMPILER_ID MATCHES Clang) # whose checks of these want a C++ runtime in C programs
        add_compile_options(-fno-sanitize=function,vptr)
        if(ZSPSC_SANITIZE MATCHES address) # as GCC says it
            add_compile_definitions(__SANITIZE_ADDRESS__)
        endif()
    endif()
    if(ZSPSC_SANITIZE MATCHES thread) # which sees calls, but not what the compiler makes of them
        add_compile_options(-fno-builtin-memcpy -fno-builtin-memmove -fno-builtin-memset)
    endif()
    if(ZSPSC_SANITIZE MATCHES memory)
        # What the C++ runtime writes counts as unwritten: of its templates as little as can be is
        # taken from there, and the rest from headers.
        add_compile_definitions($<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_EXTERN_TEMPLATE=0>)
        add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-fsanitize-memory-track-origins>)
    endif()
    add_compile_definitions($<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_ASSERTIONS>)
    add_link_options(-fsanitize=${ZSPSC_SANITIZE})
endif()
