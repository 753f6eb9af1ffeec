# The main window, its pieces, and the application object.
app_gui_test(user_split_test SOURCES user_split_test.cpp gui_main.cpp LIBS app_gui_core)
app_gui_test(border_geometry_test SOURCES border_geometry_test.cpp gui_main.cpp LIBS app_gui_core)
app_gui_test(window_geometry_test SOURCES window_geometry_test.cpp gui_main.cpp LIBS app_gui_core)
app_gui_test(mainwindow_test SOURCES mainwindow_test.cpp gui_main.cpp LIBS app_gui_core)
app_gui_test(mainwindow_events_test SOURCES mainwindow_events_test.cpp gui_main.cpp
    LIBS app_gui_core)
app_gui_test(mainwindow_paint_test SOURCES mainwindow_paint_test.cpp gui_main.cpp
    LIBS app_gui_core)
app_gui_test(encoderapp_test SOURCES encoderapp_test.cpp LIBS app_gui_core)
app_gui_test(border_paint_test SOURCES border_paint_test.cpp screen_main.cpp LIBS app_gui_core)
