#pragma once

#include "com/Object.h"
#include "platform/InterfaceTypes.h"

#include <cstddef>
#include <mutex>
#include <utility>

namespace tarvo::dshow {

/// Enumerator over a list that may change while it is walked, as those of filters and pins are: from the
/// change on it answers VFW_E_ENUM_OUT_OF_SYNC until it is reset.
///
/// `Source` keeps the owner of the list alive and tells: the type `Item` that is given out; `LONG version()`,
/// another one after each change; `HRESULT item(ULONG index, Item&)`, S_OK and an item that the caller owns,
/// an error, or any other success when there are no more; `static void discard(Item)`.
template<class IEnum, class Source>
class CLiveEnumerator final : public com::CObject<IEnum> {
public:
    using Item = typename Source::Item;

    explicit CLiveEnumerator(Source source) : m_source(std::move(source)), m_version(m_source.version()) {}

    /// `fetched` may be null only for a single item. S_FALSE if there were fewer than wanted.
    STDMETHODIMP Next(ULONG wanted, Item* items, ULONG* fetched) override {
        if (fetched != nullptr)
            *fetched = 0;
        if ((items == nullptr && wanted != 0) || (fetched == nullptr && wanted != 1))
            return E_POINTER;
        return com::guarded([&]() -> HRESULT {
            const std::lock_guard lock(m_lock);
            ULONG count = 0;
            const HRESULT result = walk(wanted, [&](Item item) { items[count++] = item; });
            if (FAILED(result)) {
                for (ULONG i = 0; i < count; ++i)
                    Source::discard(std::exchange(items[i], Item{}));
                return result;
            }
            if (fetched != nullptr)
                *fetched = count;
            return result;
        });
    }

    STDMETHODIMP Skip(ULONG count) override {
        return com::guarded([&] {
            const std::lock_guard lock(m_lock);
            return walk(count, &Source::discard);
        });
    }

    STDMETHODIMP Reset() override {
        return com::guarded([&] {
            const std::lock_guard lock(m_lock);
            m_version = m_source.version();
            m_position = 0;
        });
    }

    STDMETHODIMP Clone(IEnum** clone) override {
        if (clone == nullptr)
            return E_POINTER;
        *clone = nullptr;
        return com::guarded([&]() -> HRESULT {
            const std::lock_guard lock(m_lock);
            if (m_version != m_source.version())
                return VFW_E_ENUM_OUT_OF_SYNC;
            auto made = com::makeObject<CLiveEnumerator>(m_source);
            made->m_position = m_position;
            *clone = made.detach();
            return S_OK;
        });
    }

private:
    /// Moves on by `count` items or to the end, giving each to `take`; after an error it stands where it
    /// stood.
    template<class Take>
    HRESULT walk(ULONG count, const Take& take) {
        if (m_version != m_source.version())
            return VFW_E_ENUM_OUT_OF_SYNC;
        const ULONG first = m_position;
        for (ULONG i = 0; i < count; ++i) {
            Item item{};
            const HRESULT result = m_source.item(m_position, item);
            if (FAILED(result)) {
                m_position = first;
                return result;
            }
            if (result != S_OK)
                return S_FALSE;
            ++m_position;
            take(item);
        }
        return S_OK;
    }

    std::mutex m_lock;
    Source m_source;
    LONG m_version;
    ULONG m_position = 0;
};

} // namespace tarvo::dshow
