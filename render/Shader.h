#pragma once

#include "render/Pass.h"
#include "render/RenderDevice.h"

#include <cstddef>
#include <optional>
#include <span>

namespace tarvo::render {

/// What a shader object draws the view with.
struct PixelShaderUse {
    /// None: there is nothing to draw with, and the pass is skipped.
    std::optional<ShaderProgram> program{};
    ConstantSlot constantSlot = ConstantSlot::none;
    /// Of the record; stays until the object is next changed.
    std::span<const std::byte> constants{};
    /// Whether the program looks things up in Surface::lookup.
    bool readsLookup = false;
};

/// The pixel program of a view with everything it is fed: the built-in projections are one, the host's tables
/// another. One thread at a time.
class IShader {
public:
    virtual ~IShader() = default;

    /// Makes the program and its record ready on an open device; what was there before is released.
    virtual HRESULT initialise(IRenderDevice& device) = 0;
    /// Forgets the device; called before it closes.
    virtual void release() = 0;
    /// What this frame is drawn with. A failure: nothing can be drawn.
    virtual HRESULT pixelShader(PixelShaderUse& use) = 0;
};

} // namespace tarvo::render
