// Every call that makes something fails once: the result comes back as it was, the log names the place, and
// nothing stays.

#include "tests/render/d3d11/D3d11Fixture.h"

#include <gmock/gmock.h>

namespace tarvo::render::d3d11 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The places that log the failure of one call, the innermost first.
using Places = std::vector<std::string>;

const Places init{"CDewarpingTransform::InitDirect3D()"};
const Places textures{"CreateTexture2D()", "CDewarpingTransform::CreateTextures()"};
const Places planes{"CreateTexture2D()", "CTexture2DAdapter::InitializeTextures()",
                    "CDewarpingTransform::CreateTextures()"};
const Places structuredBuffer{"CDewarpingTransform::CreateStructuredBuffer()"};
const Places shaders{"CDewarpingTransform::CreateShadersAndInputLayout()"};
const Places indices{"CDewarpingTransform::CreateIndexBuffer()"};
const Places width{"CDewarpingTransform::CreateYUY2PSCBuffer()"};
const Places excludeRecord{"CDewarpingTransform::CreateExcludeCBuffer()"};
const Places excludeTexture{"CreateTexture2D()", "CDewarpingTransform::CreateExcludeRectTexture()"};
const Places callersOwn{};

std::vector<Places> placesFor(PixelFormat format) {
    std::vector<Places> result;
    const auto add = [&result](int count, const Places& places) {
        result.insert(result.end(), static_cast<std::size_t>(count), places);
    };
    add(1, init);      // the hardware options
    add(10, textures); // two targets with views, two pictures with views, two to read back
    if (format == PixelFormat::yv12)
        add(6, planes);
    if (format == PixelFormat::yuy2)
        add(2, structuredBuffer);
    add(7, shaders); // vertex program, input layout, five pixel programs
    add(1, indices);
    add(1, init); // the vertex program's record
    add(1, width);
    add(1, init); // the view's vertices
    add(1, excludeRecord);
    add(2, excludeTexture);
    add(2, callersOwn); // the view's program and its record
    add(1, init);       // the marker's vertices
    add(2, init);       // blend state, sampler
    return result;
}

class Failure : public CD3d11Test, public testing::WithParamInterface<PixelFormat> {};

TEST_P(Failure, ofAnyCreationIsLoggedAndLeavesNothing) {
    const std::vector<Places> table = placesFor(GetParam());
    const auto failure = static_cast<HRESULT>(0x887A0005);
    fake.failure = failure;
    for (std::size_t n = 0; n < table.size(); ++n) {
        SCOPED_TRACE(n);
        fake.creationsUntilFailure = static_cast<int>(n);
        ASSERT_EQ(bringUp(inputOf(GetParam())), failure);
        EXPECT_FALSE(device->isOpen());
        EXPECT_EQ(fake.liveObjects, 0);
        std::vector<std::string> expected;
        if (n > 0)
            expected.push_back("T:_:D3D11_FEATURE_D3D10_X_HARDWARE_OPTIONS supported:1\n");
        for (const std::string& place : table[n])
            expected.push_back(CLogLines::trace(place, failure));
        EXPECT_EQ(lines.take(), expected);
    }
    fake.creationsUntilFailure = static_cast<int>(table.size());
    EXPECT_EQ(bringUp(inputOf(GetParam())), S_OK);
    EXPECT_EQ(fake.creationsUntilFailure, 0);
}

INSTANTIATE_TEST_SUITE_P(Formats, Failure,
                         testing::Values(PixelFormat::rgb32, PixelFormat::yv12, PixelFormat::yuy2));

TEST_F(CD3d11Test, openLeavesNothingOfAFailedStart) {
    fake.failure = E_OUTOFMEMORY;
    int n = 0;
    for (;; ++n) {
        fake.creationsUntilFailure = n;
        const HRESULT result = device->open(inputOf(PixelFormat::yv12), output);
        if (result == S_OK)
            break;
        ASSERT_EQ(result, E_OUTOFMEMORY);
        EXPECT_FALSE(device->isOpen());
        EXPECT_EQ(fake.liveObjects, 0);
    }
    EXPECT_EQ(n, 27);
}

std::uint16_t missingId = 0;
std::span<const std::byte> findAllButOne(const char* type, std::uint16_t id) {
    return id == missingId ? std::span<const std::byte>() : platform::findModuleResource(type, id);
}

TEST_F(CD3d11Test, aMissingProgramFailsTheStart) {
    for (const std::uint16_t id : std::array<std::uint16_t, 6>{227, 223, 224, 228, 225, 229}) {
        SCOPED_TRACE(id);
        missingId = id;
        CD3d11Device incomplete(std::make_unique<tests::CFakeD3d11Library>(fake), lines.log(), findAllButOne);
        EXPECT_EQ(incomplete.open(inputOf(PixelFormat::rgb32), output), E_FAIL);
        EXPECT_FALSE(incomplete.isOpen());
        EXPECT_EQ(fake.liveObjects, 0);
        EXPECT_EQ(lines.take().back(),
                  CLogLines::trace("CDewarpingTransform::CreateShadersAndInputLayout()", E_FAIL));
    }
}

TEST_F(CD3d11Test, aMissingViewProgramCannotBePrepared) {
    missingId = 214;
    CD3d11Device incomplete(std::make_unique<tests::CFakeD3d11Library>(fake), lines.log(), findAllButOne);
    EXPECT_FALSE(incomplete.hasProgram(ShaderProgram::singleView));
    EXPECT_TRUE(incomplete.hasProgram(ShaderProgram::panoramaWall));
    ASSERT_EQ(incomplete.open(inputOf(PixelFormat::rgb32), output), S_OK);
    EXPECT_EQ(incomplete.prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(dewarp)),
              E_FAIL);
    EXPECT_EQ(incomplete.prepare(ShaderProgram::panoramaWall, ConstantSlot::dewarp, recordBytes(dewarp)),
              S_OK);
}

TEST_F(CD3d11Test, aHundredLivesLeaveNothing) {
    const PixelFormat formats[]{PixelFormat::rgb32, PixelFormat::yv12, PixelFormat::yuy2};
    const Pass view{ShaderProgram::singleView, Surface::outputTarget, {Surface::inputPicture},
                    ConstantSlot::dewarp,      recordBytes(dewarp),   quadRange(4)};
    int failures = 0;
    for (int life = 0; life < 100; ++life) {
        // Every third life ends early, each at another place.
        fake.creationsUntilFailure = life % 3 == 1 ? life % 27 : -1;
        const HRESULT result = bringUp(inputOf(formats[life % 3]));
        if (life % 3 == 1) {
            ASSERT_EQ(result, E_OUTOFMEMORY);
            ++failures;
        } else {
            ASSERT_EQ(result, S_OK);
            EXPECT_EQ(device->draw(view), S_OK);
            EXPECT_EQ(device->lookup(life + 1, 8), S_OK);
            // A new view fails half way, another one succeeds.
            fake.creationsUntilFailure = life % 4;
            EXPECT_EQ(device->geometry(vertices, exclude), E_OUTOFMEMORY);
            fake.creationsUntilFailure = -1;
            EXPECT_EQ(device->geometry(vertices, exclude), S_OK);
            EXPECT_EQ(device->draw(view), S_OK);
            device->close();
        }
        ASSERT_EQ(fake.liveObjects, 0);
    }
    EXPECT_EQ(failures, 33);
}

} // namespace
} // namespace tarvo::render::d3d11
