#include "tests/support/graph/GraphSystem.h"

#include "com/ModuleCount.h"
#include "interfaces/TarvoVideoTransform.h"
#include "platform/SystemLibrary.h"
#include "tests/support/GraphFakes.h"
#include "tests/support/graph/DmoWrapper.h"
#include "tests/support/graph/TestGraph.h"

#include <gtest/gtest.h>

namespace tarvo::tests {
namespace {

using com::ComPtr;

class CPlayer final : public IGraphPlayer {
public:
    CPlayer() = default;
    CPlayer(const CPlayer&) = delete;
    CPlayer& operator=(const CPlayer&) = delete;
    ~CPlayer() override { EXPECT_EQ(m_graph->stop(), S_OK); }

    IFilterGraph& graph() noexcept override { return *m_graph; }
    HRESULT run() override { return m_graph->run(); }
    HRESULT stop() override { return m_graph->stop(); }
    bool waitForCompletion() override { return m_graph->waitForCompletion(std::chrono::seconds(60)); }

private:
    ComPtr<CTestGraph> m_graph = com::makeObject<CTestGraph>();
};

} // namespace

struct CGraphSystem::Parts {
    platform::CSystemLibrary product{TARVO_PRODUCT_MODULE};

    ComPtr<IClassFactory> transformFactory() const {
        auto* const getClassObject =
            product.function<HRESULT WINAPI(REFCLSID, REFIID, void**)>("DllGetClassObject");
        ComPtr<IClassFactory> factory;
        com::throwIfFailed(
            getClassObject != nullptr
                ? getClassObject(CLSID_DewarpingTransform, __uuidof(IClassFactory), factory.putVoid())
                : E_NOTIMPL);
        return factory;
    }
};

CGraphSystem::CGraphSystem() : m_parts(std::make_unique<Parts>()) {
    EXPECT_TRUE(m_parts->product);
}

CGraphSystem::~CGraphSystem() {
    auto* const canUnloadNow = m_parts->product.function<HRESULT WINAPI()>("DllCanUnloadNow");
    EXPECT_EQ(canUnloadNow != nullptr ? canUnloadNow() : E_NOTIMPL, S_OK)
        << "objects of the product are left";
    EXPECT_EQ(com::moduleCount().count(), 0) << "objects of the test are left";
}

std::unique_ptr<IGraphPlayer> CGraphSystem::makePlayer() const {
    return std::make_unique<CPlayer>();
}

ComPtr<IBaseFilter> CGraphSystem::makeTransformFilter() const {
    return com::makeObject<CDmoWrapper>(*m_parts->transformFactory());
}

ComPtr<IUnknown> CGraphSystem::makeTransform() const {
    ComPtr<IUnknown> transform;
    com::throwIfFailed(
        m_parts->transformFactory()->CreateInstance(nullptr, __uuidof(IUnknown), transform.putVoid()));
    return transform;
}

HRESULT CGraphSystem::tellQuality(IBaseFilter& sink, IBaseFilter& transformFilter,
                                  const Quality& quality) const {
    const auto control = pinOf(transformFilter, PINDIR_OUTPUT).as<IQualityControl>();
    return control ? control->Notify(&sink, quality) : E_NOINTERFACE;
}

} // namespace tarvo::tests
