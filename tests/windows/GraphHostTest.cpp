// The sample with a graph of the system's: every frame of its scene comes out, once or, where the accelerator
// is in the graph, still once, since none of them is late.

#include "tests/windows/RegisteredProduct.h"
#include "tests/windows/RegistryTurn.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace tarvo::tests {
namespace {

std::string bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void playAndLook(const std::string& option) {
    SCOPED_TRACE(option);
    const std::filesystem::path picture = std::filesystem::temp_directory_path() / "tarvo-graph-host.ppm";
    std::filesystem::remove(picture);
    const Ended ended = run(std::string(TARVO_GRAPH_HOST) + option + " \"" + picture.string() + '"');
    EXPECT_EQ(ended.status, 0U) << ended.output;
    EXPECT_EQ(ended.output, "51 pictures of 256x192, the last at 2.00 s\r\n");
    const std::string bytes = bytesOf(picture);
    EXPECT_EQ(bytes.size(), std::string("P6\n256 192\n255\n").size() + 3U * 256 * 192);
    // A view of the room has many shades, a lost picture one.
    EXPECT_GT(std::set<char>(bytes.begin(), bytes.end()).size(), 50U);
    std::filesystem::remove(picture);
}

TEST(GraphHost, playsItsScene) {
    const CRegistryTurn turn;
    const CRegisteredProduct product;
    playAndLook("");
    playAndLook(" --accelerated");
}

TEST(GraphHost, saysWhatIsMissing) {
    const CRegistryTurn turn;
    const Ended ended = run(std::string(TARVO_GRAPH_HOST) + " never.ppm");
    EXPECT_EQ(ended.status, 1U);
    EXPECT_NE(ended.output.find("graph-host: wrapping the transform failed"), std::string::npos)
        << ended.output;
    EXPECT_FALSE(std::filesystem::exists("never.ppm"));
    EXPECT_EQ(run(TARVO_GRAPH_HOST).status, 2U);
}

} // namespace
} // namespace tarvo::tests
