# Libraries from Debian which programs and tests may use; the rooms of the module never link one.
#
#   tarvo_thirdparty_stb     #include <stb/stb_image.h>
#   tarvo_thirdparty_cli11   #include <CLI/CLI.hpp>

# Header-only libraries serve both builds, but /usr/include itself must never be on the cross compiler's path: its
# C library is another one. So each folder is linked alone into the build tree.
function(tarvo_header_only name folder header package)
    add_library(tarvo_thirdparty_${name} INTERFACE)
    if(NOT EXISTS /usr/include/${folder}/${header})
        # Only what really needs it shall fail, and it shall say why.
        target_link_libraries(tarvo_thirdparty_${name} INTERFACE "install-the-Debian-package-${package}")
        message(WARNING "/usr/include/${folder}/${header} is missing: install the Debian package ${package}")
        return()
    endif()
    set(root ${PROJECT_BINARY_DIR}/thirdparty/${name})
    file(MAKE_DIRECTORY ${root})
    file(CREATE_LINK /usr/include/${folder} ${root}/${folder} SYMBOLIC)
    target_include_directories(tarvo_thirdparty_${name} SYSTEM INTERFACE ${root})
endfunction()

tarvo_header_only(stb stb stb_image.h libstb-dev)
tarvo_header_only(cli11 CLI CLI.hpp libcli11-dev)

if(TARVO_BUILD_TESTS)
    if(NOT EXISTS /usr/src/googletest/CMakeLists.txt)
        message(FATAL_ERROR "The tests need /usr/src/googletest: install the Debian package googletest, "
                            "or configure with -DTARVO_BUILD_TESTS=OFF")
    endif()
    set(INSTALL_GTEST OFF)
    # SYSTEM: its headers shall not trip over our warnings.
    add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/thirdparty/googletest EXCLUDE_FROM_ALL SYSTEM)
    foreach(target gtest gtest_main gmock gmock_main)
        target_compile_options(${target} PRIVATE -w)
    endforeach()
    include(GoogleTest)
endif()
