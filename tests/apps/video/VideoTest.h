#pragma once

#include "tests/apps/AppTest.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::apps {

/// A YUV4MPEG2 file taken apart.
struct Y4mClip {
    std::string header; ///< first line
    int width = 0;
    int height = 0;
    std::vector<std::string> frames; ///< Y, U, V

    /// The frame as the transform holds it: Y, V, U. Even sides only.
    std::vector<std::uint8_t> yv12(std::size_t frame) const;
};

/// Takes a stream apart whose first line is known to have width and height first. Fails the test for one that
/// is not whole.
Y4mClip parseClip(std::string_view text);

/// A frame of such a stream in which every byte differs from its neighbours; another number, another frame.
std::string noiseFrame(int width, int height, unsigned number);

/// A stream of noise frames at 30 a second.
std::string noiseClip(int width, int height, unsigned frames);

/// Runs the program with another standard input.
Outcome runWithInput(const std::vector<std::string>& arguments, std::streambuf& input);
Outcome runWithInput(const std::vector<std::string>& arguments, const std::string& input);

/// A test of the command `video`, which small views of 64x48 are made with.
class CVideoTest : public CAppTest {
protected:
    /// Skips the test where nothing can be drawn.
    void SetUp() override;

    /// The command with the module under test.
    std::vector<std::string> video(const std::string& input, const std::string& output,
                                   const std::vector<std::string>& options = {}) const;
    /// Runs it and expects success.
    void makeVideo(const std::string& input, const std::string& output,
                   const std::vector<std::string>& options = {}) const;
    /// Writes a stream, shows it through the command and gives what came out.
    Y4mClip shown(const std::string& stream, const std::vector<std::string>& options = {}) const;
    /// What the command `still` makes of a frame of the clip with these options.
    std::vector<std::uint8_t> still(const Y4mClip& clip, std::size_t frame,
                                    const std::vector<std::string>& options = {}) const;

    /// Expects an exit status and a message, and that nothing but the input is there afterwards.
    void expectFailure(const std::vector<std::string>& arguments, int status,
                       const std::string& message) const;
};

} // namespace tarvo::apps
