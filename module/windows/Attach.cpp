// Called when a process loads or unloads the module, while the system's loader is locked.

#include "platform/InterfaceTypes.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    // The module's state initialises itself and needs no ending: by the time of DLL_PROCESS_DETACH nothing of
    // it is alive if the host asked DllCanUnloadNow, and nothing may be waited for under the loader's lock.
    // The system refuses to spare the notifications of a module with thread-local data; that is no failure.
    if (reason == DLL_PROCESS_ATTACH)
        DisableThreadLibraryCalls(module);
    return TRUE;
}
