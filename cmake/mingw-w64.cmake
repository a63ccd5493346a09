# Toolchain: Windows x86-64 with Debian's mingw-w64 GCC; programs run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_ASM_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
# Where Debian's cross-built libraries are, and those of packaging/windows_libraries.sh.
cmake_path(SET windows_libraries NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../build/windows-libraries)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${windows_libraries})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine.sh)
# This compiler's interprocedural register allocation loses r10 across a recursive local function
# (seen in std::uniform_int_distribution). Vector moves on the stack need not be aligned.
set(CMAKE_C_FLAGS_INIT "-fno-ipa-ra -Wa,-muse-unaligned-vector-move")
set(CMAKE_CXX_FLAGS_INIT "-fno-ipa-ra -Wa,-muse-unaligned-vector-move")
# No DLLs of the compiler beside the programs.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
