// USB hubs and their ports as drivers describe them.

#include "objects/sysinfo/UsbPorts.h"
#include "objects/sysinfo/SystemSnapshot.h"
#include "support/ScratchRegistry.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <vector>

namespace tervane {
namespace {

struct FakePort {
    unsigned status = 0;
    // The name of the hub that is plugged in; empty for another device or none.
    std::wstring hub;
    bool answers = true;
    std::size_t answerSize = 365;
};

// A machine's controllers by number and hubs by name, counting what is open.
class FakeUsb final : public UsbApi {
public:
    std::map<int, std::wstring> controllers;
    std::map<std::wstring, std::vector<FakePort>> hubs;
    std::size_t hubAnswerSize = 76;
    std::string deviceClasses; // of the device manager; none without it
    mutable std::vector<std::string> opened;
    mutable int open = 0;

    std::unique_ptr<UsbDevice> Open(const std::string& path) const override {
        opened.push_back(path);
        for (const auto& [number, rootHub] : controllers) {
            if (path == "\\\\.\\HCD" + std::to_string(number)) {
                return std::make_unique<Device>(*this, rootHub, nullptr);
            }
        }
        for (const auto& [name, ports] : hubs) {
            if (path == "\\\\.\\" + std::string(name.begin(), name.end())) {
                return std::make_unique<Device>(*this, name, &ports);
            }
        }
        if (path == "\\\\.\\DevMngr.VXD" && !deviceClasses.empty()) {
            return std::make_unique<Device>(*this, L"", nullptr);
        }
        return nullptr;
    }

private:
    class Device final : public UsbDevice {
    public:
        Device(const FakeUsb& usb, std::wstring name, const std::vector<FakePort>* ports)
            : usb_(usb), name_(std::move(name)), ports_(ports) {
            ++usb_.open;
        }
        ~Device() override { --usb_.open; }

        std::optional<std::size_t> Ask(unsigned long code,
                                       std::span<unsigned char> buffer) override {
            if (code == 1) {
                std::memcpy(buffer.data(), usb_.deviceClasses.data(), usb_.deviceClasses.size());
                return usb_.deviceClasses.size();
            }
            if (!ports_) {
                return code == 0x220408 ? PutName(buffer, 4, name_) : std::nullopt;
            }
            if (code == 0x220408) {
                EXPECT_EQ(76u, buffer.size());
                buffer[6] = static_cast<unsigned char>(ports_->size());
                return usb_.hubAnswerSize;
            }
            const FakePort& port = ports_->at(buffer[0] - 1);
            if (code == 0x220414) {
                return PutName(buffer, 8, port.hub);
            }
            EXPECT_EQ(0x22040Cu, code);
            EXPECT_EQ(365u, buffer.size());
            buffer[24] = !port.hub.empty();
            buffer[31] = static_cast<unsigned char>(port.status);
            return port.answers ? std::optional(port.answerSize) : std::nullopt;
        }

    private:
        static std::optional<std::size_t> PutName(std::span<unsigned char> buffer, std::size_t at,
                                                  const std::wstring& name) {
            const std::size_t size = (name.size() + 1) * sizeof(wchar_t);
            std::memcpy(&buffer[at], name.c_str(), size);
            return at + size;
        }

        const FakeUsb& usb_;
        const std::wstring name_;
        const std::vector<FakePort>* ports_;
    };
};

class UsbPortsTest : public testing::Test {
protected:
    void ExpectPorts(long ports, long connected) {
        const auto counted = CountUsbPorts(PlatformFamily::kXp, usb_);
        ASSERT_TRUE(counted);
        EXPECT_EQ(ports, counted->ports);
        EXPECT_EQ(connected, counted->connected);
        EXPECT_EQ(0, usb_.open);
    }

    FakeUsb usb_;
};

TEST_F(UsbPortsTest, CountsTheFirstTenControllers) {
    ExpectPorts(0, 0);
    EXPECT_EQ(10u, usb_.opened.size());
    for (int number = 0; number < 12; ++number) {
        const std::wstring root = L"USB#ROOT_HUB#" + std::to_wstring(number);
        usb_.controllers[number] = root;
        usb_.hubs[root] = {{0, L""}, {1, L""}};
    }
    ExpectPorts(20, 10);
}

TEST_F(UsbPortsTest, DescendsIntoHubs) {
    usb_.controllers[3] = L"root";
    usb_.hubs[L"root"] = {{1, L"first"}, {0, L""}};
    usb_.hubs[L"first"] = {{1, L""}, {1, L"second"}, {2, L""}, {0, L""}};
    usb_.hubs[L"second"] = {{5, L""}, {1, L"gone"}, {9, L""}};
    ExpectPorts(9, 4);
    const SystemSnapshot snapshot = GatherSystemSnapshot("C", usb_);
    EXPECT_EQ(9, snapshot.usbPorts);
    EXPECT_EQ(5, snapshot.openUsbPorts);
    EXPECT_TRUE(snapshot.usbSupported);
}

TEST_F(UsbPortsTest, LeavesOutWhatDoesNotAnswer) {
    usb_.controllers = {{0, L"root"}, {1, L"missing"}, {2, L""}};
    usb_.hubs[L"root"] = {
        {1, L""}, {1, L"", false}, {1, L"", true, 34}, {1, L"", true, 35}, {1, L"", true, 0}};
    ExpectPorts(2, 2);
    usb_.hubAnswerSize = 6;
    ExpectPorts(0, 0);
}

TEST_F(UsbPortsTest, CountsAHubOnceThatIsFoundBelowItself) {
    usb_.controllers = {{0, L"root"}, {1, L"root"}};
    usb_.hubs[L"root"] = std::vector<FakePort>(255, {1, L"loop"});
    usb_.hubs[L"loop"] = {{1, L"root"}, {1, L"loop"}};
    ExpectPorts(257, 257);
}

TEST_F(UsbPortsTest, AsksNobodyOnSystemsThatCannotAnswer) {
    usb_.controllers[0] = L"root";
    usb_.hubs[L"root"] = {{1, L""}};
    EXPECT_FALSE(CountUsbPorts(PlatformFamily::kWindows95, usb_));
    EXPECT_FALSE(CountUsbPorts(PlatformFamily::kNt4, usb_));
    EXPECT_TRUE(usb_.opened.empty());
    EXPECT_TRUE(CountUsbPorts(PlatformFamily::kWindows98, usb_));
    EXPECT_EQ("[Port2] DeviceCausedOvercurrent :  RootHub", UsbPortText(2, 4, "RootHub"));
    EXPECT_EQ("[Port11] Status6 :  a", UsbPortText(11, 6, "a"));
}

TEST(UsbSupportTest, FollowsThePortsOrTheDeviceClasses) {
    using enum PlatformFamily;
    const test::ScratchHive machine(RegistryHive::kLocalMachine);
    FakeUsb usb;
    EXPECT_TRUE(IsUsbSupported(kXp, 1, usb));
    EXPECT_FALSE(IsUsbSupported(kWindows98, 0, usb));
    EXPECT_FALSE(IsUsbSupported(kNt4, 7, usb));
    EXPECT_FALSE(IsUsbSupported(kWindows95, 7, usb));

    const std::wstring nt = L"SYSTEM\\CurrentControlSet\\Enum\\PCI\\";
    machine.Fill(nt, LR"(VEN_8086\1: Class=Net
                         VEN_8087\1: Class=#5
                         VEN_8088\1: Class=USBDevice)");
    EXPECT_FALSE(IsUsbSupported(kNt4, 0, usb));
    machine.Fill(nt, L"VEN_8088\\2: Class=uSb");
    EXPECT_TRUE(IsUsbSupported(kNt4, 0, usb));
    EXPECT_FALSE(IsUsbSupported(kWindows95, 0, usb));

    machine.Create(L"Enum\\PCI\\VEN_8086\\0").WriteText(L"Class", L"USB");
    EXPECT_TRUE(IsUsbSupported(kWindows95, 0, usb));
    usb.deviceClasses = std::string("Net\0USBX\0System", 15);
    EXPECT_FALSE(IsUsbSupported(kWindows95, 0, usb));
    usb.deviceClasses = std::string("Net\0usb\0System", 14);
    EXPECT_TRUE(IsUsbSupported(kWindows95, 0, usb));
    usb.deviceClasses = "USB";
    EXPECT_TRUE(IsUsbSupported(kWindows95, 0, usb));
}

} // namespace
} // namespace tervane
