#include "platform/adapters/DriverAddress.h"

#include "ZelBase/Handles.h"
#include "ZelBase/threads/Mutex.h"
#include "platform/adapters/HardwareAddress.h"
#include "platform/text/NarrowText.h"
#include "platform/text/RegularExpression.h"

#include <memory>

namespace tervane {
namespace {

constexpr DWORD kQueryGlobalStatistics = 0x170002; // IOCTL_NDIS_QUERY_GLOBAL_STATS
constexpr DWORD kCurrentAddresses[] = {
    0x01010102, // 802.3, current
    0x04010102, // FDDI, long current
    0x04010101, // FDDI, long permanent
};
constexpr DWORD kAnswerSize = 4096;
constexpr DWORD kTurnPatienceMs = 5000;
constexpr DWORD kDefine = DDD_RAW_TARGET_PATH;
constexpr DWORD kRemove = DDD_RAW_TARGET_PATH | DDD_REMOVE_DEFINITION | DDD_EXACT_MATCH_ON_REMOVE;

// A wireless card whose driver cannot be asked: its addresses are known, in lower case as they have
// always been told.
std::optional<std::wstring> KnownAddress(std::wstring_view device) {
    static const RegularExpression card = RegularExpression::WholeTextMatch(L".*USRPCIAWR.*");
    card.BeginOperation();
    if (!card.Matches(device)) {
        return std::nullopt;
    }
    const wchar_t last = device.back();
    const bool isDigit = last >= L'0' && last <= L'9';
    return isDigit ? std::wstring(L"00-c0-49-43-0f-5") + last : L"00-c0-49-43-0f-5d";
}

// The name by which a program opens a device. Where the device has none, it gets one for the
// lifetime of this object.
class DeviceName {
public:
    DeviceName(const std::string& device, const DeviceApi& api) : device_(device), api_(api) {
        char target[kAnswerSize];
        if (api_.queryDosDevice(device_.c_str(), target, kAnswerSize) != 0) {
            isKnown_ = true;
        } else if (GetLastError() == ERROR_FILE_NOT_FOUND) {
            isDefinedHere_ = api_.defineDosDevice(kDefine, device_.c_str(), Target().c_str());
            isKnown_ = isDefinedHere_;
        }
    }
    ~DeviceName() {
        if (isDefinedHere_) {
            api_.defineDosDevice(kRemove, device_.c_str(), Target().c_str());
        }
    }
    DeviceName(const DeviceName&) = delete;
    DeviceName& operator=(const DeviceName&) = delete;

    // Not open when the device is not there.
    ZelBase::UniqueFile Open() const {
        if (!isKnown_) {
            return {};
        }
        return ZelBase::UniqueFile(api_.createFile(("\\\\.\\" + device_).c_str(), GENERIC_READ,
                                                   FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                   OPEN_EXISTING, 0, nullptr));
    }

private:
    std::string Target() const { return "\\Device\\" + device_; }

    const std::string& device_;
    const DeviceApi& api_;
    bool isKnown_ = false;
    bool isDefinedHere_ = false;
};

// Who defines a name takes it back from everybody: one thread at a time. A thread whose driver
// never answers may be terminated while it has this mutex, which the next in turn then gets.
ZelBase::Mutex* Turn() {
    static const std::unique_ptr<ZelBase::Mutex> turn = ZelBase::Mutex::Create();
    return turn.get();
}

std::optional<std::wstring> AskDriver(HANDLE driver, DWORD object, const DeviceApi& api) {
    unsigned char answer[kAnswerSize] = {};
    DWORD size = 0;
    const bool isAnswered =
        api.deviceIoControl(driver, kQueryGlobalStatistics, &object, sizeof(object), answer,
                            sizeof(answer), &size, nullptr);
    if (!isAnswered || size != HardwareAddressBytes().size()) {
        return std::nullopt;
    }
    return FormatHardwareAddress({answer, size});
}

} // namespace

std::optional<std::wstring> DriverAddresses::Read(std::wstring_view device) {
    if (auto known = KnownAddress(device)) {
        return known;
    }
    const std::optional<std::string> narrow = ToNarrow(device);
    if (hasWaitedInVain_ || !narrow || narrow->empty() || narrow->find('\0') != std::string::npos) {
        return std::nullopt;
    }
    const ZelBase::TimedMutexLock turn(Turn(), kTurnPatienceMs);
    if (!turn) {
        hasWaitedInVain_ = true;
        return std::nullopt;
    }
    const DeviceName name(*narrow, api_);
    const ZelBase::UniqueFile driver = name.Open();
    std::optional<std::wstring> address;
    for (const DWORD object : kCurrentAddresses) {
        if (driver && !address) {
            address = AskDriver(driver.Get(), object, api_);
        }
    }
    return address;
}

} // namespace tervane
