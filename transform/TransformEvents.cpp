#include "transform/TransformEvents.h"

#include "com/Event.h"
#include "com/Guarded.h"
#include "diagnostics/LogLine.h"

namespace tarvo::transform {
namespace {

using diagnostics::LogCategory;

// Each of the two interfaces has one member.
constexpr DISPID onPrepareImage = 1;
constexpr DISPID onNewImage = 1;

constexpr const char* place = "CDewarpingTransform::InternalProcessOutput";

} // namespace

void CTransformEvents::prepareImage(std::int64_t timestamp) {
    VARIANT arguments[2]{};
    arguments[0].vt = VT_I8;
    arguments[0].llVal = timestamp;
    arguments[1].vt = VT_I4;
    arguments[1].lVal = 0;
    const HRESULT result =
        com::guarded([&] { return com::fireEvent(m_transformEvents, onPrepareImage, arguments); });
    if (FAILED(result))
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, place,
                  "OnPrepareImage callback returned an error (0x%08X)", static_cast<unsigned>(result));
}

void CTransformEvents::newImage(IImageBuffer& image) {
    VARIANT arguments[1]{};
    arguments[0].vt = VT_DISPATCH;
    arguments[0].pdispVal = &image;
    const HRESULT result = com::guarded([&] { return com::fireEvent(m_imageEvents, onNewImage, arguments); });
    if (FAILED(result))
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, place,
                  "OnNewImage callback returned an error (0x%08X)", static_cast<unsigned>(result));
}

} // namespace tarvo::transform
