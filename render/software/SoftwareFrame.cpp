#include "render/software/SoftwareFrame.h"

#include "render/software/ProgramNeeds.h"

#include <algorithm>

namespace tarvo::render::software {

bool CSoftwareDevice::Frame::isInputPictureFree() const {
    const PictureShare& picture = *surfaces.picture(Surface::inputPicture);
    return picture->isStored() && picture->shares() == 1 + queue.sharesOf(*picture);
}

HRESULT CSoftwareDevice::Frame::findRange(const DrawRange& range, std::span<const geometry::Vertex>& corners,
                                          std::span<const std::uint32_t>& corner) const {
    const bool isMarker = range.source == VertexSource::overviewMarker;
    if (isMarker ? !hasMarker : !hasVertices)
        return E_FAIL;
    const std::span<const geometry::Vertex> all =
        isMarker ? std::span<const geometry::Vertex>(marker) : std::span<const geometry::Vertex>(vertices);
    const auto isWithin = [&range](std::size_t size) {
        return range.first >= 0 && range.count >= 0 && static_cast<std::size_t>(range.first) <= size &&
               static_cast<std::size_t>(range.count) <= size - static_cast<std::size_t>(range.first);
    };
    const auto first = static_cast<std::size_t>(range.first);
    const auto count = static_cast<std::size_t>(range.count);
    if (range.topology == Topology::triangleStrip) {
        if (!isWithin(all.size()))
            return E_INVALIDARG;
        corners = all.subspan(first, count);
        return S_OK;
    }
    if (!isWithin(indices.size()) || range.baseVertex < 0 ||
        static_cast<std::size_t>(range.baseVertex) >= all.size())
        return E_INVALIDARG;
    corners = all.subspan(static_cast<std::size_t>(range.baseVertex));
    corner = std::span<const std::uint32_t>(indices).subspan(first, count);
    const bool isInside =
        std::all_of(corner.begin(), corner.end(), [&](auto i) { return i < corners.size(); });
    return isInside ? S_OK : E_INVALIDARG;
}

HRESULT CSoftwareDevice::Frame::findRecord(const Pass& pass, RecordBytes& record) const {
    const ProgramNeeds needs = needsOf(pass.program);
    if (needs.isPrepared && program != pass.program)
        return E_FAIL;
    if (needs.recordSize == 0)
        return S_OK;
    if (!needs.fits(pass.constantSlot, pass.constants))
        return E_INVALIDARG;
    record = recordFrom(pass.constants, needs.recordSize);
    return S_OK;
}

HRESULT CSoftwareDevice::Frame::findTextures(const Pass& pass, QueuedDraw& draw) const {
    for (const Surface texture : pass.textures) {
        if (texture != Surface::none && !surfaces.has(texture))
            return E_FAIL;
        // What is drawn into cannot be looked at.
        if (texture == pass.target)
            return E_INVALIDARG;
    }
    draw.inputWidth = surfaces.input().width;
    draw.inputHeight = surfaces.input().height;
    switch (pass.program) {
    case ShaderProgram::overviewRegion:
        return S_OK;
    case ShaderProgram::yuy2ToRgb:
        if (pass.textures[3] != Surface::packedInput)
            return E_INVALIDARG;
        draw.planes[0] = *surfaces.plane(Surface::packedInput);
        draw.inputWidth = static_cast<int>(recordAs<Yuy2Constants>(draw.record).width);
        return S_OK;
    case ShaderProgram::yv12ToRgb:
        for (std::size_t i = 0; i < 3; ++i) {
            constexpr std::array<Surface, 3> planes{Surface::yPlane, Surface::crPlane, Surface::cbPlane};
            if (pass.textures[i] != planes[i])
                return E_INVALIDARG;
            draw.planes[i] = *surfaces.plane(planes[i]);
        }
        return S_OK;
    default:
        break;
    }
    if (isCustom(pass.program)) {
        if (pass.textures[4] != Surface::lookup)
            return E_INVALIDARG;
        draw.tables = surfaces.tables(layersOf(draw.record));
    }
    if (pass.textures[0] == Surface::outputTarget) {
        const TargetView& output = surfaces.output();
        draw.pixels = output.pixels;
        draw.window = {0, 0, output.width, output.height, output.width, output.height, output.pitch};
        return S_OK;
    }
    const PictureShare* picture = surfaces.picture(pass.textures[0]);
    if (picture == nullptr)
        return E_INVALIDARG;
    draw.picture = *picture;
    draw.window = surfaces.window(pass.textures[0]);
    return S_OK;
}

HRESULT CSoftwareDevice::Frame::find(const Pass& pass, QueuedDraw& draw, RasterKey& key,
                                     std::span<const geometry::Vertex>& corners,
                                     std::span<const std::uint32_t>& corner) const {
    draw.program = pass.program;
    draw.isBlended = pass.isBlended;
    HRESULT result = findRange(pass.range, corners, corner);
    if (SUCCEEDED(result))
        result = findRecord(pass, draw.record);
    if (SUCCEEDED(result))
        result = findTextures(pass, draw);
    draw.outside = outsideColour(pass.program, draw.record);
    const bool isMarker = pass.range.source == VertexSource::overviewMarker;
    const bool isOutput = pass.target == Surface::outputTarget;
    key = {pass.range, isOutput ? surfaces.output().width : surfaces.input().width,
           isOutput ? surfaces.output().height : surfaces.input().height,
           isMarker ? markerVersion : vertexVersion};
    return result;
}

} // namespace tarvo::render::software
