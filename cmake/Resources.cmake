# Resources that a program or dynamic library carries inside itself and finds with findModuleResource() of
# platform/ModuleResources.h:
#
#   tarvo_resources(<target> <TYPE> <id> <file>…)      for instance  tarvo_resources(TarvoThing PS 214 Plain.cso PS 215 Yuv.cso)
#
# Types are capitals, ids 1 to 65535. A file may be one that the build makes; a change of it makes the target anew. The
# function may be called several times for one target, which must be linked for itself: what lies in a static library is
# only linked when somebody asks for it by a name, and resources have none.
#
# On Windows they are resources as the system knows them, elsewhere the same bytes beside a table.

if(WIN32)
    enable_language(RC)
endif()

function(tarvo_resources target)
    get_target_property(kind ${target} TYPE)
    if(NOT kind MATCHES "^(EXECUTABLE|SHARED_LIBRARY|MODULE_LIBRARY)$")
        message(FATAL_ERROR "tarvo_resources(${target}): a ${kind} cannot carry resources")
    endif()
    list(LENGTH ARGN length)
    math(EXPR rest "${length} % 3")
    if(length EQUAL 0 OR NOT rest EQUAL 0)
        message(FATAL_ERROR "tarvo_resources(${target}): wants TYPE id file, once or more")
    endif()

    get_target_property(number ${target} TARVO_RESOURCE_CALLS)
    if(NOT number)
        set(number 0)
    endif()
    math(EXPR next "${number} + 1")
    set_target_properties(${target} PROPERTIES TARVO_RESOURCE_CALLS ${next})
    set(library ${target}_resources_${next})
    string(MAKE_C_IDENTIFIER ${library} prefix)

    set(text)
    set(files)
    set(index 0)
    set(remaining ${ARGN})
    while(remaining)
        list(POP_FRONT remaining type id file)
        if(NOT type MATCHES "^[A-Z][A-Z0-9_]*$" OR NOT id MATCHES "^[1-9][0-9]*$" OR id GREATER 65535)
            message(FATAL_ERROR "tarvo_resources(${target}): \"${type} ${id}\" is no type with an id")
        endif()
        get_filename_component(file "${file}" ABSOLUTE)
        get_source_file_property(isMade "${file}" GENERATED)
        if(NOT isMade AND NOT EXISTS "${file}")
            message(FATAL_ERROR "tarvo_resources(${target}): ${file} is missing")
        endif()
        list(APPEND files "${file}")
        if(WIN32)
            string(APPEND text "${id} ${type} \"${file}\"\n")
        else()
            tarvo_resource_source(${prefix}_${index} ${type} ${id} "${file}")
        endif()
        math(EXPR index "${index} + 1")
    endwhile()

    # A target of their own, since the compiler options of the other are none for the resource compiler.
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${library})
    if(WIN32)
        string(APPEND source .rc)
    else()
        string(APPEND source .cpp)
        string(PREPEND text "// Made by cmake/Resources.cmake.\n#include \"platform/posix/ResourceTable.h\"\n\n"
               "using tarvo::platform::ResourceRecord;\n")
    endif()
    file(CONFIGURE OUTPUT ${source} CONTENT "${text}" @ONLY)
    set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS "${files}")
    add_library(${library} OBJECT ${source})
    set_target_properties(${library} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    if(NOT WIN32)
        target_link_libraries(${library} PRIVATE tarvo_flags)
    endif()
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${library}>)
endfunction()

# Appends to the caller's "text" the source of one resource: the assembler reads the bytes, the compiler makes the record.
function(tarvo_resource_source symbol type id file)
    string(REGEX REPLACE "([\\\\\"])" "\\\\\\1" quoted "${file}")
    string(REGEX REPLACE "([\\\\\"])" "\\\\\\1" quoted "${quoted}")
    string(APPEND text "
asm(\".pushsection .rodata\\n\"
    \".balign 16\\n\"
    \".globl ${symbol}_begin, ${symbol}_end\\n\"
    \".hidden ${symbol}_begin, ${symbol}_end\\n\"
    \"${symbol}_begin:\\n\"
    \".incbin \\\"${quoted}\\\"\\n\"
    \"${symbol}_end:\\n\"
    \".byte 0\\n\"
    \".popsection\\n\");
extern \"C\" {
[[gnu::visibility(\"hidden\")]] extern const std::byte ${symbol}_begin[];
[[gnu::visibility(\"hidden\")]] extern const std::byte ${symbol}_end[];
}
[[gnu::section(\"tarvo_resources\"), gnu::used]] static constinit const ResourceRecord ${symbol}{
    \"${type}\", ${id}, ${symbol}_begin, ${symbol}_end};
")
    set(text "${text}" PARENT_SCOPE)
endfunction()
