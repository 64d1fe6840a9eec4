# The sample by one call of the compiler with what pkg-config says.
set(ENV{PKG_CONFIG_PATH} "${prefix}/lib/pkgconfig")
function(ask result what)
    run(answer ${PKG_CONFIG} ${what} tarvo-video-transform)
    separate_arguments(words UNIX_COMMAND "${answer}")
    set(${result} "${words}" PARENT_SCOPE)
endfunction()
ask(flags --cflags)
ask(libraries --libs)
ask(file --variable=module)
ask(version --modversion)
require_equal("the version" "${version}" "1.0.0")

run(ignored ${COMPILER} -std=c++20 -Wall -Wextra -Werror ${flags}
    ${prefix}/share/doc/tarvo-video-transform/samples/direct-host/DirectHost.cpp
    -o ${FOLDER}/direct-host ${libraries})
run(output ${FOLDER}/direct-host ${file} ${FOLDER}/pkg-config.ppm)
require_equal("the sample said" "${output}" "direct-host: 3 frames, 2 of them announced\n")
require_picture("${FOLDER}/pkg-config.ppm")
