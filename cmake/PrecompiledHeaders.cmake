# The two big headers, the platform's interface types and GoogleTest's, read once per build instead of once per file:
# they are half of what compiling a small file costs. The build without them (preset native) is what shows that every
# file includes what it uses.
#
#   tarvo_precompile(<target> <room>)          a room's library
#   tarvo_precompile(<target> <room> TESTS)    a test program

option(TARVO_PRECOMPILED_HEADERS "Compile the platform's and GoogleTest's headers once, not in every file" OFF)

# A target which only carries the compiled header; others take it over.
function(tarvo_precompiled_header target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "PIC" "" "HEADERS;LINKS")
    set(source ${PROJECT_BINARY_DIR}/${target}.cpp)
    if(NOT EXISTS ${source})
        file(WRITE ${source} "")
    endif()
    add_library(${target} OBJECT ${source})
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ${arg_PIC})
    target_link_libraries(${target} PRIVATE tarvo_flags tarvo_interface_types ${arg_LINKS})
    # What is in the headers does not answer to our warnings, which they get here as if they were our own.
    target_compile_options(${target} PRIVATE -w $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
    target_precompile_headers(${target} PRIVATE ${arg_HEADERS})
endfunction()

# Everything else knows the platform's interfaces little or not at all, and must not meet its macros: they are plain
# words such as near, far and small.
set(tarvo_roomsOfInterfaces interfaces com render dshow support custom accelerator transform module render/d3d11)

function(tarvo_precompile target room)
    if(NOT TARVO_PRECOMPILED_HEADERS)
        return()
    endif()
    # For those who build with a compiler cache: it preprocesses, which g++ otherwise does without these headers.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
    # g++ takes what it inlines from such a header for our own code, and warns of what a library's own checks exclude.
    target_compile_options(${target} PRIVATE
        "$<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overflow;-Wno-stringop-overread>")
    set(types ${PROJECT_SOURCE_DIR}/platform/InterfaceTypes.h)
    set(tests <gmock/gmock.h> <gtest/gtest.h>)
    if("${ARGN}" STREQUAL TESTS)
        string(REGEX REPLACE "^(custom|transform)/.*" "\\1" room "${room}")
        if(room IN_LIST tarvo_roomsOfInterfaces)
            if(NOT TARGET tarvo_precompiled_interface_tests)
                tarvo_precompiled_header(tarvo_precompiled_interface_tests HEADERS ${tests} ${types}
                    LINKS GTest::gmock)
            endif()
            set(source tarvo_precompiled_interface_tests)
        else()
            if(NOT TARGET tarvo_precompiled_tests)
                tarvo_precompiled_header(tarvo_precompiled_tests HEADERS ${tests} LINKS GTest::gmock)
            endif()
            set(source tarvo_precompiled_tests)
        endif()
    elseif(NOT room IN_LIST tarvo_roomsOfInterfaces)
        return()
    else()
        if(NOT TARGET tarvo_precompiled_rooms)
            tarvo_precompiled_header(tarvo_precompiled_rooms PIC HEADERS ${types})
        endif()
        set(source tarvo_precompiled_rooms)
    endif()
    # Its definitions have to be the same.
    target_link_libraries(${target} PRIVATE tarvo_interface_types)
    target_precompile_headers(${target} REUSE_FROM ${source})
endfunction()
