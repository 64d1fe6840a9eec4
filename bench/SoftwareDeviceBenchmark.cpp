#include "bench/SoftwareScene.h"
#include "geometry/ViewState.h"

#include <cmath>
#include <string>

// The single view by stage: the upload of a frame, the passes of a new frame and of one that was converted
// before, with the view at rest and with one that moves every frame, and all of it with the read-back.

namespace tarvo::bench {
namespace {

using render::ConstantSlot;
using render::ShaderProgram;
using render::Surface;

class CScene : public CSoftwareScene {
public:
    explicit CScene(int threads) : CSoftwareScene(threads) {
        m_view.setInputSize(inputWidth, inputHeight);
        m_view.setOutputSize(outputWidth, outputHeight);
        m_view.setTiltOrientation(geometry::TiltOrientation::ceiling);
        m_view.setPtzPosition(20.0, -40.0, 60.0, false);
        expect(device().geometry(geometry::buildViewVertices(m_view.layout()), {}));
        expect(device().prepare(ShaderProgram::singleView, ConstantSlot::dewarp,
                                render::recordBytes(m_view.parameters().constants())));
    }

    void move() {
        m_panDegrees += 0.37;
        m_view.setPan(20.0 + std::fmod(m_panDegrees, 30.0));
    }

    void draw() {
        device().clear(Surface::outputTarget, {0.0F, 0.0F, 0.0F, 1.0F});
        render::Pass pass;
        pass.program = ShaderProgram::singleView;
        pass.textures[0] = Surface::inputPicture;
        pass.constantSlot = ConstantSlot::dewarp;
        pass.constants = render::recordBytes(m_view.parameters().constants());
        pass.range = render::quadRange(geometry::quad::singleView);
        expect(device().draw(pass));
        device().flush();
    }

private:
    geometry::CViewState m_view;
    double m_panDegrees = 0.0;
};

enum class Stage { upload, convertAndDrawAtRest, drawAtRest, drawMoving, frameAtRest, frameMoving };

void run(benchmark::State& state, Stage stage, int threads) {
    const auto scene = std::make_unique<CScene>(threads);
    const bool isMoving = stage == Stage::drawMoving || stage == Stage::frameMoving;
    const bool isUploading =
        stage == Stage::upload || stage == Stage::frameAtRest || stage == Stage::frameMoving;
    const bool isConverting = isUploading ? stage != Stage::upload : stage == Stage::convertAndDrawAtRest;
    scene->upload();
    scene->convert();
    scene->run(state, [&] {
        if (isMoving)
            scene->move();
        if (isUploading)
            scene->upload();
        if (isConverting)
            scene->convert();
        if (stage != Stage::upload) {
            scene->draw();
            scene->readBack();
        }
    });
}

[[maybe_unused]] const bool isRegistered = [] {
    for (const int threads : {1, 2}) {
        const auto add = [&](const char* name, Stage stage) {
            benchmark::RegisterBenchmark(
                (std::string(name) + ", threads: " + std::to_string(threads)).c_str(),
                [=](benchmark::State& state) { run(state, stage, threads); })
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        };
        add("upload", Stage::upload);
        add("conversion and view at rest", Stage::convertAndDrawAtRest);
        add("view at rest", Stage::drawAtRest);
        add("view moving", Stage::drawMoving);
        add("whole frame at rest", Stage::frameAtRest);
        add("whole frame moving", Stage::frameMoving);
    }
    return true;
}();

} // namespace
} // namespace tarvo::bench
