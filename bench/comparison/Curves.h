#pragma once

#include "apps/host/Module.h"
#include "bench/comparison/Inputs.h"
#include "bench/measure/Times.h"

#include <filesystem>
#include <iosfwd>
#include <vector>

namespace tarvo::bench {

/// How the module's cost grows: tables in Markdown of a single view of a wall camera, YV12 in and out, on all
/// processors unless it says otherwise.
class CCurves {
public:
    /// Each figure is measured for about that long. Throws host::HostError.
    CCurves(const std::filesystem::path& module, double secondsPerFigure);

    /// All of them; throws std::exception.
    void print(std::ostream& out);

private:
    void printOutputSizes(std::ostream& out);
    void printInputSizes(std::ostream& out);
    void printStreams(std::ostream& out);
    void printLatencies(std::ostream& out);
    void printMemory(std::ostream& out);

    /// Milliseconds of a frame with that many threads.
    CTimes frameTimes(const Work& work, const CInputs& inputs, int threads) const;
    CTimes firstFrameTimes(const Work& work) const;
    CTimes changeTimes(const Work& work) const;

    host::CModule m_module;
    double m_secondsPerFigure;
    std::vector<int> m_processors;
    CInputs m_inputs; ///< of the usual size
};

} // namespace tarvo::bench
