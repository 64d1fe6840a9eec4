#include "apps/tarvo-dewarp/video/Interruption.h"
#include "tests/apps/video/VideoTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <streambuf>
#include <string>

namespace tarvo::apps {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class VideoCommand : public CVideoTest {
protected:
    /// A clip of the room, in which a ball rolls.
    Y4mClip sceneClip(const std::string& seconds) const {
        const Outcome outcome = run({"scene", fileText("scene.y4m"), "--seconds", seconds, "--frame-rate",
                                     "10", "--size", "160x120", "--tilt-orientation", "ceiling"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        const std::vector<std::uint8_t> bytes = readBytes(file("scene.y4m"));
        return parseClip({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
};

TEST_F(VideoCommand, showsEachFrameAsAStill) {
    const Y4mClip scene = sceneClip("0.3");
    ASSERT_EQ(scene.frames.size(), 3U);
    EXPECT_THAT(scene.header, HasSubstr(" W160 H120 F10:1 "));
    EXPECT_NE(scene.frames[0], scene.frames[1]);
    const std::vector<std::vector<std::string>> views{
        {"--view-type", "quad", "--tilt-orientation", "ceiling"},
        {"--tilt-orientation", "ceiling", "--pan", "120", "--tilt", "-40", "--field-of-view", "25"},
        {"--view-type", "singleOverview", "--overview-map-placement-left", "--exclude-rect", "0,0,0.5,0.5"},
        {"--view-type", "panoramaDouble", "--panorama-pan-offset", "20", "--lens-profile", "0,0,0.35"},
        {"--bypass"}};
    for (const auto& options : views) {
        SCOPED_TRACE(testing::PrintToString(options));
        makeVideo(fileText("scene.y4m"), fileText("out.y4m"), options);
        const std::vector<std::uint8_t> bytes = readBytes(file("out.y4m"));
        const Y4mClip out = parseClip({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        EXPECT_THAT(out.header, StartsWith("YUV4MPEG2 W64 H48 F10:1 "));
        ASSERT_EQ(out.frames.size(), 3U);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(out.yv12(i), still(scene, i, options)) << i;
        }
    }
}

TEST_F(VideoCommand, repeatsFramesForAHigherRate) {
    const std::string stream = noiseClip(96, 72, 4);
    const Y4mClip plain = shown(stream);
    const Y4mClip twice = shown(stream, {"--output-frame-rate", "60"});
    EXPECT_THAT(plain.header, HasSubstr(" F30:1 "));
    EXPECT_THAT(twice.header, HasSubstr(" F60:1 "));
    ASSERT_EQ(plain.frames.size(), 4U);
    ASSERT_EQ(twice.frames.size(), 8U);
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(twice.frames[i], plain.frames[i / 2]) << i;
    }
}

TEST_F(VideoCommand, leavesFramesOutForALowerRate) {
    const std::string stream = noiseClip(96, 72, 6);
    const Y4mClip plain = shown(stream);
    const Y4mClip half = shown(stream, {"--output-frame-rate", "15"});
    EXPECT_THAT(half.header, HasSubstr(" F15:1 "));
    EXPECT_THAT(half.frames, ElementsAre(plain.frames[0], plain.frames[2], plain.frames[4]));
    EXPECT_EQ(shown(stream, {"--output-frame-rate", "30"}).frames, plain.frames);
}

TEST_F(VideoCommand, keepsTheClipAsLongAsItWas) {
    // 0.4 s; the transform makes whole frames of each input, and the file keeps the time by repeating them.
    std::string stream = noiseClip(16, 16, 10);
    stream.replace(stream.find("F30:1"), 5, "F25:1");
    EXPECT_EQ(shown(stream, {"--output-frame-rate", "60"}).frames.size(), 24U);
    EXPECT_EQ(shown(stream, {"--output-frame-rate", "50"}).frames.size(), 20U);
    EXPECT_EQ(shown(stream, {"--output-frame-rate", "10"}).frames.size(), 4U);
}

TEST_F(VideoCommand, readsAndWritesStandardStreams) {
    const std::string stream = noiseClip(96, 72, 2);
    const Y4mClip expected = shown(stream);
    const Outcome outcome = runWithInput(video("-", "-"), stream);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(parseClip(outcome.out).frames, expected.frames);
}

TEST_F(VideoCommand, namesFilesThatCannotBe) {
    writeBytes(file("in.y4m"), noiseClip(16, 16, 1));
    const std::string in = fileText("in.y4m");
    const std::string out = fileText("out.y4m");
    expectFailure(video(fileText("absent.y4m"), out), 1, "absent.y4m: No such file");
    expectFailure(video(fileText("absent.mp4"), out), 1, "absent.mp4: No such file");
    expectFailure(video(textOf(file("")), out), 1, "it is a directory");
    expectFailure(video(in, fileText("no/out.y4m")), 1, "there is no directory");
    std::filesystem::create_directory(file("folder.y4m"));
    expectFailure(video(in, fileText("folder.y4m")), 1, "it is a directory");
    expectFailure(video(in, out, {"--module", fileText("absent")}), 2, "--module");
    std::vector<std::string> otherModule = video(in, out);
    otherModule[4] = fileText("absent-module");
    expectFailure(otherModule, 1, "absent-module\" failed: there is no such file");
    otherModule[4] = TARVO_PLAIN_LIBRARY;
    expectFailure(otherModule, 1, "the library has no function");
}

TEST_F(VideoCommand, refusesWrongArguments) {
    writeBytes(file("in.y4m"), noiseClip(16, 16, 1));
    const std::string in = fileText("in.y4m");
    const std::string out = fileText("out.y4m");
    expectFailure(video(in, out, {"--output-frame-rate", "0"}), 2, "--output-frame-rate");
    expectFailure(video(in, out, {"--input-format", "nv12"}), 2, "yv12, yuy2 or rgb32");
    expectFailure(video(in, out, {"--output-format", "yuy2"}), 2, "yv12 or rgb32");
    expectFailure({"video", in}, 2, "OUTPUT");
    expectFailure({"video"}, 2, "INPUT");
}

TEST_F(VideoCommand, leavesAnOldFileWhenItFails) {
    writeBytes(file("out.y4m"), "precious");
    const std::string whole = noiseClip(16, 16, 3);
    writeBytes(file("in.y4m"), whole.substr(0, whole.size() - 1));
    expectFailure(video(fileText("in.y4m"), fileText("out.y4m")), 1, "it ends in the middle of frame 3");
    EXPECT_EQ(readBytes(file("out.y4m")), bytesOf("precious"));
    writeBytes(file("in.y4m"), whole);
    makeVideo(fileText("in.y4m"), fileText("out.y4m"));
    EXPECT_THAT(names(), ElementsAre("in.y4m", "out.y4m"));
    EXPECT_EQ(
        readBytes(file("out.y4m")).size(),
        std::string("YUV4MPEG2 W64 H48 F30:1 Ip A1:1 C420jpeg XYSCSS=420JPEG XCOLORRANGE=LIMITED\n").size() +
            3 * (6 + 64 * 48 * 3 / 2));
}

/// A standard input during which a signal comes, once the first part was read.
class CInterruptingInput : public std::streambuf {
public:
    CInterruptingInput(std::string first, std::string second, int signal)
        : m_first(std::move(first)), m_second(std::move(second)), m_signal(signal) {}

    bool wasSignalled() const { return m_parts == 2; }

protected:
    int_type underflow() override {
        if (m_parts == 2) {
            return traits_type::eof();
        }
        if (m_parts == 1) {
            std::raise(m_signal);
        }
        std::string& part = m_parts == 0 ? m_first : m_second;
        ++m_parts;
        setg(part.data(), part.data(), part.data() + part.size());
        return traits_type::to_int_type(*gptr());
    }

private:
    std::string m_first;
    std::string m_second;
    int m_signal;
    int m_parts = 0;
};

TEST_F(VideoCommand, leavesNothingWhenItIsInterrupted) {
    writeBytes(file("old.y4m"), "precious");
    const std::string stream = noiseClip(96, 72, 5);
    const std::size_t half = stream.size() / 2;
    for (const auto& [signal, status] : {std::pair(SIGINT, 130), std::pair(SIGTERM, 143)}) {
        for (const char* const name : {"old.y4m", "new.y4m"}) {
            CInterruptingInput input(stream.substr(0, half), stream.substr(half), signal);
            const Outcome outcome = runWithInput(video("-", fileText(name)), input);
            EXPECT_TRUE(input.wasSignalled());
            EXPECT_EQ(outcome.status, status);
            EXPECT_EQ(outcome.err, "");
            EXPECT_THAT(names(), ElementsAre("old.y4m"));
            EXPECT_EQ(readBytes(file("old.y4m")), bytesOf("precious"));
        }
    }
    EXPECT_FALSE(video::CInterruption::isAsked());
}

TEST_F(VideoCommand, showsNoProgressBesideATerminal) {
    // Tests run without one; the command's messages are all there is on its stream for errors.
    testing::internal::CaptureStderr();
    shown(noiseClip(16, 16, 3));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(VideoCommand, explainsItself) {
    const Outcome help = run({"video", "--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* const option : {"--moves", "--output-frame-rate", "--encoder", "--quiet", "--module",
                                     "--view-type", "--input-format", "--bypass"}) {
        EXPECT_THAT(help.out, HasSubstr(option));
    }
}

class SceneClip : public CAppTest {};

TEST_F(SceneClip, isADrawingOfEachMoment) {
    const std::vector<std::string> view{"--size", "48x36", "--tilt-orientation", "ceiling"};
    const auto scene = [&](const std::string& name, std::vector<std::string> options) {
        options.insert(options.begin(), {"scene", fileText(name)});
        options.insert(options.end(), view.begin(), view.end());
        return run(options);
    };
    EXPECT_EQ(scene("clip.y4m", {"--seconds", "3", "--frame-rate", "1", "--time", "2"}).status, 0);
    EXPECT_EQ(scene("moment.y4m", {"--seconds", "1", "--frame-rate", "1", "--time", "4"}).status, 0);
    const auto read = [&](const char* name) {
        const std::vector<std::uint8_t> bytes = readBytes(file(name));
        return parseClip({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    };
    const Y4mClip clip = read("clip.y4m");
    EXPECT_THAT(clip.header, AllOf(StartsWith("YUV4MPEG2 W48 H36 F1:1 "), testing::EndsWith("RANGE=FULL")));
    ASSERT_EQ(clip.frames.size(), 3U);
    EXPECT_EQ(clip.frames[2], read("moment.y4m").frames.at(0));
    EXPECT_NE(clip.frames[2], clip.frames[0]);
}

TEST_F(SceneClip, isRefusedWhereItCannotBe) {
    const auto outcomeOf = [&](const std::string& name, std::vector<std::string> options) {
        options.insert(options.begin(), {"scene", fileText(name)});
        const Outcome outcome = run(options);
        EXPECT_THAT(names(), ElementsAre());
        return outcome;
    };
    EXPECT_EQ(outcomeOf("clip.y4m", {}).status, 2); // a picture's name ends in .png
    EXPECT_EQ(outcomeOf("clip.png", {"--frame-rate", "5"}).status, 2);
    EXPECT_EQ(outcomeOf("clip.y4m", {"--seconds", "0"}).status, 2);
    EXPECT_EQ(outcomeOf("clip.y4m", {"--seconds", "1", "--size", "31x16"}).status, 2);
    EXPECT_EQ(outcomeOf("clip.png", {"--seconds", "1"}).status, 1);
    EXPECT_EQ(outcomeOf("no/clip.y4m", {"--seconds", "1"}).status, 1);
}

} // namespace
} // namespace tarvo::apps
