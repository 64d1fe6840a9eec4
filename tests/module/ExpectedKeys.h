#pragma once

#include "tests/module/Snapshot.h"

#include <string>

// What has to stand below HKEY_CLASSES_ROOT once the module is registered, written down once more by hand.

namespace tarvo::tests {

inline const std::string dewarpingId = "{0ED28648-4566-44E3-90B0-A35A83711240}";
inline const std::string acceleratorId = "{97292888-EEB9-4EA3-BE57-F986519AFA28}";
inline const std::string libraryId = "{B51CDDBB-A654-460D-BC40-E0559E2CCF2E}";

/// The keys of one class; `name` is DewarpingTransform or AcceleratorFilter.
inline Snapshot classKeys(const std::string& name, const std::string& id, const std::string& module) {
    const std::string title = "s " + name + " Class";
    const std::string program = "TarvoVideoTransform." + name;
    const std::string key = "CLSID\\" + id;
    return {
        {program + ".1", {{"", title}}},
        {program + ".1\\CLSID", {{"", "s " + id}}},
        {program, {{"", title}}},
        {program + "\\CLSID", {{"", "s " + id}}},
        {program + "\\CurVer", {{"", "s " + program + ".1"}}},
        {"CLSID", {}},
        {key, {{"", title}, {"Merit", "d 2097152"}}},
        {key + "\\ProgID", {{"", "s " + program + ".1"}}},
        {key + "\\VersionIndependentProgID", {{"", "s " + program}}},
        {key + "\\Programmable", {}},
        {key + "\\InprocServer32", {{"", "s " + module}, {"ThreadingModel", "s Both"}}},
        {key + "\\TypeLib", {{"", "s " + libraryId}}},
    };
}

/// Both classes.
inline Snapshot allClassKeys(const std::string& module) {
    Snapshot keys = classKeys("DewarpingTransform", dewarpingId, module);
    keys.merge(classKeys("AcceleratorFilter", acceleratorId, module));
    return keys;
}

/// The media object's record. Identifiers lie in memory with their first three fields' low bytes first.
inline Snapshot mediaObjectKeys() {
    const std::string video = "7669647300001000800000aa00389b71";
    const std::string yuy2 = "5955593200001000800000aa00389b71";
    const std::string yv12 = "5956313200001000800000aa00389b71";
    return {
        {"DirectShow", {}},
        {"DirectShow\\MediaObjects", {}},
        {"DirectShow\\MediaObjects\\0ED28648-4566-44E3-90B0-A35A83711240",
         {{"", "s TARVO Dewarping Transform DMO"},
          {"InputTypes", "b " + video + yuy2},
          {"OutputTypes", "b " + video + yv12}}},
        {"DirectShow\\MediaObjects\\Categories", {}},
        {"DirectShow\\MediaObjects\\Categories\\D990EE14-776C-4723-BE46-3DA2F56F10B9", {}},
        {"DirectShow\\MediaObjects\\Categories\\D990EE14-776C-4723-BE46-3DA2F56F10B9\\"
         "0ED28648-4566-44E3-90B0-A35A83711240",
         {}},
    };
}

} // namespace tarvo::tests
