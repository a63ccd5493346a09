# Version numbers have one home, the top CMakeLists.txt. What cannot be made from it there says the
# same: the macros of the public headers, the changelog of the packages, the manual pages.
#   cmake -DROOT=... -DVERSION=8.1.1 -DVOICE_VERSION=1.0.0 -P version_test.cmake
cmake_minimum_required(VERSION 3.25)

set(faults "")

function(expect_version file version pattern)
    file(READ ${ROOT}/${file} text)
    string(REGEX MATCHALL "${pattern}" found "${text}")
    string(REGEX MATCHALL "[0-9]+" found "${found}")
    list(JOIN found "." found)
    if(NOT found STREQUAL version)
        set(faults "${faults}\n    ${file}: ${found} instead of ${version}" PARENT_SCOPE)
    endif()
endfunction()

set(number "[0-9]+")
expect_version(include/zspsc/types.h ${VERSION} "ZSPSC_VERSION_(MAJOR|MINOR|PATCH) ${number}")
expect_version(include/zspvoice/version.h ${VOICE_VERSION} "ZSPVOICE_VERSION_(MAJOR|MINOR|PATCH) ${number}")
expect_version(debian/changelog ${VERSION} "^zspsc \\(${number}\\.${number}\\.${number}")
expect_version(docs/man/zsp.1 ${VERSION} "\"zspsc ${number}\\.${number}\\.${number}\"")
if(faults)
    message(FATAL_ERROR "Versions that differ from CMakeLists.txt:${faults}")
endif()
