#pragma once

#include "com/Object.h"
#include "platform/InterfaceTypes.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace tarvo::com {

/// Enumerator over a list that no longer changes, shared with its clones.
///
/// `Policy` tells the type `Stored`, which owns what it refers to, the type `Item` that the interface gives
/// out, and `static void give(const Stored&, Item&) noexcept`, which makes an item that the caller owns.
template<class IEnum, class Policy>
class CEnumerator final : public CObject<IEnum> {
public:
    using Stored = typename Policy::Stored;
    using Item = typename Policy::Item;
    using List = std::shared_ptr<const std::vector<Stored>>;

    explicit CEnumerator(List list, std::size_t position = 0) noexcept
        : m_list(std::move(list)), m_position(position) {}

    /// `fetched` may be null only for a single item. S_FALSE if there were fewer than wanted.
    STDMETHODIMP Next(ULONG wanted, Item* items, ULONG* fetched) override {
        if (fetched != nullptr)
            *fetched = 0;
        if ((items == nullptr && wanted != 0) || (fetched == nullptr && wanted != 1))
            return E_POINTER;
        const auto [first, count] = advance(wanted);
        for (std::size_t i = 0; i < count; ++i)
            Policy::give((*m_list)[first + i], items[i]);
        if (fetched != nullptr)
            *fetched = static_cast<ULONG>(count);
        return count == wanted ? S_OK : S_FALSE;
    }

    STDMETHODIMP Skip(ULONG count) override { return advance(count).second == count ? S_OK : S_FALSE; }

    STDMETHODIMP Reset() override {
        const std::lock_guard lock(m_lock);
        m_position = 0;
        return S_OK;
    }

    STDMETHODIMP Clone(IEnum** clone) override {
        if (clone == nullptr)
            return E_POINTER;
        *clone = nullptr;
        return guarded([&] {
            const std::lock_guard lock(m_lock);
            *clone = makeObject<CEnumerator>(m_list, m_position).detach();
        });
    }

private:
    /// Moves on by `wanted` or to the end; where from and how far.
    std::pair<std::size_t, std::size_t> advance(std::size_t wanted) noexcept {
        const std::lock_guard lock(m_lock);
        const std::size_t first = m_position;
        const std::size_t count = std::min(wanted, m_list->size() - first);
        m_position += count;
        return {first, count};
    }

    List m_list;
    std::mutex m_lock;
    std::size_t m_position;
};

} // namespace tarvo::com
