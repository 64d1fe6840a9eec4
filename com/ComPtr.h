#pragma once

#include "platform/InterfaceTypes.h"

#include <cstddef>
#include <type_traits>
#include <utility>

namespace tarvo::com {

/// A counted reference to an interface (or to an object by its class), null or not.
///
/// Copying adds a reference, moving hands it over. Not safe for use of one pointer by several threads at
/// once, as with any other value.
template<class T>
class ComPtr {
public:
    ComPtr() = default;
    ComPtr(std::nullptr_t) noexcept {}
    /// Adds a reference of its own; `attach` takes over one that exists.
    ComPtr(T* pointer) noexcept : m_pointer(pointer) { addRef(); }
    ComPtr(const ComPtr& other) noexcept : m_pointer(other.m_pointer) { addRef(); }
    ComPtr(ComPtr&& other) noexcept : m_pointer(other.detach()) {}
    /// From an interface derived from T; nothing is queried.
    template<class Derived>
    requires(!std::is_same_v<Derived, T> && std::is_convertible_v<Derived*, T*>) ComPtr(ComPtr<Derived> other)
    noexcept : m_pointer(other.detach()) {}
    ~ComPtr() { reset(); }

    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(m_pointer, other.m_pointer);
        return *this;
    }

    T* get() const noexcept { return m_pointer; }
    T* operator->() const noexcept { return m_pointer; }
    T& operator*() const noexcept { return *m_pointer; }
    explicit operator bool() const noexcept { return m_pointer != nullptr; }

    /// Lets go. The pointer is null before the reference is released, so that whatever the release sets off
    /// finds it so.
    void reset() noexcept {
        if (T* old = std::exchange(m_pointer, nullptr); old != nullptr)
            old->Release();
        // The analyser does not see that the last Release deletes the object.
    } // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)

    /// Where a function shall store a new reference; the old one is released first.
    T** put() noexcept {
        reset();
        return &m_pointer;
    }
    /// The same for functions that give out the interface they were asked for: they return a T here.
    void** putVoid() noexcept { return reinterpret_cast<void**>(put()); }

    /// Takes over a reference.
    void attach(T* pointer) noexcept {
        reset();
        m_pointer = pointer;
    }
    /// Hands the reference over to the caller.
    [[nodiscard]] T* detach() noexcept { return std::exchange(m_pointer, nullptr); }

    /// Stores a reference of its own in an out parameter; E_POINTER if there is none.
    HRESULT copyTo(T** target) const noexcept {
        if (target == nullptr)
            return E_POINTER;
        *target = m_pointer;
        addRef();
        return S_OK;
    }

    /// Asks the object for another interface. `result` becomes the answer, E_POINTER if there is no object.
    template<class Other>
    ComPtr<Other> as(HRESULT& result) const noexcept {
        void* answer = nullptr;
        result = m_pointer != nullptr ? m_pointer->QueryInterface(__uuidof(Other), &answer) : E_POINTER;
        ComPtr<Other> other;
        if (SUCCEEDED(result))
            other.attach(static_cast<Other*>(answer));
        return other;
    }
    /// The same for callers to whom null says enough.
    template<class Other>
    ComPtr<Other> as() const noexcept {
        HRESULT ignored = S_OK;
        return as<Other>(ignored);
    }

private:
    void addRef() const noexcept {
        if (m_pointer != nullptr)
            m_pointer->AddRef();
    }

    T* m_pointer = nullptr;
};

/// Whether both belong to one object: only IUnknown is the same pointer however it was reached.
inline bool isSameObject(IUnknown* one, IUnknown* other) noexcept {
    if (one == nullptr || other == nullptr)
        return one == other;
    return ComPtr<IUnknown>(one).as<IUnknown>().get() == ComPtr<IUnknown>(other).as<IUnknown>().get();
}

} // namespace tarvo::com
