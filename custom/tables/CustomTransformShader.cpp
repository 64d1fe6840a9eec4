#include "custom/tables/CustomTransformShader.h"

#include "custom/tables/LookupTexels.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>
#include <limits>
#include <new>
#include <vector>

namespace tarvo::custom {

using render::ShaderProgram;

HRESULT CCustomTransformShader::initialise(render::IRenderDevice& device) {
    release();
    const ShaderProgram program =
        isVirtualPtz() ? ShaderProgram::customVirtualPtz : ShaderProgram::customTransform;
    if (!device.hasProgram(program))
        return E_FAIL;
    fillRecord();
    const HRESULT result = device.prepare(program, render::ConstantSlot::custom, record());
    if (FAILED(result))
        return result;
    m_device = &device;
    return UpdateTransform();
}

void CCustomTransformShader::release() {
    m_device = nullptr;
    m_hasLookup = false;
}

HRESULT CCustomTransformShader::pixelShader(render::PixelShaderUse& use) {
    use = {};
    if (m_tables.isEmpty())
        return S_FALSE;
    if (m_device == nullptr)
        return E_FAIL;
    if (!m_hasLookup)
        return S_FALSE;
    // Filled anew for every frame, which is cheaper than to learn whether any of its values changed.
    fillRecord();
    use.program = isVirtualPtz() ? ShaderProgram::customVirtualPtz : ShaderProgram::customTransform;
    use.constantSlot = render::ConstantSlot::custom;
    use.constants = record();
    use.readsLookup = true;
    return S_OK;
}

HRESULT CCustomTransformShader::SetTransform(const TableDimensions& dimensions,
                                             std::span<const std::byte> entries) {
    const std::size_t wordCount = entries.size() / 2;
    // The whole product counts, not what 32 bits keep of it: with that, short data would pass for huge
    // tables.
    if (wordCount != dimensions.entryWordCount()) {
        m_log.error("Invalid data size");
        return E_INVALIDARG;
    }
    if (dimensions != m_tables.dimensions) {
        if (m_device != nullptr && m_hasLookup)
            m_device->releaseLookup();
        m_hasLookup = false;
    }
    // The old tables go first: there may be no room for both.
    std::vector<std::uint16_t>().swap(m_tables.entries);
    try {
        m_tables.entries.resize(wordCount);
    } catch (const std::exception&) { // too little memory, or more than any memory has
        return E_OUTOFMEMORY;
    }
    for (std::size_t i = 0; i < wordCount; ++i) {
        m_tables.entries[i] = static_cast<std::uint16_t>(std::to_integer<unsigned>(entries[2 * i]) |
                                                         std::to_integer<unsigned>(entries[2 * i + 1]) << 8U);
    }
    m_tables.dimensions = dimensions;
    return UpdateTransform();
}

HRESULT CCustomTransformShader::UpdateTransform() {
    if (m_device == nullptr || m_tables.isEmpty())
        return S_FALSE;
    const TableDimensions& dimensions = m_tables.dimensions;
    const int width = dimensions.width;
    const std::uint64_t rows = std::uint64_t{dimensions.height} * dimensions.tableCount;
    if (rows > std::uint64_t{std::numeric_limits<int>::max()})
        return failed(__LINE__, E_INVALIDARG);
    const int height = static_cast<int>(rows);

    HRESULT result = m_device->lookup(width, height);
    m_hasLookup = SUCCEEDED(result);
    if (FAILED(result))
        return failed(__LINE__, result);
    try {
        const std::vector<std::uint16_t> texels = lookupTexels(m_tables, m_effectLevel);
        const std::size_t rowBytes = static_cast<std::size_t>(width) * wordsPerTexel * sizeof(std::uint16_t);
        result = m_device->upload(render::Surface::lookup,
                                  {std::as_bytes(std::span(texels)).data(),
                                   static_cast<std::ptrdiff_t>(rowBytes), rowBytes, height});
    } catch (const std::bad_alloc&) {
        result = E_OUTOFMEMORY;
    }
    return FAILED(result) ? failed(__LINE__, result) : S_OK;
}

HRESULT CCustomTransformShader::setEffectLevel(float effectLevel) {
    if (std::isnan(effectLevel))
        return S_OK;
    const float limited = std::clamp(effectLevel, 0.0F, 1.0F);
    if (limited == m_effectLevel)
        return S_OK;
    m_effectLevel = limited;
    return UpdateTransform();
}

HRESULT CCustomTransformShader::setControlType(geometry::CustomTransformControlType controlType) {
    if (controlType == m_controlType)
        return S_OK;
    m_controlType = controlType;
    return m_device != nullptr ? initialise(*m_device) : S_OK;
}

std::optional<float> CCustomTransformShader::tableAspect() const {
    if (m_tables.isEmpty())
        return std::nullopt;
    return static_cast<float>(m_tables.dimensions.width) / static_cast<float>(m_tables.dimensions.height);
}

void CCustomTransformShader::setOutputAspect(float outputAspect) {
    if (!std::isfinite(outputAspect) || outputAspect <= 0.0F)
        return;
    const std::scoped_lock lock(m_controlLock);
    m_controlValues.outputAspect = outputAspect;
}

void CCustomTransformShader::setViewRectangle(const BoundedRectangle& rectangle) {
    const std::scoped_lock lock(m_controlLock);
    m_controlValues.viewRectangle = rectangle;
}

void CCustomTransformShader::setVirtualPtz(const VirtualPtzSettings& settings) {
    const std::scoped_lock lock(m_controlLock);
    m_controlValues.virtualPtz = settings;
}

bool CCustomTransformShader::isVirtualPtz() const {
    return m_controlType == geometry::CustomTransformControlType::virtualPtzFromPanorama;
}

CCustomTransformShader::ControlValues CCustomTransformShader::controlValues() const {
    const std::scoped_lock lock(m_controlLock);
    return m_controlValues;
}

void CCustomTransformShader::fillRecord() {
    const ControlValues values = controlValues();
    if (isVirtualPtz()) {
        m_virtualPtzRecord = virtualPtzConstants(m_tables.dimensions, values.viewRectangle,
                                                 values.outputAspect, values.virtualPtz);
    } else {
        m_digitalZoomRecord =
            customTransformConstants(m_tables.dimensions, values.viewRectangle, values.outputAspect);
    }
}

std::span<const std::byte> CCustomTransformShader::record() const {
    return isVirtualPtz() ? render::recordBytes(m_virtualPtzRecord)
                          : render::recordBytes(m_digitalZoomRecord);
}

HRESULT CCustomTransformShader::failed(int line, HRESULT result) const {
    m_log.failedCall("CCustomTransformShader::UpdateTransform()", line, result);
    return result;
}

} // namespace tarvo::custom
