# What an installation holds besides what the rooms install themselves: the program, the package files by which hosts
# find all of it (CMake's and, natively, pkg-config's), the guides and the samples' sources.
#
# Everything is found from where the package files lie, so an installed tree may be moved. The developers' program
# tarvo-render and the tests are no part of it.

include(CMakePackageConfigHelpers)

set(packageFolder lib/cmake/TarvoVideoTransform)
set(guides share/doc/tarvo-video-transform)
set(templates ${PROJECT_SOURCE_DIR}/cmake/package)
set(made ${PROJECT_BINARY_DIR}/package)

if(WIN32)
    set(TARVO_MODULE_FILE bin/TarvoVideoTransform.dll)
else()
    set(TARVO_MODULE_FILE lib/libTarvoVideoTransform.so)
endif()
configure_package_config_file(${templates}/TarvoVideoTransformConfig.cmake.in ${made}/TarvoVideoTransformConfig.cmake
    INSTALL_DESTINATION ${packageFolder})
write_basic_package_version_file(${made}/TarvoVideoTransformConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${made}/TarvoVideoTransformConfig.cmake ${made}/TarvoVideoTransformConfigVersion.cmake
    DESTINATION ${packageFolder} COMPONENT support)
if(NOT WIN32)
    get_target_property(TARVO_INTERFACE_TYPES tarvo_interface_types INTERFACE_INCLUDE_DIRECTORIES)
    configure_file(${templates}/tarvo-video-transform.pc.in ${made}/tarvo-video-transform.pc @ONLY)
    install(FILES ${made}/tarvo-video-transform.pc DESTINATION lib/pkgconfig COMPONENT support)
endif()

install(TARGETS tarvo-dewarp RUNTIME DESTINATION bin COMPONENT programs)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${guides} COMPONENT guides FILES_MATCHING PATTERN "*.md"
    PATTERN images EXCLUDE)
install(FILES ${PROJECT_SOURCE_DIR}/apps/samples/direct-host/DirectHost.cpp DESTINATION ${guides}/samples/direct-host
    COMPONENT samples)
# The build of a host of one's own; the one beside the source is a part of this build.
install(FILES ${templates}/direct-host.cmake DESTINATION ${guides}/samples/direct-host RENAME CMakeLists.txt
    COMPONENT samples)
