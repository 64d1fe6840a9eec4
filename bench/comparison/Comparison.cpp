#include "bench/comparison/Comparison.h"

#include "bench/comparison/OpenCvRemap.h"
#include "bench/comparison/OwnTransform.h"
#include "bench/comparison/Pictures.h"
#include "bench/comparison/Processors.h"
#include "bench/comparison/V360Filter.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

namespace tarvo::bench {
namespace {

/// Levels of 255 that a picture may be off in the mean. Resampling softens the drawn room by some; a view
/// that is one degree off, or the other input's, is off by far more.
constexpr double mostDifference = 3.5;

/// Other work of a contender may go on for a moment after its frame, and caches hold what the other one used:
/// in each turn the first frame does not count.
void runTurn(IContender& contender, int& number, CTimes& times) {
    contender.frame(number++);
    const Clock::time_point turn = Clock::now();
    for (int i = 0; i < 2 || (i < 10 && millisecondsSince(turn) < 40.0); ++i) {
        const Clock::time_point start = Clock::now();
        contender.frame(number++);
        times.add(millisecondsSince(start));
    }
}

std::unique_ptr<IContender> makePeer(const Work& work, const CInputs& inputs, int threads) {
    if (work.peer == Peer::v360) {
        return std::make_unique<CV360Filter>(work, inputs, threads);
    }
    return std::make_unique<COpenCvRemap>(work, inputs, threads);
}

} // namespace

/// Knows what pictures must look like.
class CComparison::CWitness {
public:
    CWitness(const Work& work, const CInputs& inputs, const Settings& settings)
        : m_work(work), m_settings(settings) {
        for (int number = 0; number < CInputs::count; ++number) {
            m_own.push_back(inputs.expected(work, number));
            m_peer.push_back(isPanorama(work) ? inputs.expectedCylinder(work, number) : m_own.back());
        }
        if (meanDifference(m_own[0], m_own[1]) < 2.0 * mostDifference ||
            meanDifference(m_peer[0], m_peer[1]) < 2.0 * mostDifference) {
            throw std::logic_error("the inputs are too much alike to tell an old frame");
        }
    }

    void checkOwn(IContender& contender) const { check(contender, m_own, "ours"); }
    void checkPeer(IContender& contender) const { check(contender, m_peer, "peer"); }

private:
    void check(IContender& contender, const std::vector<render::Picture>& expected, const char* who) const {
        for (int number = 0; number < CInputs::count; ++number) {
            contender.frame(number);
            const render::Picture picture = contender.picture();
            const std::string name =
                std::string(m_work.name) + "-" + who + "-" + std::to_string(number) + ".ppm";
            if (m_settings.pictures) {
                writePpm(*m_settings.pictures / name, picture);
                writePpm(*m_settings.pictures / ("expected-" + name), expected[number]);
            }
            const double difference = meanDifference(picture, expected[number]);
            if (difference > mostDifference) {
                throw std::runtime_error(name + " shows something else: it is " + std::to_string(difference) +
                                         " levels off");
            }
        }
    }

    const Work& m_work;
    const Settings& m_settings;
    std::vector<render::Picture> m_own;
    std::vector<render::Picture> m_peer;
};

CComparison::CComparison(const std::filesystem::path& module, Settings settings)
    : m_module(module), m_settings(std::move(settings)), m_processors(usableProcessors()) {
    COpenCvRemap::startThreads(2);
}

const CInputs& CComparison::inputsOf(const Work& work) {
    for (const KnownInputs& known : m_inputs) {
        if (known.mounting == work.mounting && known.isRgb32 == work.isRgb32) {
            return *known.inputs;
        }
    }
    m_inputs.push_back({work.mounting, work.isRgb32, std::make_unique<CInputs>(work)});
    return *m_inputs.back().inputs;
}

std::vector<Result> CComparison::measure(const Work& work) {
    const CInputs& inputs = inputsOf(work);
    const CWitness witness(work, inputs, m_settings);
    std::vector<Result> results;
    for (const int threads : {1, 2}) {
        results.push_back(measure(work, inputs, witness, threads));
    }
    return results;
}

Result CComparison::measure(const Work& work, const CInputs& inputs, const CWitness& witness, int threads) {
    // Threads stay where the thread that starts them may be, so this comes first.
    pinToProcessors(m_processors, threads);
    COwnTransform own(m_module, work, inputs);
    const std::unique_ptr<IContender> peer = makePeer(work, inputs, threads);
    witness.checkOwn(own);
    witness.checkPeer(*peer);

    Result result{&work, threads, {}, {}};
    int ownNumber = CInputs::count;
    int peerNumber = CInputs::count;
    const Clock::time_point start = Clock::now();
    do {
        runTurn(own, ownNumber, result.own);
        runTurn(*peer, peerNumber, result.peer);
    } while (millisecondsSince(start) < m_settings.secondsPerResult * 1000.0);

    witness.checkOwn(own);
    witness.checkPeer(*peer);
    return result;
}

} // namespace tarvo::bench
