#pragma once

#include "custom/tables/CustomTables.h"
#include "diagnostics/ObjectLog.h"
#include "platform/InterfaceTypes.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tarvo::custom {

/// Where tables go that came as custom transform data.
class ITablesReceiver {
public:
    /// Takes tables over, or refuses them: E_INVALIDARG with the line "Invalid data size" when the entries
    /// are not exactly as many as the dimensions say. `entries` are little-endian words of the caller's, read
    /// during the call only; an odd last byte does not count.
    virtual HRESULT SetTransform(const TableDimensions& dimensions, std::span<const std::byte> entries) = 0;

protected:
    ~ITablesReceiver() = default;
};

/// Custom transform data are little-endian 16-bit words: number of tables, a block size that is logged and
/// has no further use, width, height, then the entries.
inline constexpr std::size_t dataHeaderWords = 4;
/// Data of fewer words are "Not enough data". It is one less than the header has; data that end within the
/// header can never have the right size and are refused as that, none of what lies beyond them being read.
inline constexpr std::size_t dataMinimumWords = 3;

/// Hands the receiver the tables in `data`. S_OK or what the receiver answers; E_INVALIDARG, logged, for a
/// reserved argument that is not 0 and for data that are too short.
HRESULT SetCustomTransformData(ITablesReceiver& receiver, std::span<const std::byte> data,
                               std::int32_t reserved, const diagnostics::ObjectLog& log);

/// The same for an array of unsigned bytes in one dimension. E_INVALIDARG also without an array and for
/// another kind of array; E_FAIL, logged, when its data cannot be accessed. The array is locked meanwhile.
///
/// Data that are too short or cannot be accessed are destroyed. The array itself is an [in] argument and
/// stays its owner's, who is going to destroy it as automation demands: it is left behind as an array of no
/// elements, so that destroying it is right and looking into it harmless. Data that someone else keeps
/// locked, or whose memory is not the array's own, are left alone.
HRESULT SetCustomTransformData(ITablesReceiver& receiver, SAFEARRAY* array, std::int32_t reserved,
                               const diagnostics::ObjectLog& log);

} // namespace tarvo::custom
