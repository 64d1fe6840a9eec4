# The sample as an integrator gets it: its installed sources, built by CMake against the installed package.
set(build "${FOLDER}/by find_package")
set(toolchain)
if(TOOLCHAIN)
    set(toolchain -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
else()
    set(toolchain -DCMAKE_CXX_COMPILER=${COMPILER})
endif()
run(ignored ${CMAKE_COMMAND} -S ${prefix}/share/doc/tarvo-video-transform/samples/direct-host -B ${build} -G ${GENERATOR}
    ${toolchain} -DTarvoVideoTransform_DIR=${prefix}/lib/cmake/TarvoVideoTransform
    "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror")
run(output ${CMAKE_COMMAND} --build ${build} --target show)
if(NOT output MATCHES "direct-host: 3 frames, 2 of them announced")
    message(FATAL_ERROR "the sample did not say what it does")
endif()
require_picture("${build}/view.ppm")

# A host for another system is told so, not given this package.
set(other Linux)
if(SYSTEM STREQUAL "Linux")
    set(other FreeBSD)
endif()
file(WRITE "${FOLDER}/other/CMakeLists.txt" "cmake_minimum_required(VERSION 3.25)
project(Other LANGUAGES NONE)
set(CMAKE_SYSTEM_NAME ${other})
set(CMAKE_SIZEOF_VOID_P 8)
find_package(TarvoVideoTransform 1.0 REQUIRED)
")
execute_process(COMMAND ${CMAKE_COMMAND} -S ${FOLDER}/other -B ${FOLDER}/other/build
        -DTarvoVideoTransform_DIR=${prefix}/lib/cmake/TarvoVideoTransform
    RESULT_VARIABLE result ERROR_VARIABLE error OUTPUT_QUIET)
if(result EQUAL 0 OR NOT error MATCHES "This package was built for ${SYSTEM}")
    message(FATAL_ERROR "a host for ${other}: ${result} ${error}")
endif()
