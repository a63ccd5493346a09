# Compares a library's interface with the one of the last release, which stands in release/ as
# abidw's description: symbols with their versions, the soname, and all types down to enumerators.
# What a release had may not go or change; something may come.
#
# The exports of zspsc are stubs without debug information. So what is compared is a library with
# the same symbols whose functions are empty and have the header's prototypes; that its symbols are
# the real ones is checked first.
#   cmake -DCC=... -DHEADER=... -DPREFIX=zsps -DLIBRARY=... -DMAP=... -DABIDIFF=... -DRELEASE=...
#         -DIGNORED=... -DWORK_DIR=... [-DABIDW=...] -P abidiff_test.cmake
# With ABIDW it writes the description instead: that is done when something is released.
cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/../run.cmake)

# Names and versions of what a library exports, behind its soname.
function(symbols_of library result)
    run(readelf -d ${library})
    string(REGEX MATCH "SONAME[^\n]*\\[([^]]*)\\]" soname "${output}")
    set(symbols ${CMAKE_MATCH_1})
    run(nm -D --defined-only --with-symbol-versions ${library})
    string(REGEX MATCHALL "[TA] [^\n]+" exports "${output}")
    list(FILTER exports EXCLUDE REGEX "OF_TYPES|ofType_")
    list(SORT exports)
    set(${result} ${symbols} ${exports} PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
set(source ${WORK_DIR}/interface.c)
file(WRITE ${source} "#include \"${HEADER}\"\n")
run(${CC} -fsyntax-only -aux-info ${WORK_DIR}/prototypes.txt ${source})
file(STRINGS ${WORK_DIR}/prototypes.txt lines REGEX " \\*?${PREFIX}[A-Za-z0-9_]+ \\(")
foreach(line IN LISTS lines)
    # What stands before the prototype is the place of the declaration.
    string(REGEX REPLACE "^/\\*[^*]*\\*/ extern (.*\\))[^)]*$" "\\1" prototype "${line}")
    file(APPEND ${source} "${prototype} { __builtin_trap(); }\n")
endforeach()

# And a function per type, since codes are handed over as plain integers.
cmake_path(GET HEADER PARENT_PATH folder)
cmake_path(GET HEADER STEM name)
file(GLOB_RECURSE parts ${folder}/${name}/*.h)
foreach(part IN LISTS parts)
    file(READ ${part} text)
    string(REGEX MATCHALL "\n} Zsp[A-Za-z0-9_]+" ends "${text}")
    foreach(end IN LISTS ends)
        string(REGEX MATCH "Zsp[A-Za-z0-9_]+" type "${end}")
        file(APPEND ${source} "void ofType_${type}(${type}* it) {}\n")
    endforeach()
endforeach()
file(READ ${MAP} map)
file(WRITE ${WORK_DIR}/interface.map "${map}OF_TYPES { global: ofType_*; };\n")

symbols_of(${LIBRARY} real)
list(GET real 0 soname)
set(interface ${WORK_DIR}/interface.so)
run(${CC} -std=c2x -w -g -O0 -shared -fPIC -o ${interface} ${source}
    -Wl,--version-script=${WORK_DIR}/interface.map,-soname,${soname})
symbols_of(${interface} made)
if(NOT real STREQUAL made)
    message(FATAL_ERROR "${LIBRARY} exports\n${real}\nbut ${HEADER} and ${MAP} give\n${made}")
endif()

if(ABIDW)
    run(${ABIDW} --no-corpus-path --no-show-locs --no-comp-dir-path --out-file ${RELEASE}
        ${interface})
else()
    run(${ABIDIFF} --no-added-syms --suppressions ${IGNORED} ${RELEASE} ${interface})
endif()
