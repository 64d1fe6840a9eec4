#include "render/reference/ReferenceDevice.h"
#include "tests/render/software/SoftwareDeviceFixture.h"

#include <cmath>
#include <functional>
#include <random>

namespace tarvo::render::software {
namespace {

/// Changes slowly, so that what two arithmetics differ in is no level.
Picture gentlePicture(int width, int height) {
    Picture picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            picture.at(x, y) = {static_cast<std::uint8_t>(127 + 120 * std::sin(x * 0.02)),
                                static_cast<std::uint8_t>(127 + 120 * std::cos(y * 0.02)),
                                static_cast<std::uint8_t>((x + y) * 255 / (width + height)), 255};
        }
    }
    return picture;
}

class AgainstReference : public testing::Test {
protected:
    static constexpr int width = 201;
    static constexpr int height = 150;
    static constexpr int outputWidth = 133;
    static constexpr int outputHeight = 97;

    using Script = std::function<void(IRenderDevice&)>;

    /// Both devices' pictures of the same passes differ by no more than a level.
    void expectAlike(const Script& script) {
        ASSERT_EQ(reference.open(input(), outputOf(outputWidth, outputHeight)), S_OK);
        ASSERT_EQ(device.open(input(), outputOf(outputWidth, outputHeight)), S_OK);
        std::vector<Picture> shown;
        for (IRenderDevice* each :
             {static_cast<IRenderDevice*>(&reference), static_cast<IRenderDevice*>(&device)}) {
            ASSERT_EQ(each->geometry(vertices, exclude), S_OK);
            each->clear(Surface::outputTarget, greyClear);
            each->clear(Surface::conversionTarget, greyClear);
            ASSERT_EQ(each->upload(Surface::inputPicture, rowsOf(picture)), S_OK);
            script(*each);
            struct CCopy final : IMappedRowsVisitor {
                Picture copied;
                HRESULT visit(const MappedRows& rows) override {
                    copied = Picture(rows.width, rows.height);
                    for (int y = 0; y < rows.height; ++y)
                        std::memcpy(&copied.at(0, y),
                                    rows.data + static_cast<std::size_t>(y) * rows.pitchBytes,
                                    static_cast<std::size_t>(rows.width) * 4);
                    return S_OK;
                }
            };
            CCopy copy;
            ASSERT_EQ(each->readBack(copy), S_OK);
            shown.push_back(copy.copied);
        }
        int differing = 0;
        int drawn = 0;
        for (std::size_t i = 0; i < shown[0].pixels.size(); ++i) {
            differing += largestDifference(shown[0].pixels[i], shown[1].pixels[i]) > 1 ? 1 : 0;
            drawn += shown[0].pixels[i] != grey ? 1 : 0;
        }
        EXPECT_EQ(differing, 0);
        EXPECT_GT(drawn, 1000);
    }

    static InputFormat input() { return inputOf(PixelFormat::rgb32, width, height); }

    static void putRandomQuad(std::span<geometry::Vertex> v, std::mt19937& random) {
        std::uniform_real_distribution<float> place(-1.2F, 1.2F);
        const auto [left, right] = std::minmax({place(random), place(random)});
        const auto [top, bottom] = std::minmax({place(random), place(random)});
        putQuad(v, left, top, right, bottom);
    }

    diagnostics::FakeLogServices services;
    diagnostics::Log log{services};
    reference::CReferenceDevice reference{diagnostics::ObjectLog{log, 1}};
    CSoftwareDevice device{diagnostics::ObjectLog{log, 2}};
    Picture picture = gentlePicture(width, height);
    geometry::ViewVertices vertices = [] {
        geometry::ViewLayout layout;
        layout.viewType = geometry::ViewType::singleOverview;
        layout.inputAspect = static_cast<double>(width) / height;
        layout.outputAspect = static_cast<double>(outputWidth) / outputHeight;
        layout.panorama = {90.0, 60.0, 0.0, 0.0};
        return geometry::buildViewVertices(layout);
    }();
    ExcludeGeometry exclude{{{0.2F, 0.2F, 0.6F, 0.7F}}, {40, 30, 120, 106}};
};

TEST_F(AgainstReference, Projections) {
    std::mt19937 random(2);
    std::uniform_real_distribution<float> angle(-1.5F, 1.5F);
    for (int round = 0; round < 12; ++round) {
        DewarpConstants c = singleViewConstants(width, height, angle(random), angle(random) * 2.0F);
        c.lambdaOffset = angle(random);
        c.panoramaRectAngles[0] = angle(random);
        c.panoramaRectAngles[2] = 1.5F + angle(random) * 0.5F;
        c.panoramaRectAngles[3] = 0.7F;
        for (const auto& [program, quad] : {std::pair{ShaderProgram::singleView, geometry::quad::singleView},
                                            {ShaderProgram::panoramaWall, geometry::quad::panoramaSingleWall},
                                            {ShaderProgram::panoramaCeiling, geometry::quad::panoramaDouble},
                                            {ShaderProgram::panoramaDesk, geometry::quad::panoramaDouble}}) {
            SCOPED_TRACE(static_cast<int>(program));
            const auto draw = [&, p = program, q = quad](IRenderDevice& each) {
                ASSERT_EQ(each.prepare(p, ConstantSlot::dewarp, recordBytes(c)), S_OK);
                Pass pass = passOf(p, Surface::inputPicture, quadRange(q));
                pass.constantSlot = ConstantSlot::dewarp;
                pass.constants = recordBytes(c);
                ASSERT_EQ(each.draw(pass), S_OK);
            };
            expectAlike(draw);
        }
    }
}

TEST_F(AgainstReference, QuadsAnywhere) {
    std::mt19937 random(4);
    for (int round = 0; round < 30; ++round) {
        for (const std::size_t quad : {0U, 4U, 8U, 12U})
            putRandomQuad(std::span(vertices).subspan(quad, 4), random);
        putQuad(std::span(vertices).subspan(16, 4), -0.9F, -0.9F, 0.1F, 0.1F);
        expectAlike([&](IRenderDevice& each) {
            Pass pass = passOf(ShaderProgram::plainCopy, Surface::inputPicture, quadRange(0));
            pass.target = Surface::conversionTarget;
            ASSERT_EQ(each.draw(pass), S_OK);
            ASSERT_EQ(each.draw(passOf(ShaderProgram::plainCopy, Surface::conversionTarget, quadRange(4))),
                      S_OK);
            ASSERT_EQ(each.draw(passOf(ShaderProgram::plainCopy, Surface::inputPicture, quadRange(16))),
                      S_OK);
            pass = passOf(ShaderProgram::excludeRegion, Surface::inputPicture, quadRange(8));
            pass.constantSlot = ConstantSlot::exclude;
            pass.constants = recordBytes(exclude.constants);
            ASSERT_EQ(each.draw(pass), S_OK);
            each.copyBox(Surface::inputPicture, exclude.box, Surface::excludeArea);
            pass = passOf(ShaderProgram::plainCopy, Surface::excludeArea, quadRange(12));
            pass.isBlended = true;
            ASSERT_EQ(each.draw(pass), S_OK);
        });
    }
}

TEST_F(AgainstReference, OverviewAndMarker) {
    const DewarpConstants c = singleViewConstants(width, height, 0.6F, 0.4F);
    auto marker = std::make_unique<geometry::OverviewMarkerVertices>();
    const double aspect = static_cast<double>(outputWidth) / outputHeight;
    geometry::buildOverviewMarker(c, static_cast<double>(width) / height, aspect,
                                  geometry::overviewPlacement(aspect, false), *marker);
    expectAlike([&](IRenderDevice& each) {
        ASSERT_EQ(each.overviewMarker(*marker), S_OK);
        ASSERT_EQ(each.draw(passOf(ShaderProgram::plainCopy, Surface::inputPicture, overviewDiscRange)),
                  S_OK);
        Pass pass = passOf(ShaderProgram::overviewRegion, Surface::none, overviewMarkerRange);
        pass.isBlended = true;
        ASSERT_EQ(each.draw(pass), S_OK);
    });
}

TEST_F(AgainstReference, TheExcludeAreaOverAWholePicture) {
    picture = noisePicture(width, height, 5);
    std::mt19937 random(7);
    std::uniform_real_distribution<float> edge(-0.1F, 1.1F);
    for (int round = 0; round < 20; ++round) {
        const ExcludeConstants area{{edge(random), edge(random), edge(random), edge(random)}};
        expectAlike([&](IRenderDevice& each) {
            ASSERT_EQ(each.draw(excludePass(area)), S_OK);
            each.copy(Surface::conversionTarget, Surface::maskedInput);
            ASSERT_EQ(each.draw(passOf(ShaderProgram::plainCopy, Surface::maskedInput,
                                       quadRange(geometry::quad::fullTarget))),
                      S_OK);
        });
    }
}

/// Tables of slowly changing places and weights.
std::vector<std::uint16_t> gentleTables(int tables, int columns, int rows, int tilt) {
    std::vector<std::uint16_t> words;
    for (int table = 0; table < tables; ++table) {
        for (int y = 0; y < rows; ++y) {
            for (int x = 0; x < columns; ++x) {
                const int sourceX = 65535 * (x + table + 1) / (columns + tables + 1);
                const int sourceY = (65535 * (y + 1) + tilt * x) / (rows + 1);
                const int weight = 65535 / tables - 500 * ((x + y) % 2);
                for (const int word : {sourceX, sourceY, weight, 65535})
                    words.push_back(static_cast<std::uint16_t>(std::clamp(word, 0, 65535)));
            }
        }
    }
    return words;
}

TEST_F(AgainstReference, CustomTables) {
    for (const int tables : {1, 3, 8, 9}) {
        const int columns = 12;
        const int rows = 9;
        const std::vector<std::uint16_t> words = gentleTables(tables, columns, rows, 900);
        CustomTransformConstants zoom{};
        zoom.lookupRectangle[0] = 0.5F / 12;
        zoom.lookupRectangle[1] = 0.5F / 9;
        zoom.lookupRectangle[2] = 1.0F - 1.0F / 12;
        zoom.lookupRectangle[3] = 1.0F - 1.0F / 9;
        zoom.viewRect[0] = 0.1F;
        zoom.viewRect[1] = 0.05F;
        zoom.viewRect[2] = zoom.viewRect[3] = 0.9F;
        zoom.projectionRect[0] = -0.1F;
        zoom.projectionRect[2] = 1.2F;
        zoom.projectionRect[3] = 1.0F;
        zoom.numberOfTables = static_cast<std::uint32_t>(tables);
        zoom.tableHeight = 1.0F / static_cast<float>(tables);
        VirtualPtzConstants camera{};
        std::memcpy(&camera, &zoom, offsetof(VirtualPtzConstants, inputFov));
        camera.inputFov[0] = 3.0F;
        camera.inputFov[1] = 1.5F;
        camera.outputAR = 1.37F;
        camera.panTiltFov[0] = 0.3F;
        camera.panTiltFov[1] = -0.2F;
        camera.panTiltFov[2] = 1.2F;
        camera.pitchRoll[0] = 0.1F;
        camera.pitchRoll[1] = -0.15F;
        const auto draw = [&](IRenderDevice& each, ShaderProgram program, std::span<const std::byte> record) {
            ASSERT_EQ(each.prepare(program, ConstantSlot::custom, record), S_OK);
            ASSERT_EQ(each.lookup(columns, rows * tables), S_OK);
            const auto bytes = std::as_bytes(std::span(words));
            ASSERT_EQ(each.upload(Surface::lookup,
                                  {bytes.data(), columns * 8, std::size_t{columns} * 8, rows * tables}),
                      S_OK);
            Pass pass = passOf(program, Surface::inputPicture, quadRange(geometry::quad::fullTarget));
            pass.textures[4] = Surface::lookup;
            pass.constantSlot = ConstantSlot::custom;
            pass.constants = record;
            ASSERT_EQ(each.draw(pass), S_OK);
            each.flush();
            each.releaseLookup();
            ASSERT_EQ(each.draw(pass), E_FAIL);
        };
        SCOPED_TRACE(tables);
        expectAlike(
            [&](IRenderDevice& each) { draw(each, ShaderProgram::customTransform, recordBytes(zoom)); });
        for (const float level : {0.0F, 0.4F, 1.0F}) {
            camera.effectLevel = level;
            expectAlike([&](IRenderDevice& each) {
                draw(each, ShaderProgram::customVirtualPtz, recordBytes(camera));
            });
        }
    }
}

TEST_F(AgainstReference, AnIdentityTableShowsTheInput) {
    // Four corners of the input in the centres of a grid's corner cells: the picture, by hand.
    std::vector<std::uint16_t> words;
    for (const auto& [x, y] : {std::pair{0, 0}, {65535, 0}, {0, 65535}, {65535, 65535}})
        words.insert(words.end(), {static_cast<std::uint16_t>(x), static_cast<std::uint16_t>(y), 65535, 0});
    CustomTransformConstants c{};
    c.lookupRectangle[0] = c.lookupRectangle[1] = 0.25F;
    c.lookupRectangle[2] = c.lookupRectangle[3] = 0.5F;
    c.viewRect[2] = c.viewRect[3] = c.projectionRect[2] = c.projectionRect[3] = 1.0F;
    c.numberOfTables = 1;
    c.tableHeight = 1.0F;
    ASSERT_EQ(device.open(input(), outputOf(width, height)), S_OK);
    ASSERT_EQ(device.geometry(vertices, {}), S_OK);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(picture)), S_OK);
    ASSERT_EQ(device.prepare(ShaderProgram::customTransform, ConstantSlot::custom, recordBytes(c)), S_OK);
    ASSERT_EQ(device.lookup(2, 2), S_OK);
    ASSERT_EQ(device.upload(Surface::lookup, {std::as_bytes(std::span(words)).data(), 16, 16, 2}), S_OK);
    Pass pass =
        passOf(ShaderProgram::customTransform, Surface::inputPicture, quadRange(geometry::quad::fullTarget));
    pass.textures[4] = Surface::lookup;
    pass.constantSlot = ConstantSlot::custom;
    pass.constants = recordBytes(c);
    ASSERT_EQ(device.draw(pass), S_OK);
    const Picture shown = outputOf(device);
    for (std::size_t i = 0; i < shown.pixels.size(); ++i)
        ASSERT_LE(largestDifference(shown.pixels[i], picture.pixels[i]), 1) << i;
    EXPECT_EQ(device.lookup(0, 2), E_INVALIDARG);
    EXPECT_EQ(device.lookup(2, 16385), E_INVALIDARG);
}

} // namespace
} // namespace tarvo::render::software
