#include "apps/host/HostError.h"

#include "platform/ErrorText.h"

#include <cstdio>

namespace tarvo::host {
namespace {

/// What media objects answer with; systems have no texts for these.
const char* mediaObjectReason(HRESULT result) {
    switch (static_cast<unsigned>(result)) {
    case static_cast<unsigned>(DMO_E_INVALIDSTREAMINDEX):
        return "there is no such stream";
    case static_cast<unsigned>(DMO_E_TYPE_NOT_SET):
        return "the media types are not all set";
    case static_cast<unsigned>(DMO_E_NOTACCEPTING):
        return "a frame is still in use";
    case static_cast<unsigned>(DMO_E_TYPE_NOT_ACCEPTED):
        return "the media type is not accepted";
    default:
        return nullptr;
    }
}

std::string textOf(const std::string& step, HRESULT result, std::string reason) {
    if (const char* const known = mediaObjectReason(result); reason.empty() && known != nullptr) {
        reason = known;
    } else if (reason.empty()) {
        reason = platform::systemErrorText(result).value_or("the system has no text for its result");
        // The system's texts are lines with an end, and some end their sentence, too.
        reason.erase(reason.find_last_not_of(" .\r\n") + 1);
    }
    char code[16];
    std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(result));
    return step + " failed: " + reason + " (" + code + ")";
}

} // namespace

HostError::HostError(const std::string& step, HRESULT result, const std::string& reason)
    : std::runtime_error(textOf(step, result, reason)), m_result(result) {}

} // namespace tarvo::host
