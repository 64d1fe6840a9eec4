# Nobody tells the installed program where its module is.
run(output ${EMULATOR} ${program} info)
string(REPLACE "\\" "/" output "${output}")
if(NOT output MATCHES "\nclasses: DewarpingTransform" OR NOT output MATCHES "^module: ([^\r\n]*)")
    message(FATAL_ERROR "the program does not describe its module")
endif()
# Under Wine files of this system have a drive's letter, and the program's folder may lie on the way.
file(REAL_PATH "${CMAKE_MATCH_1}" named)
string(REGEX REPLACE "^.*[Zz]:/" "/" named "${named}")
require_equal("the module" "${named}" "${module}")
