# Cross building against a Debian sysroot: what armhf.cmake and arm64.cmake have in common. Before they
# include this file they set
#   cross_arch        Debian's name of the architecture
#   cross_processor   CMake's name of the processor
#   cross_qemu        QEMU's user emulator for it
#   cross_triplet     of the compiler and the library folders
#
# APP_GUI_SYSROOT names the sysroot, build/sysroot-<arch> unless told.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${cross_processor})
set(CMAKE_LIBRARY_ARCHITECTURE ${cross_triplet})

set(APP_GUI_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../../build/sysroot-${cross_arch} CACHE PATH
    "What scripts/make-sysroot has made")
cmake_path(ABSOLUTE_PATH APP_GUI_SYSROOT NORMALIZE OUTPUT_VARIABLE cross_sysroot)
# The checks that CMake compiles read this file again, without the cache.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES APP_GUI_SYSROOT)
if(NOT EXISTS ${cross_sysroot}/.app_gui_sysroot)
    message(FATAL_ERROR "${cross_sysroot} is no complete sysroot; make it with\n"
        "    scripts/make-sysroot ${cross_arch} ${cross_sysroot}")
endif()

# cross_tool(VARIABLE PROGRAM PACKAGE): where this machine has a program.
function(cross_tool variable program package)
    find_program(${variable} ${program} NO_CMAKE_FIND_ROOT_PATH)
    if(NOT ${variable})
        message(FATAL_ERROR "${program} is missing: install the package ${package}")
    endif()
    mark_as_advanced(${variable})
endfunction()
cross_tool(CMAKE_CXX_COMPILER ${cross_triplet}-g++ g++-${cross_triplet})
cross_tool(APP_GUI_QEMU ${cross_qemu} qemu-user)
cross_tool(APP_GUI_HOST_CXX g++ g++)

set(CMAKE_SYSROOT ${cross_sysroot})
set(CMAKE_FIND_ROOT_PATH ${cross_sysroot})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${cross_sysroot})
set(ENV{PKG_CONFIG_LIBDIR}
    ${cross_sysroot}/usr/lib/${cross_triplet}/pkgconfig:${cross_sysroot}/usr/share/pkgconfig)

# What runs on the building machine: moc, rcc and lrelease are its own Qt's; what the build has made
# itself runs under QEMU, as the tests do.
execute_process(COMMAND ${APP_GUI_HOST_CXX} -print-multiarch
    OUTPUT_VARIABLE cross_host_triplet OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
set(QT_HOST_PATH /usr)
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/${cross_host_triplet}/cmake)
set(Qt6LinguistTools_DIR ${QT_HOST_PATH_CMAKE_DIR}/Qt6LinguistTools)
# QEMU finds the sysroot's files for most calls by itself, not for the one that looks whether Qt's folder
# of plugins can be read.
set(CMAKE_CROSSCOMPILING_EMULATOR ${APP_GUI_QEMU} -L ${cross_sysroot}
    -E QT_PLUGIN_PATH=${cross_sysroot}/usr/lib/${cross_triplet}/qt6/plugins)
