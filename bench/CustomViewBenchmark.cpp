#include "bench/SoftwareScene.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

// Whole frames of a view through tables, from the upload on: one table of the whole view, and several that
// share it, each with a margin in which it is blended into the next.

namespace tarvo::bench {
namespace {

using render::ConstantSlot;
using render::CustomTransformConstants;
using render::ShaderProgram;
using render::Surface;
using render::VirtualPtzConstants;

constexpr int columns = 65;
constexpr int rows = 49;

/// Three by one and a half radians of a fisheye picture, the tables side by side in it.
std::vector<std::uint16_t> tablesOf(int count) {
    std::vector<std::uint16_t> words;
    const auto add = [&](double value) {
        words.push_back(static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0, 1.0) * 65535.0)));
    };
    for (int table = 0; table < count; ++table) {
        for (int i = 0; i < columns * rows; ++i) {
            const double x = static_cast<double>(i % columns) / (columns - 1);
            const double y = static_cast<double>(i / columns) / (rows - 1);
            const double azimuth = (x - 0.5) * 3.0;
            const double elevation = (y - 0.5) * 1.5;
            add(0.5 + 0.36 * std::sin(azimuth) * std::cos(elevation));
            add(0.5 + 0.45 * std::sin(elevation));
            const double fromMiddle = std::abs(x * count - table - 0.5);
            add(count == 1 ? 1.0 : 1.0 - (fromMiddle - 0.4) / 0.2);
            add(1.0);
        }
    }
    return words;
}

class CScene : public CSoftwareScene {
public:
    CScene(int tables, bool isCamera)
        : CSoftwareScene(1),
          m_program(isCamera ? ShaderProgram::customVirtualPtz : ShaderProgram::customTransform) {
        geometry::ViewVertices vertices{};
        geometry::Vertex* const corner = &vertices[geometry::quad::fullTarget];
        corner[0] = {-1.0F, 1.0F, 0.0F, 1.0F, 0.0F, 1.0F};
        corner[1] = {-1.0F, -1.0F, 0.0F, 1.0F, 0.0F, 0.0F};
        corner[2] = {1.0F, 1.0F, 0.0F, 1.0F, 1.0F, 1.0F};
        corner[3] = {1.0F, -1.0F, 0.0F, 1.0F, 1.0F, 0.0F};
        expect(device().geometry(vertices, {}));
        m_zoom.lookupRectangle[0] = 0.5F / columns;
        m_zoom.lookupRectangle[1] = 0.5F / rows;
        m_zoom.lookupRectangle[2] = 1.0F - 1.0F / columns;
        m_zoom.lookupRectangle[3] = 1.0F - 1.0F / rows;
        m_zoom.viewRect[2] = m_zoom.viewRect[3] = 0.9F;
        m_zoom.projectionRect[2] = m_zoom.projectionRect[3] = 1.0F;
        m_zoom.numberOfTables = static_cast<std::uint32_t>(tables);
        m_zoom.tableHeight = 1.0F / static_cast<float>(tables);
        std::memcpy(&m_camera, &m_zoom, offsetof(VirtualPtzConstants, inputFov));
        m_camera.inputFov[0] = 3.0F;
        m_camera.inputFov[1] = 1.5F;
        m_camera.outputAR = 4.0F / 3.0F;
        m_camera.panTiltFov[1] = -0.1F;
        m_camera.panTiltFov[2] = 1.2F;
        m_camera.effectLevel = 1.0F;
        expect(device().prepare(m_program, ConstantSlot::custom, record()));
        expect(device().lookup(columns, rows * tables));
        const std::vector<std::uint16_t> words = tablesOf(tables);
        constexpr std::size_t rowBytes = columns * 4 * sizeof(std::uint16_t);
        expect(device().upload(Surface::lookup,
                               {std::as_bytes(std::span(words)).data(), static_cast<std::ptrdiff_t>(rowBytes),
                                rowBytes, rows * tables}));
    }

    void move() {
        m_frames = (m_frames + 1) % 50;
        m_zoom.viewRect[0] = 0.002F * static_cast<float>(m_frames);
        m_camera.panTiltFov[0] = 0.003F * static_cast<float>(m_frames);
    }

    void draw() {
        device().clear(Surface::outputTarget, {0.0F, 0.0F, 0.0F, 1.0F});
        render::Pass pass;
        pass.program = m_program;
        pass.textures[0] = Surface::inputPicture;
        pass.textures[4] = Surface::lookup;
        pass.constantSlot = ConstantSlot::custom;
        pass.constants = record();
        pass.range = render::quadRange(geometry::quad::fullTarget);
        expect(device().draw(pass));
    }

private:
    std::span<const std::byte> record() const {
        return m_program == ShaderProgram::customTransform ? render::recordBytes(m_zoom)
                                                           : render::recordBytes(m_camera);
    }

    ShaderProgram m_program;
    CustomTransformConstants m_zoom{};
    VirtualPtzConstants m_camera{};
    int m_frames = 0;
};

void run(benchmark::State& state, int tables, bool isCamera, bool isMoving) {
    const auto scene = std::make_unique<CScene>(tables, isCamera);
    scene->run(state, [&] {
        if (isMoving)
            scene->move();
        scene->upload();
        scene->convert();
        scene->draw();
        scene->readBack();
    });
}

[[maybe_unused]] const bool isRegistered = [] {
    for (const int tables : {1, 4, 8}) {
        for (const bool isCamera : {false, true}) {
            for (const bool isMoving : {false, true}) {
                const std::string name = std::string("custom view, ") + (isCamera ? "camera, " : "zoom, ") +
                                         (isMoving ? "moving" : "at rest") +
                                         ", tables: " + std::to_string(tables);
                benchmark::RegisterBenchmark(
                    name.c_str(), [=](benchmark::State& state) { run(state, tables, isCamera, isMoving); })
                    ->Unit(benchmark::kMillisecond)
                    ->UseRealTime();
            }
        }
    }
    return true;
}();

} // namespace
} // namespace tarvo::bench
