#include "objects/sysinfo/UsbSupport.h"

#include "platform/registry/RegistryKey.h"
#include "platform/text/RegularExpression.h"

#include <vector>

namespace tervane {
namespace {

constexpr wchar_t kUsbClass[] = L"^[U|u][S|s][B|b]$";
constexpr wchar_t kNtDevices[] = L"SYSTEM\\CurrentControlSet\\Enum";
constexpr wchar_t k9xDevices[] = L"Enum";
// The list is bus, device, instance.
constexpr int kDeviceDepth = 3;

constexpr char kDeviceManager[] = "\\\\.\\DevMngr.VXD";
// Answers with the classes of all devices as zero-terminated texts.
constexpr unsigned long kListDeviceClasses = 1;
constexpr size_t kLongestList = 65536;

bool HoldsUsbDevice(const RegistryKey& key, int depth, const RegularExpression& usb) {
    const auto deviceClass = key.ReadText(L"Class");
    if (deviceClass && usb.Matches(*deviceClass)) {
        return true;
    }
    if (depth == 0) {
        return false;
    }
    for (const std::wstring& name : key.SubKeyNames()) {
        if (HoldsUsbDevice(key.OpenSubKey(name), depth - 1, usb)) {
            return true;
        }
    }
    return false;
}

bool RegistryListsUsb(const wchar_t* devices, const RegularExpression& usb) {
    return HoldsUsbDevice(RegistryKey::Open(RegistryHive::kLocalMachine, devices), kDeviceDepth,
                          usb);
}

// nullopt without the driver, or without its answer.
std::optional<bool> DeviceManagerListsUsb(const UsbApi& api, const RegularExpression& usb) {
    const auto driver = api.Open(kDeviceManager);
    std::vector<unsigned char> list(driver ? kLongestList : 0);
    const auto answered = driver ? driver->Ask(kListDeviceClasses, list) : std::nullopt;
    if (!answered) {
        return std::nullopt;
    }
    std::wstring deviceClass;
    for (size_t at = 0; at < *answered; ++at) {
        if (list[at] != 0) {
            deviceClass.push_back(list[at]);
        } else if (usb.Matches(deviceClass)) {
            return true;
        } else {
            deviceClass.clear();
        }
    }
    return usb.Matches(deviceClass);
}

} // namespace

bool IsUsbSupported(PlatformFamily family, long ports, const UsbApi& api) {
    if (family != PlatformFamily::kWindows95 && family != PlatformFamily::kNt4) {
        return ports >= 1;
    }
    const auto usb = RegularExpression::WholeTextMatch(kUsbClass);
    if (family == PlatformFamily::kNt4) {
        return RegistryListsUsb(kNtDevices, usb);
    }
    if (const auto listed = DeviceManagerListsUsb(api, usb)) {
        return *listed;
    }
    return RegistryListsUsb(k9xDevices, usb);
}

} // namespace tervane
