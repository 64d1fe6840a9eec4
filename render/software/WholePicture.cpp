#include "render/software/WholePicture.h"

#include "render/software/DrawnRange.h"
#include "render/software/kernels/RowChoice.h"

#include <cmath>
#include <utility>

namespace tarvo::render::software {
namespace {

/// Columns or rows whose centres lie between two coordinates, both included.
template<typename CoordinateAt>
std::pair<int, int> included(float low, float high, int size, CoordinateAt at) {
    int first = 0;
    while (first < size && !(at(first) >= low))
        ++first;
    int end = first;
    while (end < size && at(end) <= high)
        ++end;
    return {first, end};
}

} // namespace

bool coversAll(const CRaster& raster, int width, int height) {
    if (!raster.isRectangle() || raster.top() != 0 || raster.bottom() != height)
        return false;
    const Span& span = raster.row(0).front();
    return span.left == 0 && span.right == width;
}

bool isOneToOne(const CRaster& raster, int width, int height) {
    const VertexValues& values = raster.values(raster.row(0).front());
    const auto runs = [](const Affine& value, double along, double length, double across) {
        // Over a whole side no centre strays by more than a thousandth of a pixel.
        const double tolerance = 1e-3 / length;
        return std::abs(value.origin) < tolerance && std::abs(along * length - 1.0) < tolerance &&
               std::abs(across) < tolerance;
    };
    return runs(values.u, values.u.perX, width, values.u.perY * height) &&
           runs(values.v, values.v.perY, height, values.v.perX * width);
}

PixelArea areaOf(const ExcludeConstants& constants, const CRaster& raster, int width, int height) {
    const VertexValues& values = raster.values(raster.row(0).front());
    const auto at = [](const Affine& value, int x, int y) {
        float coordinate = 0.0F;
        rowKernels().interpolate(alongRow(value, y), x, 1, &coordinate);
        return coordinate;
    };
    const float* const rect = constants.excludeRect;
    const auto columns = included(rect[0], rect[2], width, [&](int x) { return at(values.u, x, 0); });
    const auto rows = included(rect[1], rect[3], height, [&](int y) { return at(values.v, 0, y); });
    return {columns.first, rows.first, columns.second, rows.second};
}

} // namespace tarvo::render::software
