#pragma once

#include "com/ComPtr.h"
#include "platform/InterfaceTypes.h"

#include <memory>

namespace tarvo::tests {

/// A filter graph and the buttons to play it. Whatever a test adds leaves the graph with it, parted from all
/// others.
class IGraphPlayer {
public:
    virtual ~IGraphPlayer() = default;

    virtual IFilterGraph& graph() noexcept = 0;
    /// Frames go on as fast as the slowest takes them: there is no clock.
    virtual HRESULT run() = 0;
    virtual HRESULT stop() = 0;
    /// Waits until the sinks reported the end of what runs since the last run(); false after a minute.
    virtual bool waitForCompletion() = 0;
};

/// Where graphs, the filter around the product's transform and the transform itself come from: the system,
/// where it has media graphs and the product is registered while this lives; elsewhere CTestGraph and
/// CDmoWrapper around the loaded module. Checks in the end that nothing is left of either's objects, so it
/// has to outlive all of them.
class CGraphSystem {
public:
    CGraphSystem();
    CGraphSystem(const CGraphSystem&) = delete;
    CGraphSystem& operator=(const CGraphSystem&) = delete;
    ~CGraphSystem();

    // All throw com::CComError.

    std::unique_ptr<IGraphPlayer> makePlayer() const;
    /// The transform as a filter: one input pin, one output pin, and the transform's own interfaces.
    com::ComPtr<IBaseFilter> makeTransformFilter() const;
    /// The transform by itself.
    com::ComPtr<IUnknown> makeTransform() const;

    /// Tells the transform in its filter, as a sink does from within Receive, how late a frame was.
    HRESULT tellQuality(IBaseFilter& sink, IBaseFilter& transformFilter, const Quality& quality) const;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace tarvo::tests
