# Installs the support library, compiles a host against what was installed and runs it:
#
#   cmake -DBUILD=… -DFOLDER=… -DCOMPILER=… -DFLAGS=… -DTYPES=… -DHOST=host.cpp -DMODULE=… -P run.cmake
file(REMOVE_RECURSE ${FOLDER})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --component support --prefix ${FOLDER}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${COMPILER} -std=c++20 ${FLAGS} -D_FORCENAMELESSUNION -DNOMINMAX -I${FOLDER}/include/tarvo
    -isystem ${TYPES} ${HOST} -o ${FOLDER}/host -L${FOLDER}/lib -lTarvoSupport -ldl -lpthread
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${FOLDER}/host ${MODULE} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
if(NOT output STREQUAL "host: done\n")
    message(FATAL_ERROR "the host said: ${output}")
endif()
