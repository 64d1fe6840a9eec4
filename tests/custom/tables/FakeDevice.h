#pragma once

#include "render/RenderDevice.h"

#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace tarvo::custom {

/// Notes what a shader object asks of a device, keeps the lookup surface and can be made to fail.
class CFakeDevice final : public render::IRenderDevice {
public:
    std::vector<std::string> calls;
    std::set<render::ShaderProgram> missingPrograms;
    HRESULT prepareResult = S_OK;
    HRESULT lookupResult = S_OK;
    HRESULT uploadResult = S_OK;
    render::ShaderProgram program = render::ShaderProgram::plainCopy;
    render::ConstantSlot slot = render::ConstantSlot::none;
    std::vector<std::byte> record;
    int lookupWidth = 0;
    int lookupHeight = 0;
    std::vector<std::uint16_t> lookupWords; ///< four a texel, without padding

    bool hasProgram(render::ShaderProgram which) const override { return missingPrograms.count(which) == 0; }
    HRESULT prepare(render::ShaderProgram which, render::ConstantSlot where,
                    std::span<const std::byte> constants) override {
        calls.emplace_back("prepare");
        program = which;
        slot = where;
        record.assign(constants.begin(), constants.end());
        return prepareResult;
    }
    HRESULT lookup(int width, int height) override {
        calls.emplace_back("lookup");
        lookupWidth = width;
        lookupHeight = height;
        return lookupResult;
    }
    void releaseLookup() override { calls.emplace_back("releaseLookup"); }
    HRESULT upload(render::Surface surface, const render::SourceRows& rows) override {
        calls.emplace_back(surface == render::Surface::lookup ? "upload" : "upload elsewhere");
        lookupWords.clear();
        for (int row = 0; row < rows.rowCount; ++row) {
            std::vector<std::uint16_t> words(rows.rowBytes / 2);
            std::memcpy(words.data(), rows.data + row * rows.stepBytes, rows.rowBytes);
            lookupWords.insert(lookupWords.end(), words.begin(), words.end());
        }
        return uploadResult;
    }

    // The rest is the frame sequence's business.
    bool isAvailable() override { return true; }
    HRESULT open(const render::InputFormat&, const render::OutputFormat&) override { return E_NOTIMPL; }
    HRESULT openStates() override { return E_NOTIMPL; }
    bool isOpen() const override { return true; }
    render::DeviceKind kind() const override { return render::DeviceKind::software; }
    HRESULT geometry(const geometry::ViewVertices&, const render::ExcludeGeometry&) override {
        return E_NOTIMPL;
    }
    HRESULT overviewMarker(const geometry::OverviewMarkerVertices&) override { return E_NOTIMPL; }
    void releaseProgram() override { calls.emplace_back("releaseProgram"); }
    void clear(render::Surface, const std::array<float, 4>&) override { calls.emplace_back("clear"); }
    HRESULT draw(const render::Pass&) override { return E_NOTIMPL; }
    void copy(render::Surface, render::Surface) override { calls.emplace_back("copy"); }
    void copyBox(render::Surface, const geometry::PixelBox&, render::Surface) override {
        calls.emplace_back("copyBox");
    }
    void flush() override { calls.emplace_back("flush"); }
    HRESULT readBack(render::IMappedRowsVisitor&) override { return E_NOTIMPL; }
    void close() override { calls.emplace_back("close"); }
};

} // namespace tarvo::custom
