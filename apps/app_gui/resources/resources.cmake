# Puts style sheet, cursor pictures and translation below ":/resources" of a target.
#
# The translation is compiled from its .ts by lrelease (package qt6-l10n-tools) and is found without a
# suffix, as ":/resources/tr/encoder_zh".

find_package(Qt6 6.4 REQUIRED COMPONENTS LinguistTools)

set(app_gui_resources_dir ${CMAKE_CURRENT_LIST_DIR})

function(app_gui_add_resources target)
    set(tr ${CMAKE_CURRENT_BINARY_DIR}/tr)
    configure_file(${app_gui_resources_dir}/tr/encoder_zh.qrc ${tr}/encoder_zh.qrc COPYONLY)
    add_custom_command(
        OUTPUT ${tr}/encoder_zh.qm
        COMMAND Qt6::lrelease -silent ${app_gui_resources_dir}/tr/encoder_zh.ts
                -qm ${tr}/encoder_zh.qm
        DEPENDS ${app_gui_resources_dir}/tr/encoder_zh.ts
        VERBATIM)
    add_custom_command(
        OUTPUT ${tr}/qrc_encoder_zh.cpp
        COMMAND Qt6::rcc --name encoder_zh -o ${tr}/qrc_encoder_zh.cpp ${tr}/encoder_zh.qrc
        DEPENDS ${tr}/encoder_zh.qm ${tr}/encoder_zh.qrc
        VERBATIM)
    set_source_files_properties(${tr}/qrc_encoder_zh.cpp PROPERTIES SKIP_AUTOMOC ON)
    target_sources(${target} PRIVATE
        ${app_gui_resources_dir}/resources.qrc
        ${tr}/qrc_encoder_zh.cpp)
    set_target_properties(${target} PROPERTIES AUTORCC ON)
endfunction()
