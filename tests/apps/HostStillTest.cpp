#include "apps/host/Module.h"
#include "apps/host/TransformProperties.h"
#include "apps/host/TransformStream.h"
#include "apps/tarvo-render/RenderDevices.h"
#include "apps/tarvo-render/TarvoRender.h"
#include "tests/apps/AppTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace tarvo::apps {
namespace {

using host::FramePixels;

constexpr std::int32_t inputWidth = 96;
constexpr std::int32_t inputHeight = 72;

/// A view as the host and as the command line ask for it.
struct View {
    host::TransformProperties properties;
    std::vector<std::string> options;
};

std::vector<View> views() {
    std::vector<View> result;
    const std::vector<std::string> types{"single", "quad", "panoramaSingle", "panoramaDouble",
                                         "singleOverview"};
    for (std::size_t type = 0; type < types.size(); ++type) {
        View view;
        view.properties.viewType = static_cast<LONG>(type);
        view.properties.tiltOrientation = 2;
        view.properties.pan = 25.0;
        view.properties.tilt = -40.0;
        view.properties.fieldOfView = 35.0;
        view.properties.outputWidth = 64;
        view.properties.excludeRect = {0.25, 0.25, 0.5, 0.5};
        view.options = {"--view-type",
                        types[type],
                        "--tilt-orientation",
                        "ceiling",
                        "--pan",
                        "25",
                        "--tilt",
                        "-40",
                        "--field-of-view",
                        "35",
                        "--output-width",
                        "64",
                        "--exclude-rect",
                        "0.25,0.25,0.5,0.5"};
        result.push_back(view);
    }
    View bypass;
    bypass.properties.isBypassed = true;
    bypass.properties.outputWidth = 64;
    bypass.options = {"--bypass", "--output-width", "64"};
    result.push_back(bypass);
    return result;
}

/// Every byte another than its neighbours; in YUV these are colours, too.
std::vector<std::byte> noise(std::size_t size) {
    std::vector<std::byte> bytes(size);
    std::uint32_t state = 12345;
    for (std::byte& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<std::byte>(state >> 24);
    }
    return bytes;
}

class HostStill : public CAppTest {
protected:
    void SetUp() override {
        const host::CModule module(TARVO_PRODUCT_MODULE);
        VARIANT_BOOL isCapable = VARIANT_FALSE;
        ASSERT_EQ(module.createTransform()->CheckDewarpingCapability(&isCapable), S_OK);
        if (isCapable == VARIANT_FALSE) {
            GTEST_SKIP() << "this machine cannot render";
        }
    }

    /// The frame by way of the module.
    std::vector<std::uint8_t> throughModule(const host::VideoFormat& input, FramePixels output,
                                            const View& view) const {
        const host::CModule module(TARVO_PRODUCT_MODULE);
        const auto transform = module.createTransform();
        host::CTransformStream stream(transform);
        host::putProperties(*transform, view.properties);
        stream.setInput(input);
        stream.setOutput(output);
        host::putPosition(*transform, view.properties);
        stream.putFrame(noise(input.frameBytes));
        const auto frame = stream.nextFrame();
        if (!frame) {
            ADD_FAILURE() << "no frame";
            return {};
        }
        std::vector<std::uint8_t> bytes;
        for (const std::byte byte : frame->buffer->contents()) {
            bytes.push_back(std::to_integer<std::uint8_t>(byte));
        }
        return bytes;
    }

    /// The same by the sequence of passes alone, without the object around it.
    std::vector<std::uint8_t> throughSequence(const std::string& input, const std::string& output,
                                              const View& view) const {
        // The first name is that of the device which the module uses.
        const std::string devices = deviceNames();
        const std::string device = devices.substr(0, devices.find_first_of(", "));
        std::vector<std::string> arguments{"still",
                                           fileText("in.raw"),
                                           fileText("out.raw"),
                                           "--input-size",
                                           "96x72",
                                           "--input-format",
                                           input,
                                           "--output-format",
                                           output,
                                           "--device",
                                           device};
        arguments.insert(arguments.end(), view.options.begin(), view.options.end());
        std::ostringstream out;
        std::ostringstream err;
        EXPECT_EQ(runTarvoRender(arguments, out, err), 0) << err.str();
        return readBytes(file("out.raw"));
    }
};

TEST_F(HostStill, givesTheBytesOfTheSequenceInEveryViewAndFormat) {
    const std::vector<std::pair<FramePixels, std::string>> inputs{
        {FramePixels::rgb32, "rgb32"}, {FramePixels::yv12, "yv12"}, {FramePixels::yuy2, "yuy2"}};
    const std::vector<std::pair<FramePixels, std::string>> outputs{{FramePixels::rgb32, "rgb32"},
                                                                   {FramePixels::yv12, "yv12"}};
    for (const auto& [input, inputName] : inputs) {
        const auto format = host::makeVideoFormat(
            input, inputWidth, input == FramePixels::rgb32 ? -inputHeight : inputHeight, 400'000);
        const std::vector<std::byte> frame = noise(format.frameBytes);
        writeBytes(file("in.raw"),
                   std::string_view(reinterpret_cast<const char*>(frame.data()), frame.size()));
        for (const auto& [output, outputName] : outputs) {
            for (const View& view : views()) {
                SCOPED_TRACE(inputName + " to " + outputName + ' ' + testing::PrintToString(view.options));
                const auto module = throughModule(format, output, view);
                const auto sequence = throughSequence(inputName, outputName, view);
                ASSERT_EQ(module.size(), sequence.size());
                EXPECT_TRUE(std::ranges::equal(module, sequence));
                EXPECT_NE(*std::ranges::min_element(module), *std::ranges::max_element(module));
            }
        }
    }
}

TEST_F(HostStill, showsTheCustomViewAsTheSequenceDoes) {
    ASSERT_EQ(run({"tables", fileText("view.tables"), "--projection", "equirectangular", "--grid", "90x45",
                   "--vertical-field-of-view", "90", "--input-size", "96x72"})
                  .status,
              0);
    const std::string input = pictureFile("in.png", inputWidth, inputHeight);
    const std::vector<std::string> common{
        "--view-type",    "custom", "--custom-transform-data", fileText("view.tables"),
        "--output-width", "48",     "--output-height",         "36"};
    const auto expectAgreement = [&](std::vector<std::string> options) {
        SCOPED_TRACE(testing::PrintToString(options));
        options.insert(options.end(), common.begin(), common.end());
        std::vector<std::string> byModule{"still", input, fileText("module.raw")};
        byModule.insert(byModule.end(), options.begin(), options.end());
        const Outcome outcome = run(byModule);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        std::vector<std::string> bySequence{"still", input, fileText("sequence.raw")};
        bySequence.insert(bySequence.end(), options.begin(), options.end());
        std::ostringstream out;
        std::ostringstream err;
        EXPECT_EQ(runTarvoRender(bySequence, out, err), 0) << err.str();
        EXPECT_EQ(readBytes(file("module.raw")), readBytes(file("sequence.raw")));
    };
    expectAgreement({"--view-rect", "0.1,0.2,0.7,0.9", "--effect-level", "0.4"});
    const std::vector<std::string> ptz{"--custom-transform-control-type", "virtualPtzFromPanorama"};
    const std::vector<std::vector<std::string>> cameras{
        {},
        {"--virtual-ptz-tilt", "12"},
        {"--virtual-ptz-pan", "0", "--virtual-ptz-tilt", "50"},
        {"--virtual-ptz-pan", "1", "--virtual-ptz-field-of-view", "120"},
        {"--virtual-ptz-pan", "-80", "--virtual-ptz-tilt", "30", "--virtual-ptz-field-of-view", "70",
         "--virtual-ptz-use-strict-border-mode"},
        {"--virtual-ptz-pan", "60", "--virtual-ptz-camera-pitch", "-15", "--virtual-ptz-camera-roll", "8",
         "--virtual-ptz-effect-level", "0.5"},
        {"--virtual-ptz-field-of-view", "100", "--virtual-ptz-tilt", "-40",
         "--virtual-ptz-panorama-horizontal-field-of-view", "120",
         "--virtual-ptz-panorama-vertical-field-of-view", "60"},
        {"--virtual-ptz-use-strict-border-mode", "--virtual-ptz-effect-level", "0"},
    };
    for (std::vector<std::string> camera : cameras) {
        camera.insert(camera.end(), ptz.begin(), ptz.end());
        expectAgreement(camera);
    }
}

} // namespace
} // namespace tarvo::apps
