# One step of the test of the package; the variables it needs are those that CMakeLists.txt passes.
cmake_minimum_required(VERSION 3.25)

# Not where it was installed first.
set(prefix "${FOLDER}/installed tree")
if(SYSTEM STREQUAL "Windows")
    set(module "${prefix}/bin/TarvoVideoTransform.dll")
    set(program "${prefix}/bin/tarvo-dewarp.exe")
else()
    set(module "${prefix}/lib/libTarvoVideoTransform.so")
    set(program "${prefix}/bin/tarvo-dewarp")
endif()

function(require_equal what found expected)
    if(NOT "${found}" STREQUAL "${expected}")
        string(REPLACE ";" "\n    " found "${found}")
        string(REPLACE ";" "\n    " expected "${expected}")
        message(FATAL_ERROR "${what}:\n    ${found}\nexpected:\n    ${expected}")
    endif()
endfunction()

# Runs a command and gives back what it prints; its failure is the test's.
function(run result)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
    message("${output}")
    set(${result} "${output}" PARENT_SCOPE)
endfunction()

# A picture of 320 × 320 pixels, not all of one colour.
function(require_picture file)
    file(SIZE "${file}" size)
    require_equal("bytes of the picture" "${size}" 307215)
    file(READ "${file}" head OFFSET 0 LIMIT 15)
    require_equal("head of the picture" "${head}" "P6\n320 320\n255\n")
    file(READ "${file}" row OFFSET 153615 LIMIT 960 HEX)
    string(SUBSTRING "${row}" 0 6 first)
    string(REPLACE "${first}" "" others "${row}")
    if(others STREQUAL "")
        message(FATAL_ERROR "the picture's middle row has one colour")
    endif()
endfunction()

include(${CMAKE_CURRENT_LIST_DIR}/${STEP}.cmake)
