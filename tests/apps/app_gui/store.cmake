# The parameter store, the command handlers, the bridge to the display and the message thread.
add_library(store_fixture OBJECT store_fixture.cpp)
target_link_libraries(store_fixture PUBLIC app_gui_core GTest::gtest)
# Replaces the allocator of the whole program: only for the tests that want that.
add_library(store_memory OBJECT store_memory.cpp)

foreach(name IN ITEMS gui_cfg_check_test gui_cfg_load_test gui_cfg_repair_test gui_cfg_test
                      gui_cfg_audio_test app_model_interface_test)
    app_gui_test(${name} SOURCES ${name}.cpp LIBS store_fixture app_gui_core GTest::gtest_main)
endforeach()
foreach(name IN ITEMS app_gui_bridge_test gui_cfg_memory_test)
    app_gui_test(${name}
        SOURCES ${name}.cpp LIBS store_fixture store_memory app_gui_core GTest::gtest_main)
endforeach()

# Starts itself as the process whose message thread it talks to; the command library finds the
# handlers in it by their exported names.
app_gui_test(message_thread_test SOURCES message_thread_test.cpp LIBS store_fixture app_gui_core)
app_gui_uses_regex(message_thread_test)
set_target_properties(message_thread_test PROPERTIES ENABLE_EXPORTS ON)
# Without a mount namespace it uses the device's real socket addresses.
set_tests_properties(message_thread_test PROPERTIES RESOURCE_LOCK /tmp/ipc)
