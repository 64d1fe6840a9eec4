#include "tests/render/software/SoftwareDeviceFixture.h"

#include <cmath>

namespace tarvo::render::software {
namespace {

TEST_F(SoftwareDevice, IsThereEverywhere) {
    EXPECT_TRUE(device.isAvailable());
    EXPECT_FALSE(device.isOpen());
    openFor(PixelFormat::rgb32, 8, 8, 8, 8);
    EXPECT_TRUE(device.isOpen());
    EXPECT_EQ(device.kind(), DeviceKind::software);
    EXPECT_TRUE(device.hasProgram(ShaderProgram::singleView));
    device.close();
    EXPECT_FALSE(device.isOpen());
}

TEST_F(SoftwareDevice, RefusesSizesThatNoSurfaceHas) {
    const OutputFormat output = outputOf(8, 8);
    const auto refuses = [&](const InputFormat& in, const OutputFormat& out) {
        services.debuggerLines.clear();
        const HRESULT result = device.open(in, out);
        return result == E_INVALIDARG && !device.isOpen() && services.debuggerLines.size() == 1 &&
               services.debuggerLines[0].find("CDewarpingTransform::CreateTextures() [id: 7]") !=
                   std::string::npos;
    };
    EXPECT_TRUE(refuses(inputOf(PixelFormat::rgb32, 0, 8), output));
    EXPECT_TRUE(refuses(inputOf(PixelFormat::rgb32, 8, -1), output));
    EXPECT_TRUE(refuses(inputOf(PixelFormat::rgb32, 8, 16385), output));
    EXPECT_TRUE(refuses(inputOf(PixelFormat::rgb32, 8, 8), outputOf(0, 8)));
    EXPECT_TRUE(refuses(inputOf(PixelFormat::rgb32, 8, 8), outputOf(8, 16385)));
    EXPECT_TRUE(refuses(inputOf(PixelFormat::yv12, 1, 8), output)) << "no chroma columns";
    EXPECT_TRUE(refuses(inputOf(PixelFormat::yv12, 8, 1), output)) << "no chroma rows";
    InputFormat packed = inputOf(PixelFormat::yuy2, 8, 8);
    packed.frameBytes = 3;
    EXPECT_TRUE(refuses(packed, output));
    EXPECT_EQ(device.open(inputOf(PixelFormat::rgb32, 1, 1), outputOf(1, 1)), S_OK);
}

TEST_F(SoftwareDevice, FailsQuietlyWhileClosed) {
    EXPECT_EQ(device.openStates(), E_FAIL);
    EXPECT_EQ(device.geometry(quads(), {}), E_FAIL);
    EXPECT_EQ(device.lookup(2, 2), E_FAIL);
    EXPECT_EQ(device.draw(yv12Pass()), E_FAIL);
    EXPECT_EQ(device.upload(Surface::yPlane, {}), E_FAIL);
    CRowsCopy visitor;
    EXPECT_EQ(device.readBack(visitor), E_FAIL);
    device.clear(Surface::outputTarget, greyClear);
    device.copy(Surface::inputPicture, Surface::maskedInput);
    device.flush();
    device.releaseLookup();
    device.releaseProgram();
    device.close();
    EXPECT_FALSE(device.isOpen());
}

TEST_F(SoftwareDevice, CopiesPixelByPixelExactly) {
    for (const auto& [width, height] : {std::pair{64, 48}, {1, 1}, {33, 17}, {131, 3}}) {
        openFor(PixelFormat::rgb32, width, height, width, height);
        const Picture picture = noisePicture(width, height, 5);
        ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(picture)), S_OK);
        ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
        EXPECT_EQ(outputOf(device).pixels, picture.pixels);
    }
}

TEST_F(SoftwareDevice, ScalesWithLinearSampling) {
    openFor(PixelFormat::rgb32, 2, 1, 4, 1);
    Picture picture(2, 1);
    picture.at(0, 0) = {0, 100, 200, 255};
    picture.at(1, 0) = {200, 100, 0, 255};
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(picture)), S_OK);
    ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
    // Centres at 0.25, 0.75, 1.25 and 1.75 of two pixels with centres at 0.5 and 1.5.
    const std::vector<Bgra> expected{
        {0, 100, 200, 255}, {50, 100, 150, 255}, {150, 100, 50, 255}, {200, 100, 0, 255}};
    EXPECT_EQ(outputOf(device).pixels, expected);
}

TEST_F(SoftwareDevice, UploadsFillUpWithZerosAndIgnoreTheRest) {
    openFor(PixelFormat::rgb32, 3, 3, 3, 3);
    const Picture fewer = noisePicture(2, 2, 1);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(noisePicture(3, 3, 9))), S_OK);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(fewer)), S_OK);
    ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
    const Picture shown = outputOf(device);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 3; ++x)
            EXPECT_EQ(shown.at(x, y), x < 2 && y < 2 ? fewer.at(x, y) : Bgra{}) << x << ", " << y;
    }
    const Picture more = noisePicture(5, 4, 2);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(more)), S_OK);
    ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
    const Picture cut = outputOf(device);
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(cut.at(2, y), more.at(2, y));
}

TEST_F(SoftwareDevice, UploadsRowsThatLieTheOtherWayRound) {
    openFor(PixelFormat::rgb32, 5, 4, 5, 4);
    const Picture picture = noisePicture(5, 4, 3);
    SourceRows rows = rowsOf(picture);
    rows.data += 3 * rows.stepBytes;
    rows.stepBytes = -rows.stepBytes;
    ASSERT_EQ(device.upload(Surface::inputPicture, rows), S_OK);
    ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
    const Picture shown = outputOf(device);
    for (int y = 0; y < 4; ++y)
        EXPECT_EQ(shown.at(4, y), picture.at(4, 3 - y));
}

/// The picture's rows some pixels apart.
class CRowsApart {
public:
    explicit CRowsApart(const Picture& picture)
        : m_width(picture.width), m_all(picture.width + gap, picture.height) {
        for (int y = 0; y < picture.height; ++y)
            std::copy_n(&picture.at(0, y), picture.width, &m_all.at(0, y));
    }
    SourceRows rows() const {
        SourceRows rows = rowsOf(m_all);
        rows.rowBytes = static_cast<std::size_t>(m_width) * sizeof(Bgra);
        return rows;
    }

private:
    static constexpr int gap = 5;
    int m_width;
    Picture m_all;
};

TEST_F(SoftwareDevice, UploadsRowsWithAndWithoutGapsAlike) {
    for (const int width : {321, 352, 512}) {
        openFor(PixelFormat::rgb32, width, 60, width, 60);
        const Picture picture = noisePicture(width, 60, 8);
        const CRowsApart apart(picture);
        Picture views[3];
        for (int i = 0; i < 3; ++i) {
            ASSERT_EQ(device.upload(Surface::inputPicture, i == 1 ? apart.rows() : rowsOf(picture)), S_OK);
            device.clear(Surface::outputTarget, opaqueBlackClear);
            // A range of its own, whose positions are kept from one frame to the next.
            ASSERT_EQ(drawView(singleViewConstants(width, 60, 0.3F, 1.0F), 44), S_OK);
            views[i] = outputOf(device);
            EXPECT_EQ(views[i].pixels, views[0].pixels) << width << ", " << i;
            device.clear(Surface::outputTarget, opaqueBlackClear);
            ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
            EXPECT_EQ(outputOf(device).pixels, picture.pixels) << width << ", " << i;
        }
    }
}

TEST_F(SoftwareDevice, AnUploadChangesNothingThatOthersShow) {
    constexpr int width = 352;
    openFor(PixelFormat::rgb32, width, 60, width, 60);
    const Picture first = noisePicture(width, 60, 8);
    const Picture second = noisePicture(width, 60, 9);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(first)), S_OK);
    device.copy(Surface::inputPicture, Surface::maskedInput);
    ASSERT_EQ(device.upload(Surface::inputPicture, CRowsApart(second).rows()), S_OK);
    ASSERT_EQ(drawCopy(Surface::maskedInput), S_OK);
    EXPECT_EQ(outputOf(device).pixels, first.pixels);
    ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
    EXPECT_EQ(outputOf(device).pixels, second.pixels);
}

TEST_F(SoftwareDevice, UploadsOnlyWhatIsAnInput) {
    openFor(PixelFormat::rgb32, 4, 4, 4, 4);
    const Picture picture = noisePicture(4, 4, 3);
    EXPECT_EQ(device.upload(Surface::outputTarget, rowsOf(picture)), E_INVALIDARG);
    EXPECT_EQ(device.upload(Surface::maskedInput, rowsOf(picture)), E_INVALIDARG);
    EXPECT_EQ(device.upload(Surface::yPlane, rowsOf(picture)), E_FAIL);
    EXPECT_EQ(device.upload(Surface::packedInput, rowsOf(picture)), E_FAIL);
    EXPECT_EQ(device.upload(Surface::lookup, rowsOf(picture)), E_FAIL);
    EXPECT_EQ(device.upload(Surface::inputPicture, {nullptr, 16, 16, 4}), E_INVALIDARG);
}

TEST_F(SoftwareDevice, ConvertsYv12) {
    for (const auto& [width, height] : {std::pair{64, 32}, {2, 2}, {37, 19}, {200, 51}}) {
        openFor(PixelFormat::yv12, width, height, width, height);
        const Yv12Frame frame(width, height, 3);
        frame.uploadTo(device);
        convertYv12(device);
        ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
        const Picture shown = outputOf(device);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                ASSERT_LE(largestDifference(shown.at(x, y), frame.pixelAt(x, y)), 1) << x << ", " << y;
        }
    }
}

TEST_F(SoftwareDevice, ConvertsYuy2) {
    const int width = 7;
    const int height = 5;
    openFor(PixelFormat::yuy2, width, height, width, height);
    const std::vector<std::uint8_t> frame = noise(inputOf(PixelFormat::yuy2, width, height).frameBytes, 8);
    ASSERT_EQ(device.upload(Surface::packedInput, rowsOf(frame.data(), frame.size(), 1)), S_OK);
    const Yuy2Constants constants{static_cast<std::uint32_t>(width), {}};
    Pass pass;
    pass.program = ShaderProgram::yuy2ToRgb;
    pass.target = Surface::conversionTarget;
    pass.textures[3] = Surface::packedInput;
    pass.constantSlot = ConstantSlot::width;
    pass.constants = recordBytes(constants);
    pass.range = quadRange(geometry::quad::fullTarget);
    const auto expectedAt = [&](int x, int y) -> Bgra {
        const auto pixel = static_cast<std::size_t>(x + y * width);
        const std::uint8_t* const word = frame.data() + pixel / 2 * 4;
        const double luma = word[pixel % 2 * 2];
        const double u = word[1] - 128.0;
        const double v = word[3] - 128.0;
        const auto stored = [](double value) {
            return static_cast<std::uint8_t>(std::lround(std::clamp(value / 256.0, 0.0, 1.0) * 255.0));
        };
        return {stored(luma + 1.772 * u), stored(luma - 0.344 * u - 0.714 * v), stored(luma + 1.402 * v),
                stored(1.0)};
    };
    ASSERT_EQ(device.draw(pass), S_OK);
    device.copy(Surface::conversionTarget, Surface::inputPicture);
    ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
    Picture shown = outputOf(device);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            ASSERT_LE(largestDifference(shown.at(x, y), expectedAt(x, y)), 1) << x << ", " << y;
    }
    // And the same by the pixel program, drawn on a part.
    device.clear(Surface::conversionTarget, greyClear);
    pass.range = quadRange(4);
    ASSERT_EQ(device.draw(pass), S_OK);
    ASSERT_EQ(drawCopy(Surface::conversionTarget), S_OK);
    shown = outputOf(device);
    EXPECT_LE(largestDifference(shown.at(2, 1), expectedAt(2, 1)), 1);
    EXPECT_EQ(shown.at(6, 4), grey);
}

TEST_F(SoftwareDevice, ShowsTheFisheyePictureThroughTheLens) {
    // A picture that changes slowly, so that a 32nd of a pixel is no level.
    const int width = 160;
    const int height = 120;
    Picture picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.at(x, y) = {static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y * 2),
                                static_cast<std::uint8_t>(255 - x), 255};
    }
    openFor(PixelFormat::rgb32, width, height, 80, 60);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(picture)), S_OK);
    DewarpConstants c = singleViewConstants(width, height, 1.4F, 0.1F);
    c.clearColor[0] = 0.2F;
    c.clearColor[1] = 0.4F;
    c.clearColor[2] = 0.6F;
    ASSERT_EQ(drawView(c, 0), S_OK);
    const Picture shown = outputOf(device);
    int insideCount = 0;
    int outsideCount = 0;
    for (int py = 0; py < 60; ++py) {
        for (int px = 0; px < 80; ++px) {
            // The ray of the pixel, turned about x by 1.4 and about the axis by 0.1.
            const double sx = (px + 0.5) / 80 * width - width / 2.0;
            const double sy = (py + 0.5) / 60 * height - height / 2.0;
            const double theta = std::atan(std::hypot(sx, sy) / (height / 2.0) * 0.4);
            const double lambda = -std::atan2(sy, -sx);
            const double x = std::sin(theta) * std::cos(lambda);
            const double y =
                std::sin(theta) * std::sin(lambda) * std::cos(1.4) + std::cos(theta) * std::sin(1.4);
            const double z =
                std::cos(theta) * std::cos(1.4) - std::sin(theta) * std::sin(lambda) * std::sin(1.4);
            const double radius = std::acos(z) * height * 0.5 / 1.5708;
            const double azimuth = std::atan2(y, x) + 0.1;
            const double ix = width / 2.0 + radius * std::cos(azimuth);
            const double iy = height / 2.0 + radius * std::sin(azimuth);
            const double depth = std::min({ix, iy, width - ix, height - iy});
            if (std::abs(depth) < 0.05)
                continue;
            if (depth < 0.0) {
                EXPECT_EQ(shown.at(px, py), grey);
                ++outsideCount;
                continue;
            }
            ++insideCount;
            const double cx = std::clamp(ix - 0.5, 0.0, width - 1.0);
            const double cy = std::clamp(iy - 0.5, 0.0, height - 1.0);
            EXPECT_NEAR(shown.at(px, py).blue, cx, 0.6);
            EXPECT_NEAR(shown.at(px, py).green, cy * 2.0, 0.6);
            EXPECT_NEAR(shown.at(px, py).red, 255.0 - cx, 0.6);
        }
    }
    EXPECT_GT(insideCount, 1000);
    EXPECT_GT(outsideCount, 100);
}

TEST_F(SoftwareDevice, RefusesPassesThatLackSomethingAndDrawsNothing) {
    openFor(PixelFormat::rgb32, 8, 8, 8, 8);
    device.clear(Surface::outputTarget, greyClear);
    const DewarpConstants c = singleViewConstants(8, 8, 0, 0);
    Pass view = passOf(ShaderProgram::singleView, Surface::inputPicture, quadRange(0));
    view.constantSlot = ConstantSlot::dewarp;
    view.constants = recordBytes(c);
    EXPECT_EQ(device.draw(view), E_FAIL) << "not prepared";
    ASSERT_EQ(device.prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(c)), S_OK);
    view.textures[0] = Surface::excludeArea;
    EXPECT_EQ(device.draw(view), E_FAIL) << "no exclude area";
    view.textures[0] = Surface::none;
    EXPECT_EQ(device.draw(view), E_INVALIDARG) << "no picture";
    view.textures[0] = Surface::inputPicture;
    view.constants = {};
    EXPECT_EQ(device.draw(view), E_INVALIDARG) << "no record";
    view.constants = recordBytes(c);
    view.constantSlot = ConstantSlot::custom;
    EXPECT_EQ(device.draw(view), E_INVALIDARG) << "in the wrong slot";
    view.constantSlot = ConstantSlot::dewarp;
    view.target = Surface::inputPicture;
    EXPECT_EQ(device.draw(view), E_INVALIDARG) << "no target";
    view.target = Surface::outputTarget;
    for (const DrawRange& range :
         {quadRange(111), quadRange(-1), DrawRange{VertexSource::view, Topology::triangleList, 0, 193, 48},
          DrawRange{VertexSource::view, Topology::triangleList, 0, 192, 49}}) {
        view.range = range;
        EXPECT_EQ(device.draw(view), E_INVALIDARG) << range.first;
    }
    view.range = overviewMarkerRange;
    EXPECT_EQ(device.draw(view), E_FAIL) << "no marker";
    EXPECT_EQ(device.draw(yv12Pass()), E_FAIL) << "no planes";
    EXPECT_EQ(device.draw(passOf(ShaderProgram::vertex, Surface::inputPicture, quadRange(0))), E_INVALIDARG);
    EXPECT_EQ(device.draw(passOf(ShaderProgram::plainCopy, Surface::outputTarget, quadRange(0))),
              E_INVALIDARG);
    device.releaseProgram();
    view.range = quadRange(0);
    EXPECT_EQ(device.draw(view), E_FAIL) << "given up";
    EXPECT_EQ(device.prepare(ShaderProgram::plainCopy, ConstantSlot::none, {}), E_INVALIDARG);
    EXPECT_EQ(outputOf(device).pixels, std::vector<Bgra>(64, grey));
}

TEST_F(SoftwareDevice, BlacksOutAndPastesTheExcludeArea) {
    const int size = 100;
    ASSERT_EQ(device.open(inputOf(PixelFormat::rgb32, size, size), outputOf(size, size)), S_OK);
    const ExcludeConstants constants{{0.305F, 0.2F, 0.5F, 0.4F}};
    const geometry::PixelBox box{30, 20, 50, 40};
    ASSERT_EQ(device.geometry(quads(), {constants, box}), S_OK);
    const Picture picture = noisePicture(size, size, 6);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(picture)), S_OK);
    device.copyBox(Surface::inputPicture, box, Surface::excludeArea);
    ASSERT_EQ(device.draw(excludePass(constants)), S_OK);
    device.copy(Surface::conversionTarget, Surface::maskedInput);
    ASSERT_EQ(drawCopy(Surface::maskedInput), S_OK);
    const Picture masked = outputOf(device);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            // The centre of column 30 lies on the left edge, which belongs to the area.
            const bool isBlack = x >= 30 && x < 50 && y >= 20 && y < 40;
            ASSERT_EQ(masked.at(x, y), isBlack ? opaqueBlack : picture.at(x, y)) << x << ", " << y;
        }
    }
    // The quarter is 50 × 50 pixels: drawn over it, the 20 × 20 of the area are stretched from edge to edge.
    device.clear(Surface::outputTarget, greyClear);
    ASSERT_EQ(drawCopy(Surface::excludeArea, 4), S_OK);
    const Picture pasted = outputOf(device);
    EXPECT_EQ(pasted.at(0, 0), picture.at(30, 20));
    EXPECT_EQ(pasted.at(49, 49), picture.at(49, 39)) << "the edge goes on, what lies behind it does not show";
    EXPECT_EQ(pasted.at(50, 49), grey);
    ASSERT_EQ(device.geometry(quads(), {}), S_OK);
    EXPECT_EQ(drawCopy(Surface::excludeArea), E_FAIL) << "gone with the area";
}

TEST_F(SoftwareDevice, CopiesBoxesBetweenAllPictures) {
    openFor(PixelFormat::rgb32, 20, 20, 20, 20);
    const Picture picture = noisePicture(20, 20, 6);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(picture)), S_OK);
    device.clear(Surface::conversionTarget, greyClear);
    device.copyBox(Surface::inputPicture, {5, 6, 9, 8}, Surface::conversionTarget);
    device.copyBox(Surface::inputPicture, {5, 6, 9, 21}, Surface::conversionTarget);
    device.copy(Surface::conversionTarget, Surface::outputTarget);
    const Picture shown = outputOf(device);
    EXPECT_EQ(shown.at(3, 1), picture.at(8, 7));
    EXPECT_EQ(shown.at(4, 1), grey);
    EXPECT_EQ(shown.at(3, 2), grey) << "a box that does not fit is not copied";
    device.clear(Surface::outputTarget, opaqueBlackClear);
    device.copy(Surface::outputTarget, Surface::maskedInput);
    device.clear(Surface::outputTarget, greyClear);
    ASSERT_EQ(drawCopy(Surface::maskedInput, 4), S_OK);
    EXPECT_EQ(outputOf(device).at(9, 9), opaqueBlack);
}

TEST_F(SoftwareDevice, DrawsOnTheConversionTargetLikeOnAnyOther) {
    openFor(PixelFormat::rgb32, 10, 10, 10, 10);
    const Picture picture = noisePicture(10, 10, 6);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(picture)), S_OK);
    device.clear(Surface::conversionTarget, greyClear);
    device.copy(Surface::conversionTarget, Surface::maskedInput);
    Pass pass = passOf(ShaderProgram::plainCopy, Surface::inputPicture, quadRange(8));
    pass.target = Surface::conversionTarget;
    ASSERT_EQ(device.draw(pass), S_OK);
    ASSERT_EQ(drawCopy(Surface::conversionTarget), S_OK);
    Picture shown = outputOf(device);
    EXPECT_EQ(shown.at(4, 4), grey);
    EXPECT_LE(largestDifference(shown.at(9, 9), picture.at(9, 9)), 127) << "the mean of four";
    const int corners =
        picture.at(8, 8).red + picture.at(9, 8).red + picture.at(8, 9).red + picture.at(9, 9).red;
    EXPECT_NEAR(shown.at(9, 9).red, corners / 4.0, 0.51);
    ASSERT_EQ(drawCopy(Surface::maskedInput), S_OK);
    shown = outputOf(device);
    EXPECT_EQ(shown.pixels, std::vector<Bgra>(100, grey)) << "what shared its pixels keeps its own";
    // The output can be looked at as well.
    pass = passOf(ShaderProgram::plainCopy, Surface::outputTarget, quadRange(0));
    pass.target = Surface::conversionTarget;
    device.clear(Surface::outputTarget, opaqueBlackClear);
    ASSERT_EQ(device.draw(pass), S_OK);
    device.clear(Surface::outputTarget, greyClear);
    ASSERT_EQ(drawCopy(Surface::conversionTarget), S_OK);
    EXPECT_EQ(outputOf(device).at(3, 3), opaqueBlack);
}

TEST_F(SoftwareDevice, AnswersWithTheVisitorsResult) {
    struct CRefusing final : IMappedRowsVisitor {
        HRESULT visit(const MappedRows& rows) override {
            EXPECT_EQ(rows.width, 5);
            EXPECT_EQ(rows.height, 4);
            EXPECT_EQ(rows.pitchBytes, 64U);
            return S_FALSE;
        }
    };
    openFor(PixelFormat::rgb32, 8, 8, 5, 4);
    CRefusing visitor;
    EXPECT_EQ(device.readBack(visitor), S_FALSE);
}

TEST_F(SoftwareDevice, OpensAndClosesAHundredTimes) {
    for (int round = 0; round < 100; ++round) {
        openFor(PixelFormat::yv12, 64 + round, 48, 40, 30);
        const Yv12Frame frame(64 + round, 48, static_cast<unsigned>(round + 1));
        frame.uploadTo(device);
        convertYv12(device);
        ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
        ASSERT_NE(outputOf(device).pixels, std::vector<Bgra>(1200, opaqueBlack));
        if (round % 3 != 0)
            device.close(); // else the next open() has to
    }
}

} // namespace
} // namespace tarvo::render::software
