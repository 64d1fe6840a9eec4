#include "apps/host/HostError.h"
#include "apps/host/Module.h"
#include "apps/host/TransformStream.h"
#include "apps/tarvo-dewarp/ModuleCommands.h"
#include "apps/tarvo-dewarp/ModuleOption.h"

#include <CLI/App.hpp>

#include <memory>
#include <ostream>
#include <string>

namespace tarvo::apps {
namespace {

using com::ComPtr;

/// The version of the type library that the object describes itself with.
std::string versionOf(IDispatch& object) {
    ComPtr<ITypeInfo> information;
    ComPtr<ITypeLib> library;
    UINT index = 0;
    TLIBATTR* attributes = nullptr;
    if (FAILED(object.GetTypeInfo(0, LOCALE_USER_DEFAULT, information.put())) || !information ||
        FAILED(information->GetContainingTypeLib(library.put(), &index)) ||
        FAILED(library->GetLibAttr(&attributes))) {
        return "no type library on this system";
    }
    const std::string version =
        std::to_string(attributes->wMajorVerNum) + "." + std::to_string(attributes->wMinorVerNum);
    library->ReleaseTLibAttr(attributes);
    return version;
}

std::string classesOf(const host::CModule& module) {
    std::string names;
    if (module.offers(CLSID_DewarpingTransform)) {
        names += "DewarpingTransform";
    }
    if (module.offers(CLSID_AcceleratorFilter)) {
        names += names.empty() ? "AcceleratorFilter" : ", AcceleratorFilter";
    }
    return names.empty() ? "none" : names;
}

const char* nameOf(const DMO_MEDIA_TYPE& type) {
    const auto pixels = host::pixelsOf(type);
    if (!pixels) {
        return "another";
    }
    switch (*pixels) {
    case host::FramePixels::yv12:
        return "YV12";
    case host::FramePixels::yuy2:
        return "YUY2";
    default:
        return "RGB32";
    }
}

using GetType = HRESULT (STDMETHODCALLTYPE IMediaObject::*)(DWORD, DWORD, DMO_MEDIA_TYPE*);

/// The subtypes in the order of offer, each once.
std::string typesOf(IMediaObject& media, GetType getType, const char* step) {
    std::string names;
    // Nobody offers so many; a module that never ends its list shall not keep the program.
    constexpr DWORD most = 100;
    for (DWORD index = 0; index < most; ++index) {
        DMO_MEDIA_TYPE offered{};
        const HRESULT result = (media.*getType)(0, index, &offered);
        if (result == static_cast<HRESULT>(DMO_E_NO_MORE_ITEMS)) {
            break;
        }
        host::requireStep(result, step);
        com::CMediaType type;
        type.attach(offered);
        const std::string name = nameOf(type.get());
        if ((", " + names + ",").find(", " + name + ",") == std::string::npos) {
            names += (names.empty() ? "" : ", ") + name;
        }
    }
    return names;
}

/// What renders: known only once there is a device, so a small stream is opened for it.
std::string deviceOf(const ComPtr<IDewarpingTransform>& transform, host::CTransformStream& stream) {
    constexpr std::int32_t side = 64;
    try {
        stream.setInput(host::makeVideoFormat(host::FramePixels::rgb32, side, -side));
        stream.setOutput(host::FramePixels::rgb32);
        stream.allocate();
    } catch (const host::HostError& error) {
        return std::string("none, since ") + error.what();
    }
    VARIANT_BOOL isHardware = VARIANT_FALSE;
    host::requireStep(transform->get_HardwareAccelerationActive(&isHardware),
                      "getting HardwareAccelerationActive");
    return isHardware != VARIANT_FALSE ? "hardware" : "software";
}

void printInfo(const ModuleSettings& settings, std::ostream& out) {
    const host::CModule module(settings.path());
    const ComPtr<IDewarpingTransform> transform = module.createTransform();
    host::CTransformStream stream(transform);
    VARIANT_BOOL isCapable = VARIANT_FALSE;
    host::requireStep(transform->CheckDewarpingCapability(&isCapable), "asking for the capability");
    const std::u8string file = std::filesystem::absolute(module.file()).u8string();
    const std::string inputs =
        typesOf(stream.mediaObject(), &IMediaObject::GetInputType, "asking for the input types");
    const std::string outputs =
        typesOf(stream.mediaObject(), &IMediaObject::GetOutputType, "asking for the output types");
    out << "module: " << std::string(file.begin(), file.end()) << '\n'
        << "version: " << versionOf(*transform) << '\n'
        << "classes: " << classesOf(module) << '\n'
        << "input: " << inputs << '\n'
        << "output: " << outputs << '\n'
        << "dewarping: " << (isCapable != VARIANT_FALSE ? "possible" : "not possible") << '\n'
        << "render device: " << deviceOf(transform, stream) << '\n';
}

} // namespace

Command addInfoCommand(CLI::App& program) {
    const auto settings = std::make_shared<ModuleSettings>();
    CLI::App& command =
        *program.add_subcommand("info", "Print what the module offers and can do on this system.");
    addModuleOption(command, *settings);
    command.footer("Example: tarvo-dewarp info --module ./libTarvoVideoTransform.so");
    return {&command, [settings](std::ostream& out) { printInfo(*settings, out); }};
}

} // namespace tarvo::apps
