#include "tools/setup_guard/FolderAccess.h"

#include "ZelBase/Handles.h"

#include <aclapi.h>
#include <sddl.h>

#include <array>
#include <vector>

namespace setup_guard {
namespace {

struct LocalMemoryTraits {
    using Type = void*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type memory) noexcept { LocalFree(memory); }
};
using LocalMemory = ZelBase::UniqueResource<LocalMemoryTraits>;

constexpr ACCESS_MASK kTakesNameAway =
    DELETE | WRITE_DAC | WRITE_OWNER | FILE_DELETE_CHILD | GENERIC_ALL;
constexpr ACCESS_MASK kAdds = FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY | GENERIC_WRITE;

// The system, the administrators, the service that installs the system's own files, and whoever
// makes a file (an entry that is only inherited, and then names its maker).
constexpr std::array kTrusted = {L"S-1-5-18", L"S-1-5-32-544",
                                 L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464",
                                 L"S-1-3-0"};

std::wstring ToText(PSID sid) {
    wchar_t* text = nullptr;
    if (!ConvertSidToStringSidW(sid, &text)) {
        return L"?";
    }
    const LocalMemory owner(text);
    return text;
}

// The account that the process runs for: an administrator, which the set-up has made sure of.
std::wstring OwnAccount() {
    ZelBase::UniqueHandle token;
    std::array<unsigned char, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> buffer;
    DWORD size = 0;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put()) ||
        !GetTokenInformation(token.Get(), TokenUser, buffer.data(), DWORD{buffer.size()}, &size)) {
        return {};
    }
    return ToText(reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid);
}

bool IsTrusted(const std::wstring& account) {
    for (const wchar_t* trusted : kTrusted) {
        if (account == trusted) {
            return true;
        }
    }
    return account == OwnAccount();
}

// The account that an entry lets change the folder, or the empty text. Entries that refuse rights
// are not weighed against those that grant them: they can only make the folder safer than it seems.
std::wstring WhoMayChange(const ACE_HEADER* entry, Role role) {
    if (entry->AceType != ACCESS_ALLOWED_ACE_TYPE ||
        (role == Role::kAncestor && (entry->AceFlags & INHERIT_ONLY_ACE))) {
        return {};
    }
    const auto* allowed = reinterpret_cast<const ACCESS_ALLOWED_ACE*>(entry);
    const ACCESS_MASK harmful = role == Role::kTarget ? kTakesNameAway | kAdds : kTakesNameAway;
    if (!(allowed->Mask & harmful)) {
        return {};
    }
    const std::wstring account = ToText(const_cast<DWORD*>(&allowed->SidStart));
    return IsTrusted(account) ? std::wstring() : account;
}

} // namespace

Access FindAccess(const std::wstring& folder, Role role, std::wstring& account) {
    PSID owner = nullptr;
    PACL list = nullptr;
    LocalMemory descriptor;
    if (GetNamedSecurityInfoW(const_cast<wchar_t*>(folder.c_str()), SE_FILE_OBJECT,
                              OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner,
                              nullptr, &list, nullptr, descriptor.Put()) != ERROR_SUCCESS ||
        !owner || !list) {
        return Access::kUnknown;
    }
    // An owner may change the rights.
    account = ToText(owner);
    if (!IsTrusted(account)) {
        return Access::kWritable;
    }
    for (DWORD i = 0; i < list->AceCount; ++i) {
        void* entry = nullptr;
        if (!GetAce(list, i, &entry)) {
            return Access::kUnknown;
        }
        account = WhoMayChange(static_cast<ACE_HEADER*>(entry), role);
        if (!account.empty()) {
            return Access::kWritable;
        }
    }
    return Access::kSafe;
}

bool Tighten(const std::wstring& folder) {
    LocalMemory descriptor;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(
            L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;GRGX;;;BU)", SDDL_REVISION_1,
            descriptor.Put(), nullptr)) {
        return false;
    }
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    PACL list = nullptr;
    return GetSecurityDescriptorDacl(descriptor.Get(), &present, &list, &defaulted) &&
           SetNamedSecurityInfoW(const_cast<wchar_t*>(folder.c_str()), SE_FILE_OBJECT,
                                 DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                                 nullptr, nullptr, list, nullptr) == ERROR_SUCCESS;
}

} // namespace setup_guard
