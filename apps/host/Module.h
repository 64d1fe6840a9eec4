#pragma once

#include "com/ComPtr.h"
#include "interfaces/TarvoVideoTransform.h"
#include "platform/SystemLibrary.h"

#include <filesystem>

namespace tarvo::host {

/// The module in a file, loaded by its path and used through its four exported functions, registered or not.
/// It must outlive every object it made: at the end of its life the file is unloaded.
class CModule {
public:
    /// Throws HostError: CO_E_DLLNOTFOUND when there is no such file, CO_E_ERRORINDLL when it is no library
    /// or lacks one of the four functions.
    explicit CModule(const std::filesystem::path& file);

    /// Whether objects of the class can be asked for.
    bool offers(REFCLSID id) const;
    /// A new transform; throws HostError.
    com::ComPtr<IDewarpingTransform> createTransform() const;

    /// Throw HostError.
    void registerServer() const;
    void unregisterServer() const;

    /// Whether none of the module's objects is alive.
    bool canUnload() const { return m_canUnloadNow() == S_OK; }

    const std::filesystem::path& file() const { return m_file; }

private:
    using Plain = HRESULT WINAPI();
    using GetClassObject = HRESULT WINAPI(REFCLSID, REFIID, void**);

    template<class Signature>
    Signature* require(const char* name) const;

    std::filesystem::path m_file;
    platform::CSystemLibrary m_library;
    GetClassObject* m_getClassObject = nullptr;
    Plain* m_canUnloadNow = nullptr;
    Plain* m_registerServer = nullptr;
    Plain* m_unregisterServer = nullptr;
};

/// Where the module lies unless the user says otherwise: beside the program, else in the library folder that
/// an installation gives it. The file need not exist.
std::filesystem::path defaultModulePath();

} // namespace tarvo::host
