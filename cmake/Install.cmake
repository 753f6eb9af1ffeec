# What `cmake --install` puts where. Components: runtime (what a board needs), dev (what programs
# that use the libraries are built with), tools (the virtual device), doc.

include(CMakePackageConfigHelpers)

# Below /usr the loader finds the libraries by itself; elsewhere the executables tell it.
set(install_rpath "")
if(NOT CMAKE_INSTALL_PREFIX MATCHES "^/(usr)?/?$")
    file(RELATIVE_PATH lib_from_bin ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set(install_rpath "$ORIGIN/${lib_from_bin}")
    set_target_properties(record_codec command_protocol stream_guard PROPERTIES
        INSTALL_RPATH "$ORIGIN")
endif()
set_target_properties(app_gui app_guictl vdevice PROPERTIES INSTALL_RPATH "${install_rpath}")

install(TARGETS app_gui app_guictl
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(TARGETS record_codec command_protocol stream_guard
    EXPORT app_gui_targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT runtime NAMELINK_COMPONENT dev)
install(TARGETS vdevice
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
# Preloaded by its path and no library to link with: not among those of the loader.
install(TARGETS fbemu
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/app_gui COMPONENT tools)

foreach(library record_codec command_protocol stream_guard)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/libs/${library}/include/
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev FILES_MATCHING PATTERN "*.h")
endforeach()

# find_package(app_gui) offers app_gui::record_codec, app_gui::command_protocol and
# app_gui::stream_guard.
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/app_gui)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/app_gui-config.cmake.in
    ${PROJECT_BINARY_DIR}/app_gui-config.cmake
    INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/app_gui-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(EXPORT app_gui_targets
    NAMESPACE app_gui:: FILE app_gui-targets.cmake
    DESTINATION ${package_folder} COMPONENT dev)
install(FILES
    ${PROJECT_BINARY_DIR}/app_gui-config.cmake
    ${PROJECT_BINARY_DIR}/app_gui-config-version.cmake
    DESTINATION ${package_folder} COMPONENT dev)

# The sample device: to copy to /mnt/usr/config and change, and what vdevice starts with.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/config/
    DESTINATION ${CMAKE_INSTALL_DATADIR}/app_gui/config
    COMPONENT runtime FILES_MATCHING PATTERN "*.json")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/schemas
    DESTINATION ${CMAKE_INSTALL_DATADIR}/app_gui
    COMPONENT runtime FILES_MATCHING PATTERN "*.json")

install(FILES ${PROJECT_SOURCE_DIR}/docs/app_gui.8
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT runtime)
install(FILES ${PROJECT_SOURCE_DIR}/docs/app_guictl.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
install(FILES ${PROJECT_SOURCE_DIR}/docs/vdevice.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
install(FILES
    ${PROJECT_SOURCE_DIR}/README.md
    ${PROJECT_SOURCE_DIR}/CHANGELOG.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs
    DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT doc FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN "schemas" EXCLUDE)

# app_guictl writes its completions itself. A cross build has to be able to run it (an emulator);
# one that is not, and one with sanitizers, goes without them.
if((NOT CMAKE_CROSSCOMPILING OR CMAKE_CROSSCOMPILING_EMULATOR) AND NOT APP_GUI_SANITIZE)
    set(completions "")
    foreach(row
            "bash app_guictl bash-completion/completions"
            "zsh _app_guictl zsh/site-functions"
            "fish app_guictl.fish fish/vendor_completions.d")
        string(REPLACE " " ";" row "${row}")
        list(GET row 0 shell)
        list(GET row 1 name)
        list(GET row 2 folder)
        set(completion ${PROJECT_BINARY_DIR}/completions/${name})
        add_custom_command(OUTPUT ${completion}
            COMMAND app_guictl completion ${shell} > ${completion}
            DEPENDS app_guictl VERBATIM)
        install(FILES ${completion}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder} COMPONENT runtime)
        list(APPEND completions ${completion})
    endforeach()
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/completions)
    add_custom_target(completions ALL DEPENDS ${completions})
endif()
