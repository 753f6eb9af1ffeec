# The committed documentation of the configuration is what the tool prints:
#
#   cmake -DTOOL=configuration_doc -DTEMPLATE=configuration.md.in -DDOCS=docs -DWORK=folder
#         -P generated_docs_test.cmake

foreach(needed TOOL TEMPLATE DOCS WORK)
    if(NOT ${needed})
        message(FATAL_ERROR "-D${needed}= is missing")
    endif()
endforeach()

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
execute_process(COMMAND ${TOOL} ${TEMPLATE} ${WORK} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${TOOL}: ${result}")
endif()

# A schema too many is as wrong as one too few.
file(GLOB generated RELATIVE ${WORK} ${WORK}/configuration.md ${WORK}/schemas/*)
file(GLOB committed RELATIVE ${DOCS} ${DOCS}/configuration.md ${DOCS}/schemas/*)
if(NOT generated)
    message(FATAL_ERROR "${TOOL} wrote nothing")
endif()
if(NOT generated STREQUAL committed)
    message(FATAL_ERROR "generated: ${generated}\ncommitted: ${committed}")
endif()
foreach(name IN LISTS generated)
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${WORK}/${name} ${DOCS}/${name}
        RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${name} is out of date: build the target configuration_docs")
    endif()
endforeach()

foreach(arguments "" "${WORK}/missing.in;${WORK}" "${TEMPLATE};/dev/null/x" "${DOCS}/schemas/../configuration.md;${WORK}")
    execute_process(COMMAND ${TOOL} ${arguments} RESULT_VARIABLE result ERROR_VARIABLE error)
    if(result EQUAL 0 OR error STREQUAL "")
        message(FATAL_ERROR "${TOOL} ${arguments}: has to fail with a message")
    endif()
endforeach()
