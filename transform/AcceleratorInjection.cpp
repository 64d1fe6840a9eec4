#include "transform/AcceleratorInjection.h"

#include "accelerator/AcceleratorFilter.h"
#include "com/ComPtr.h"
#include "diagnostics/LogLine.h"
#include "dshow/PinType.h"
#include "interfaces/TarvoVideoTransform.h"

namespace tarvo::transform {
namespace {

using com::ComPtr;

constexpr const char* functionName = "InjectAcceleratorFilter";

/// One splice: what it takes is let go of with it, however far it comes.
class CInjection {
public:
    explicit CInjection(const diagnostics::ObjectLog& log) : m_log(log) {}

    HRESULT run(IUnknown& outer, bool insertsFillFrames, IAccelerator** accelerator) {
        // Up to here the graph is only looked at or added to; what is added stays.
        if (!findTransform(outer) || !findUpstream() || !addAccelerator(insertsFillFrames) || !disconnect())
            return m_result;
        if (connect())
            *accelerator = m_accelerator.detach();
        else
            restore();
        return m_result;
    }

private:
    /// Keeps the result of a step, and names the step if it failed.
    bool check(HRESULT result, const char* failure) {
        m_result = result;
        if (FAILED(result))
            logFailure(result, failure);
        return SUCCEEDED(result);
    }

    void logFailure(HRESULT result, const char* failure) const {
        TARVO_LOG(m_log.log, diagnostics::LogCategory::error, m_log.instanceId, functionName, "%s (0x%08X)",
                  failure, static_cast<unsigned>(result));
    }

    /// The next pin; an error too when there are no more.
    static HRESULT next(IEnumPins& pins, ComPtr<IPin>& pin) {
        ULONG fetched = 0;
        const HRESULT result = pins.Next(1, pin.put(), &fetched);
        return SUCCEEDED(result) && !pin ? E_FAIL : result;
    }

    bool findTransform(IUnknown& outer) {
        HRESULT result = S_OK;
        const ComPtr<IBaseFilter> filter = ComPtr<IUnknown>(&outer).as<IBaseFilter>(result);
        if (!check(result, "Dewarping Transform DMO not used as a DirectShow filter"))
            return false;
        FILTER_INFO info{};
        result = filter->QueryFilterInfo(&info);
        if (SUCCEEDED(result)) {
            m_graph.attach(info.pGraph);
            // A filter may be outside of every graph, and say so by success.
            result = m_graph ? S_OK : VFW_E_NOT_IN_GRAPH;
        }
        if (!check(result, "Failed to get filter info"))
            return false;
        ComPtr<IEnumPins> pins;
        return check(filter->EnumPins(pins.put()), "Failed to get pin enumerator") &&
               check(next(*pins, m_transformInput), "Failed to get input pin");
    }

    bool findUpstream() {
        return check(m_transformInput->ConnectedTo(m_upstream.put()), "Filter not connected") &&
               check(m_transformInput->ConnectionMediaType(m_type.put()),
                     "Could not get connection media type");
    }

    bool addAccelerator(bool insertsFillFrames) {
        const auto made = com::makeObject<accelerator::CAcceleratorFilter>(com::Outer{}, m_log.log);
        made->put_Settings(insertsFillFrames ? TarvoVideoTransformLib::insertFillFrames : 0);
        m_accelerator = ComPtr<IAccelerator>(made.get());
        HRESULT result = S_OK;
        m_filter = m_accelerator.as<IBaseFilter>(result);
        if (!check(result, "Could not get base filter interface") ||
            !check(m_graph->AddFilter(m_filter.get(), OLESTR("Accelerator")),
                   "Failed to add Accelerator filter"))
            return false;
        ComPtr<IEnumPins> pins;
        return check(m_filter->EnumPins(pins.put()), "Failed to get pin enumerator") &&
               check(next(*pins, m_input), "Failed to get input pin on Accelerator filter") &&
               check(next(*pins, m_output), "Failed to get output pin on Accelerator filter");
    }

    bool disconnect() {
        return check(m_graph->Disconnect(m_transformInput.get()),
                     "Failed to diconnect old input pin connection") &&
               check(m_graph->Disconnect(m_upstream.get()), "Failed to diconnect old output pin connection");
    }

    bool connect() {
        return check(m_graph->ConnectDirect(m_upstream.get(), m_input.get(), &m_type.get()),
                     "Failed to connect accelerator pin (input)") &&
               check(m_graph->ConnectDirect(m_output.get(), m_transformInput.get(), &m_type.get()),
                     "Failed to connect accelerator pin (output)");
    }

    /// The result stays that of the connection which failed.
    void restore() const {
        TARVO_LOG(m_log.log, diagnostics::LogCategory::information, m_log.instanceId, functionName, "%s",
                  "Restoring connections...");
        if (const HRESULT result = m_graph->RemoveFilter(m_filter.get()); FAILED(result))
            logFailure(result, "Failed to remove Accelerator filter");
        if (const HRESULT result =
                m_graph->ConnectDirect(m_upstream.get(), m_transformInput.get(), &m_type.get());
            FAILED(result))
            logFailure(result, "Failed to reconnect");
    }

    const diagnostics::ObjectLog& m_log;
    HRESULT m_result = S_OK;
    ComPtr<IFilterGraph> m_graph;
    ComPtr<IPin> m_transformInput;
    ComPtr<IPin> m_upstream;
    dshow::CPinType m_type;
    ComPtr<IAccelerator> m_accelerator;
    ComPtr<IBaseFilter> m_filter;
    ComPtr<IPin> m_input;
    ComPtr<IPin> m_output;
};

} // namespace

HRESULT injectAccelerator(IUnknown& outer, bool insertsFillFrames, const diagnostics::ObjectLog& log,
                          IAccelerator** accelerator) {
    return CInjection(log).run(outer, insertsFillFrames, accelerator);
}

} // namespace tarvo::transform
