#include "tests/render/conformance/CustomTables.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tarvo::render::conformance {
namespace {

constexpr int tableCount = 3;
constexpr int columns = 18;
constexpr int rows = 14;

std::uint16_t fraction(double value) {
    return static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0, 1.0) * 65535.0));
}

/// The parts lie side by side in the panorama, fade into one another, and bulge.
std::vector<std::uint16_t> bulgingTables() {
    std::vector<std::uint16_t> texels;
    for (int table = 0; table < tableCount; ++table) {
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column) {
                const double x = static_cast<double>(column) / (columns - 1);
                const double y = static_cast<double>(row) / (rows - 1);
                const double centre = 0.25 * (table + 1);
                const double bulge = 0.05 * std::sin(3.0 * x + table) * std::cos(2.0 * y);
                const double weight = std::max(0.0, 1.0 - 4.0 * std::abs(x - centre));
                texels.push_back(fraction(0.2 + 0.6 * x + bulge));
                texels.push_back(fraction(0.15 + 0.7 * y - bulge));
                texels.push_back(fraction(weight));
                texels.push_back(0);
            }
        }
    }
    return texels;
}

/// What both records begin with.
template<typename Constants>
void placeTables(Constants& constants) {
    const std::array<float, 4> centres{0.5F / columns, 0.5F / rows, 1.0F - 1.0F / columns,
                                       1.0F - 1.0F / rows};
    std::ranges::copy(centres, constants.lookupRectangle);
    constants.numberOfTables = tableCount;
    constants.tableHeight = 1.0F / tableCount;
}

} // namespace

CCustomTables::CCustomTables(const FrameCase& frameCase)
    : m_isVirtualPtz(frameCase.shown == Shown::virtualPtz), m_texels(bulgingTables()) {
    placeTables(m_zoom);
    std::ranges::copy(std::array{0.1F, 0.05F, 0.85F, 0.9F}, m_zoom.viewRect);
    // Letter-boxed: the cut-out begins in the left bar.
    std::ranges::copy(std::array{-0.2F, 0.0F, 1.4F, 1.0F}, m_zoom.projectionRect);

    placeTables(m_camera);
    m_camera.inputFov[0] = 3.0F;
    m_camera.inputFov[1] = 1.6F;
    m_camera.outputAR =
        static_cast<float>(frameCase.sizes.outputWidth) / static_cast<float>(frameCase.sizes.outputHeight);
    const std::array<float, 3> aim =
        frameCase.isAimedWide ? std::array{0.9F, 0.2F, 1.6F} : std::array{0.2F, -0.1F, 1.0F};
    std::ranges::copy(aim, m_camera.panTiltFov);
    std::ranges::copy(std::array{0.1F, -0.15F}, m_camera.pitchRoll);
    m_camera.effectLevel = static_cast<float>(frameCase.effectLevel);
}

HRESULT CCustomTables::initialise(IRenderDevice& device) {
    PixelShaderUse use;
    pixelShader(use);
    HRESULT result = device.prepare(*use.program, use.constantSlot, use.constants);
    if (SUCCEEDED(result)) {
        result = device.lookup(columns, rows * tableCount);
    }
    if (SUCCEEDED(result)) {
        const std::size_t rowBytes = columns * 4 * sizeof(std::uint16_t);
        result = device.upload(Surface::lookup,
                               {std::as_bytes(std::span(m_texels)).data(),
                                static_cast<std::ptrdiff_t>(rowBytes), rowBytes, rows * tableCount});
    }
    return result;
}

HRESULT CCustomTables::pixelShader(PixelShaderUse& use) {
    use.program = m_isVirtualPtz ? ShaderProgram::customVirtualPtz : ShaderProgram::customTransform;
    use.constantSlot = ConstantSlot::custom;
    use.constants = m_isVirtualPtz ? recordBytes(m_camera) : recordBytes(m_zoom);
    use.readsLookup = true;
    return S_OK;
}

} // namespace tarvo::render::conformance
