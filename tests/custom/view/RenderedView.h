#pragma once

#include "custom/tables/CustomTransformShader.h"
#include "geometry/ViewState.h"
#include "render/Picture.h"
#include "render/RenderDevice.h"
#include "tests/custom/tables/LoggedLines.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tarvo::custom {

/// A device by name, "reference" or "software".
std::unique_ptr<render::IRenderDevice> makeDevice(const std::string& name, const diagnostics::ObjectLog& log);

/// A lookup table entry; fractions of 1, as the tests think of them.
struct Cell {
    double x;
    double y;
    double weight;
};

/// Appends what a host hands over for the cell.
void append(std::vector<std::uint16_t>& words, const Cell& cell);

/// Views rendered on each device, through the whole sequence of a frame.
class RenderedView : public testing::TestWithParam<std::string> {
protected:
    /// Expects that the tables are taken.
    void setTables(const TableDimensions& dimensions, const std::vector<std::uint16_t>& words);

    /// The custom view of the input, as the shader is set now.
    render::Picture custom(const render::Picture& input, int width, int height);

    /// A built-in view; it has the sizes in it already.
    render::Picture builtIn(const geometry::CViewState& view, const render::Picture& input);

    CLoggedLines lines;
    CCustomTransformShader shader{lines.objectLog()};

private:
    render::Picture rendered(const geometry::CViewState& view, const render::Picture& input,
                             render::IShader& with);
};

} // namespace tarvo::custom

#define TARVO_ON_EVERY_DEVICE(Fixture)                                                                       \
    INSTANTIATE_TEST_SUITE_P(Device, Fixture, testing::Values("reference", "software"),                      \
                             [](const auto& device) { return device.param; })
