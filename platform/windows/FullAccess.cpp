#include "platform/windows/FullAccess.h"

#include <aclapi.h>
#include <initializer_list>

namespace tarvo::platform {
namespace {

/// A well-known identifier, freed with the object; null if the system could not build it.
class CSecurityIdentifier {
public:
    CSecurityIdentifier(SID_IDENTIFIER_AUTHORITY authority, std::initializer_list<DWORD> parts) {
        const auto part = [&](std::size_t index) { return index < parts.size() ? parts.begin()[index] : 0; };
        AllocateAndInitializeSid(&authority, static_cast<BYTE>(parts.size()), part(0), part(1), 0, 0, 0, 0, 0,
                                 0, &m_identifier);
    }
    CSecurityIdentifier(const CSecurityIdentifier&) = delete;
    CSecurityIdentifier& operator=(const CSecurityIdentifier&) = delete;
    ~CSecurityIdentifier() {
        if (m_identifier != nullptr)
            FreeSid(m_identifier);
    }

    PSID get() const { return m_identifier; }

private:
    PSID m_identifier = nullptr;
};

EXPLICIT_ACCESSA allRightsFor(const CSecurityIdentifier& identifier, TRUSTEE_TYPE type) {
    EXPLICIT_ACCESSA access{};
    access.grfAccessPermissions = GENERIC_ALL;
    access.grfAccessMode = SET_ACCESS;
    access.grfInheritance = NO_INHERITANCE;
    access.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    access.Trustee.TrusteeType = type;
    access.Trustee.ptstrName = static_cast<char*>(identifier.get());
    return access;
}

} // namespace

CFullAccessList::CFullAccessList() {
    const CSecurityIdentifier everyone(SECURITY_WORLD_SID_AUTHORITY, {SECURITY_WORLD_RID});
    const CSecurityIdentifier administrators(SECURITY_NT_AUTHORITY,
                                             {SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS});
    if (everyone.get() == nullptr || administrators.get() == nullptr)
        return;
    EXPLICIT_ACCESSA entries[] = {allRightsFor(administrators, TRUSTEE_IS_GROUP),
                                  allRightsFor(everyone, TRUSTEE_IS_WELL_KNOWN_GROUP)};
    SetEntriesInAclA(2, entries, nullptr, &m_list);
}

CFullAccessList::~CFullAccessList() {
    if (m_list != nullptr)
        LocalFree(m_list);
}

} // namespace tarvo::platform
