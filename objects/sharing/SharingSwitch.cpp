#include "objects/sharing/SharingSwitch.h"

#include "platform/registry/RegistryKey.h"
#include "platform/text/LetterCase.h"

namespace tervane {

std::unique_ptr<SharingSwitch> SharingSwitch::For(PlatformFamily family) {
    if (IsNtFamily(family)) {
        return std::make_unique<SharingService>();
    }
    if (Is9xFamily(family)) {
        return std::make_unique<SharingBindings>();
    }
    return nullptr;
}

namespace {

// Below it: the components, their instances ("0000"), the bindings of an instance.
constexpr wchar_t kComponents[] = L"Enum\\Network";

// Bindings are values named by the component and its instance: "VSERVER\0000".
bool IsSharing(std::wstring_view name) noexcept {
    return StartsIgnoringAsciiCase(name, L"VSERVER\\") ||
           StartsIgnoringAsciiCase(name, L"NWSERVER\\");
}

} // namespace

std::vector<SharingBindings::Binding> SharingBindings::Find() const {
    std::vector<Binding> found;
    const RegistryKey components =
        RegistryKey::Open(RegistryHive::kLocalMachine, kComponents, KEY_READ, api_);
    for (const std::wstring& component : components.SubKeyNames()) {
        for (const std::wstring& instance : components.OpenSubKey(component).SubKeyNames()) {
            const std::wstring path = component + L"\\" + instance + L"\\Bindings";
            const RegistryKey bindings = components.OpenSubKey(path);
            for (const std::wstring& name : bindings.ValueNames()) {
                if (IsSharing(name)) {
                    found.push_back({path, name, bindings.ReadText(name).value_or(L"")});
                }
            }
        }
    }
    return found;
}

bool SharingBindings::Remove(const Binding& binding) const {
    return RegistryKey::Open(RegistryHive::kLocalMachine,
                             std::wstring(kComponents) + L"\\" + binding.path, KEY_SET_VALUE, api_)
        .DeleteValue(binding.name);
}

void SharingBindings::Restore(const Binding& binding) const {
    RegistryKey::Open(RegistryHive::kLocalMachine, std::wstring(kComponents) + L"\\" + binding.path,
                      KEY_SET_VALUE, api_)
        .WriteText(binding.name, binding.text);
}

DWORD SharingBindings::IsOn(bool& on) const {
    on = !Find().empty();
    return ERROR_SUCCESS;
}

DWORD SharingBindings::TurnOff(bool& rebootNeeded) const {
    rebootNeeded = false;
    const std::vector<Binding> bindings = Find();
    for (std::size_t i = 0; i < bindings.size(); ++i) {
        if (!Remove(bindings[i])) {
            while (i > 0) {
                Restore(bindings[--i]);
            }
            return ERROR_ACCESS_DENIED;
        }
    }
    rebootNeeded = !bindings.empty();
    return ERROR_SUCCESS;
}

namespace {

constexpr DWORD kLongestStop = 30'000; // ms, dependent services included

} // namespace

DWORD SharingService::IsOn(bool& on) const {
    WindowsService::State state;
    const DWORD error = service_.Query(state);
    on = state.runs || state.startsByItself;
    return error;
}

DWORD SharingService::TurnOff(bool& rebootNeeded) const {
    rebootNeeded = false;
    bool isOn = false;
    DWORD error = IsOn(isOn);
    if (error != ERROR_SUCCESS || !isOn) {
        return error;
    }
    error = service_.Disable();
    if (error == ERROR_SUCCESS) {
        rebootNeeded = service_.Stop(kLongestStop) != ERROR_SUCCESS;
    }
    return error;
}

} // namespace tervane
