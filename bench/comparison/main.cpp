#include "bench/comparison/Comparison.h"
#include "bench/comparison/Curves.h"
#include "bench/comparison/Report.h"
#include "bench/measure/WorkFilter.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>

namespace {

constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

struct Wishes {
    bool isQuick = false;
    bool isCurves = false;
    std::vector<std::string> rows;
    std::string pictures;
    std::string module = tarvo::host::defaultModulePath().string();
};

void compare(const Wishes& wishes) {
    using namespace tarvo::bench;
    const CWorkFilter filter(wishes.rows);
    const auto wanted = [&filter](const Work& work) { return filter.wants(work.name); };
    if (std::ranges::none_of(comparedWorks(), wanted)) {
        throw CLI::ValidationError("--rows", "no row has a name like that");
    }
    CComparison::Settings settings;
    settings.secondsPerResult = wishes.isQuick ? 1.6 : 12.0;
    if (!wishes.pictures.empty()) {
        std::filesystem::create_directories(wishes.pictures);
        settings.pictures = wishes.pictures;
    }
    printMachine(std::cout);
    const COtherWork others;
    CComparison comparison(wishes.module, settings);
    std::vector<Result> results;
    for (const Work& work : comparedWorks()) {
        if (wanted(work)) {
            std::cerr << "measuring " << work.name << std::endl;
            const std::vector<Result> measured = comparison.measure(work);
            results.insert(results.end(), measured.begin(), measured.end());
        }
    }
    printOtherWork(std::cout, others);
    printResults(std::cout, results);
}

void showCurves(const Wishes& wishes) {
    using namespace tarvo::bench;
    printMachine(std::cout);
    const COtherWork others;
    CCurves(wishes.module, wishes.isQuick ? 0.4 : 3.0).print(std::cout);
    printOtherWork(std::cout, others);
}

} // namespace

int main(int count, char** values) {
    Wishes wishes;
    CLI::App program("Measures the module against what else dewarps pictures, side by side");
    program.add_flag("--quick", wishes.isQuick, "a run of about a minute");
    program.add_flag("--curves", wishes.isCurves,
                     "how the module's own cost grows, instead of the comparison");
    program.add_option("--rows", wishes.rows, "only the rows whose names contain one of these")
        ->excludes("--curves");
    program.add_option("--pictures", wishes.pictures, "writes every contender's pictures into this folder")
        ->excludes("--curves");
    program.add_option("--module", wishes.module, "the module to measure");
    try {
        program.parse(count, values);
        wishes.isCurves ? showCurves(wishes) : compare(wishes);
        return 0;
    } catch (const CLI::Success& answer) {
        return program.exit(answer);
    } catch (const CLI::Error& error) {
        program.exit(error);
        return exitUsage;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-compare: %s\n", error.what());
        return exitFailure;
    }
}
