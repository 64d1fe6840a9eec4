#pragma once

#include "render/RenderDevice.h"

#include <memory>
#include <utility>
#include <vector>

namespace tarvo::render::conformance {

/// What was drawn; shared with whoever asks after the device went to its renderer.
struct DrawnPasses {
    std::vector<ShaderProgram> programs; ///< in their order
    int failedCount = 0;                 ///< passes and uploads that failed, which a renderer tells nobody
};

/// Another device, watched.
class CWatchedDevice final : public IRenderDevice {
public:
    CWatchedDevice(std::unique_ptr<IRenderDevice> device, std::shared_ptr<DrawnPasses> drawn)
        : m_device(std::move(device)), m_drawn(std::move(drawn)) {}

    bool isAvailable() override { return m_device->isAvailable(); }
    HRESULT open(const InputFormat& input, const OutputFormat& output) override {
        return m_device->open(input, output);
    }
    HRESULT openStates() override { return m_device->openStates(); }
    bool isOpen() const override { return m_device->isOpen(); }
    DeviceKind kind() const override { return m_device->kind(); }
    HRESULT geometry(const geometry::ViewVertices& vertices, const ExcludeGeometry& exclude) override {
        return m_device->geometry(vertices, exclude);
    }
    HRESULT overviewMarker(const geometry::OverviewMarkerVertices& vertices) override {
        return noted(m_device->overviewMarker(vertices));
    }
    bool hasProgram(ShaderProgram program) const override { return m_device->hasProgram(program); }
    HRESULT prepare(ShaderProgram program, ConstantSlot slot, std::span<const std::byte> constants) override {
        return m_device->prepare(program, slot, constants);
    }
    void releaseProgram() override { m_device->releaseProgram(); }
    HRESULT lookup(int width, int height) override { return m_device->lookup(width, height); }
    void releaseLookup() override { m_device->releaseLookup(); }
    HRESULT upload(Surface surface, const SourceRows& rows) override {
        return noted(m_device->upload(surface, rows));
    }
    void clear(Surface target, const std::array<float, 4>& colour) override {
        m_device->clear(target, colour);
    }
    HRESULT draw(const Pass& pass) override {
        m_drawn->programs.push_back(pass.program);
        return noted(m_device->draw(pass));
    }
    void copy(Surface from, Surface to) override { m_device->copy(from, to); }
    void copyBox(Surface from, const geometry::PixelBox& box, Surface to) override {
        m_device->copyBox(from, box, to);
    }
    void flush() override { m_device->flush(); }
    HRESULT readBack(IMappedRowsVisitor& visitor) override { return m_device->readBack(visitor); }
    void close() override { m_device->close(); }

private:
    HRESULT noted(HRESULT result) {
        m_drawn->failedCount += FAILED(result) ? 1 : 0;
        return result;
    }

    std::unique_ptr<IRenderDevice> m_device;
    std::shared_ptr<DrawnPasses> m_drawn;
};

} // namespace tarvo::render::conformance
