// What frames of a view at rest ask of the context, call by call.

#include "tests/render/d3d11/RendererFixture.h"

#include <gmock/gmock.h>

#include <map>
#include <sstream>

namespace tarvo::render::d3d11 {
namespace {

using geometry::ViewType;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Follows what calls bind.
class CBoundThings {
public:
    /// Takes over the calls. Answers with those that bind what is bound already, be it in one slot of
    /// several.
    std::vector<std::string> repeatedIn(const std::vector<std::string>& calls) {
        std::vector<std::string> repeated;
        for (const std::string& call : calls) {
            if (call == "ClearState")
                m_bound.clear();
            else if (call.find("Set") != std::string::npos && !changesAll(call))
                repeated.push_back(call);
        }
        return repeated;
    }

private:
    bool changesAll(const std::string& call) {
        std::istringstream words(call);
        std::string verb;
        words >> verb;
        // Of these the first slot and then the names; of the others everything.
        const bool hasSlots =
            verb == "PSSetShaderResources" || verb == "PSSetSamplers" || verb.ends_with("SetConstantBuffers");
        if (!hasSlots)
            return changes(verb, call);
        std::size_t slot = 0;
        words >> slot;
        bool isChange = true;
        for (std::string name; words >> name; ++slot)
            isChange = changes(verb + std::to_string(slot), name) && isChange;
        return isChange;
    }
    bool changes(const std::string& place, const std::string& what) {
        return std::exchange(m_bound[place], what) != what;
    }

    std::map<std::string, std::string> m_bound;
};

TEST(BoundThings, repeatedAreFound) {
    CBoundThings bound;
    EXPECT_THAT(bound.repeatedIn({"PSSetShaderResources 0 view0 -", "PSSetShader pixelShader1",
                                  "Draw 4 from 0", "IASetVertexBuffers buffer3 slot 0", "Draw 4 from 0"}),
                IsEmpty());
    EXPECT_THAT(bound.repeatedIn({"PSSetShaderResources 1 - view2"}),
                ElementsAre("PSSetShaderResources 1 - view2"));
    EXPECT_THAT(bound.repeatedIn({"PSSetShaderResources 0 view1", "PSSetShader pixelShader1",
                                  "IASetVertexBuffers buffer4 slot 0", "PSSetShaderResources 0 view1"}),
                ElementsAre("PSSetShader pixelShader1", "PSSetShaderResources 0 view1"));
    EXPECT_THAT(bound.repeatedIn({"ClearState", "PSSetShader pixelShader1"}), IsEmpty());
}

class RepeatedFrame : public CRendererTest {
protected:
    /// The calls of the second frame, after which every frame is the same.
    std::vector<std::string> second(PixelFormat format) {
        start(inputOf(format));
        EXPECT_EQ(frame(), S_OK);
        fake.takeCalls();
        EXPECT_EQ(frame(), S_OK);
        const std::vector<std::string> calls = fake.takeCalls();
        EXPECT_EQ(frame(), S_OK);
        EXPECT_EQ(fake.takeCalls(), calls);
        return calls;
    }
};

// Names as the device gives them: view0 the input, view1 the masked input; then the planes or the packed
// input; then the exclude area. target0 the output, target1 the conversion. pixelShader0 to 4: YV12, YUY2,
// overview region, exclude region, plain copy; 5 the view's. texture4 is read back.

TEST_F(RepeatedFrame, ofOnePassBindsNothing) {
    EXPECT_THAT(second(PixelFormat::rgb32),
                ElementsAre("Map texture2", "Unmap texture2", "ClearRenderTargetView target0 0 0 0 1",
                            "ClearRenderTargetView target1 1 0 0 1", "Draw 4 from 4", "Flush",
                            "CopyResource texture0 to texture4", "Map texture4", "Unmap texture4"));
}

TEST_F(RepeatedFrame, ofPackedInputKeepsBothItsTextures) {
    // The packed input stays in slot 3 while slot 0 shows the picture, and the width in its own slot too.
    EXPECT_THAT(second(PixelFormat::yuy2),
                ElementsAre("Map buffer0", "Unmap buffer0", "ClearRenderTargetView target0 0 0 0 1",
                            "ClearRenderTargetView target1 1 0 0 1", "OMSetRenderTargets target1",
                            "RSSetViewports 0 0 320 240 depth 0 0", "PSSetShader pixelShader1",
                            "Draw 4 from 44", "CopyResource texture1 to texture2",
                            "OMSetRenderTargets target0", "RSSetViewports 0 0 200 150 depth 0 0",
                            "PSSetShader pixelShader5", "Draw 4 from 4", "Flush",
                            "CopyResource texture0 to texture4", "Map texture4", "Unmap texture4"));
}

TEST_F(RepeatedFrame, ofPlanesWithTablesChangesTheFirstSlotAlone) {
    view.setViewType(ViewType::custom);
    // Chroma stays in slots 1 and 2, the tables in slot 4.
    EXPECT_THAT(second(PixelFormat::yv12),
                ElementsAre("Map texture6", "Unmap texture6", "Map texture7", "Unmap texture7",
                            "Map texture8", "Unmap texture8", "ClearRenderTargetView target0 0 0 0 1",
                            "ClearRenderTargetView target1 1 0 0 1", "OMSetRenderTargets target1",
                            "RSSetViewports 0 0 320 240 depth 0 0", "PSSetShaderResources 0 view2",
                            "PSSetShader pixelShader0", "Draw 4 from 44", "CopyResource texture1 to texture2",
                            "OMSetRenderTargets target0", "RSSetViewports 0 0 200 150 depth 0 0",
                            "PSSetShaderResources 0 view0", "PSSetShader pixelShader5", "Draw 4 from 0",
                            "Flush", "CopyResource texture0 to texture4", "Map texture4", "Unmap texture4"));
}

TEST_F(RepeatedFrame, ofEveryPassThereIsBindsWhatTurns) {
    view.setViewType(ViewType::singleOverview);
    view.setExcludeArea({0.25, 0.25, 0.5, 0.75});
    EXPECT_THAT(
        second(PixelFormat::yv12),
        ElementsAre("Map texture6", "Unmap texture6", "Map texture7", "Unmap texture7", "Map texture8",
                    "Unmap texture8", "ClearRenderTargetView target0 0 0 0 1",
                    "ClearRenderTargetView target1 1 0 0 1",
                    // Conversion, after the marker, whose topology it shares.
                    "OMSetRenderTargets target1", "RSSetViewports 0 0 320 240 depth 0 0",
                    "PSSetShaderResources 0 view2", "PSSetShader pixelShader0",
                    "IASetVertexBuffers buffer3 slot 0 stride 24 offset 0", "OMSetBlendState - mask ffffffff",
                    "Draw 4 from 44", "CopyResource texture1 to texture2",
                    // The exclude area is put by and painted black: 0.25 to 0.5 of 320, 0.25 to 0.75 of 240.
                    "CopySubresourceRegion texture2 80 60 0 160 180 1 to texture9 0 0 0",
                    "PSSetShaderResources 0 view0", "PSSetShader pixelShader3", "Draw 4 from 44",
                    "CopyResource texture1 to texture3",
                    // The view, and the area over it.
                    "OMSetRenderTargets target0", "RSSetViewports 0 0 200 150 depth 0 0",
                    "PSSetShaderResources 0 view1", "PSSetShader pixelShader5", "Draw 4 from 4",
                    "PSSetShaderResources 0 view5", "PSSetShader pixelShader4", "Draw 4 from 40",
                    // Disc and marker; the marker looks at nothing.
                    "PSSetShaderResources 0 view0", "IASetPrimitiveTopology list",
                    "DrawIndexed 192 from 0 base 48", "PSSetShader pixelShader2",
                    "IASetVertexBuffers buffer6 slot 0 stride 24 offset 0", "IASetPrimitiveTopology strip",
                    "OMSetBlendState blendState0 0.75 0.75 0.75 1 mask ffffffff", "Draw 4512 from 0", "Flush",
                    "CopyResource texture0 to texture4", "Map texture4", "Unmap texture4"));
}

TEST_F(RepeatedFrame, ofAQuadViewWritesEachQuadrantsConstants) {
    view.setViewType(ViewType::quad);
    EXPECT_THAT(second(PixelFormat::rgb32),
                ElementsAre("Map texture2", "Unmap texture2", "ClearRenderTargetView target0 0 0 0 1",
                            "ClearRenderTargetView target1 1 0 0 1", "Map buffer5", "Unmap buffer5",
                            "Draw 4 from 24", "Map buffer5", "Unmap buffer5", "Draw 4 from 28", "Map buffer5",
                            "Unmap buffer5", "Draw 4 from 32", "Map buffer5", "Unmap buffer5",
                            "Draw 4 from 36", "Flush", "CopyResource texture0 to texture4", "Map texture4",
                            "Unmap texture4"));
}

struct Sight {
    ViewType viewType;
    PixelFormat format;
    bool hasExcludeArea;
};

std::vector<Sight> everySight() {
    std::vector<Sight> result;
    for (const ViewType viewType : {ViewType::single, ViewType::quad, ViewType::panoramaSingle,
                                    ViewType::panoramaDouble, ViewType::singleOverview, ViewType::custom}) {
        for (const PixelFormat format : {PixelFormat::rgb32, PixelFormat::yv12, PixelFormat::yuy2}) {
            for (const bool hasExcludeArea : {false, true})
                result.push_back({viewType, format, hasExcludeArea});
        }
    }
    return result;
}

std::string nameOfSight(const Sight& sight) {
    const char* const views[]{"single", "quad", "panorama", "doublePanorama", "overview", "custom"};
    const char* const format = sight.format == PixelFormat::rgb32  ? "Rgb32"
                               : sight.format == PixelFormat::yv12 ? "Yv12"
                                                                   : "Yuy2";
    return std::string(views[static_cast<int>(sight.viewType)]) + format +
           (sight.hasExcludeArea ? "WithExcludeArea" : "");
}
void PrintTo(const Sight& sight, std::ostream* stream) {
    *stream << nameOfSight(sight);
}
std::string nameOfCase(const testing::TestParamInfo<Sight>& info) {
    return nameOfSight(info.param);
}

class Frames : public CRendererTest, public testing::WithParamInterface<Sight> {};

TEST_P(Frames, bindNothingThatIsBound) {
    view.setViewType(GetParam().viewType);
    if (GetParam().hasExcludeArea)
        view.setExcludeArea({0.25, 0.25, 0.5, 0.75});
    start(inputOf(GetParam().format));
    CBoundThings bound;
    EXPECT_THAT(bound.repeatedIn(fake.takeCalls()), IsEmpty());
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        ASSERT_EQ(frame(), S_OK);
        const std::vector<std::string> calls = fake.takeCalls();
        EXPECT_THAT(bound.repeatedIn(calls), IsEmpty());
        // Nor is anything taken off; "-" replaces the blending of the marker and nothing else.
        for (const std::string& call : calls) {
            EXPECT_TRUE(call.starts_with("OMSetBlendState") || (call + " ").find(" - ") == std::string::npos)
                << call;
        }
        // The view moves and its shape changes half way.
        if (i == 1) {
            view.setPan(20.0);
            ASSERT_EQ(renderer->updateGeometry(view), S_OK);
            EXPECT_THAT(bound.repeatedIn(fake.takeCalls()), IsEmpty());
        }
    }
    EXPECT_THAT(lines.take(), ElementsAre(HasSubstr("HARDWARE_OPTIONS supported:1")));
}

INSTANTIATE_TEST_SUITE_P(Sights, Frames, testing::ValuesIn(everySight()), nameOfCase);

} // namespace
} // namespace tarvo::render::d3d11
