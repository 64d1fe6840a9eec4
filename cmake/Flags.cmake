# What every target of ours is compiled with; third-party code never sees the warnings.

add_library(tarvo_flags INTERFACE)
target_compile_features(tarvo_flags INTERFACE cxx_std_20)
target_compile_options(tarvo_flags INTERFACE
    # Fused multiply-add would make the same arithmetic differ between compilers and instruction sets, and with
    # it a plain routine from the vectorised one it is compared with.
    -ffp-contract=off
    -Wall -Wextra -Wpedantic -Werror
    -Wshadow -Wconversion
    # clang++ also warns where a double is initialised with a float, which says what it means.
    $<$<CXX_COMPILER_ID:GNU>:-Wdouble-promotion>
    # clang++ counts this one to -Wconversion and g++ does not. Off for both: picture code indexes with signed
    # coordinates, and a cast at each index would hide the arithmetic.
    -Wno-sign-conversion
    -Wold-style-cast -Wcast-qual -Wcast-align -Wformat=2 -Wimplicit-fallthrough -Wundef
    -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi
    # g++ 12 sees an overlap in `"text" + std::string` that is not there (its bug 105651).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
target_include_directories(tarvo_flags INTERFACE ${PROJECT_SOURCE_DIR})

# Everything is instrumented, GoogleTest too: the sanitizers must see all of a program.
set(TARVO_SANITIZERS "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")
if(TARVO_SANITIZERS)
    add_compile_options(-fsanitize=${TARVO_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${TARVO_SANITIZERS})
    # g++ takes the instrumentation itself for reads of uninitialised memory.
    target_compile_options(tarvo_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
