#include "tests/support/graph/GraphSystem.h"

#include "com/Guarded.h"
#include "com/ModuleCount.h"
#include "interfaces/TarvoVideoTransform.h"
#include "tests/windows/RegisteredProduct.h"
#include "tests/windows/RegistryTurn.h"

#include <gtest/gtest.h>

#include <chrono>
#include <control.h>
#include <dmodshow.h>
#include <evcode.h>

namespace tarvo::tests {
namespace {

using com::ComPtr;

template<class T>
ComPtr<T> created(REFCLSID id) {
    ComPtr<T> object;
    com::throwIfFailed(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(T), object.putVoid()));
    return object;
}

template<class T>
ComPtr<T> asked(IUnknown& object, REFIID iid = __uuidof(T)) {
    ComPtr<T> answer;
    com::throwIfFailed(object.QueryInterface(iid, answer.putVoid()));
    return answer;
}

class CPlayer final : public IGraphPlayer {
public:
    CPlayer() {
        com::throwIfFailed(asked<IMediaFilter>(*m_graph)->SetSyncSource(nullptr));
        // The compiler does not tie this one's identifier to its type.
        m_events = asked<IMediaEvent>(*m_graph, IID_IMediaEvent);
    }
    CPlayer(const CPlayer&) = delete;
    CPlayer& operator=(const CPlayer&) = delete;
    ~CPlayer() override { EXPECT_GE(stop(), S_OK); }

    IFilterGraph& graph() noexcept override { return *m_graph; }
    HRESULT run() override { return m_control->Run(); }
    HRESULT stop() override { return m_control->Stop(); }
    bool waitForCompletion() override {
        // WaitForCompletion() does not wait in a second run.
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (std::chrono::steady_clock::now() < limit) {
            LONG event = 0;
            LONG_PTR first = 0;
            LONG_PTR second = 0;
            if (m_events->GetEvent(&event, &first, &second, 100) != S_OK)
                continue;
            m_events->FreeEventParams(event, first, second);
            if (event == EC_COMPLETE)
                return true;
        }
        return false;
    }

private:
    ComPtr<IFilterGraph> m_graph = created<IFilterGraph>(CLSID_FilterGraph);
    ComPtr<IMediaControl> m_control = asked<IMediaControl>(*m_graph);
    ComPtr<IMediaEvent> m_events;
};

/// The system's objects, for as long as this lives.
class CSystemObjects {
public:
    CSystemObjects() { com::throwIfFailed(CoInitializeEx(nullptr, COINIT_MULTITHREADED)); }
    CSystemObjects(const CSystemObjects&) = delete;
    CSystemObjects& operator=(const CSystemObjects&) = delete;
    ~CSystemObjects() { CoUninitialize(); }
};

} // namespace

struct CGraphSystem::Parts {
    CSystemObjects objects;
    CRegistryTurn turn;
    CRegisteredProduct product;
};

CGraphSystem::CGraphSystem() : m_parts(std::make_unique<Parts>()) {}

CGraphSystem::~CGraphSystem() {
    // The product checks its own objects.
    EXPECT_EQ(com::moduleCount().count(), 0) << "objects of the test are left";
}

std::unique_ptr<IGraphPlayer> CGraphSystem::makePlayer() const {
    return std::make_unique<CPlayer>();
}

ComPtr<IBaseFilter> CGraphSystem::makeTransformFilter() const {
    ComPtr<IBaseFilter> filter = created<IBaseFilter>(CLSID_DMOWrapperFilter);
    com::throwIfFailed(
        asked<IDMOWrapperFilter>(*filter)->Init(CLSID_DewarpingTransform, DMOCATEGORY_VIDEO_EFFECT));
    return filter;
}

ComPtr<IUnknown> CGraphSystem::makeTransform() const {
    return created<IUnknown>(CLSID_DewarpingTransform);
}

HRESULT CGraphSystem::tellQuality(IBaseFilter&, IBaseFilter& transformFilter, const Quality& quality) const {
    // Wine's filter passes no such messages on, so the transform is told as the filter would do it.
    const auto control = asked<IDMOQualityControl>(transformFilter);
    DWORD status = 0;
    com::throwIfFailed(control->GetStatus(&status));
    if ((status & DMO_QUALITY_STATUS_ENABLED) == 0)
        com::throwIfFailed(control->SetStatus(DMO_QUALITY_STATUS_ENABLED));
    return control->SetNow(quality.TimeStamp + quality.Late);
}

} // namespace tarvo::tests
