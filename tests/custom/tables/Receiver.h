#pragma once

#include "custom/tables/CustomTransformData.h"

#include <functional>
#include <optional>
#include <vector>

namespace tarvo::custom {

/// Keeps what it is given and answers as told.
class CReceiver final : public ITablesReceiver {
public:
    HRESULT SetTransform(const TableDimensions& given, std::span<const std::byte> bytes) override {
        dimensions = given;
        entries.assign(bytes.begin(), bytes.end());
        if (meanwhile)
            meanwhile();
        return answer;
    }

    HRESULT answer = S_FALSE;
    std::function<void()> meanwhile;
    std::optional<TableDimensions> dimensions;
    std::vector<std::byte> entries;
};

} // namespace tarvo::custom
