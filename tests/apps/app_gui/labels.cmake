# Tests of the overlay labels and of the base widgets.
app_gui_test(labels_geometry_test SOURCES labels_geometry_test.cpp gui_main.cpp LIBS app_gui_core)
app_gui_test(labels_text_test SOURCES labels_text_test.cpp gui_main.cpp LIBS app_gui_core)
app_gui_test(labels_paint_test SOURCES labels_paint_test.cpp gui_main.cpp LIBS app_gui_core)
app_gui_test(labels_moving_test SOURCES labels_moving_test.cpp gui_main.cpp LIBS app_gui_core)
app_gui_test(labels_osd_test SOURCES labels_osd_test.cpp gui_main.cpp LIBS app_gui_core)
app_gui_test(labels_watermark_test
    SOURCES labels_watermark_test.cpp labels_watermark_painting_test.cpp gui_main.cpp
    LIBS app_gui_core)
# The host's addresses are the test's own.
target_link_options(labels_watermark_test PRIVATE -Wl,--wrap=get_host_lan_para)
app_gui_test(labels_dirty_test SOURCES labels_dirty_test.cpp gui_main.cpp LIBS app_gui_core)
app_gui_test(labels_picture_test SOURCES labels_picture_test.cpp gui_main.cpp LIBS app_gui_core)
app_gui_test(labels_differential_test
    SOURCES labels_differential_test.cpp gui_main.cpp
    LIBS app_gui_core)
target_link_options(labels_differential_test PRIVATE -Wl,--wrap=get_host_lan_para)
app_gui_test(basewidget_test SOURCES basewidget_test.cpp gui_main.cpp LIBS app_gui_core)
set_target_properties(basewidget_test PROPERTIES AUTOMOC ON)
app_gui_test(font_memory_test
    SOURCES font_memory_test.cpp gui_main.cpp
    LIBS app_gui_core Qt6::GuiPrivate)
app_gui_test(label_picture_test SOURCES label_picture_test.cpp screen_main.cpp LIBS app_gui_core)
