#include "render/reference/ReferenceRenderer.h"

#include "geometry/OverviewMarker.h"
#include "geometry/ViewLayout.h"
#include "render/reference/PixelPrograms.h"
#include "render/reference/Rasteriser.h"

#include <algorithm>
#include <memory>
#include <span>
#include <stdexcept>
#include <utility>

namespace tarvo::render::reference {
namespace {

using geometry::CViewState;
using geometry::DewarpConstants;
using geometry::PixelBox;
using geometry::Vertex;
using geometry::ViewType;
using geometry::ViewVertices;

std::span<const Vertex> quadAt(const ViewVertices& vertices, int first) {
    return std::span(vertices).subspan(static_cast<std::size_t>(first), geometry::verticesPerQuad);
}

/// Draws with a program that maps a fragment to a colour, which replaces the pixel.
template<typename Program>
void drawQuad(Picture& target, std::span<const Vertex> vertices, Program program) {
    rasteriseStrip(vertices, target.width, target.height,
                   [&](const Fragment& f) { target.at(f.x, f.y) = toBgra(program(f.u, f.v)); });
}

/// Mixes by the source's alpha, which also becomes the target's.
Bgra blended(Colour source, Bgra target) {
    const Colour below = fromBgra(target);
    const auto mix = [share = source.alpha](float over, float under) {
        return share * over + (1.0F - share) * under;
    };
    return toBgra({mix(source.red, below.red), mix(source.green, below.green), mix(source.blue, below.blue),
                   source.alpha});
}

Picture copyOf(const Picture& source, const PixelBox& box) {
    Picture copy(box.width(), box.height());
    for (int y = 0; y < box.height(); ++y) {
        std::copy_n(&source.at(box.left, box.top + y), box.width(), &copy.at(0, y));
    }
    return copy;
}

void requireSize(const Picture& input, const CViewState& view) {
    const geometry::PictureSize wanted = view.inputSize();
    const geometry::PictureSize output = view.outputSize();
    if (wanted.width == 0 || wanted.height == 0 || output.width == 0 || output.height == 0) {
        throw std::invalid_argument("the view does not know the input and output size");
    }
    if (static_cast<std::uint32_t>(input.width) != wanted.width ||
        static_cast<std::uint32_t>(input.height) != wanted.height) {
        throw std::invalid_argument("the input picture does not have the view's input size");
    }
}

/// One output picture in the making.
class Frame {
public:
    Frame(const CViewState& view, const Picture& input)
        : m_view(view), m_input(input), m_layout(view.layout()),
          m_vertices(geometry::buildViewVertices(m_layout)),
          m_output(static_cast<int>(view.outputSize().width), static_cast<int>(view.outputSize().height)) {}

    Picture bypassed() && {
        drawPlain(m_input, geometry::quad::customView);
        return std::move(m_output);
    }

    Picture dewarped() && {
        const geometry::ExcludeArea area = m_layout.excludeArea;
        const PixelBox box = area.pixelBox(m_input.width, m_input.height);
        const bool isExcluding = area.isActive() && !box.isEmpty();
        drawView(isExcluding ? withExcludeAreaBlack(area) : m_input);
        if (isExcluding) {
            drawPlain(copyOf(m_input, box), geometry::quad::excludeArea);
        }
        if (m_view.viewType() == ViewType::singleOverview) {
            drawOverview();
        }
        return std::move(m_output);
    }

private:
    void drawPlain(const Picture& source, int firstVertex) {
        drawQuad(m_output, quadAt(m_vertices, firstVertex),
                 [&](float u, float v) { return defaultProgram(source, u, v); });
    }

    void drawDewarped(const Picture& source, const geometry::CDewarpParameters& parameters, int firstVertex) {
        const DewarpConstants& constants = parameters.constants();
        drawQuad(m_output, quadAt(m_vertices, firstVertex), [&](float u, float v) {
            return dewarpProgram(parameters.panoramaMode(), constants, source, u, v);
        });
    }

    void drawView(const Picture& source) {
        const ViewType viewType = m_view.viewType();
        switch (viewType) {
        case ViewType::single:
        case ViewType::singleOverview:
            drawDewarped(source, m_view.parameters(), geometry::quad::singleView);
            break;
        case ViewType::panoramaSingle:
        case ViewType::panoramaDouble:
            drawDewarped(source, m_view.parameters(), geometry::panoramaQuad(viewType, m_layout.orientation));
            break;
        case ViewType::quad:
            for (int i = 0; i < geometry::quadrantCount(m_layout.orientation); ++i) {
                drawDewarped(source, m_view.subViewParameters(i),
                             geometry::quad::firstQuadrant + i * geometry::verticesPerQuad);
            }
            break;
        case ViewType::custom:
            break;
        }
    }

    Picture withExcludeAreaBlack(const geometry::ExcludeArea& area) const {
        Picture masked(m_input.width, m_input.height);
        drawQuad(masked, quadAt(m_vertices, geometry::quad::fullTarget),
                 [&](float u, float v) { return excludeRegionProgram(area, m_input, u, v); });
        return masked;
    }

    void drawOverview() {
        const auto indices = geometry::overviewDiscIndices();
        const auto disc = std::span(m_vertices).subspan(geometry::overviewDiscBaseVertex);
        rasteriseList(disc, indices, m_output.width, m_output.height, [&](const Fragment& f) {
            m_output.at(f.x, f.y) = toBgra(defaultProgram(m_input, f.u, f.v));
        });

        const auto marker = std::make_unique<geometry::OverviewMarkerVertices>();
        geometry::buildOverviewMarker(
            m_view.parameters().constants(), m_layout.inputAspect, m_layout.outputAspect,
            geometry::overviewPlacement(m_layout.outputAspect, m_layout.isOverviewLeft), *marker);
        rasteriseStrip(*marker, m_output.width, m_output.height, [&](const Fragment& f) {
            Bgra& pixel = m_output.at(f.x, f.y);
            pixel = blended(overviewRegionProgram(f.colour), pixel);
        });
    }

    const CViewState& m_view;
    const Picture& m_input;
    geometry::ViewLayout m_layout;
    ViewVertices m_vertices;
    Picture m_output;
};

} // namespace

Picture renderView(const CViewState& view, const Picture& input, bool isBypassed) {
    requireSize(input, view);
    Frame frame(view, input);
    return isBypassed ? std::move(frame).bypassed() : std::move(frame).dewarped();
}

} // namespace tarvo::render::reference
