#include "render/reference/ReferenceDevice.h"

#include "render/reference/PassProgram.h"

#include <algorithm>
#include <new>

namespace tarvo::render::reference {
namespace {

using geometry::PixelBox;
using geometry::Vertex;

/// Of the programs that are prepared, the constant slot they read.
std::optional<ConstantSlot> preparedSlot(ShaderProgram program) {
    switch (program) {
    case ShaderProgram::singleView:
    case ShaderProgram::panoramaWall:
    case ShaderProgram::panoramaCeiling:
    case ShaderProgram::panoramaDesk:
        return ConstantSlot::dewarp;
    case ShaderProgram::customTransform:
    case ShaderProgram::customVirtualPtz:
        return ConstantSlot::custom;
    default:
        return std::nullopt;
    }
}

std::size_t preparedLength(ShaderProgram program) {
    return program == ShaderProgram::customTransform    ? sizeof(CustomTransformConstants)
           : program == ShaderProgram::customVirtualPtz ? sizeof(VirtualPtzConstants)
                                                        : sizeof(DewarpConstants);
}

/// `count` elements from `first`; nothing when they do not all lie inside.
template<typename Element>
std::optional<std::span<const Element>> part(std::span<const Element> all, int first, int count) {
    if (first < 0 || count < 0 || static_cast<std::size_t>(first) > all.size() ||
        static_cast<std::size_t>(count) > all.size() - static_cast<std::size_t>(first)) {
        return std::nullopt;
    }
    return all.subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(count));
}

HRESULT drawStrip(std::span<const Vertex> vertices, const DrawRange& range, const Picture& target,
                  const FragmentVisitor& paint) {
    const auto strip = part(vertices, range.first, range.count);
    if (!strip) {
        return E_INVALIDARG;
    }
    rasteriseStrip(*strip, target.width, target.height, paint);
    return S_OK;
}

HRESULT drawList(std::span<const Vertex> vertices, const DrawRange& range, const Picture& target,
                 const FragmentVisitor& paint) {
    const geometry::OverviewDiscIndices allIndices = geometry::overviewDiscIndices();
    const auto indices = part(std::span<const std::uint32_t>(allIndices), range.first, range.count);
    if (!indices || range.baseVertex < 0 || static_cast<std::size_t>(range.baseVertex) > vertices.size()) {
        return E_INVALIDARG;
    }
    const auto counted = vertices.subspan(static_cast<std::size_t>(range.baseVertex));
    if (std::ranges::any_of(*indices, [&](std::uint32_t index) { return index >= counted.size(); })) {
        return E_INVALIDARG;
    }
    rasteriseList(counted, *indices, target.width, target.height, paint);
    return S_OK;
}

bool isInside(const PixelBox& box, const Picture& picture) {
    return box.left >= 0 && box.top >= 0 && box.right <= picture.width && box.bottom <= picture.height;
}

} // namespace

CReferenceDevice::CReferenceDevice(diagnostics::ObjectLog log) : m_log(log) {}

HRESULT CReferenceDevice::open(const InputFormat& input, const OutputFormat& output) {
    close();
    HRESULT result = m_surfaces.createTextures(input, output);
    if (FAILED(result)) {
        m_log.failedCall("CDewarpingTransform::CreateTextures()", __LINE__, result);
        return result;
    }
    if (input.format == PixelFormat::yuy2) {
        result = m_surfaces.createPackedInput(yuy2PictureBytes(input));
        if (FAILED(result)) {
            m_log.failedCall("CDewarpingTransform::CreateStructuredBuffer()", __LINE__, result);
            close();
            return result;
        }
    }
    m_isOpen = true;
    return S_OK;
}

HRESULT CReferenceDevice::openStates() {
    return m_isOpen ? S_OK : E_FAIL;
}

HRESULT CReferenceDevice::geometry(const geometry::ViewVertices& vertices, const ExcludeGeometry& exclude) {
    if (!m_isOpen) {
        return E_FAIL;
    }
    const HRESULT result = m_surfaces.createExcludeArea(exclude.box);
    if (FAILED(result)) {
        m_log.failedCall("CDewarpingTransform::CreateExcludeRectTexture()", __LINE__, result);
        return result;
    }
    m_vertices = vertices;
    return S_OK;
}

HRESULT CReferenceDevice::overviewMarker(const geometry::OverviewMarkerVertices& vertices) {
    if (!m_isOpen) {
        return E_FAIL;
    }
    m_marker = vertices;
    return S_OK;
}

bool CReferenceDevice::hasProgram(ShaderProgram program) const {
    return static_cast<std::size_t>(program) < shaderResources.size();
}

HRESULT CReferenceDevice::prepare(ShaderProgram program, ConstantSlot slot,
                                  std::span<const std::byte> constants) {
    releaseProgram();
    if (!m_isOpen) {
        return E_FAIL;
    }
    if (preparedSlot(program) != slot || constants.size() < preparedLength(program)) {
        return E_INVALIDARG;
    }
    m_prepared = program;
    return S_OK;
}

void CReferenceDevice::releaseProgram() {
    m_prepared.reset();
}

HRESULT CReferenceDevice::lookup(int width, int height) {
    if (!m_isOpen) {
        return E_FAIL;
    }
    const HRESULT result = m_surfaces.createLookup(width, height);
    if (FAILED(result)) {
        m_log.failedCall("CreateTexture2D()", __LINE__, result);
    }
    return result;
}

void CReferenceDevice::releaseLookup() {
    m_surfaces.releaseLookup();
}

HRESULT CReferenceDevice::upload(Surface surface, const SourceRows& rows) {
    return m_surfaces.upload(surface, rows);
}

void CReferenceDevice::clear(Surface target, const std::array<float, 4>& colour) {
    if (Picture* const picture = m_surfaces.target(target)) {
        std::ranges::fill(picture->pixels, toBgra({colour[0], colour[1], colour[2], colour[3]}));
    }
}

HRESULT CReferenceDevice::draw(const Pass& pass) {
    try {
        return drawPass(pass);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT CReferenceDevice::drawPass(const Pass& pass) {
    Picture* const target = m_surfaces.target(pass.target);
    const bool isMarker = pass.range.source == VertexSource::overviewMarker;
    const bool hasVertices = isMarker ? m_marker.has_value() : m_vertices.has_value();
    const bool isReady = !preparedSlot(pass.program) || m_prepared == pass.program;
    if (target == nullptr || !hasVertices || !isReady) {
        return E_FAIL;
    }
    for (const Surface texture : pass.textures) {
        if (texture != Surface::none && !m_surfaces.has(texture)) {
            return E_FAIL;
        }
        // What is drawn into cannot be looked at.
        if (texture == pass.target) {
            return E_INVALIDARG;
        }
    }
    const PixelProgram program = programOf(pass, m_surfaces);
    if (!program) {
        return E_INVALIDARG;
    }
    const auto vertices =
        isMarker ? std::span<const Vertex>(*m_marker) : std::span<const Vertex>(*m_vertices);
    const FragmentVisitor paint = [&](const Fragment& fragment) {
        Bgra& pixel = target->at(fragment.x, fragment.y);
        const Colour colour = program(fragment);
        pixel = pass.isBlended ? blended(colour, pixel) : toBgra(colour);
    };
    return pass.range.topology == Topology::triangleList ? drawList(vertices, pass.range, *target, paint)
                                                         : drawStrip(vertices, pass.range, *target, paint);
}

void CReferenceDevice::copy(Surface from, Surface to) {
    const Picture* const source = m_surfaces.picture(from);
    Picture* const target = m_surfaces.picture(to);
    if (source == nullptr || target == nullptr || source == target || source->width != target->width ||
        source->height != target->height) {
        return;
    }
    std::ranges::copy(source->pixels, target->pixels.begin());
}

void CReferenceDevice::copyBox(Surface from, const PixelBox& box, Surface to) {
    const Picture* const source = m_surfaces.picture(from);
    Picture* const target = m_surfaces.picture(to);
    if (source == nullptr || target == nullptr || source == target || box.isEmpty() ||
        !isInside(box, *source) || !isInside({0, 0, box.width(), box.height()}, *target)) {
        return;
    }
    for (int y = 0; y < box.height(); ++y) {
        std::copy_n(&source->at(box.left, box.top + y), box.width(), &target->at(0, y));
    }
}

HRESULT CReferenceDevice::readBack(IMappedRowsVisitor& visitor) {
    const Picture* const output = m_surfaces.picture(Surface::outputTarget);
    if (output == nullptr) {
        return E_FAIL;
    }
    const auto bytes = std::as_bytes(std::span(output->pixels));
    return visitor.visit({bytes.data(), sizeof(Bgra) * static_cast<std::size_t>(output->width), output->width,
                          output->height});
}

void CReferenceDevice::close() {
    m_isOpen = false;
    m_surfaces = CSurfaces();
    m_vertices.reset();
    m_marker.reset();
    m_prepared.reset();
}

} // namespace tarvo::render::reference
