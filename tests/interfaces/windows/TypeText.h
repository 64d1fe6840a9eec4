#pragma once

#include "com/BStr.h"
#include "com/ComPtr.h"
#include "com/Guarded.h"
#include "platform/InterfaceTypes.h"

#include <string>
#include <vector>

// Types of a type library as one line of text each, such as "6 get Pan(out retval R8* thePan)".

namespace tarvo::interfaces {

inline std::string plainText(com::OleStringView text) {
    std::string result;
    for (const OLECHAR character : text)
        result += character < 128 ? static_cast<char>(character) : '?';
    return result;
}

class CTypeAttributes {
public:
    explicit CTypeAttributes(ITypeInfo& type) : m_type(&type) {
        com::throwIfFailed(type.GetTypeAttr(&m_attributes));
    }
    ~CTypeAttributes() { m_type->ReleaseTypeAttr(m_attributes); }
    CTypeAttributes(const CTypeAttributes&) = delete;
    CTypeAttributes& operator=(const CTypeAttributes&) = delete;
    const TYPEATTR* operator->() const { return m_attributes; }

private:
    com::ComPtr<ITypeInfo> m_type;
    TYPEATTR* m_attributes = nullptr;
};

class CFunctionDescription {
public:
    CFunctionDescription(ITypeInfo& type, UINT index) : m_type(&type) {
        com::throwIfFailed(type.GetFuncDesc(index, &m_description));
    }
    ~CFunctionDescription() { m_type->ReleaseFuncDesc(m_description); }
    CFunctionDescription(const CFunctionDescription&) = delete;
    CFunctionDescription& operator=(const CFunctionDescription&) = delete;
    const FUNCDESC* operator->() const { return m_description; }

private:
    com::ComPtr<ITypeInfo> m_type;
    FUNCDESC* m_description = nullptr;
};

inline std::string helpOf(ITypeInfo& type, MEMBERID member) {
    com::CBStr help;
    com::throwIfFailed(type.GetDocumentation(member, nullptr, help.put(), nullptr, nullptr));
    return plainText(help.view());
}

inline std::string nameOf(ITypeInfo& type) {
    com::CBStr name;
    com::throwIfFailed(type.GetDocumentation(MEMBERID_NIL, name.put(), nullptr, nullptr, nullptr));
    return plainText(name.view());
}

inline std::string describeType(ITypeInfo& owner, const TYPEDESC& type) {
    switch (type.vt) {
    case VT_PTR:
        return describeType(owner, *type.lptdesc) + "*";
    case VT_SAFEARRAY:
        return "SAFEARRAY(" + describeType(owner, *type.lptdesc) + ")";
    case VT_USERDEFINED: {
        com::ComPtr<ITypeInfo> referred;
        com::throwIfFailed(owner.GetRefTypeInfo(type.hreftype, referred.put()));
        return nameOf(*referred.get());
    }
    case VT_I4:
        return "I4";
    case VT_I8:
        return "I8";
    case VT_R8:
        return "R8";
    case VT_UI1:
        return "UI1";
    case VT_BOOL:
        return "BOOL";
    case VT_VARIANT:
        return "VARIANT";
    case VT_UNKNOWN:
        return "UNKNOWN";
    case VT_DISPATCH:
        return "DISPATCH";
    default:
        return "VT" + std::to_string(type.vt);
    }
}

inline std::string describeFunction(ITypeInfo& type, UINT index) {
    const CFunctionDescription function(type, index);
    std::vector<BSTR> rawNames(1 + static_cast<std::size_t>(function->cParams));
    UINT count = 0;
    com::throwIfFailed(
        type.GetNames(function->memid, rawNames.data(), static_cast<UINT>(rawNames.size()), &count));
    std::vector<com::CBStr> names(rawNames.size());
    for (std::size_t i = 0; i < count; ++i)
        names[i].attach(rawNames[i]);

    std::string text = std::to_string(function->memid);
    text += function->invkind == INVOKE_PROPERTYGET   ? " get "
            : function->invkind == INVOKE_PROPERTYPUT ? " put "
            : function->invkind == INVOKE_FUNC        ? " "
                                                      : " odd ";
    text += plainText(names[0].view()) + "(";
    for (int i = 0; i < function->cParams; ++i) {
        const ELEMDESC& parameter = function->lprgelemdescParam[i];
        const USHORT flags = parameter.paramdesc.wParamFlags;
        text += i > 0 ? ", " : "";
        text += (flags & PARAMFLAG_FIN) != 0 ? "in " : "";
        text += (flags & PARAMFLAG_FOUT) != 0 ? "out " : "";
        text += (flags & PARAMFLAG_FRETVAL) != 0 ? "retval " : "";
        text += describeType(type, parameter.tdesc) + " " +
                plainText(names[1 + static_cast<std::size_t>(i)].view());
    }
    return text + ")";
}

inline std::string describeEnumeration(ITypeInfo& type) {
    const CTypeAttributes attributes(type);
    std::string text = nameOf(type) + ":";
    for (UINT index = 0; index < attributes->cVars; ++index) {
        VARDESC* member = nullptr;
        com::throwIfFailed(type.GetVarDesc(index, &member));
        com::CBStr name;
        UINT count = 0;
        const HRESULT result = type.GetNames(member->memid, name.put(), 1, &count);
        const bool isLong = member->varkind == VAR_CONST && member->lpvarValue->vt == VT_I4;
        const std::string value = isLong ? std::to_string(member->lpvarValue->lVal) : "no long";
        type.ReleaseVarDesc(member);
        com::throwIfFailed(result);
        text += (index > 0 ? ", " : " ") + plainText(name.view()) + " " + value;
    }
    return text;
}

} // namespace tarvo::interfaces
