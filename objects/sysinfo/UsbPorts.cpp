#include "objects/sysinfo/UsbPorts.h"

#include "ZelBase/Handles.h"
#include "ZelBase/log/Logger.h"
#include "platform/registry/RegistryKey.h"
#include "platform/text/NarrowText.h"
#include "platform/text/RegularExpression.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <queue>
#include <set>
#include <vector>

namespace tervane {
namespace {

class SystemUsbDevice final : public UsbDevice {
public:
    explicit SystemUsbDevice(ZelBase::UniqueFile file) noexcept : file_(std::move(file)) {}

    std::optional<std::size_t> Ask(unsigned long controlCode,
                                   std::span<unsigned char> buffer) override {
        const auto size = static_cast<DWORD>(buffer.size());
        DWORD answered = 0;
        if (!DeviceIoControl(file_.Get(), controlCode, buffer.data(), size, buffer.data(), size,
                             &answered, nullptr)) {
            return std::nullopt;
        }
        return std::min<std::size_t>(answered, buffer.size());
    }

private:
    ZelBase::UniqueFile file_;
};

class SystemUsbApi final : public UsbApi {
public:
    std::unique_ptr<UsbDevice> Open(const std::string& path) const override {
        ZelBase::UniqueFile file(CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_WRITE, nullptr,
                                             OPEN_EXISTING, 0, nullptr));
        return file ? std::make_unique<SystemUsbDevice>(std::move(file)) : nullptr;
    }
};

} // namespace

const UsbApi& UsbApi::System() {
    static const SystemUsbApi api;
    return api;
}

namespace {

constexpr int kControllers = 10;

// The drivers' records are packed, and have these sizes on every system.
constexpr unsigned long kGetRootHubName = 0x220408; // asked of a host controller
constexpr unsigned long kGetNodeInformation = 0x220408;
constexpr unsigned long kGetConnectionInformation = 0x22040C;
constexpr unsigned long kGetConnectionName = 0x220414;
constexpr std::size_t kNodeInformationSize = 76;
constexpr std::size_t kNumberOfPorts = 6; // where in the node information it stands
constexpr std::size_t kConnectionInformationSize = 365;
constexpr std::size_t kDeviceIsHub = 24; // where in the connection information
constexpr std::size_t kConnectionStatus = 31;
constexpr std::size_t kRootHubName = 4; // where the name begins in the answer
constexpr std::size_t kConnectionName = 8;
constexpr std::size_t kNameAnswerSize = 1024;

constexpr std::uint32_t kDeviceConnected = 1;

std::uint32_t NumberAt(const unsigned char* bytes) noexcept {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

void PutNumber(unsigned char* bytes, std::uint32_t number) noexcept {
    std::memcpy(bytes, &number, sizeof number);
}

// Whoever is asked for a name answers with its length and its zero-terminated characters.
std::string AskName(UsbDevice& device, unsigned long controlCode, unsigned port,
                    std::size_t nameAt) {
    std::array<unsigned char, kNameAnswerSize> buffer = {};
    PutNumber(buffer.data(), port);
    const std::size_t answered = device.Ask(controlCode, buffer).value_or(0);
    std::wstring name;
    for (std::size_t at = nameAt; at + sizeof(wchar_t) <= answered; at += sizeof(wchar_t)) {
        const auto character = static_cast<wchar_t>(buffer[at] | buffer[at + 1] << 8);
        if (character == 0) {
            break;
        }
        name.push_back(character);
    }
    return ToNarrow(name).value_or(std::string());
}

class HubWalk {
public:
    explicit HubWalk(const UsbApi& api) : api_(api) {}

    UsbPorts Run() {
        for (int number = 0; number < kControllers; ++number) {
            if (const auto controller = api_.Open("\\\\.\\HCD" + std::to_string(number))) {
                Find(AskName(*controller, kGetRootHubName, 0, kRootHubName), "RootHub");
            }
        }
        // Not by recursion: how deep hubs are nested is what their drivers say.
        for (; !waiting_.empty(); waiting_.pop()) {
            CountPorts(waiting_.front());
        }
        return counted_;
    }

private:
    struct Hub {
        std::string name;
        std::string label;
    };

    // A hub that is found a second time, perhaps below itself, is not counted again.
    void Find(const std::string& name, const std::string& label) {
        if (!name.empty() && found_.insert(name).second) {
            waiting_.push({name, label});
        }
    }

    void CountPorts(const Hub& hub) {
        const auto device = api_.Open("\\\\.\\" + hub.name);
        if (!device) {
            return;
        }
        std::array<unsigned char, kNodeInformationSize> information = {};
        if (device->Ask(kGetNodeInformation, information).value_or(0) <= kNumberOfPorts) {
            return;
        }
        for (unsigned port = 1; port <= information[kNumberOfPorts]; ++port) {
            CountPort(*device, port, hub);
        }
    }

    void CountPort(UsbDevice& device, unsigned port, const Hub& hub) {
        std::array<unsigned char, kConnectionInformationSize> information = {};
        PutNumber(information.data(), port);
        // The list of pipes at its end may be left out.
        const std::size_t answered = device.Ask(kGetConnectionInformation, information).value_or(0);
        if (answered < kConnectionStatus + sizeof(std::uint32_t)) {
            return;
        }
        const std::uint32_t status = NumberAt(&information[kConnectionStatus]);
        ++counted_.ports;
        counted_.connected += status == kDeviceConnected;
        Note(UsbPortText(port, status, hub.label));
        if (information[kDeviceIsHub] != 0) {
            const std::string name = AskName(device, kGetConnectionName, port, kConnectionName);
            Find(name, name);
        }
    }

    void Note(const std::string& text) {
        if (!logger_) {
            logger_ = ZelBase::Logger::Create();
        }
        if (logger_) {
            logger_->SetComponent("UsbPorts");
            logger_->Log("CountUsbPorts", ZelBase::LogLevel::kTrace, "%s", text.c_str());
        }
    }

    const UsbApi& api_;
    UsbPorts counted_;
    std::queue<Hub> waiting_;
    std::set<std::string> found_;
    std::unique_ptr<ZelBase::Logger> logger_;
};

} // namespace

std::optional<UsbPorts> CountUsbPorts(PlatformFamily family, const UsbApi& api) {
    if (family == PlatformFamily::kWindows95 || family == PlatformFamily::kNt4) {
        return std::nullopt;
    }
    return HubWalk(api).Run();
}

std::string UsbPortText(unsigned port, unsigned long connectionStatus, const std::string& hub) {
    static const char* const kNames[] = {
        "NoDeviceConnected",    "DeviceConnected",         "DeviceFailedEnumeration",
        "DeviceGeneralFailure", "DeviceCausedOvercurrent", "DeviceNotEnoughPower",
    };
    // Later systems have more.
    const std::string name = connectionStatus < std::size(kNames)
                                 ? kNames[connectionStatus]
                                 : "Status" + std::to_string(connectionStatus);
    return "[Port" + std::to_string(port) + "] " + name + " :  " + hub;
}

namespace {

constexpr wchar_t kUsbClass[] = L"^[U|u][S|s][B|b]$";
constexpr wchar_t kNtDevices[] = L"SYSTEM\\CurrentControlSet\\Enum";
constexpr wchar_t k9xDevices[] = L"Enum";
// The list is bus, device, instance.
constexpr int kDeviceDepth = 3;

constexpr char kDeviceManager[] = "\\\\.\\DevMngr.VXD";
// Answers with the classes of all devices as zero-terminated texts.
constexpr unsigned long kListDeviceClasses = 1;
constexpr std::size_t kLongestList = 65536;

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
    for (std::size_t at = 0; at < *answered; ++at) {
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
