#include "objects/sysinfo/UsbApi.h"

#include "ZelBase/Handles.h"

#include <algorithm>

namespace tervane {
namespace {

class SystemUsbDevice final : public UsbDevice {
public:
    explicit SystemUsbDevice(ZelBase::UniqueFile file) noexcept : file_(std::move(file)) {}

    std::optional<size_t> Ask(unsigned long controlCode, std::span<unsigned char> buffer) override {
        const auto size = static_cast<DWORD>(buffer.size());
        DWORD answered = 0;
        if (!DeviceIoControl(file_.Get(), controlCode, buffer.data(), size, buffer.data(), size,
                             &answered, nullptr)) {
            return std::nullopt;
        }
        return std::min<size_t>(answered, buffer.size());
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

} // namespace tervane
