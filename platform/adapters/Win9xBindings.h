#pragma once

// What network components of the 9x family are bound to. An adapter names in its "Bindings" key the
// instances of the components above it ("MSTCP\0000", "NWLINK\0000"); components such as a PPPoE
// driver have bindings of their own to what is above them. TCP/IP has an instance for every adapter
// that it is bound to, and the adapter's addresses are stored with that instance.

#include <optional>
#include <span>
#include <string>
#include <unordered_map>

namespace tervane {

class Win9xBindings {
public:
    // The way from an adapter up to TCP/IP.
    struct Route {
        std::wstring instance; // of TCP/IP: "MSTCP\0000"
        bool isDirect = false; // through no other component
    };

    // Reads all components once; bindings in a circle lead nowhere.
    static Win9xBindings Read();

    // For an adapter with these bindings, in their order; a direct way is preferred. nullopt when
    // none leads to TCP/IP.
    std::optional<Route> FindTcpip(std::span<const std::wstring> bindings) const;

private:
    // The instance of TCP/IP that each component leads to; keys in lower case.
    std::unordered_map<std::wstring, std::wstring> instances_;
};

} // namespace tervane
