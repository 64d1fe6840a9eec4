#include "apps/tarvo-render/TarvoRender.h"

#include <cstdio>
#include <exception>
#include <iostream>

int main(int count, char** values) {
    try {
        return tarvo::apps::runTarvoRender(tarvo::apps::programArguments(count, values), std::cout,
                                           std::cerr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tarvo-render: %s\n", error.what());
        return tarvo::apps::exitFailure;
    }
}
