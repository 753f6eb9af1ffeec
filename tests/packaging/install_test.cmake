# Installs a build into an empty folder, runs what came out from there, and builds a program of
# another project against it:
#
#   cmake -DBUILD=build -DWORK=scratch -DBINDIR=bin -DLIBDIR=lib -DCONSUMER=consumer
#         -DGENERATOR=Ninja -DCOMPILER=c++ -P install_test.cmake

set(prefix ${WORK}/prefix)
file(REMOVE_RECURSE ${WORK})

# run(COMMAND...): leaves what it printed in `printed`.
function(run)
    execute_process(COMMAND ${ARGV}
        OUTPUT_VARIABLE text ERROR_VARIABLE text RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        list(JOIN ARGV " " command)
        message(FATAL_ERROR "${command}: ${result}\n${text}")
    endif()
    set(printed "${text}" PARENT_SCOPE)
endfunction()

# expect_component(NAME FILES...): installs one component and wants these files among its own.
function(expect_component component)
    run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix} --component ${component})
    foreach(name IN LISTS ARGN)
        if(NOT EXISTS ${prefix}/${name})
            message(SEND_ERROR "component ${component} lacks ${name}")
        endif()
    endforeach()
endfunction()

expect_component(runtime
    ${BINDIR}/app_gui
    ${BINDIR}/app_guictl
    ${LIBDIR}/librecord_codec.so.1
    ${LIBDIR}/libcommand_protocol.so.1
    ${LIBDIR}/libstream_guard.so.1
    share/app_gui/config/capability_sets/DeviceCapabilitySet.json
    share/app_gui/config/default_parameters/WatermarkOSDParameters.json
    share/app_gui/schemas/WatermarkOSDParameters.schema.json
    share/bash-completion/completions/app_guictl
    share/fish/vendor_completions.d/app_guictl.fish
    share/man/man1/app_guictl.1
    share/man/man8/app_gui.8
    share/zsh/site-functions/_app_guictl)
foreach(name ${LIBDIR}/librecord_codec.so include ${BINDIR}/vdevice ${LIBDIR}/app_gui)
    if(EXISTS ${prefix}/${name})
        message(SEND_ERROR "${name} is nothing for a board")
    endif()
endforeach()
expect_component(dev
    include/command_protocol/command_protocol.h
    include/record_codec/record_codec.h
    include/stream_guard/stream_guard.h
    ${LIBDIR}/librecord_codec.so
    ${LIBDIR}/libcommand_protocol.so
    ${LIBDIR}/libstream_guard.so
    ${LIBDIR}/cmake/app_gui/app_gui-config.cmake)
expect_component(tools
    ${BINDIR}/vdevice
    ${LIBDIR}/app_gui/libfbemu.so
    share/man/man1/vdevice.1)
expect_component(doc share/doc/app_gui/README.md share/doc/app_gui/docs/protocol.md)

unset(ENV{LD_LIBRARY_PATH})
run(${prefix}/${BINDIR}/app_guictl list)
if(NOT printed MATCHES "WatermarkOSDParameter")
    message(SEND_ERROR "the installed app_guictl printed:\n${printed}")
endif()
run(${prefix}/${BINDIR}/vdevice stay --help)
foreach(place ${prefix}/${LIBDIR}/app_gui/libfbemu.so ${prefix}/share/app_gui/config)
    string(FIND "${printed}" "${place}" at)
    if(at EQUAL -1)
        message(SEND_ERROR "the installed vdevice does not find ${place}:\n${printed}")
    endif()
endforeach()

run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK}/consumer -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK}/consumer)
run(${WORK}/consumer/consumer
    ${prefix}/share/app_gui/config/capability_sets/VideoOutputInterfaces.json)
if(NOT printed MATCHES "HDMI1.*-32601")
    message(SEND_ERROR "the other project's program printed:\n${printed}")
endif()
file(REMOVE_RECURSE ${WORK})
