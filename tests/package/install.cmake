# Installs, moves what was installed and looks what is there.
file(REMOVE_RECURSE "${FOLDER}")
run(ignored ${CMAKE_COMMAND} --install ${BUILD} --prefix ${FOLDER}/elsewhere)
file(RENAME "${FOLDER}/elsewhere" "${prefix}")

file(GLOB_RECURSE found RELATIVE "${prefix}" "${prefix}/*")
# Guides and samples may become more.
set(guides ${found})
list(FILTER guides INCLUDE REGEX "^share/doc/")
list(FILTER found EXCLUDE REGEX "^share/doc/")

set(expected
    include/tarvo/com/BStr.h
    include/tarvo/com/ComPtr.h
    include/tarvo/com/Guarded.h
    include/tarvo/com/MediaType.h
    include/tarvo/com/SafeArray.h
    include/tarvo/com/Variant.h
    include/tarvo/interfaces/TarvoVideoTransform.h
    include/tarvo/platform/InterfaceTypes.h
    include/tarvo/support/Creation.h
    lib/cmake/TarvoVideoTransform/TarvoVideoTransformConfig.cmake
    lib/cmake/TarvoVideoTransform/TarvoVideoTransformConfigVersion.cmake
    lib/libTarvoInterfaces.a
    lib/libTarvoSupport.a
    share/tarvo-video-transform/TarvoVideoTransform.idl
    share/tarvo-video-transform/TarvoVideoTransformIdentifiers.cpp)
if(SYSTEM STREQUAL "Windows")
    list(APPEND expected
        bin/TarvoVideoTransform.dll
        bin/tarvo-dewarp.exe
        share/tarvo-video-transform/TarvoVideoTransform.tlb)
else()
    list(APPEND expected
        bin/tarvo-dewarp
        lib/libTarvoVideoTransform.so
        lib/pkgconfig/tarvo-video-transform.pc)
endif()
list(SORT found)
list(SORT expected)
require_equal("installed" "${found}" "${expected}")

foreach(guide hosts.md properties.md samples/direct-host/CMakeLists.txt samples/direct-host/DirectHost.cpp)
    if(NOT "share/doc/tarvo-video-transform/${guide}" IN_LIST guides)
        message(FATAL_ERROR "${guide} is not installed")
    endif()
endforeach()
set(strange ${guides})
list(FILTER strange EXCLUDE REGEX "^share/doc/tarvo-video-transform/([a-z-]+\\.md|samples/[a-z-]+/[A-Za-z]+\\.(cpp|h|txt|js|py))$")
require_equal("no guides and no sample's sources" "${strange}" "")

# Nothing in the package files may point to where this was built or first installed.
file(GLOB_RECURSE texts "${prefix}/lib/*.cmake" "${prefix}/lib/*.pc")
foreach(file IN LISTS texts)
    file(READ "${file}" text)
    foreach(place "${BUILD}" "${SOURCE}" "${FOLDER}")
        string(FIND "${text}" "${place}" at)
        if(NOT at EQUAL -1)
            message(FATAL_ERROR "${file} names ${place}")
        endif()
    endforeach()
endforeach()
