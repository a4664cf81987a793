#include "platform/adapters/NetworkDevices.h"

#include "ZelBase/SystemLibrary.h"
#include "ZelBase/UniqueResource.h"
#include "platform/text/LetterCase.h"
#include "platform/text/NarrowText.h"

#include <setupapi.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <unordered_set>
#include <vector>

namespace tervane {
namespace {

BOOL WINAPI RefuseToDefine(DWORD, LPCSTR, LPCSTR) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}

bool IsWine() noexcept {
    const HMODULE ntdll = GetModuleHandleA("ntdll.dll");
    return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

} // namespace

const DeviceApi& DeviceApi::System() noexcept {
    static const DeviceApi api = {&QueryDosDeviceA, IsWine() ? &RefuseToDefine : &DefineDosDeviceA,
                                  &CreateFileA, &DeviceIoControl, nullptr};
    return api;
}

namespace {

constexpr GUID kNetworkClass = {
    0x4D36E972, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};

class SetupApi {
public:
    explicit SetupApi(const DeviceApi& deviceApi) noexcept
        : library_("SETUPAPI.DLL"),
          getClassDevs(library_.Find<decltype(getClassDevs)>("SetupDiGetClassDevsA")),
          enumDeviceInfo(library_.Find<decltype(enumDeviceInfo)>("SetupDiEnumDeviceInfo")),
          getInstanceId(library_.Find<decltype(getInstanceId)>("SetupDiGetDeviceInstanceIdA")),
          getProperty(library_.Find<decltype(getProperty)>("SetupDiGetDeviceRegistryPropertyA")),
          destroyList(library_.Find<decltype(destroyList)>("SetupDiDestroyDeviceInfoList")),
          getStatus(deviceApi.getDeviceStatus
                        ? deviceApi.getDeviceStatus
                        : library_.Find<decltype(getStatus)>("CM_Get_DevNode_Status")) {}

    bool IsComplete() const noexcept {
        return getClassDevs && enumDeviceInfo && getInstanceId && getProperty && destroyList;
    }

private:
    ZelBase::SystemLibrary library_;

public:
    decltype(&SetupDiGetClassDevsA) getClassDevs;
    decltype(&SetupDiEnumDeviceInfo) enumDeviceInfo;
    decltype(&SetupDiGetDeviceInstanceIdA) getInstanceId;
    decltype(&SetupDiGetDeviceRegistryPropertyA) getProperty;
    decltype(&SetupDiDestroyDeviceInfoList) destroyList;
    // Null where it is missing.
    decltype(&CM_Get_DevNode_Status) getStatus;
};

// The network devices, all or only those that are present.
class DeviceList {
public:
    DeviceList(const SetupApi& api, DWORD flags)
        : api_(api), list_(api.getClassDevs(&kNetworkClass, nullptr, nullptr, flags)) {}
    ~DeviceList() {
        if (list_ != INVALID_HANDLE_VALUE) {
            api_.destroyList(list_);
        }
    }
    DeviceList(const DeviceList&) = delete;
    DeviceList& operator=(const DeviceList&) = delete;

    // False after the last one.
    bool MoveNext() {
        device_.cbSize = sizeof(device_);
        return list_ != INVALID_HANDLE_VALUE && api_.enumDeviceInfo(list_, next_++, &device_);
    }

    // Of the device that was moved to.
    std::wstring Instance() {
        char text[MAX_PATH * 2] = {};
        const bool isTold = api_.getInstanceId(list_, &device_, text, sizeof(text) - 1, nullptr);
        return isTold ? FromNarrow(text) : std::wstring();
    }
    // Empty when there is no such property. One question is enough for most.
    std::vector<char> Property(DWORD property) {
        std::vector<char> bytes(kUsualProperty);
        DWORD size = 0;
        const auto ask = [&] {
            return api_.getProperty(list_, &device_, property, nullptr,
                                    reinterpret_cast<BYTE*>(bytes.data()),
                                    static_cast<DWORD>(bytes.size()), &size) != FALSE;
        };
        bool isTold = ask();
        if (!isTold && size > bytes.size()) {
            bytes.resize(size);
            isTold = ask();
        }
        bytes.resize(isTold ? std::min<std::size_t>(size, bytes.size()) : 0);
        return bytes;
    }
    std::wstring Text(DWORD property) {
        const std::vector<char> bytes = Property(property);
        return FromNarrow({bytes.data(), strnlen(bytes.data(), bytes.size())});
    }
    DWORD Number(DWORD property) {
        const std::vector<char> bytes = Property(property);
        DWORD number = 0;
        if (bytes.size() == sizeof(number)) {
            std::memcpy(&number, bytes.data(), sizeof(number));
        }
        return number;
    }
    std::optional<DeviceState> State() const {
        ULONG status = 0;
        ULONG problem = 0;
        const bool isAnswered =
            api_.getStatus && api_.getStatus(&status, &problem, device_.DevInst, 0) == CR_SUCCESS;
        // Wine's function succeeds and says nothing.
        if (!isAnswered || (status & (DN_STARTED | DN_HAS_PROBLEM)) == 0) {
            return std::nullopt;
        }
        const bool hasProblem = (status & DN_HAS_PROBLEM) != 0;
        const bool isDisabled = hasProblem && problem == CM_PROB_DISABLED;
        return DeviceState{!hasProblem || isDisabled, isDisabled};
    }

private:
    static constexpr std::size_t kUsualProperty = 256; // bytes

    const SetupApi& api_;
    HDEVINFO list_;
    SP_DEVINFO_DATA device_ = {};
    DWORD next_ = 0;
};

std::unordered_set<std::wstring> PresentInstances(const SetupApi& api) {
    std::unordered_set<std::wstring> present;
    for (DeviceList devices(api, DIGCF_PRESENT); devices.MoveNext();) {
        present.insert(devices.Instance());
    }
    return present;
}

} // namespace

NetworkDevices NetworkDevices::Read(const DeviceApi& deviceApi) {
    NetworkDevices found;
    const SetupApi api(deviceApi);
    if (!api.IsComplete()) {
        return found;
    }
    // The list of those that are present costs as much as the list of all.
    bool isStateMissing = false;
    for (DeviceList devices(api, 0); devices.MoveNext();) {
        NetworkDevice device;
        device.instance = devices.Instance();
        device.description = devices.Text(SPDRP_DEVICEDESC);
        device.service = devices.Text(SPDRP_SERVICE);
        device.configFlags = devices.Number(SPDRP_CONFIGFLAGS);
        device.state = devices.State();
        isStateMissing = isStateMissing || !device.state;
        found.byDriverKey_.try_emplace(LowerAscii(devices.Text(SPDRP_DRIVER)), std::move(device));
    }
    found.byDriverKey_.erase(L"");
    if (isStateMissing) {
        const std::unordered_set<std::wstring> present = PresentInstances(api);
        for (auto& [key, device] : found.byDriverKey_) {
            device.isPresent = present.contains(device.instance);
        }
    }
    return found;
}

const NetworkDevice* NetworkDevices::Find(std::wstring_view driverKey) const {
    const auto found = byDriverKey_.find(LowerAscii(driverKey));
    return found == byDriverKey_.end() ? nullptr : &found->second;
}

} // namespace tervane
