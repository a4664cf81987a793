#pragma once

// What kind of adapter this is, judged by what its makers call it: by the description that users
// see, by the name of its driver, by the bus it sits on, and by its hardware address. The tables
// grew from adapters met on customers' machines. They are made at the first use and kept; every
// function may be called on any thread.

#include <cstdint>
#include <string_view>

namespace tervane {

// The interface types that matter here, by the numbers that drivers and all sources of live
// interfaces share (IANAifType-MIB).
enum class InterfaceType : std::uint32_t {
    kEthernet = 6,
    kPpp = 23,
    kLoopback = 24,
    kWireless = 71,
};

// Whether interfaces of that type are of the Ethernet class.
constexpr bool IsEthernetType(InterfaceType type) noexcept {
    return type == InterfaceType::kEthernet || type == InterfaceType::kWireless;
}

// Whether a description is one that is never taken for an Ethernet adapter, whatever else speaks
// for it.
bool IsExcludedDescription(std::wstring_view description);
// Whether a description is that of an Ethernet adapter.
bool IsEthernetDescription(std::wstring_view description);
// Whether a driver of the 9x family, such as "EL90XBC.SYS", is that of an Ethernet adapter.
bool IsEthernetDriver(std::wstring_view driver);
// Whether a list of device identifiers, or the place of a device, of the 9x family names a bus that
// cards sit on.
bool NamesPhysicalBus(std::wstring_view text);

// Whether a hardware address is one that virtual and dial-up adapters give themselves. False for
// what is no address, see ParseHardwareAddress.
bool IsNonEthernetAddress(std::wstring_view hardwareAddress);
// The same for a live adapter, of which the description is known too.
bool IsNonEthernetAdapter(std::wstring_view hardwareAddress, std::wstring_view description);

// Whether an adapter stands for dial-up connections (PPP, in whatever wrapping) rather than for a
// card: by its description, and by its driver or service. Either may be empty.
bool IsPppAdapter(std::wstring_view description, std::wstring_view driver);

// What users are told: "PPP", "Ethernet" or "Other". An adapter may be both of the first, by its
// names; then it dials.
constexpr std::wstring_view AdapterTypeText(bool isEthernet, bool isPpp) noexcept {
    if (isPpp) {
        return L"PPP";
    }
    return isEthernet ? L"Ethernet" : L"Other";
}

} // namespace tervane
