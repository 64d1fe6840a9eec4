#pragma once

#include "bench/comparison/Contender.h"
#include "bench/comparison/Inputs.h"

#include <memory>

namespace tarvo::bench {

/// OpenCV: YV12 to BGR, remap along fixed-point maps, back to YV12; of RGB32 the remap alone. The maps of a
/// view at rest are made once, those of one that moves anew for each frame. The inputs outlive it.
class COpenCvRemap final : public IContender {
public:
    /// Single views alone; throws cv::Exception. `threads` holds for all of OpenCV, as long as no other one
    /// is set.
    COpenCvRemap(const Work& work, const CInputs& inputs, int threads);
    ~COpenCvRemap() override;
    COpenCvRemap(const COpenCvRemap&) = delete;
    COpenCvRemap& operator=(const COpenCvRemap&) = delete;

    void frame(int number) override;
    render::Picture picture() const override;

    /// Starts OpenCV's threads. They and how many there may be at most depend on which processors the caller
    /// may use at that time, so it comes before that is limited.
    static void startThreads(int threads);

private:
    struct Matrices;

    void makeMaps(double panDegrees);

    Work m_work;
    std::unique_ptr<Matrices> m_matrices;
};

} // namespace tarvo::bench
