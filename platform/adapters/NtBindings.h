#pragma once

// Which adapters of the NT family TCP/IP is bound to. A component lists below its "Linkage" key the
// devices that it is bound to; a device may belong to an adapter or to another component, such as a
// packet scheduler, that is bound to adapters in turn.

#include <string>
#include <string_view>
#include <unordered_set>

namespace tervane {

class NtBindings {
public:
    // Reads the bindings of TCP/IP and of whatever lies below it, each component once, so that
    // bindings in a circle end.
    static NtBindings Read();

    // `device` is the last part of a device's name, "{...}" or "El90x1", in any case.
    bool IsBound(std::wstring_view device) const;
    bool IsBoundIndirectlyOrDirectly(std::wstring_view device) const;

private:
    std::unordered_set<std::wstring> direct_;
    std::unordered_set<std::wstring> all_;
};

} // namespace tervane
