#pragma once

#include "render/FrameRenderer.h"
#include "render/Picture.h"
#include "tests/render/conformance/FrameCase.h"
#include "tests/render/conformance/InputFrames.h"
#include "tests/render/conformance/WatchedDevice.h"

#include <memory>
#include <vector>

namespace tarvo::render::conformance {

/// What came of a frame.
struct Rendered {
    HRESULT result = E_FAIL;        ///< the first failure of opening, rendering and delivering
    Picture picture;                ///< as it was while mapped
    OutputFormat format;            ///< of the bytes
    std::vector<std::byte> bytes;   ///< as delivered, and behind them some that must keep their value
    std::size_t deliveredBytes = 0; ///< without those
    DrawnPasses drawn;
};

/// What was delivered, of an RGB32 format.
Picture deliveredPicture(const Rendered& rendered);
/// No byte behind the output was touched.
bool isGuardWhole(const Rendered& rendered);

OutputFormat outputFormat(FrameKind kind, const FrameSizes& sizes, bool isPadded);

/// A device under the sequence of a frame, which it keeps open for as long as the formats that come in and
/// the sizes stay the same.
class CRig {
public:
    explicit CRig(std::unique_ptr<IRenderDevice> device);
    ~CRig();

    /// The frame of a case.
    Rendered render(const FrameCase& frameCase, const InputFrame& frame);
    /// The frame of the case before once more, in the output format of this one.
    Rendered deliver(const FrameCase& frameCase);

    /// Closes the device.
    void close();

private:
    /// What the renderer refers to while it draws.
    struct Scene;

    HRESULT show(const FrameCase& frameCase, const InputFrame& frame);

    std::shared_ptr<DrawnPasses> m_drawn = std::make_shared<DrawnPasses>();
    std::unique_ptr<Scene> m_scene;
    /// After the scene, which it gives up when it ends.
    CFrameRenderer m_renderer;
};

} // namespace tarvo::render::conformance
