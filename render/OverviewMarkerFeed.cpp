#include "render/OverviewMarkerFeed.h"

#include "render/Pass.h"

#include <algorithm>

namespace tarvo::render {

void COverviewMarkerFeed::placeDisc(const geometry::ViewLayout& layout) {
    m_disc = {layout.inputAspect, layout.outputAspect, layout.isOverviewLeft};
}

HRESULT COverviewMarkerFeed::update(IRenderDevice& device, const geometry::DewarpConstants& constants) {
    // By their bytes: what is no number is never equal to itself and would be built anew each time.
    if (m_built && m_built->disc == m_disc &&
        std::ranges::equal(recordBytes(m_built->constants), recordBytes(constants))) {
        return S_OK;
    }
    m_built.reset();
    geometry::buildOverviewMarker(constants, m_disc.inputAspect, m_disc.outputAspect,
                                  geometry::overviewPlacement(m_disc.outputAspect, m_disc.isLeft),
                                  m_vertices);
    const HRESULT result = device.overviewMarker(m_vertices);
    if (SUCCEEDED(result)) {
        m_built = {constants, m_disc};
    }
    return result;
}

} // namespace tarvo::render
