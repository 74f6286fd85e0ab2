# tarnwick_module(NAME SOURCES... [PCH header])
#
# One of our own libraries, with the project's flags and its small precompiled header.
function(tarnwick_module name)
    cmake_parse_arguments(MODULE "" "PCH" "SOURCES;LINK" ${ARGN})
    add_library(${name} STATIC ${MODULE_SOURCES})
    target_link_libraries(${name} PUBLIC tarnwick_flags ${MODULE_LINK})
    if(MODULE_PCH)
        target_precompile_headers(${name} PRIVATE ${MODULE_PCH})
    endif()
endfunction()

# tarnwick_sources(VARIABLE DIRECTORY)
#
# Every source file below the folder. A folder shows the architecture, so what lies in it belongs to it.
function(tarnwick_sources variable directory)
    file(GLOB_RECURSE found CONFIGURE_DEPENDS ${directory}/*.cpp)
    set(${variable} ${found} PARENT_SCOPE)
endfunction()
