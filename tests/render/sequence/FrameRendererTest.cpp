#include "render/FrameRenderer.h"

#include "tests/render/sequence/SequenceTest.h"

#include <regex>

namespace tarvo::render {
namespace {

using geometry::ExcludeArea;
using geometry::ViewType;
using tests::RecordedCall;
using tests::Verb;

/// No message of any system: "IDispatch error #n".
constexpr auto someFailure = static_cast<HRESULT>(0x80040ABC);

using FrameRendererTest = CSequenceTest;

TEST_F(FrameRendererTest, aDeviceThatCannotBeHadIsAskedAgainUntilItCan) {
    device.isThere = false;
    EXPECT_FALSE(renderer.isAvailable());
    EXPECT_EQ(init(), E_FAIL);
    EXPECT_EQ(device.count(Verb::isAvailable), 2);
    EXPECT_EQ(device.count(Verb::open), 0);
    EXPECT_TRUE(lines().empty());
    device.isThere = true;
    EXPECT_TRUE(renderer.isAvailable());
    EXPECT_EQ(device.count(Verb::isAvailable), 3);
    device.isThere = false;
    EXPECT_TRUE(renderer.isAvailable());
    EXPECT_EQ(init(), S_OK);
    EXPECT_EQ(device.count(Verb::isAvailable), 3);
}

TEST_F(FrameRendererTest, makesTheDeviceInItsOrder) {
    view.setViewType(ViewType::singleOverview);
    ASSERT_EQ(init(PixelFormat::yv12), S_OK);
    EXPECT_EQ(device.verbs(),
              (std::vector{Verb::close, Verb::isAvailable, Verb::open, Verb::geometry, Verb::releaseProgram,
                           Verb::prepare, Verb::overviewMarker, Verb::openStates}));
    EXPECT_TRUE(renderer.isOpen());
    EXPECT_EQ(renderer.deviceKind(), DeviceKind::fallback);
    EXPECT_EQ(device.input, inputFormat(PixelFormat::yv12));
    EXPECT_EQ(device.output, output);
    EXPECT_EQ(device.prepared, ShaderProgram::singleView);
    EXPECT_TRUE(lines().empty());
}

TEST_F(FrameRendererTest, aSecondTimeMakesItFromScratch) {
    ASSERT_EQ(init(), S_OK);
    const auto first = device.verbs();
    device.calls.clear();
    output.width = 40;
    ASSERT_EQ(init(PixelFormat::yuy2), S_OK);
    EXPECT_EQ(device.verbs(), (std::vector{Verb::close, Verb::open, Verb::geometry, Verb::releaseProgram,
                                           Verb::prepare, Verb::openStates}));
    EXPECT_EQ(device.input.format, PixelFormat::yuy2);
    EXPECT_EQ(device.output.width, 40);
    EXPECT_EQ(first.front(), Verb::close);
}

TEST_F(FrameRendererTest, whatFailsInMakingTheDeviceReleasesEverything) {
    view.setViewType(ViewType::singleOverview);
    view.setExcludeArea({0.25, 0.25, 0.75, 0.75});
    for (const Verb verb :
         {Verb::open, Verb::geometry, Verb::prepare, Verb::overviewMarker, Verb::openStates}) {
        SCOPED_TRACE(static_cast<int>(verb));
        services.debuggerLines.clear();
        device.fail(verb, someFailure);
        EXPECT_EQ(init(), someFailure);
        EXPECT_FALSE(renderer.isOpen());
        EXPECT_EQ(device.calls.back().verb, Verb::close);
        PixelShaderUse use;
        EXPECT_EQ(shader.pixelShader(use), E_FAIL);

        // The device logs what it makes itself.
        if (verb == Verb::open) {
            EXPECT_TRUE(lines().empty());
        } else {
            ASSERT_FALSE(lines().empty());
            std::smatch match;
            const std::regex pattern(
                R"(T:E:CDewarpingTransform::InitDirect3D\(\) \[id: 7\]  \[line: (\d+)\] )"
                R"(Erroneous HRESULT on line (\d+) error: IDispatch error #(\d+)\n)");
            ASSERT_TRUE(std::regex_match(lines().back(), match, pattern)) << lines().back();
            EXPECT_EQ(match[1], match[2]);
            EXPECT_NE(match[1], "0");
        }
        EXPECT_EQ(lines().size(), verb == Verb::open ? 0U : verb == Verb::prepare ? 2U : 1U);

        device.answer = nullptr;
        EXPECT_EQ(init(), S_OK);
        EXPECT_TRUE(renderer.isOpen());
    }
}

TEST_F(FrameRendererTest, withoutADeviceNothingHappens) {
    EXPECT_FALSE(renderer.isOpen());
    std::vector<std::byte> frameBytes(256 * 48);
    std::vector<std::byte> outputBytes(128 * 24);
    EXPECT_EQ(renderer.updateGeometry(view), S_OK);
    EXPECT_EQ(renderer.selectShader(fake), S_OK);
    EXPECT_EQ(fake.initialiseCount, 0);
    EXPECT_EQ(renderer.UploadInputFrame(frameBytes), S_OK);
    EXPECT_EQ(renderer.RenderFrame(view, shader, false), S_OK);
    EXPECT_EQ(renderer.ReadBackOutputFrame(outputBytes, nullptr), E_FAIL);
    EXPECT_TRUE(device.calls.empty());
    renderer.close();
    EXPECT_EQ(device.verbs(), std::vector{Verb::close});
    EXPECT_EQ(fake.releaseCount, 0);
}

TEST_F(FrameRendererTest, aShaderThatFailsIsTriedFourTimes) {
    ASSERT_EQ(init(), S_OK);
    fake.initialiseResults = {E_ABORT, static_cast<HRESULT>(0x8007000E), static_cast<HRESULT>(0x80041234),
                              E_ACCESSDENIED};
    EXPECT_EQ(renderer.selectShader(fake), E_ACCESSDENIED);
    EXPECT_EQ(fake.initialiseCount, 4);
    // The second attempt's result, and 0x1234 of the third's.
    EXPECT_EQ(lines(), std::vector<std::string>{"T:E:HR=0x8007000E D3DERR=4660\n"});
}

TEST_F(FrameRendererTest, aShaderThatFailsIsTriedTwiceWhenNobodyReadsTheLog) {
    ASSERT_EQ(init(), S_OK);
    log.SetModule("T", 1);
    fake.initialiseResults = {E_ABORT, E_ACCESSDENIED};
    EXPECT_EQ(renderer.selectShader(fake), E_ACCESSDENIED);
    EXPECT_EQ(fake.initialiseCount, 2);
    EXPECT_TRUE(lines().empty());
}

TEST_F(FrameRendererTest, aShadersLastAttemptCounts) {
    ASSERT_EQ(init(), S_OK);
    fake.initialiseResults = {E_FAIL, E_FAIL, E_FAIL};
    EXPECT_EQ(renderer.selectShader(fake), S_OK);
    EXPECT_EQ(fake.initialiseCount, 4);
    fake.initialiseCount = 0;
    fake.initialiseResults = {S_FALSE};
    EXPECT_EQ(renderer.selectShader(fake), S_FALSE);
    EXPECT_EQ(fake.initialiseCount, 1);
}

TEST_F(FrameRendererTest, aShaderWithoutItsCodeFailsTheDevice) {
    device.missingPrograms = {ShaderProgram::singleView};
    EXPECT_EQ(init(), E_FAIL);
    EXPECT_FALSE(renderer.isOpen());
    ASSERT_EQ(lines().size(), 6U);
    const std::string missing = "T:E:No shader data\n";
    EXPECT_EQ(
        std::vector(lines().begin(), lines().begin() + 5),
        (std::vector<std::string>{missing, missing, missing, "T:E:HR=0x80004005 D3DERR=16389\n", missing}));
    EXPECT_NE(lines()[5].find("InitDirect3D()"), std::string::npos);
}

TEST_F(FrameRendererTest, theShaderThatDrewIsReleased) {
    ASSERT_EQ(init(), S_OK);
    PixelShaderUse use;
    ASSERT_EQ(renderer.selectShader(fake), S_OK);
    EXPECT_EQ(shader.pixelShader(use), E_FAIL);
    // The same again is only made anew.
    ASSERT_EQ(renderer.selectShader(fake), S_OK);
    EXPECT_EQ(fake.releaseCount, 0);
    ASSERT_EQ(renderer.selectShader(otherFake), S_OK);
    EXPECT_EQ(fake.releaseCount, 1);
    renderer.close();
    EXPECT_EQ(fake.releaseCount, 1);
    EXPECT_EQ(otherFake.releaseCount, 1);
    renderer.close();
    EXPECT_EQ(otherFake.releaseCount, 1);
}

TEST_F(FrameRendererTest, aShaderThatFailedIsReleasedToo) {
    ASSERT_EQ(init(), S_OK);
    fake.initialiseResults = {E_FAIL, E_FAIL, E_FAIL, E_FAIL};
    EXPECT_EQ(renderer.selectShader(fake), E_FAIL);
    renderer.close();
    EXPECT_EQ(fake.releaseCount, 1);
}

TEST(FrameRendererEnd, releasesShaderAndDevice) {
    diagnostics::FakeLogServices services;
    diagnostics::Log log(services);
    CFakeShader fake;
    {
        CFrameRenderer renderer(std::make_unique<tests::CRecordingDevice>(), {log, instanceId});
        ASSERT_EQ(renderer.InitDirect3D({PixelFormat::rgb32, 4, 4, 16, 64, false},
                                        {PixelFormat::rgb32, 4, 4, 16, false}, {}, fake),
                  S_OK);
    }
    EXPECT_EQ(fake.releaseCount, 1);
}

/// A shader whose work runs out of memory.
class CThrowingShader final : public IShader {
public:
    HRESULT initialise(IRenderDevice&) override { throw std::bad_alloc(); }
    void release() override { isReleased = true; }
    HRESULT pixelShader(PixelShaderUse&) override { return E_FAIL; }
    bool isReleased = false;
};

TEST_F(FrameRendererTest, anExceptionReleasesEverythingToo) {
    CThrowingShader throwing; // released by the failure
    EXPECT_THROW(renderer.InitDirect3D(inputFormat(PixelFormat::rgb32), output, view, throwing),
                 std::bad_alloc);
    EXPECT_FALSE(renderer.isOpen());
    EXPECT_TRUE(throwing.isReleased);
    EXPECT_EQ(init(), S_OK);
}

TEST_F(FrameRendererTest, theExcludeAreasRectangleGoesToTheDeviceAsItIs) {
    const ExcludeArea area{0.1, 0.2, 0.3, 0.4};
    view.setExcludeArea(area);
    ASSERT_EQ(init(), S_OK);
    // Edges 6.4, 9.6, 19.2 and 19.2 of 64×48 pixels, made even by (n + 1) / 2 · 2.
    const RecordedCall expected{
        .verb = Verb::geometry, .box = {6, 10, 20, 20}, .values = {0.1F, 0.2F, 0.3F, 0.4F}};
    EXPECT_EQ(device.calls.at(3), expected);

    device.calls.clear();
    view.setExcludeArea({0.5, 0.5, 0.5, 0.9});
    ASSERT_EQ(renderer.updateGeometry(view), S_OK);
    EXPECT_EQ(device.calls, (std::vector<RecordedCall>{
                                {.verb = Verb::geometry, .box = {}, .values = {0.5F, 0.5F, 0.5F, 0.9F}}}));
}

TEST_F(FrameRendererTest, geometryIsTheViewsLayout) {
    view.setOutputSize(64, 24);
    output.width = 64;
    ASSERT_EQ(init(), S_OK);
    // Twice as wide as the 4:3 input for its height: the single view reaches 2 half-heights beyond the
    // picture.
    const geometry::Vertex& lower = device.viewVertices.value()[4];
    EXPECT_FLOAT_EQ(lower.x, -1.0F);
    EXPECT_FLOAT_EQ(lower.y, 2.0F);
    view.setOutputSize(32, 24);
    device.fail(Verb::geometry, someFailure);
    EXPECT_EQ(renderer.updateGeometry(view), someFailure);
    EXPECT_TRUE(lines().empty());
    EXPECT_TRUE(renderer.isOpen());
}

TEST_F(FrameRendererTest, aFrameIsUploadedInTheFormatThatTheDeviceWasMadeFor) {
    ASSERT_EQ(init(PixelFormat::yv12), S_OK);
    device.calls.clear();
    EXPECT_EQ(renderer.UploadInputFrame(countingBytes(64 * 48 * 3 / 2)), S_OK);
    EXPECT_EQ(device.calls, (std::vector<RecordedCall>{{.verb = Verb::upload, .to = Surface::yPlane},
                                                       {.verb = Verb::upload, .to = Surface::crPlane},
                                                       {.verb = Verb::upload, .to = Surface::cbPlane}}));
    device.fail(Verb::upload, someFailure);
    EXPECT_EQ(renderer.UploadInputFrame(countingBytes(64 * 48 * 3 / 2)), S_OK);
}

TEST_F(FrameRendererTest, thePictureIsReadBackInTheOutputFormat) {
    output = {PixelFormat::rgb32, 2, 2, 8, true};
    device.pitchPadding = 4;
    ASSERT_EQ(init(), S_OK);
    device.picture = countingBytes(24);
    std::vector<std::byte> outputBytes(16);
    EXPECT_EQ(renderer.ReadBackOutputFrame(outputBytes, nullptr), S_OK);
    const auto all = countingBytes(24);
    std::vector<std::byte> expected(all.begin() + 12, all.begin() + 20);
    expected.insert(expected.end(), all.begin(), all.begin() + 8);
    EXPECT_EQ(outputBytes, expected);
    EXPECT_EQ(renderer.ReadBackOutputFrame(std::span(outputBytes).first(15), nullptr), E_FAIL);
    EXPECT_TRUE(renderer.isOpen());
}

TEST_F(FrameRendererTest, theOutputFormatMayChangeWithoutANewDevice) {
    output = {PixelFormat::rgb32, 2, 2, 8, true};
    ASSERT_EQ(init(), S_OK);
    device.picture = countingBytes(16);
    std::vector<std::byte> outputBytes(24);
    renderer.setOutputFormat({PixelFormat::rgb32, 2, 2, 12, false});
    EXPECT_EQ(renderer.ReadBackOutputFrame(outputBytes, nullptr), S_OK);
    const auto all = countingBytes(16);
    EXPECT_TRUE(std::equal(all.begin(), all.begin() + 8, outputBytes.begin()));
    EXPECT_TRUE(std::equal(all.begin() + 8, all.end(), outputBytes.begin() + 12));
    EXPECT_EQ(device.count(Verb::open), 1);
}

TEST_F(FrameRendererTest, thePictureIsShownToWhoeverAsks) {
    class CVisitor final : public IMappedRowsVisitor {
    public:
        HRESULT visit(const MappedRows& rows) override {
            seen = rows;
            return S_FALSE;
        }
        MappedRows seen;
    };
    CVisitor visitor;
    EXPECT_EQ(renderer.ReadBackPicture(visitor), E_FAIL) << "without a device";
    output = {PixelFormat::rgb32, 2, 2, 8, true};
    ASSERT_EQ(init(), S_OK);
    EXPECT_EQ(renderer.ReadBackPicture(visitor), S_FALSE) << "the visitor's answer";
    EXPECT_EQ(visitor.seen.data, device.picture.data());
    EXPECT_EQ(visitor.seen.width, 2);
    EXPECT_EQ(visitor.seen.height, 2);
    device.fail(Verb::readBack, static_cast<HRESULT>(0x887A0005U));
    EXPECT_EQ(renderer.ReadBackPicture(visitor), static_cast<HRESULT>(0x887A0005U));
    EXPECT_FALSE(renderer.isOpen());
}

TEST_F(FrameRendererTest, aDeviceThatWasRemovedIsClosed) {
    std::vector<std::byte> outputBytes(128 * 24, std::byte{9});
    for (const std::uint32_t code : {0x887A0005U, 0x887A0007U}) {
        const auto gone = static_cast<HRESULT>(code);
        ASSERT_EQ(init(), S_OK);
        device.fail(Verb::readBack, gone);
        EXPECT_EQ(renderer.ReadBackOutputFrame(outputBytes, nullptr), gone);
        EXPECT_FALSE(renderer.isOpen());
        PixelShaderUse use;
        EXPECT_EQ(shader.pixelShader(use), E_FAIL);
        device.answer = nullptr;
    }
    EXPECT_EQ(outputBytes, std::vector(128 * 24, std::byte{9}));
    EXPECT_EQ(init(), S_OK);
}

TEST_F(FrameRendererTest, aDeviceThatOnlyCouldNotMapStaysOpen) {
    std::vector<std::byte> outputBytes(128 * 24);
    ASSERT_EQ(init(), S_OK);
    device.fail(Verb::readBack, E_OUTOFMEMORY);
    EXPECT_EQ(renderer.ReadBackOutputFrame(outputBytes, nullptr), E_OUTOFMEMORY);
    EXPECT_TRUE(renderer.isOpen());
}

} // namespace
} // namespace tarvo::render
