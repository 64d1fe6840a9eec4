#include "tests/support/Dxbc.h"

#include "tests/render/shaders/EmbeddedShader.h"

#include <algorithm>
#include <functional>

namespace tarvo::tests {
namespace {

using Bytes = std::vector<std::byte>;

Bytes bytesOf(render::ShaderProgram program) {
    const auto bytecode = render::embeddedBytecode(render::shaderResource(program));
    return {bytecode.begin(), bytecode.end()};
}

Bytes chunkOf(render::ShaderProgram program, const char* tag) {
    const Bytes bytes = bytesOf(program);
    const auto chunk = CDxbcContainer(bytes).chunk(tag);
    return {chunk.begin(), chunk.end()};
}

void setWord(Bytes& bytes, std::size_t offset, std::uint32_t word) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes.at(offset + i) = static_cast<std::byte>(word >> (8 * i) & 0xFF);
}

void sign(Bytes& container) {
    std::ranges::copy(bytecodeSignature(container), container.begin() + 4);
}

TEST(Dxbc, signsAsTheCompilerDoes) {
    // Both ways of ending: with room for the closing words behind the data, and without.
    const Bytes withRoom = bytesOf(render::ShaderProgram::plainCopy);
    ASSERT_LT((withRoom.size() - 20) % 64, 56U);
    const Bytes withoutRoom = bytesOf(render::ShaderProgram::panoramaCeiling);
    ASSERT_GE((withoutRoom.size() - 20) % 64, 56U);
    for (const Bytes& container : {withRoom, withoutRoom})
        EXPECT_TRUE(std::ranges::equal(bytecodeSignature(container), std::span(container).subspan(4, 16)));
}

TEST(Dxbc, refusesEveryChangedByte) {
    Bytes container = bytesOf(render::ShaderProgram::overviewRegion);
    EXPECT_NO_THROW(CDxbcContainer{container});
    for (std::size_t i = 0; i < container.size(); ++i) {
        container[i] ^= std::byte{1};
        EXPECT_THROW(CDxbcContainer{container}, CBytecodeError) << i;
        container[i] ^= std::byte{1};
    }
}

TEST(Dxbc, refusesEveryTruncatedContainer) {
    const Bytes container = bytesOf(render::ShaderProgram::overviewRegion);
    for (std::size_t size = 0; size < container.size(); ++size) {
        Bytes shorter(container.begin(), container.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_THROW(CDxbcContainer{shorter}, CBytecodeError) << size;
        // Also when the container agrees with its own shortness: then a chunk lies outside.
        if (size >= 32) {
            setWord(shorter, 24, static_cast<std::uint32_t>(size));
            sign(shorter);
            EXPECT_THROW(CDxbcContainer{shorter}, CBytecodeError) << size;
        }
    }
}

TEST(Dxbc, refusesChunksOutsideTheContainer) {
    const Bytes whole = bytesOf(render::ShaderProgram::overviewRegion);
    const std::uint32_t firstChunk = CByteReader(whole).word(32);
    const auto size = static_cast<std::uint32_t>(whole.size());
    const auto isRefusedWith = [&](std::size_t offset, std::uint32_t word) {
        Bytes changed = whole;
        setWord(changed, offset, word);
        sign(changed);
        EXPECT_THROW(CDxbcContainer{changed}, CBytecodeError) << offset << " " << word;
    };
    for (const std::uint32_t count : {size, 0x7FFFFFFFU, 0xFFFFFFFFU})
        isRefusedWith(28, count);
    for (const std::uint32_t offset : {size, size - 4, 0xFFFFFFFCU, 0xFFFFFFFFU})
        isRefusedWith(32, offset);
    for (const std::uint32_t length : {size, 0xFFFFFFF8U, 0xFFFFFFFFU})
        isRefusedWith(std::size_t{firstChunk} + 4, length);
}

TEST(Dxbc, knowsItsChunksByTag) {
    const Bytes bytes = bytesOf(render::ShaderProgram::yuy2ToRgb);
    const CDxbcContainer container(bytes);
    EXPECT_FALSE(container.chunk("RDEF").empty());
    EXPECT_THROW(container.chunk("NONE"), CBytecodeError);
}

struct ChunkReader {
    const char* tag;
    std::function<void(std::span<const std::byte>)> read;
};

std::vector<ChunkReader> chunkReaders() {
    return {{"RDEF", [](std::span<const std::byte> chunk) { readReflection(chunk); }},
            {"ISGN", [](std::span<const std::byte> chunk) { readSignature(chunk); }},
            {"OSGN", [](std::span<const std::byte> chunk) { readSignature(chunk); }},
            {"SHDR", [](std::span<const std::byte> chunk) { readCode(chunk); }}};
}

TEST(ShaderReflection, refusesTruncatedChunks) {
    for (const ChunkReader& reader : chunkReaders()) {
        const Bytes whole = chunkOf(render::ShaderProgram::yuy2ToRgb, reader.tag);
        EXPECT_NO_THROW(reader.read(whole)) << reader.tag;
        // Texts close a chunk, filled up to whole words.
        for (std::size_t size = 0; size + 4 <= whole.size(); ++size) {
            const Bytes shorter(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_THROW(reader.read(shorter), CBytecodeError) << reader.tag << " " << size;
        }
    }
}

TEST(ShaderReflection, survivesAnyWord) {
    // Counts, offsets and lengths far outside: whatever a reader says, it says so by its own exception and
    // soon.
    int refused = 0;
    for (const ChunkReader& reader : chunkReaders()) {
        const Bytes whole = chunkOf(render::ShaderProgram::yuy2ToRgb, reader.tag);
        for (std::size_t offset = 0; offset + 4 <= whole.size(); offset += 4) {
            for (const std::uint32_t word : {0U, 0x7FFFFFFFU, 0xFFFFFFF0U, 0xFFFFFFFFU}) {
                Bytes changed = whole;
                setWord(changed, offset, word);
                try {
                    reader.read(changed);
                } catch (const CBytecodeError&) {
                    ++refused;
                }
            }
        }
    }
    EXPECT_GT(refused, 100);
}

TEST(ShaderReflection, refusesWrongCountsAndOffsets) {
    const Bytes whole = chunkOf(render::ShaderProgram::yuy2ToRgb, "RDEF");
    for (const std::size_t offset : {0, 4, 8, 12, 24}) {
        Bytes changed = whole;
        setWord(changed, offset, 0xFFFFFFFF);
        EXPECT_THROW(readReflection(changed), CBytecodeError) << offset;
    }
}

TEST(ShaderReflection, refusesAProgramThatNeverEnds) {
    Bytes code = chunkOf(render::ShaderProgram::plainCopy, "SHDR");
    setWord(code, 8, 0);
    EXPECT_THROW(readCode(code), CBytecodeError);
}

} // namespace
} // namespace tarvo::tests
