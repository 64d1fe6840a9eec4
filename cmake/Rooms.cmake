# Functions for the CMakeLists.txt of a room, of its tests and of a program.
#
#   tarvo_room(<room> SOURCES <file>… [LINKS <target>…])      static library tarvo_<room>
#   tarvo_test(<room> SOURCES <file>… [LINKS <target>…])      GoogleTest program test_<room>, known to ctest
#   tarvo_program(<name> SOURCES <file>… [LINKS <target>…])   executable <name>
#
# In target names the slashes and dashes of a room become underscores: render/reference is tarvo_render_reference.
# Includes are written from the root of the repository. Linking a room that the table does not allow is an error.

set(tarvo_roomsFile ${CMAKE_CURRENT_LIST_DIR}/rooms.txt)
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${tarvo_roomsFile})

# Reads the table into tarvo_tier_<room> and tarvo_rules_<room>.
file(STRINGS ${tarvo_roomsFile} tarvo_roomLines REGEX "^[a-z]")
foreach(line IN LISTS tarvo_roomLines)
    separate_arguments(words UNIX_COMMAND "${line}")
    list(POP_FRONT words room tier)
    if(NOT tier MATCHES "^[0-9]+$")
        message(FATAL_ERROR "${tarvo_roomsFile}: no tier in \"${line}\"")
    endif()
    set(tarvo_tier_${room} ${tier})
    set(tarvo_rules_${room} "${words}")
endforeach()

# The room in the table which a folder belongs to.
function(tarvo_room_of folder result)
    while(NOT "${folder}" STREQUAL "" AND NOT DEFINED "tarvo_tier_${folder}")
        if(NOT folder MATCHES "/")
            message(FATAL_ERROR "${folder} is no room of ${tarvo_roomsFile}")
        endif()
        get_filename_component(folder "${folder}" DIRECTORY)
    endwhile()
    set(${result} "${folder}" PARENT_SCOPE)
endfunction()

function(tarvo_target_name prefix name result)
    string(REGEX REPLACE "[^A-Za-z0-9]" "_" clean "${name}")
    set(${result} ${prefix}_${clean} PARENT_SCOPE)
endfunction()

# Stops the configuration when a room links one it must not know. Targets that are no rooms pass here: what a room
# includes is the house test's business.
function(tarvo_check_links folder)
    tarvo_room_of(${folder} room)
    if("anything" IN_LIST tarvo_rules_${room})
        return()
    endif()
    foreach(link IN LISTS ARGN)
        if(NOT TARGET ${link})
            if(link MATCHES "^tarvo_")
                message(FATAL_ERROR "${folder} links ${link}, which does not exist (yet)")
            endif()
            continue()
        endif()
        get_target_property(linkedRoom ${link} TARVO_ROOM)
        if(NOT linkedRoom OR linkedRoom STREQUAL room)
            continue()
        endif()
        set(only ${tarvo_rules_${room}})
        list(FILTER only INCLUDE REGEX "^only:")
        if(tarvo_tier_${linkedRoom} GREATER_EQUAL tarvo_tier_${room}
           OR (only AND NOT "only:${linkedRoom}" IN_LIST only))
            message(FATAL_ERROR "${folder} must not link ${link}: see ${tarvo_roomsFile}")
        endif()
    endforeach()
endfunction()

# A macro, so that arg_SOURCES and arg_LINKS arise in the calling function, whose arguments it reads.
macro(tarvo_parse_arguments what)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    if(arg_UNPARSED_ARGUMENTS OR NOT arg_SOURCES)
        message(FATAL_ERROR "${what}: wants SOURCES and perhaps LINKS, and nothing else ${arg_UNPARSED_ARGUMENTS}")
    endif()
endmacro()

function(tarvo_room room)
    tarvo_parse_arguments("tarvo_room(${room})")
    tarvo_room_of(${room} tableRoom)
    tarvo_check_links(${room} ${arg_LINKS})
    tarvo_target_name(tarvo ${room} target)
    add_library(${target} STATIC ${arg_SOURCES})
    set_target_properties(${target} PROPERTIES TARVO_ROOM ${tableRoom})
    # Rooms also become part of the shared module.
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_link_libraries(${target} PRIVATE tarvo_flags PUBLIC ${arg_LINKS})
    tarvo_precompile(${target} ${tableRoom})
endfunction()

function(tarvo_program name)
    tarvo_parse_arguments("tarvo_program(${name})")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE tarvo_flags ${arg_LINKS})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endfunction()

function(tarvo_test room)
    tarvo_parse_arguments("tarvo_test(${room})")
    tarvo_target_name(test ${room} target)
    tarvo_program(${target} SOURCES ${arg_SOURCES} LINKS ${arg_LINKS} GTest::gmock_main)
    tarvo_precompile(${target} ${room} TESTS)
    # Asking the program for its tests when ctest starts, not when it is built, keeps building free of running:
    # the Windows programs need their Wine session only then. Each test is a process of its own; the limit ends
    # one that hangs.
    gtest_discover_tests(${target} TEST_PREFIX "${room}: " DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT 300)
endfunction()
