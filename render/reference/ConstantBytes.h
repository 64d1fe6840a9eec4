#pragma once

#include <cstddef>
#include <cstring>
#include <optional>
#include <span>
#include <type_traits>

namespace tarvo::render::reference {

/// The record at the front of the bytes, whatever their alignment; nothing when they are too few. More may
/// follow: the custom view hands over its longer record whichever program reads it.
template<typename Record>
std::optional<Record> readRecord(std::span<const std::byte> bytes) {
    static_assert(std::is_trivially_copyable_v<Record>);
    if (bytes.size() < sizeof(Record)) {
        return std::nullopt;
    }
    Record record;
    std::memcpy(&record, bytes.data(), sizeof(Record));
    return record;
}

} // namespace tarvo::render::reference
