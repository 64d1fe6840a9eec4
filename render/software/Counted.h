#pragma once

#include <utility>

namespace tarvo::render::software {

/// Base of what several owners share and its store uses again when the last lets go. Counting is not atomic:
/// only the thread that uses the device takes or gives up shares.
class CCounted {
public:
    int shares() const { return m_shares; }

protected:
    CCounted() = default;
    ~CCounted() = default;
    CCounted(const CCounted&) = delete;
    CCounted& operator=(const CCounted&) = delete;

private:
    template<typename>
    friend class CShare;
    int m_shares = 0;
};

/// A share in a `Thing`, which is told by unused() when the last one ends, and stays with its store.
template<typename Thing>
class CShare {
public:
    CShare() = default;
    explicit CShare(Thing& thing) : m_thing(&thing) { ++thing.m_shares; }
    ~CShare() {
        if (m_thing != nullptr && --m_thing->m_shares == 0)
            m_thing->unused();
    }
    CShare(const CShare& other) : m_thing(other.m_thing) {
        if (m_thing != nullptr)
            ++m_thing->m_shares;
    }
    CShare(CShare&& other) noexcept : m_thing(std::exchange(other.m_thing, nullptr)) {}
    CShare& operator=(CShare other) noexcept {
        std::swap(m_thing, other.m_thing);
        return *this;
    }

    explicit operator bool() const { return m_thing != nullptr; }
    Thing* operator->() const { return m_thing; }
    Thing& operator*() const { return *m_thing; }
    Thing* get() const { return m_thing; }

private:
    Thing* m_thing = nullptr;
};

} // namespace tarvo::render::software
