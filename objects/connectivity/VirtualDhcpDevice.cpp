#include "objects/connectivity/VirtualDhcpDevice.h"

#include "ZelBase/Handles.h"

#include <algorithm>
#include <cstring>

namespace tervane {
namespace {

class SystemDevice final : public VirtualDhcpDevice {
public:
    bool IsOpen() const { return static_cast<bool>(device_); }
    bool Control(Order order, std::span<unsigned char> in, std::span<unsigned char> out) override {
        DWORD returned = 0;
        return DeviceIoControl(device_.Get(), static_cast<DWORD>(order), in.data(),
                               static_cast<DWORD>(in.size()), out.data(),
                               static_cast<DWORD>(out.size()), &returned, nullptr) != FALSE;
    }

private:
    const ZelBase::UniqueFile device_{CreateFileA("\\\\.\\vdhcp.386", GENERIC_READ | GENERIC_WRITE,
                                                  FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                  OPEN_EXISTING, 0, nullptr)};
};

using Table = std::array<unsigned char, VirtualDhcpDevice::kTableSize>;

// The entry that contains the address; an empty one when none does. The device's own numbers are
// not believed beyond the end of the table.
std::span<const unsigned char> FindEntry(const Table& table, const HardwareAddressBytes& adapter) {
    DWORD count = 0;
    std::memcpy(&count, table.data(), sizeof count);
    const auto entries = std::span(table).subspan(sizeof count);
    const std::size_t known = std::min<std::size_t>(count, VirtualDhcpDevice::kMostEntries);
    for (std::size_t i = 0; i < known; ++i) {
        const auto entry =
            entries.subspan(i * VirtualDhcpDevice::kEntrySize, VirtualDhcpDevice::kEntrySize);
        if (std::search(entry.begin(), entry.end(), adapter.begin(), adapter.end()) !=
            entry.end()) {
            return entry;
        }
    }
    return {};
}

} // namespace

std::unique_ptr<VirtualDhcpDevice> VirtualDhcpDevice::Open() {
    auto device = std::make_unique<SystemDevice>();
    return device->IsOpen() ? std::move(device) : nullptr;
}

void VirtualDhcpDevice::Give(Order order, const HardwareAddressBytes& adapter) {
    Table table = {};
    if (!Control(Order::kReadTable, {}, table)) {
        return;
    }
    const auto entry = FindEntry(table, adapter);
    if (entry.empty()) {
        return;
    }
    std::array<unsigned char, kRequestSize> request = {};
    std::ranges::copy(entry, request.begin());
    Control(order, request, request);
}

} // namespace tervane
