#pragma once

// The installed adapters of the 9x family: the devices of class "Net" in the device tree, each with
// a class key for its driver and, where TCP/IP is bound to it, one for its addresses. What concerns
// all adapters is read once, so that each adapter costs the same however many there are. Drivers of
// this family cannot be asked for hardware addresses.

#include "platform/adapters/StaticAdapter.h"

#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace tervane {

// What network components of the 9x family are bound to. An adapter names in its "Bindings" key the
// instances of the components above it ("MSTCP\0000", "NWLINK\0000"); components such as a PPPoE
// driver have bindings of their own to what is above them. TCP/IP has an instance for every adapter
// that it is bound to, and the adapter's addresses are stored with that instance.
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

// In the order of the device tree; once `stop` is set, those that were found until then.
std::vector<StaticAdapter> List9xAdapters(const std::atomic<bool>& stop = kNeverStop);

} // namespace tervane
