# The compiler, its flags and its speed-ups, for every target of the project.

if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang" OR CMAKE_CXX_COMPILER_VERSION VERSION_LESS 19)
    message(FATAL_ERROR
        "Tarnwick needs clang 19 or newer, and this is ${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}. "
        "GCC 12 compiles legal coroutines into programs that destroy objects twice, without a warning. "
        "Use a preset (cmake --preset dev), which names clang++-19.")
endif()

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
# What has a window is linked into a library that is loaded; of all its names only one is looked for.
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

set(TARNWICK_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize takes them: address,undefined or thread")

# What every target of ours compiles and links with; imported targets stay as they are.
add_library(tarnwick_flags INTERFACE)
target_compile_options(tarnwick_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion
    # Of files that are compiled as one it would blame parameters for names of the other files.
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wshadow>
    -Werror
    -fno-omit-frame-pointer)
target_include_directories(tarnwick_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_link_options(tarnwick_flags INTERFACE -fuse-ld=lld)
if(TARNWICK_SANITIZE)
    target_compile_options(tarnwick_flags INTERFACE -fsanitize=${TARNWICK_SANITIZE} -fno-sanitize-recover=all)
    target_link_options(tarnwick_flags INTERFACE -fsanitize=${TARNWICK_SANITIZE})
endif()

# A precompiled header carries the time stamps of what went into it, which would make every fresh clone miss in
# ccache; without them, and with ccache told that this is meant, a clean build of an unchanged tree takes seconds.
target_compile_options(tarnwick_flags INTERFACE "SHELL:-Xclang -fno-pch-timestamp")
find_program(CCACHE ccache)
if(CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}
        CCACHE_NOHASHDIR=1
        ${CCACHE})
endif()
