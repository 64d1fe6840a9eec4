// A host outside of the project: it knows the installed headers and the archive. Makes an object of the
// module in the file that it is given, has a text of the module's in its hands and lets both go.

#include "com/BStr.h"
#include "com/ComPtr.h"
#include "com/MediaType.h"
#include "com/SafeArray.h"
#include "com/Variant.h"
#include "interfaces/TarvoVideoTransform.h"
#include "support/Creation.h"

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    tarvo::com::ComPtr<IPersistFile> object;
    const HRESULT result = tarvo::support::createInstanceFrom(argv[1], CLSID_AcceleratorFilter, nullptr,
                                                              __uuidof(IPersistFile), object.putVoid());
    LPOLESTR name = nullptr;
    if (result != S_OK || object->GetCurFile(&name) != S_OK)
        return 1;
    const bool isRight = std::basic_string<OLECHAR>(name) == OLESTR("probe");
    CoTaskMemFree(name);
    object.reset();
    tarvo::support::freeUnusedModules();
    std::puts(isRight ? "host: done" : "host: another text");
    return isRight ? 0 : 1;
}
