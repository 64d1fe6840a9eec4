#pragma once

#include "apps/tarvo-dewarp/Picture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::apps {

/// What a run of the program left behind.
struct Outcome {
    int status;
    std::string out;
    std::string err;
};

/// Runs the program in this process.
Outcome run(const std::vector<std::string>& arguments);

/// The text of a path as the program takes it.
std::string textOf(const std::filesystem::path& path);

std::vector<std::uint8_t> bytesOf(std::string_view text);
std::vector<std::uint8_t> readBytes(const std::filesystem::path& path);
void writeBytes(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes);
void writeBytes(const std::filesystem::path& path, std::string_view text);

/// An opaque picture in which every pixel differs from its neighbours.
Picture colourfulPicture(int width, int height);

/// Mean difference of the colour channels of two pictures of the same size.
double meanDifference(const Picture& a, const Picture& b);

/// Gives each test an empty directory of its own.
class CAppTest : public testing::Test {
protected:
    CAppTest();
    ~CAppTest() override;

    std::filesystem::path file(std::string_view name) const { return m_directory / name; }
    std::string fileText(std::string_view name) const { return textOf(file(name)); }

    /// The names of all that is in the directory, in order.
    std::vector<std::string> names() const;

    /// A PNG file with a colourful picture.
    std::string pictureFile(std::string_view name, int width, int height) const;

private:
    std::filesystem::path m_directory;
};

} // namespace tarvo::apps
