#include "tests/support/graph/SceneFrames.h"

#include "com/Guarded.h"
#include "scene/Camera.h"
#include "scene/Render.h"
#include "scene/Room.h"
#include "tests/support/GraphFakes.h"

#include <algorithm>

namespace tarvo::tests {
namespace {

constexpr int width = CSceneFrames::width;
constexpr int height = CSceneFrames::height;

const render::Picture& scenePicture() {
    static const render::Picture picture = scene::renderFisheye(
        scene::CRoom(), scene::defaultCamera(geometry::TiltOrientation::ceiling), width, height, {1, 1});
    return picture;
}

std::uint8_t level(double value) {
    return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
}

struct Yuv {
    std::uint8_t y, u, v;
};

/// In the weights of standard-definition video.
Yuv yuvAt(int column, int row) {
    const render::Bgra& pixel = scenePicture().at(column, row);
    const double red = pixel.red;
    const double green = pixel.green;
    const double blue = pixel.blue;
    return {level(16.0 + (65.738 * red + 129.057 * green + 25.064 * blue) / 256.0),
            level(128.0 + (-37.945 * red - 74.494 * green + 112.439 * blue) / 256.0),
            level(128.0 + (112.439 * red - 94.154 * green - 18.285 * blue) / 256.0)};
}

template<class Take>
void forEachPixel(int columnStep, int rowStep, const Take& take) {
    for (int row = 0; row < height; row += rowStep) {
        for (int column = 0; column < width; column += columnStep)
            take(column, row);
    }
}

} // namespace

CSceneFrames::CSceneFrames(const GUID& subtype) {
    VideoKind kind{subtype, width, height, 0, 0, frameDuration};
    const auto addLevel = [&](std::uint8_t value) {
        m_levels.push_back(m_bytes.size());
        m_bytes.push_back(value);
    };
    if (subtype == MEDIASUBTYPE_YV12) {
        kind.bitCount = 12;
        forEachPixel(1, 1, [&](int column, int row) { addLevel(yuvAt(column, row).y); });
        forEachPixel(2, 2, [&](int column, int row) { m_bytes.push_back(yuvAt(column, row).v); });
        forEachPixel(2, 2, [&](int column, int row) { m_bytes.push_back(yuvAt(column, row).u); });
    } else if (subtype == MEDIASUBTYPE_YUY2) {
        kind.bitCount = 16;
        kind.formatType = FORMAT_VideoInfo2;
        forEachPixel(2, 1, [&](int column, int row) {
            const Yuv left = yuvAt(column, row);
            addLevel(left.y);
            m_bytes.push_back(left.u);
            addLevel(yuvAt(column + 1, row).y);
            m_bytes.push_back(left.v);
        });
    } else if (subtype == MEDIASUBTYPE_RGB32) {
        kind.bitCount = 32;
        forEachPixel(1, 1, [&](int column, int row) {
            const render::Bgra& pixel = scenePicture().at(column, height - 1 - row);
            for (const std::uint8_t value : {pixel.blue, pixel.green, pixel.red})
                addLevel(value);
            m_bytes.push_back(255);
        });
    } else {
        throw com::CComError(E_INVALIDARG);
    }
    kind.imageBytes = static_cast<DWORD>(m_bytes.size());
    m_type = typeOf(kind);
    // Its code is a number of the graph's own, not one of those that bitmaps know.
    if (subtype == MEDIASUBTYPE_RGB32)
        reinterpret_cast<VIDEOINFOHEADER*>(m_type->pbFormat)->bmiHeader.biCompression = BI_RGB;
}

std::vector<std::uint8_t> CSceneFrames::frame(int index) const {
    std::vector<std::uint8_t> bytes = m_bytes;
    for (const std::size_t place : m_levels)
        bytes[place] = static_cast<std::uint8_t>(bytes[place] + 5 * index);
    return bytes;
}

} // namespace tarvo::tests
