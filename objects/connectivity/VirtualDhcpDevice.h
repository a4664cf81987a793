#pragma once

// The DHCP client of the 9x family, a virtual device.
//
// It is not documented. What is known: one call returns the table of the DHCP adapters, and a lease
// is released or renewed by handing the adapter's entry back. The table is taken to begin with the
// number of its entries, which fill the rest in equal parts. Where in an entry its fields lie does
// not matter: the adapter's entry is the one that contains its hardware address.

#include "platform/adapters/HardwareAddress.h"

#include <memory>
#include <span>

#include <windows.h>

namespace tervane {

class VirtualDhcpDevice {
public:
    enum class Order : DWORD { kReadTable = 1, kRenew = 2, kRelease = 3 };

    static constexpr std::size_t kTableSize = 1444;
    static constexpr std::size_t kRequestSize = 1008;
    static constexpr std::size_t kMostEntries = 10;
    static constexpr std::size_t kEntrySize = (kTableSize - sizeof(DWORD)) / kMostEntries;

    // The system's; null when there is none. Tests have devices of their own.
    static std::unique_ptr<VirtualDhcpDevice> Open();

    virtual ~VirtualDhcpDevice() = default;
    // One control call, with what goes in and the place for what comes out. False when it fails.
    virtual bool Control(Order order, std::span<unsigned char> in,
                         std::span<unsigned char> out) = 0;

    // Finds the adapter in the device's table and gives the order for it. Nothing is done when it
    // is not there.
    void Give(Order order, const HardwareAddressBytes& adapter);

protected:
    VirtualDhcpDevice() = default;
    VirtualDhcpDevice(const VirtualDhcpDevice&) = delete;
    VirtualDhcpDevice& operator=(const VirtualDhcpDevice&) = delete;
};

} // namespace tervane
