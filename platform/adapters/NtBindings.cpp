#include "platform/adapters/NtBindings.h"

#include "platform/adapters/TcpipKeys.h"
#include "platform/registry/RegistryList.h"
#include "platform/text/AsciiText.h"

#include <vector>

namespace tervane {
namespace {

// The names of devices in a "Bind" value, without "\Device\" and in lower case.
std::vector<std::wstring> ReadBind(const RegistryKey& linkage) {
    std::optional<std::vector<std::wstring>> list = linkage.ReadTexts(L"Bind");
    std::vector<std::wstring> devices = list ? std::move(*list) : ReadList(linkage, L"Bind");
    for (std::wstring& device : devices) {
        device = LowerAscii(std::wstring_view(device).substr(device.find_last_of(L'\\') + 1));
    }
    return devices;
}

// What a component is bound to, without the bindings that are switched off.
std::vector<std::wstring> BindingsOf(const std::wstring& component) {
    const RegistryKey linkage =
        RegistryKey::Open(RegistryHive::kLocalMachine, kServicesKey + component + L"\\Linkage");
    std::vector<std::wstring> devices = ReadBind(linkage);
    const std::vector<std::wstring> list = ReadBind(linkage.OpenSubKey(L"Disabled"));
    const std::unordered_set<std::wstring> disabled(list.begin(), list.end());
    std::erase_if(devices, [&](const std::wstring& device) {
        return device.empty() || disabled.contains(device);
    });
    return devices;
}

} // namespace

NtBindings NtBindings::Read() {
    NtBindings bindings;
    std::vector<std::wstring> pending = BindingsOf(L"Tcpip");
    bindings.direct_.insert(pending.begin(), pending.end());
    while (!pending.empty()) {
        const std::wstring device = std::move(pending.back());
        pending.pop_back();
        if (bindings.all_.insert(device).second) {
            const std::vector<std::wstring> lower = BindingsOf(device);
            pending.insert(pending.end(), lower.begin(), lower.end());
        }
    }
    return bindings;
}

bool NtBindings::IsBound(std::wstring_view device) const {
    return direct_.contains(LowerAscii(device));
}

bool NtBindings::IsBoundIndirectlyOrDirectly(std::wstring_view device) const {
    return all_.contains(LowerAscii(device));
}

} // namespace tervane
