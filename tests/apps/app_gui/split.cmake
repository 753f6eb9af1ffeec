# Included by CMakeLists.txt beside this file.
app_gui_test(wnd_split_test SOURCES wnd_split_test.cpp LIBS app_gui_core GTest::gtest_main)
app_gui_test(wnd_split_placing_test SOURCES wnd_split_placing_test.cpp
             LIBS app_gui_core GTest::gtest_main)
app_gui_test(colors_test SOURCES colors_test.cpp LIBS app_gui_core GTest::gtest_main)
