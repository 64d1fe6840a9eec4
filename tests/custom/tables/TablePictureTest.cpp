#include "custom/tables/CustomTransformShader.h"
#include "tests/custom/tables/Blob.h"
#include "tests/custom/tables/FakeDevice.h"
#include "tests/custom/tables/LoggedLines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <random>

// What the custom view's program makes of lookup surface and record: computed here in double precision, over
// an input that is a formula.

namespace tarvo::custom {
namespace {

/// The input's brightness at a place, 0 … 1 over it: a slope, on which linear filtering is exact.
double inputAt(double x, double y) {
    return 0.2 + 0.5 * x + 0.3 * y;
}

class CTablePicture {
public:
    explicit CTablePicture(const CFakeDevice& device, std::span<const std::byte> record) : m_device(device) {
        EXPECT_EQ(record.size(), sizeof(m_record));
        std::memcpy(&m_record, record.data(), std::min(record.size(), sizeof(m_record)));
    }

    /// The output's brightness; 0 is black.
    double at(double u, double v) const {
        u = u * d(m_record.viewRect[2]) + d(m_record.viewRect[0]);
        v = v * d(m_record.viewRect[3]) + d(m_record.viewRect[1]);
        u = u * d(m_record.projectionRect[2]) + d(m_record.projectionRect[0]);
        v = v * d(m_record.projectionRect[3]) + d(m_record.projectionRect[1]);
        if (u < 0 || u > 1 || v < 0 || v > 1)
            return 0.0;
        const double s = u * d(m_record.lookupRectangle[2]) + d(m_record.lookupRectangle[0]);
        double q =
            (v * d(m_record.lookupRectangle[3]) + d(m_record.lookupRectangle[1])) / m_record.numberOfTables;
        double sum = 0.0;
        for (std::uint32_t table = 0; table < std::min(m_record.numberOfTables, 8U); ++table) {
            const std::array<double, 3> entry = lookup(s, q);
            sum += entry[2] * inputAt(entry[0], entry[1]);
            q += d(m_record.tableHeight);
        }
        return sum;
    }

private:
    static double d(float value) { return static_cast<double>(value); }

    /// Linear filtering between the centres of the texels, clamped at the edges.
    std::array<double, 3> lookup(double s, double q) const {
        const double x = std::clamp(s * m_device.lookupWidth - 0.5, 0.0, m_device.lookupWidth - 1.0);
        const double y = std::clamp(q * m_device.lookupHeight - 0.5, 0.0, m_device.lookupHeight - 1.0);
        const int left = static_cast<int>(x);
        const int top = static_cast<int>(y);
        std::array<double, 3> result{};
        for (int channel = 0; channel < 3; ++channel) {
            const double upper = std::lerp(word(left, top, channel), word(left + 1, top, channel), x - left);
            const double lower =
                std::lerp(word(left, top + 1, channel), word(left + 1, top + 1, channel), x - left);
            result[channel] = std::lerp(upper, lower, y - top) / 65535.0;
        }
        return result;
    }

    double word(int x, int y, int channel) const {
        x = std::min(x, m_device.lookupWidth - 1);
        y = std::min(y, m_device.lookupHeight - 1);
        return m_device.lookupWords.at(4 * (static_cast<std::size_t>(y) * m_device.lookupWidth + x) +
                                       channel);
    }

    const CFakeDevice& m_device;
    render::CustomTransformConstants m_record{};
};

class TablePicture : public testing::Test {
protected:
    TablePicture() { shader.initialise(device); }

    CTablePicture picture(TableDimensions dimensions, const std::vector<std::uint16_t>& words,
                          float outputAspect) {
        EXPECT_EQ(shader.SetTransform(dimensions, bytesOfWords(words)), S_OK);
        shader.setOutputAspect(outputAspect);
        render::PixelShaderUse use;
        EXPECT_EQ(shader.pixelShader(use), S_OK);
        return CTablePicture(device, use.constants);
    }

    CLoggedLines lines;
    CFakeDevice device;
    CCustomTransformShader shader{lines.objectLog()};
};

const std::vector<double> places{0.0, 0.1, 0.37, 0.5, 0.81, 1.0};

TEST_F(TablePicture, withoutEffectIsTheInputWhateverTheTablesHold) {
    std::mt19937 random(11);
    shader.setEffectLevel(0.0F);
    for (const std::uint16_t tables : {std::uint16_t{1}, std::uint16_t{2}, std::uint16_t{8}}) {
        std::vector<std::uint16_t> words(3U * tables * 6U * 4U);
        std::ranges::generate(words, [&] { return static_cast<std::uint16_t>(random() % 3 * 30000); });
        const CTablePicture result = picture({tables, 6, 4}, words, 1.5F);
        for (const double u : places) {
            for (const double v : places) {
                // The centres of the outer cells, which look at 0 and 5/6, 0 and 3/4, lie on the edges. Each
                // table may lose a 65535th of its place and of its weight.
                EXPECT_NEAR(result.at(u, v), inputAt(u * 5.0 / 6.0, v * 3.0 / 4.0), 3.0 * tables / 65535.0);
            }
        }
    }
}

TEST_F(TablePicture, addsUpWhatEveryTableFinds) {
    // Each table looks everywhere at one place: a quarter of the middle and half of the upper left corner.
    const CTablePicture result =
        picture({2, 2, 1}, {32768, 32768, 16384, 32768, 32768, 16384, 0, 0, 32768, 0, 0, 32768}, 2.0F);
    for (const double u : places)
        EXPECT_NEAR(result.at(u, 0.5), 0.25 * inputAt(0.5, 0.5) + 0.5 * inputAt(0.0, 0.0), 1e-4);
}

TEST_F(TablePicture, goesOnWhereATableHasNoWeight) {
    const std::vector<std::uint16_t> words{65535, 0, 65535, 65535, 0, 65535, 5, 5, 0, 9, 9, 0};
    // At full effect such an entry contributes nothing.
    EXPECT_NEAR(picture({2, 2, 1}, words, 2.0F).at(0.3, 0.5), inputAt(1.0, 0.0), 1e-4);
    // Below, what the blend leaves of the identity counts at the cell's own place: in the first column, at e
    // = 0.5, a quarter of the upper left corner. The first table weighs 3/4 and is halfway to that corner.
    shader.setEffectLevel(0.5F);
    EXPECT_NEAR(picture({2, 2, 1}, words, 2.0F).at(0.0, 0.5),
                0.75 * inputAt(0.5, 0.0) + 0.25 * inputAt(0.0, 0.0), 1e-4);
}

TEST_F(TablePicture, readsNoNinthTable) {
    std::vector<std::uint16_t> words;
    for (int table = 0; table < 9; ++table)
        words.insert(words.end(), {0, 0, static_cast<std::uint16_t>(table == 8 ? 65535 : 6553)});
    EXPECT_NEAR(picture({9, 1, 1}, words, 1.0F).at(0.5, 0.5), 8.0 * 0.1 * inputAt(0.0, 0.0), 1e-4);
    EXPECT_EQ(device.lookupHeight, 9);
}

TEST_F(TablePicture, hasBarsWhereTheShapesDiffer) {
    const std::vector<std::uint16_t> words(3U * 4U * 2U, 65535);
    const double white = inputAt(1.0, 1.0);
    // Tables of 2:1 on an output of 4:1 fill its middle half; on 1:1 half its height.
    const CTablePicture wide = picture({1, 4, 2}, words, 4.0F);
    const CTablePicture high = picture({1, 4, 2}, words, 1.0F);
    shader.setOutputAspect(2.0F);
    render::PixelShaderUse use;
    ASSERT_EQ(shader.pixelShader(use), S_OK);
    const CTablePicture same(device, use.constants);
    for (const double along : places) {
        for (const auto& [across, isBar] :
             {std::pair{0.0, true}, {0.24, true}, {0.26, false}, {0.74, false}, {0.76, true}, {1.0, true}}) {
            EXPECT_NEAR(wide.at(across, along), isBar ? 0.0 : white, 1e-9) << across;
            EXPECT_NEAR(high.at(along, across), isBar ? 0.0 : white, 1e-9) << across;
            EXPECT_NEAR(same.at(along, across), white, 1e-9);
        }
    }
}

TEST_F(TablePicture, showsTheCutOutOfTheView) {
    // The identity over a fine grid: the place shown can be told from the brightness along x.
    std::vector<std::uint16_t> words;
    for (int column = 0; column < 101; ++column)
        words.insert(words.end(), {static_cast<std::uint16_t>(std::lround(655.35 * column)), 0, 65535});
    shader.setViewRectangle({0.25, 0.0, 0.75, 1.0});
    const CTablePicture result = picture({1, 101, 1}, words, 101.0F);
    for (const double u : places)
        EXPECT_NEAR(result.at(u, 0.5), inputAt(0.25 + 0.5 * u, 0.0), 1e-4);
}

} // namespace
} // namespace tarvo::custom
