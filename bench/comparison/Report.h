#pragma once

#include "bench/comparison/Comparison.h"
#include "bench/comparison/OtherWork.h"

#include <iosfwd>
#include <span>

namespace tarvo::bench {

/// What machine it was, and how fast its memory is.
void printMachine(std::ostream& out);

/// How much others disturbed the measurement.
void printOtherWork(std::ostream& out, const COtherWork& others);

/// A table for each number of threads, then a line "ratio ROW THREADS BEST MEDIAN" for each result.
void printResults(std::ostream& out, std::span<const Result> results);

} // namespace tarvo::bench
