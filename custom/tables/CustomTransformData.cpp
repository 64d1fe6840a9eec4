#include "custom/tables/CustomTransformData.h"

#include "diagnostics/LogLine.h"

#include <utility>

namespace tarvo::custom {
namespace {

constexpr std::size_t bytesPerWord = 2;

HRESULT refuse(const diagnostics::ObjectLog& log, const char* line, HRESULT result) {
    log.error(line);
    return result;
}

HRESULT refuseReserved(const diagnostics::ObjectLog& log) {
    return refuse(log, "reserved argument must be zero!", E_INVALIDARG);
}

/// Word `index`, or 0 where the data have ended.
std::uint16_t wordAt(std::span<const std::byte> data, std::size_t index) {
    const std::size_t first = index * bytesPerWord;
    if (first + bytesPerWord > data.size())
        return 0;
    return static_cast<std::uint16_t>(std::to_integer<unsigned>(data[first]) |
                                      std::to_integer<unsigned>(data[first + 1]) << 8U);
}

void logHeader(const diagnostics::ObjectLog& log, const TableDimensions& dimensions, std::uint16_t blockSize,
               std::size_t byteCount) {
    try {
        TARVO_LOG(log.log, diagnostics::LogCategory::information, 0, "",
                  "tables: %i, block size: %i width: %i, height %i (%i kB)", int{dimensions.tableCount},
                  int{blockSize}, int{dimensions.width}, int{dimensions.height},
                  static_cast<int>(byteCount / 1000));
    } catch (...) { // NOLINT(bugprone-empty-catch): logging never fails its caller
    }
}

bool isTooShort(std::size_t byteCount) {
    return byteCount / bytesPerWord < dataMinimumWords;
}

/// `data` are not too short.
HRESULT handOver(ITablesReceiver& receiver, std::span<const std::byte> data,
                 const diagnostics::ObjectLog& log) {
    const TableDimensions dimensions{wordAt(data, 0), wordAt(data, 2), wordAt(data, 3)};
    logHeader(log, dimensions, wordAt(data, 1), data.size());
    if (data.size() < dataHeaderWords * bytesPerWord)
        return refuse(log, "Invalid data size", E_INVALIDARG);
    return receiver.SetTransform(dimensions, data.subspan(dataHeaderWords * bytesPerWord));
}

/// Whether the array's elements are unsigned bytes in one row.
bool isByteArray(SAFEARRAY* array) {
    VARTYPE type = VT_EMPTY;
    // What is flagged as holding interfaces is no array of bytes whatever else it claims.
    constexpr unsigned holdsInterfaces = FADF_HAVEIID | FADF_UNKNOWN | FADF_DISPATCH;
    return array != nullptr && (array->fFeatures & holdsInterfaces) == 0 && SafeArrayGetDim(array) == 1 &&
           SUCCEEDED(SafeArrayGetVartype(array, &type)) && type == VT_UI1 && SafeArrayGetElemsize(array) == 1;
}

/// A lock on an array for as long as it lives, unless it is given back before.
class CArrayLock {
public:
    explicit CArrayLock(SAFEARRAY* array) : m_array(SUCCEEDED(SafeArrayLock(array)) ? array : nullptr) {}
    ~CArrayLock() { unlock(); }
    CArrayLock(const CArrayLock&) = delete;
    CArrayLock& operator=(const CArrayLock&) = delete;

    explicit operator bool() const { return m_array != nullptr; }
    void unlock() {
        if (m_array != nullptr)
            SafeArrayUnlock(std::exchange(m_array, nullptr));
    }

private:
    SAFEARRAY* m_array;
};

/// Unlocks the array and destroys its data. See the header for what stays.
HRESULT discard(SAFEARRAY* array, CArrayLock& lock, HRESULT result) {
    lock.unlock();
    constexpr unsigned livesElsewhere = FADF_AUTO | FADF_STATIC | FADF_EMBEDDED | FADF_FIXEDSIZE;
    if ((array->fFeatures & livesElsewhere) == 0 && SUCCEEDED(SafeArrayDestroyData(array)))
        array->rgsabound[0].cElements = 0;
    return result;
}

} // namespace

HRESULT SetCustomTransformData(ITablesReceiver& receiver, std::span<const std::byte> data,
                               std::int32_t reserved, const diagnostics::ObjectLog& log) {
    if (reserved != 0)
        return refuseReserved(log);
    if (isTooShort(data.size()))
        return refuse(log, "Not enough data", E_INVALIDARG);
    return handOver(receiver, data, log);
}

HRESULT SetCustomTransformData(ITablesReceiver& receiver, SAFEARRAY* array, std::int32_t reserved,
                               const diagnostics::ObjectLog& log) {
    if (reserved != 0)
        return refuseReserved(log);
    if (!isByteArray(array))
        return E_INVALIDARG;
    CArrayLock lock(array);
    if (!lock)
        return refuse(log, "Failed to access data", E_FAIL);
    const std::size_t byteCount = array->rgsabound[0].cElements;
    if (isTooShort(byteCount))
        return discard(array, lock, refuse(log, "Not enough data", E_INVALIDARG));
    void* data = nullptr;
    // An array may have lost its data and still claim to have elements.
    if (array->pvData == nullptr || FAILED(SafeArrayAccessData(array, &data)))
        return discard(array, lock, refuse(log, "Failed to access data", E_FAIL));

    const HRESULT result = handOver(receiver, {static_cast<const std::byte*>(data), byteCount}, log);
    if (FAILED(SafeArrayUnaccessData(array)))
        log.error("Failed to unaccess data");
    return result;
}

} // namespace tarvo::custom
