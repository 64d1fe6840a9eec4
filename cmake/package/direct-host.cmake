# Builds direct-host against an installed TARVO Video Transform:
#
#   cmake -S . -B build -DCMAKE_PREFIX_PATH=<where it is installed>
#   cmake --build build --target show       # builds it, runs it and leaves build/view.ppm
cmake_minimum_required(VERSION 3.25)
project(DirectHost LANGUAGES CXX)

find_package(TarvoVideoTransform 1.0 REQUIRED)

add_executable(direct-host DirectHost.cpp)
target_link_libraries(direct-host PRIVATE TarvoVideoTransform::Support)

add_custom_target(show
    COMMAND direct-host $<TARGET_FILE:TarvoVideoTransform::Module> view.ppm
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
    VERBATIM)
