#pragma once

#include "apps/host/Module.h"
#include "bench/comparison/Contender.h"
#include "bench/comparison/Inputs.h"
#include "bench/measure/Times.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace tarvo::bench {

/// One row of the table, measured with one number of threads.
struct Result {
    const Work* work = nullptr;
    int threads = 1;
    CTimes own;
    CTimes peer;
};

/// Measures the module against its peers: both in this process, in turns, on the same processors. What either
/// gives is compared with the room as an ideal camera sees it, before and after, so that nobody is fast by
/// showing something else or an old frame.
class CComparison {
public:
    struct Settings {
        double secondsPerResult = 10.0;
        /// Where each contender's picture of each row goes, if anywhere; the folder exists.
        std::optional<std::filesystem::path> pictures;
    };

    /// Throws host::HostError.
    CComparison(const std::filesystem::path& module, Settings settings);

    /// The row with one thread and with two. Throws std::exception when a contender fails or shows something
    /// else.
    std::vector<Result> measure(const Work& work);

private:
    class CWitness;

    Result measure(const Work& work, const CInputs& inputs, const CWitness& witness, int threads);
    const CInputs& inputsOf(const Work& work);

    host::CModule m_module;
    Settings m_settings;
    std::vector<int> m_processors;
    struct KnownInputs {
        geometry::TiltOrientation mounting;
        bool isRgb32;
        std::unique_ptr<CInputs> inputs;
    };
    std::vector<KnownInputs> m_inputs;
};

} // namespace tarvo::bench
