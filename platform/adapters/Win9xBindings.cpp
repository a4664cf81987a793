#include "platform/adapters/Win9xBindings.h"

#include "platform/registry/RegistryKey.h"
#include "platform/text/AsciiText.h"

#include <deque>
#include <vector>

namespace tervane {
namespace {

bool IsTcpip(std::wstring_view component) noexcept {
    return StartsIgnoringCase(component, L"mstcp");
}

} // namespace

Win9xBindings Win9xBindings::Read() {
    Win9xBindings result;
    // From each component down to those that are bound to it.
    std::unordered_map<std::wstring, std::vector<std::wstring>> lower;
    std::deque<std::wstring> reached;
    const RegistryKey network = RegistryKey::Open(RegistryHive::kLocalMachine, L"Enum\\Network");
    for (const std::wstring& component : network.SubKeyNames()) {
        for (const std::wstring& number : network.OpenSubKey(component).SubKeyNames()) {
            const std::wstring instance = component + L"\\" + number;
            const std::wstring name = LowerAscii(instance);
            if (IsTcpip(name)) {
                result.instances_.emplace(name, instance);
                reached.push_back(name);
                continue;
            }
            for (const std::wstring& upper :
                 network.OpenSubKey(instance + L"\\Bindings").ValueNames()) {
                lower[LowerAscii(upper)].push_back(name);
            }
        }
    }
    while (!reached.empty()) {
        const std::wstring upper = std::move(reached.front());
        reached.pop_front();
        for (const std::wstring& name : lower[upper]) {
            if (result.instances_.emplace(name, result.instances_[upper]).second) {
                reached.push_back(name);
            }
        }
    }
    return result;
}

std::optional<Win9xBindings::Route>
Win9xBindings::FindTcpip(std::span<const std::wstring> bindings) const {
    for (const std::wstring& binding : bindings) {
        if (IsTcpip(binding)) {
            return Route{binding, true};
        }
    }
    for (const std::wstring& binding : bindings) {
        const auto found = instances_.find(LowerAscii(binding));
        if (found != instances_.end()) {
            return Route{found->second, false};
        }
    }
    return std::nullopt;
}

} // namespace tervane
