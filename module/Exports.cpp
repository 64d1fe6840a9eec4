// The four functions that the module exports. The interface headers declare them too, on one of the systems
// as hidden ones; so here they have other names in C++ and the prescribed ones in the file.

#include "com/ModuleCount.h"
#include "module/ClassMap.h"
#include "module/Registration.h"

#define TARVO_EXPORT extern "C" [[gnu::visibility("default"), gnu::used]]

TARVO_EXPORT HRESULT WINAPI tarvoCanUnloadNow() asm("DllCanUnloadNow");
TARVO_EXPORT HRESULT WINAPI tarvoGetClassObject(REFCLSID id, REFIID iid,
                                                void** object) asm("DllGetClassObject");
TARVO_EXPORT HRESULT WINAPI tarvoRegisterServer() asm("DllRegisterServer");
TARVO_EXPORT HRESULT WINAPI tarvoUnregisterServer() asm("DllUnregisterServer");

HRESULT WINAPI tarvoCanUnloadNow() {
    return tarvo::com::moduleCount().canUnload();
}

HRESULT WINAPI tarvoGetClassObject(REFCLSID id, REFIID iid, void** object) {
    return tarvo::module::getClassObject(tarvo::module::moduleContents(), id, iid, object);
}

HRESULT WINAPI tarvoRegisterServer() {
    return tarvo::module::registerModule(tarvo::module::moduleContents(),
                                         tarvo::module::systemRegistrationServices());
}

HRESULT WINAPI tarvoUnregisterServer() {
    return tarvo::module::unregisterModule(tarvo::module::moduleContents(),
                                           tarvo::module::systemRegistrationServices());
}
