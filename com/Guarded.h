#pragma once

#include "platform/InterfaceTypes.h"

#include <concepts>
#include <exception>
#include <new>
#include <type_traits>
#include <utility>

namespace tarvo::com {

/// Carries an HRESULT through code that cannot return one, such as constructors.
class CComError : public std::exception {
public:
    explicit CComError(HRESULT result) noexcept : m_result(result) {}
    HRESULT result() const noexcept { return m_result; }
    const char* what() const noexcept override { return "a call failed with an HRESULT"; }

private:
    HRESULT m_result;
};

/// Throws a failed HRESULT: missing memory as std::bad_alloc, the rest as CComError.
inline void throwIfFailed(HRESULT result) {
    if (result == E_OUTOFMEMORY)
        throw std::bad_alloc();
    if (FAILED(result))
        throw CComError(result);
}

/// The boundary that no exception crosses: calls `function`, which returns an HRESULT or nothing (then S_OK),
/// and turns std::bad_alloc into E_OUTOFMEMORY, CComError into its HRESULT, other standard exceptions into
/// E_FAIL and everything else into E_UNEXPECTED.
template<class Function>
HRESULT guarded(Function&& function) noexcept {
    try {
        if constexpr (std::is_void_v<std::invoke_result_t<Function>>) {
            std::forward<Function>(function)();
            return S_OK;
        } else {
            static_assert(std::same_as<std::invoke_result_t<Function>, HRESULT>);
            return std::forward<Function>(function)();
        }
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const CComError& error) {
        return error.result();
    } catch (const std::exception&) {
        return E_FAIL;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

} // namespace tarvo::com
