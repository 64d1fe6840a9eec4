#pragma once

#include "apps/host/Module.h"
#include "bench/comparison/Contender.h"
#include "bench/comparison/Inputs.h"

namespace tarvo::bench {

/// The module's transform as a host calls it: every frame one ProcessInput and one ProcessOutput, into the
/// same output buffer each time. The inputs outlive it.
class COwnTransform final : public IContender {
public:
    /// Throws host::HostError.
    COwnTransform(const host::CModule& module, const Work& work, const CInputs& inputs);

    void frame(int number) override;
    render::Picture picture() const override;

    /// Turns the view; the next frame shows it.
    void pan(double degrees);
    std::size_t outputBytes() const { return m_outputFormat.frameBytes; }

private:
    Work m_work;
    const CInputs& m_inputs;
    com::ComPtr<IDewarpingTransform> m_transform;
    com::ComPtr<IMediaObject> m_media;
    host::VideoFormat m_outputFormat;
    com::ComPtr<host::CMediaBuffer> m_output;
    std::int64_t m_time = 0;
};

} // namespace tarvo::bench
