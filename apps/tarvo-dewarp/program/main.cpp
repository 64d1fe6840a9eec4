#include "apps/tarvo-dewarp/program/TarvoDewarp.h"

#include <cstdio>
#include <exception>
#include <iostream>

int main(int count, char** values) {
    try {
        return tarvo::apps::runTarvoDewarp(tarvo::apps::programArguments(count, values), std::cout,
                                           std::cerr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tarvo-dewarp: %s\n", error.what());
        return tarvo::apps::exitFailure;
    }
}
