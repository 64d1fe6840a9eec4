#pragma once

#include <utility>

namespace tarvo::platform {

/// Owns a dynamic library loaded by name or path; unloads it at the end of its life. A library that is not
/// there gives an object which is false and has no symbols.
class CSystemLibrary {
public:
    CSystemLibrary() = default;
    /// The name, UTF-8, is searched for as the system does; null and empty names load nothing. May throw
    /// std::bad_alloc.
    explicit CSystemLibrary(const char* name);
    CSystemLibrary(CSystemLibrary&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    CSystemLibrary& operator=(CSystemLibrary&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~CSystemLibrary();

    explicit operator bool() const { return m_handle != nullptr; }

    /// Address of an exported function or variable, null if absent.
    void* symbol(const char* name) const;

    /// The same as a pointer to a function: library.function<int(int)>("name").
    template<typename Signature>
    Signature* function(const char* name) const {
        return reinterpret_cast<Signature*>(symbol(name));
    }

private:
    void* m_handle = nullptr;
};

} // namespace tarvo::platform
