#include "tests/render/shaders/EmbeddedShader.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

namespace tarvo::render {
namespace {

const std::string shaderFolder = TARVO_SHADER_FOLDER;

/// File to hash, from lines of a hash and a path.
std::map<std::string, std::string> readHashes(const std::string& path) {
    std::istringstream stream(tests::readText(path));
    std::map<std::string, std::string> result;
    std::string hash;
    std::string file;
    while (stream >> hash >> file)
        result.emplace(file, hash);
    return result;
}

TEST(BytecodeFiles, belongToTheSourcesAsTheyAre) {
    const auto recorded = readHashes(shaderFolder + "/bytecode/sources.txt");
    const auto present = readHashes(TARVO_SHADER_HASHES);
    ASSERT_FALSE(present.empty());
    EXPECT_EQ(recorded, present) << "run Resources/Shaders/compile";
}

TEST(BytecodeFiles, areOneForEachSource) {
    std::set<std::string> sources;
    std::set<std::string> bytecode;
    for (const auto& [path, hash] : readHashes(TARVO_SHADER_HASHES)) {
        if (path.ends_with(".hlsl"))
            sources.insert(path);
        if (path.ends_with(".cso"))
            bytecode.insert(path);
    }
    std::set<std::string> expectedSources;
    std::set<std::string> expectedBytecode;
    for (const ShaderResource& resource : shaderResources) {
        expectedSources.insert("src/" + std::string(resource.sourceName) + ".hlsl");
        expectedBytecode.insert("bytecode/" + std::string(resource.sourceName) + ".cso");
    }
    EXPECT_EQ(sources, expectedSources);
    EXPECT_EQ(bytecode, expectedBytecode);
}

TEST(ShaderResources, haveTheTypesAndIdsThatModulesHaveAlwaysHad) {
    using testing::AllOf;
    using testing::Field;
    using testing::StrEq;
    const auto resource = [](int id, const char* type, std::string_view source) {
        return AllOf(Field(&ShaderResource::id, id), Field(&ShaderResource::type, StrEq(type)),
                     Field(&ShaderResource::sourceName, source));
    };
    EXPECT_THAT(shaderResources,
                testing::UnorderedElementsAre(
                    resource(214, "PS", "PixelShaderDewarping"), resource(216, "PS", "PanoramaWallPS"),
                    resource(217, "PS", "PanoramaCeilingPS"), resource(218, "PS", "PanoramaDeskPS"),
                    resource(220, "PS", "CustomTransformPS"),
                    resource(222, "PS", "CustomTransformPanoramaVirtualPtzPS"), resource(223, "PS", "YV12PS"),
                    resource(224, "PS", "YUY2PS"), resource(225, "PS", "ExcludeRegionPS"),
                    resource(227, "VS", "VertexShader"), resource(228, "PS", "OverviewRegionPS"),
                    resource(229, "PS", "DefaultPS")));
}

TEST(ShaderResources, areFoundByProgram) {
    EXPECT_EQ(shaderResource(ShaderProgram::singleView).sourceName, "PixelShaderDewarping");
    EXPECT_EQ(shaderResource(ShaderProgram::vertex).sourceName, "VertexShader");
    EXPECT_EQ(shaderResource(ShaderProgram::plainCopy).sourceName, "DefaultPS");
    EXPECT_EQ(shaderResource(dewarpProgramOf(geometry::PanoramaMode::singleView)).id, 214);
    EXPECT_EQ(shaderResource(dewarpProgramOf(geometry::PanoramaMode::wall)).id, 216);
    EXPECT_EQ(shaderResource(dewarpProgramOf(geometry::PanoramaMode::ceiling)).id, 217);
    EXPECT_EQ(shaderResource(dewarpProgramOf(geometry::PanoramaMode::desk)).id, 218);
}

class BytecodeTest : public testing::TestWithParam<ShaderResource> {};

TEST_P(BytecodeTest, isFoundAtRunTimeByTypeAndId) {
    const std::span<const std::byte> embedded = embeddedBytecode(GetParam());
    const std::string file =
        tests::readFile(shaderFolder + "/bytecode/" + std::string(GetParam().sourceName) + ".cso");
    ASSERT_FALSE(file.empty());
    EXPECT_TRUE(std::ranges::equal(embedded, std::as_bytes(std::span(file))));
}

TEST_P(BytecodeTest, isSignedShaderModel40) {
    const tests::ShaderReflection reflection = embeddedReflection(GetParam());
    EXPECT_EQ(reflection.majorVersion, 4U);
    EXPECT_EQ(reflection.minorVersion, 0U);
    EXPECT_EQ(reflection.isVertexShader, isVertexProgram(GetParam()));
    EXPECT_EQ(reflection.isPixelShader, !isVertexProgram(GetParam()));

    const tests::ShaderCode code = embeddedCode(GetParam());
    EXPECT_EQ(code.majorVersion, 4U);
    EXPECT_EQ(code.minorVersion, 0U);
    EXPECT_EQ(code.isVertexShader, isVertexProgram(GetParam()));
    EXPECT_EQ(code.isPixelShader, !isVertexProgram(GetParam()));
    EXPECT_FALSE(code.opcodes.empty());
}

INSTANTIATE_TEST_SUITE_P(Shaders, BytecodeTest, testing::ValuesIn(shaderResources), nameOfCase);

} // namespace
} // namespace tarvo::render
