# Compares what a binary exports with its list, so that neither a function goes missing nor another
# one slips out:
#
#   cmake -DNM=nm -DBINARY=librecord_codec.so -DEXPORTS=exports.txt -P exports_test.cmake
#
# A line of the list is a C name or a qualified C++ name without parameters; "#" starts a comment.
# Not compared: what the linker puts into every binary, and variables of other libraries that an
# executable holds a copy of (their names carry a version, "stdout@GLIBC_2.2.5").

set(from_linker
    "^(_init|_fini|_start|_edata|_end|__bss_start|__bss_start__|_bss_end__|__bss_end__|__end__|__data_start|data_start|__dso_handle|_IO_stdin_used|main)$")

foreach(needed NM BINARY EXPORTS)
    if(NOT ${needed})
        message(FATAL_ERROR "-D${needed}= is missing")
    endif()
endforeach()

execute_process(COMMAND ${NM} -D -C --defined-only --format=posix ${BINARY}
    OUTPUT_VARIABLE symbols RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${NM} ${BINARY}: ${result}")
endif()
string(REGEX REPLACE "\\[abi:[A-Za-z0-9_]+\\]" "" symbols "${symbols}")
# Brackets would hide semicolons from CMake's lists.
string(REGEX REPLACE "[][;]" "_" symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")

set(actual "")
foreach(symbol IN LISTS symbols)
    string(REGEX REPLACE "[( ].*" "" name "${symbol}")
    if(name AND NOT symbol MATCHES "^[^ ]*@" AND NOT name MATCHES "${from_linker}")
        list(APPEND actual "${name}")
    endif()
endforeach()
file(STRINGS ${EXPORTS} expected REGEX "^[^#]")
list(REMOVE_DUPLICATES actual)
list(LENGTH expected expected_count)
if(expected_count EQUAL 0)
    message(FATAL_ERROR "${EXPORTS} is empty")
endif()

set(missing ${expected})
list(REMOVE_ITEM missing ${actual})
set(surplus ${actual})
list(REMOVE_ITEM surplus ${expected})
if(missing OR surplus)
    list(JOIN missing "\n  " missing)
    list(JOIN surplus "\n  " surplus)
    message(FATAL_ERROR "not exported:\n  ${missing}\nexported without being listed:\n  ${surplus}")
endif()
message(STATUS "${expected_count} exported names agree")
