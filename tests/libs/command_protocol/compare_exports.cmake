# cmake -DNM=<nm> -DLIBRARY=<file> -DEXPECTED=<exports.txt> -P compare_exports.cmake
execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY}
                OUTPUT_VARIABLE lines COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "(^|\n)[^ \n]+" actual "${lines}")
string(REPLACE "\n" "" actual "${actual}")
file(STRINGS ${EXPECTED} expected)
list(SORT actual)
list(SORT expected)
if(NOT actual STREQUAL expected)
    message(FATAL_ERROR "exported: ${actual}\nexpected: ${expected}")
endif()
