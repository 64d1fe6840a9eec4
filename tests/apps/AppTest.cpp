#include "tests/apps/AppTest.h"

#include "apps/tarvo-dewarp/PictureFile.h"
#include "apps/tarvo-dewarp/program/TarvoDewarp.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <stdexcept>

namespace tarvo::apps {

namespace fs = std::filesystem;

Outcome run(const std::vector<std::string>& arguments) {
    std::ostringstream out;
    std::ostringstream err;
    const int status = runTarvoDewarp(arguments, out, err);
    return {status, out.str(), err.str()};
}

std::string textOf(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::vector<std::uint8_t> bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

std::vector<std::uint8_t> readBytes(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + textOf(path));
    }
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeBytes(const fs::path& path, const std::vector<std::uint8_t>& bytes) {
    writeBytes(path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

void writeBytes(const fs::path& path, std::string_view text) {
    std::ofstream stream(path, std::ios::binary);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream) {
        throw std::runtime_error("cannot write " + textOf(path));
    }
}

Picture colourfulPicture(int width, int height) {
    Picture picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            picture.at(x, y) = {static_cast<std::uint8_t>(x * 7 + y * 3),
                                static_cast<std::uint8_t>(x * 13 + 40),
                                static_cast<std::uint8_t>(y * 29 + 90), 255};
        }
    }
    return picture;
}

double meanDifference(const Picture& a, const Picture& b) {
    if (a.width != b.width || a.height != b.height) {
        throw std::invalid_argument("the pictures differ in size");
    }
    double sum = 0.0;
    for (std::size_t i = 0; i < a.pixels.size(); ++i) {
        sum += std::abs(a.pixels[i].blue - b.pixels[i].blue) +
               std::abs(a.pixels[i].green - b.pixels[i].green) + std::abs(a.pixels[i].red - b.pixels[i].red);
    }
    return sum / (3.0 * static_cast<double>(a.pixels.size()));
}

CAppTest::CAppTest() {
    std::random_device random;
    do {
        std::ostringstream name;
        name << "tarvo-apps-test-" << std::hex << random() << random();
        m_directory = fs::temp_directory_path() / name.str();
    } while (!fs::create_directory(m_directory));
}

CAppTest::~CAppTest() {
    std::error_code ignored;
    fs::remove_all(m_directory, ignored);
}

std::vector<std::string> CAppTest::names() const {
    std::vector<std::string> result;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_directory)) {
        result.push_back(textOf(entry.path().filename()));
    }
    std::ranges::sort(result);
    return result;
}

std::string CAppTest::pictureFile(std::string_view name, int width, int height) const {
    writePng(file(name), colourfulPicture(width, height));
    return fileText(name);
}

} // namespace tarvo::apps
