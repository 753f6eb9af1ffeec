# What every target of the project is compiled with.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
# Each board's flags are its integrator's; -O2 reads better in a debugger than CMake's -O3 and is as
# fast here.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

if(NOT CMAKE_RUNTIME_OUTPUT_DIRECTORY)
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
endif()
if(NOT CMAKE_LIBRARY_OUTPUT_DIRECTORY)
    set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
endif()
if(NOT CMAKE_ARCHIVE_OUTPUT_DIRECTORY)
    set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
endif()

# Diagnostics name source files relative to the repository.
add_compile_options(-Wall -Wextra -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
# Fused multiplications would round positions differently from one processor to another.
add_compile_options(-ffp-contract=off)
# Where `long` has 32 bits: files and folders as the kernel numbers them, with 64.
add_compile_definitions(_FILE_OFFSET_BITS=64)
if(APP_GUI_WERROR)
    add_compile_options(-Werror)
endif()
if(APP_GUI_SANITIZE)
    add_compile_options(-fsanitize=${APP_GUI_SANITIZE} -fno-omit-frame-pointer -g)
    add_link_options(-fsanitize=${APP_GUI_SANITIZE})
endif()

# Loops over pixels are worth their space: unrolled, and as the processor's vectors where it has any.
function(app_gui_pixel_loops)
    set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS $<$<CONFIG:Release>:-O3>)
endfunction()
