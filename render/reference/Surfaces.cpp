#include "render/reference/Surfaces.h"

#include <algorithm>
#include <new>
#include <utility>

namespace tarvo::render::reference {
namespace {

bool isPossibleSide(std::int64_t side) {
    return side >= 1 && side <= longestSide;
}

template<typename Texels>
HRESULT create(std::optional<Texels>& surface, std::int64_t width, std::int64_t height) {
    if (!isPossibleSide(width) || !isPossibleSide(height)) {
        return E_INVALIDARG;
    }
    try {
        Texels fresh(static_cast<int>(width), static_cast<int>(height));
        surface = std::move(fresh);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

constexpr Surface firstPicture = Surface::outputTarget;
constexpr Surface firstPlane = Surface::yPlane;
static_assert(static_cast<int>(Surface::excludeArea) == static_cast<int>(firstPicture) + 4);
static_assert(static_cast<int>(Surface::cbPlane) == static_cast<int>(firstPlane) + 2);

/// Where the surface is kept in an array that begins with the role `first` and holds it.
template<typename Kept>
auto& slot(Kept& kept, Surface surface, Surface first) {
    return kept[static_cast<std::size_t>(surface) - static_cast<std::size_t>(first)];
}

/// The surface in an array that begins with the role `first`; null when it is not there or not of this array.
template<typename Kept>
auto ifThere(Kept& kept, Surface surface, Surface first) -> decltype(&*kept[0]) {
    const auto index = static_cast<std::size_t>(surface) - static_cast<std::size_t>(first);
    return index < kept.size() && kept[index] ? &*kept[index] : nullptr;
}

bool isUploadable(Surface surface) {
    switch (surface) {
    case Surface::inputPicture:
    case Surface::yPlane:
    case Surface::crPlane:
    case Surface::cbPlane:
    case Surface::packedInput:
    case Surface::lookup:
        return true;
    default:
        return false;
    }
}

} // namespace

HRESULT CSurfaces::createTextures(const InputFormat& input, const OutputFormat& output) {
    CSurfaces fresh;
    const auto createPicture = [&fresh](Surface surface, int width, int height) {
        return create(slot(fresh.m_pictures, surface, firstPicture), width, height);
    };
    HRESULT result = createPicture(Surface::outputTarget, output.width, output.height);
    for (const Surface surface : {Surface::conversionTarget, Surface::inputPicture, Surface::maskedInput}) {
        if (SUCCEEDED(result)) {
            result = createPicture(surface, input.width, input.height);
        }
    }
    for (int i = 0; i < 3 && input.format == PixelFormat::yv12 && SUCCEEDED(result); ++i) {
        const PlaneFormat plane = yv12Plane(input, i);
        result = create(fresh.m_planes[static_cast<std::size_t>(i)], plane.width, plane.height);
    }
    if (SUCCEEDED(result)) {
        *this = std::move(fresh);
    }
    return result;
}

HRESULT CSurfaces::createPackedInput(std::uint32_t byteCount) {
    const std::size_t words = byteCount / 4;
    if (words == 0) {
        return E_INVALIDARG;
    }
    try {
        m_packedInput = std::vector<std::uint8_t>(words * 4);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

HRESULT CSurfaces::createExcludeArea(const geometry::PixelBox& box) {
    if (box.isEmpty()) {
        slot(m_pictures, Surface::excludeArea, firstPicture).reset();
        return S_OK;
    }
    return create(slot(m_pictures, Surface::excludeArea, firstPicture), std::int64_t{box.right} - box.left,
                  std::int64_t{box.bottom} - box.top);
}

HRESULT CSurfaces::createLookup(int width, int height) {
    if (m_lookup && m_lookup->width == width && m_lookup->height == height) {
        return S_OK;
    }
    return create(m_lookup, width, height);
}

bool CSurfaces::has(Surface surface) const {
    return picture(surface) != nullptr || plane(surface) != nullptr || lookup(surface) != nullptr ||
           !packedBytes(surface).empty();
}

const Picture* CSurfaces::picture(Surface surface) const {
    return ifThere(m_pictures, surface, firstPicture);
}

Picture* CSurfaces::picture(Surface surface) {
    return ifThere(m_pictures, surface, firstPicture);
}

Picture* CSurfaces::target(Surface surface) {
    const bool isTarget = surface == Surface::outputTarget || surface == Surface::conversionTarget;
    return isTarget ? picture(surface) : nullptr;
}

const Plane* CSurfaces::plane(Surface surface) const {
    return ifThere(m_planes, surface, firstPlane);
}

const LookupTables* CSurfaces::lookup(Surface surface) const {
    return surface == Surface::lookup && m_lookup ? &*m_lookup : nullptr;
}

std::span<const std::uint8_t> CSurfaces::packedBytes(Surface surface) const {
    return surface == Surface::packedInput ? m_packedInput : std::span<const std::uint8_t>();
}

CSurfaces::ByteRows CSurfaces::writableRows(Surface surface) {
    const auto rowsOf = [](auto& texels, int width) -> ByteRows {
        return {std::as_writable_bytes(std::span(texels)),
                sizeof(texels[0]) * static_cast<std::size_t>(width)};
    };
    if (Picture* const picture = this->picture(surface)) {
        return rowsOf(picture->pixels, picture->width);
    }
    if (Plane* const plane = ifThere(m_planes, surface, firstPlane)) {
        return rowsOf(plane->texels, plane->width);
    }
    if (surface == Surface::packedInput) {
        return {std::as_writable_bytes(std::span(m_packedInput)), m_packedInput.size()};
    }
    return surface == Surface::lookup && m_lookup ? rowsOf(m_lookup->texels, m_lookup->width) : ByteRows{};
}

HRESULT CSurfaces::upload(Surface surface, const SourceRows& rows) {
    const bool isNowhere = rows.data == nullptr && rows.rowCount > 0 && rows.rowBytes > 0;
    if (!isUploadable(surface) || rows.rowCount < 0 || isNowhere) {
        return E_INVALIDARG;
    }
    const ByteRows target = writableRows(surface);
    if (target.bytes.empty()) {
        return E_FAIL;
    }
    const std::size_t covered = std::min(rows.rowBytes, target.rowBytes);
    const auto rowCount = static_cast<std::ptrdiff_t>(target.bytes.size() / target.rowBytes);
    for (std::ptrdiff_t y = 0; y < rowCount; ++y) {
        const auto row = target.bytes.subspan(static_cast<std::size_t>(y) * target.rowBytes, target.rowBytes);
        const std::size_t copied = y < rows.rowCount ? covered : 0;
        if (copied > 0) {
            std::copy_n(rows.data + y * rows.stepBytes, copied, row.begin());
        }
        std::ranges::fill(row.subspan(copied), std::byte{0});
    }
    return S_OK;
}

} // namespace tarvo::render::reference
