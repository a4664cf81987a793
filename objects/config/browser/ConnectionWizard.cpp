#include "objects/config/browser/ConnectionWizard.h"

#include "platform/text/LetterCase.h"

#include <string>

namespace tervane {
namespace {

constexpr wchar_t kDefaultUser[] = L".Default";
constexpr wchar_t kWizard[] = L"\\Software\\Microsoft\\Internet Connection Wizard";
constexpr wchar_t kCompleted[] = L"Completed";

bool IsUser(PlatformFamily family, const std::wstring& name) {
    if (Is9xFamily(family)) {
        return true;
    }
    return StartsIgnoringAsciiCase(name, L"S-1-") && !EndsIgnoringAsciiCase(name, L"_Classes");
}

bool CompleteFor(const std::wstring& user, const RegistryApi& api) {
    return RegistryKey::Create(RegistryHive::kUsers, user + kWizard, KEY_SET_VALUE, api)
        .WriteNumber(kCompleted, 1);
}

} // namespace

bool CompleteConnectionWizard(PlatformFamily family, const RegistryApi& api) {
    const RegistryKey users =
        RegistryKey::Open(RegistryHive::kUsers, L"", KEY_ENUMERATE_SUB_KEYS, api);
    bool all = users.IsOpen();
    for (const std::wstring& user : users.SubKeyNames()) {
        if (IsUser(family, user)) {
            all = CompleteFor(user, api) && all;
        }
    }
    return CompleteFor(kDefaultUser, api) && all;
}

} // namespace tervane
