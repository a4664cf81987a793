// GeneralSysInfo and DriveInfo as scripts meet them: late-bound members of the built library and
// events on the script's thread.

#include "support/HandleCount.h"
#include "support/MappedDrive.h"
#include "support/ScratchRegistry.h"
#include "support/TestComponent.h"
#include "support/TestThreads.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

namespace tervane::test {
namespace {

constexpr DWORD kPatience = 60000; // ms
constexpr wchar_t kProcessor[] = L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";

class GeneralSysInfoObject : public testing::Test {
protected:
    GeneralSysInfoObject() { cookie_ = Advise(info_.Get(), &sink_); }
    ~GeneralSysInfoObject() override {
        if (info_) {
            Unadvise(info_.Get(), cookie_);
        }
    }

    static ComPtr<IDispatch> Create() {
        return TestComponent::Get().Create(__uuidof(GeneralSysInfo));
    }

    // The object that a method hands out.
    static ComPtr<IDispatch> Item(IDispatch* info, const wchar_t* method, long index) {
        const CallResult result = Call(info, method, {index});
        EXPECT_EQ(S_OK, result.status) << index;
        return AddReference(result.value.Get().vt == VT_DISPATCH ? result.value.Get().pdispVal
                                                                 : nullptr);
    }

    const Apartment apartment_;
    ComPtr<IDispatch> info_ = Create();
    RecordingSink sink_;
    DWORD cookie_ = 0;
};

TEST_F(GeneralSysInfoObject, AnswersEveryMember) {
    for (const wchar_t* text : {L"CpuVendor", L"CpuDescription", L"CpuFamily", L"OS", L"HostName",
                                L"DomainName", L"DnsServers"}) {
        EXPECT_EQ(VT_BSTR, Read(info_.Get(), text).value.Type()) << text;
    }
    for (const wchar_t* number :
         {L"CpuSpeed", L"RamSize", L"SystemDriveTotalSize", L"SystemDriveFreeSpace", L"NumDrives",
          L"LargestFreeDriveSpace", L"NumLiveAdapters", L"OsMajorNumber", L"OsBuildNumber"}) {
        EXPECT_GT(Read(info_.Get(), number).Number(), 0) << number;
    }
    for (const wchar_t* number :
         {L"SystemDriveIndex", L"LargestFreeDriveIndex", L"OsMinorNumber", L"UsbSupported",
          L"NumUsbPorts", L"NumOpenUsbPorts", L"NumStaticAdapters"}) {
        EXPECT_EQ(VT_I4, Read(info_.Get(), number).value.Type()) << number;
        EXPECT_GE(Read(info_.Get(), number).Number(), 0) << number;
    }
    EXPECT_NE(L"", Read(info_.Get(), L"CpuVendor").Text());
    EXPECT_EQ(0u, sink_.Count());
}

TEST_F(GeneralSysInfoObject, HandsOutDrivesAndAdapters) {
    const long drives = Read(info_.Get(), L"NumDrives").Number();
    const long system = Read(info_.Get(), L"SystemDriveIndex").Number();
    std::wstring letters;
    for (long index = 0; index < drives; ++index) {
        const auto drive = Item(info_.Get(), L"GetDriveInfo", index);
        letters += Read(drive.Get(), L"Letter").Text();
        EXPECT_EQ(index == system ? 1 : 0, Read(drive.Get(), L"SystemDrive").Number());
        EXPECT_TRUE(Read(drive.Get(), L"Type").Text().ends_with(L"_DRIVE"));
        EXPECT_GE(Read(drive.Get(), L"TotalSize").Number(),
                  Read(drive.Get(), L"FreeSpace").Number());
    }
    EXPECT_TRUE(std::is_sorted(letters.begin(), letters.end()));
    const long live = Read(info_.Get(), L"NumLiveAdapters").Number();
    for (long index = 0; index < live; ++index) {
        const auto adapter = Item(info_.Get(), L"GetLiveAdapterInfo", index);
        EXPECT_NE(L"", Read(adapter.Get(), L"Name").Text());
    }
    const long installed = Read(info_.Get(), L"NumStaticAdapters").Number();
    for (long index = 0; index < installed; ++index) {
        const auto adapter = Item(info_.Get(), L"GetStaticAdapterInfo", index);
        EXPECT_EQ(VT_BSTR, Read(adapter.Get(), L"Cookie").value.Type());
    }
    const std::pair<const wchar_t*, long> counts[] = {{L"GetDriveInfo", drives},
                                                      {L"GetLiveAdapterInfo", live},
                                                      {L"GetStaticAdapterInfo", installed}};
    for (const auto& [method, count] : counts) {
        for (const long index : {-1L, count, LONG_MIN, LONG_MAX}) {
            const CallResult result = Call(info_.Get(), method, {index});
            EXPECT_TRUE(FAILED(result.status)) << index;
            EXPECT_TRUE(result.value.Type() != VT_DISPATCH || !result.value.Get().pdispVal);
        }
    }
}

TEST_F(GeneralSysInfoObject, TellsTheEndOfEachGatheringOnTheScriptsThread) {
    EXPECT_EQ(S_OK, Call(info_.Get(), L"GetSystemInfo").status);
    EXPECT_EQ(S_OK, Call(info_.Get(), L"GetSystemInfo").status);
    // While the workers are about it.
    EXPECT_NE(L"", Read(info_.Get(), L"CpuVendor").Text());
    EXPECT_EQ(0u, sink_.Count());
    ASSERT_TRUE(sink_.WaitFor(2, kPatience));
    for (size_t event = 0; event < 2; ++event) {
        EXPECT_EQ(1, sink_[event].id);
        EXPECT_TRUE(sink_[event].arguments.empty());
        EXPECT_EQ(GetCurrentThreadId(), sink_[event].thread);
    }
    PumpUntil([] { return false; }, 200);
    EXPECT_EQ(2u, sink_.Count());
}

TEST_F(GeneralSysInfoObject, LivesUntilItHasToldTheEnd) {
    Call(info_.Get(), L"GetSystemInfo");
    info_.Reset();
    EXPECT_EQ(S_FALSE, TestComponent::Get().CanUnloadNow());
    ASSERT_TRUE(sink_.WaitFor(1, kPatience));
    EXPECT_TRUE(PumpUntil([] { return TestComponent::Get().CanUnloadNow() == S_OK; }, kPatience));
    EXPECT_EQ(0, sink_.References());
}

// Its thread has ended before the worker has, or without taking what was posted to it: nobody is
// there to be told, and the object still goes.
TEST_F(GeneralSysInfoObject, GoesWithItsThread) {
    for (const bool isPosted : {false, true}) {
        RecordingSink sink;
        TestThread([&] {
            const Apartment apartment;
            const auto info = Create();
            Advise(info.Get(), &sink);
            Call(info.Get(), L"GetSystemInfo");
            Call(info.Get(), L"GetSystemInfo");
            MSG message;
            while (isPosted && !PeekMessageA(&message, nullptr, WM_USER, WM_USER, PM_NOREMOVE)) {
                Sleep(5);
            }
        }).join();
        EXPECT_TRUE(PumpUntil([&] { return sink.References() == 0; }, kPatience)) << isPosted;
        EXPECT_EQ(0u, sink.Count());
    }
    EXPECT_NE(L"", Read(info_.Get(), L"CpuVendor").Text());
}

// The members of one object from many threads while it is renewed again and again.
TEST_F(GeneralSysInfoObject, MayBeReadWhileItIsRenewed) {
    constexpr size_t kRenewals = 5;
    const auto info = QueryFor<IGeneralSysInfo>(info_.Get());
    for (size_t renewal = 0; renewal < kRenewals; ++renewal) {
        info->GetSystemInfo();
    }
    std::vector<TestThread> readers;
    for (int reader = 0; reader < 4; ++reader) {
        readers.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                UniqueBstr vendor;
                EXPECT_EQ(S_OK, info->get_CpuVendor(vendor.Put()));
                EXPECT_EQ(12u, TextOf(vendor.Get()).size());
            }
        });
    }
    for (TestThread& reader : readers) {
        reader.join();
    }
    EXPECT_TRUE(sink_.WaitFor(kRenewals, kPatience));
}

TEST_F(GeneralSysInfoObject, KeepsItsFactsUntilRenewedAndItsDrivesForEver) {
    const ScratchHive machine(RegistryHive::kLocalMachine);
    const RegistryKey processor = machine.Create(kProcessor);
    processor.WriteNumber(L"~MHz", 100);
    const long drives = Read(info_.Get(), L"NumDrives").Number();
    EXPECT_EQ(100, Read(info_.Get(), L"CpuSpeed").Number());
    processor.WriteNumber(L"~MHz", 200);
    const MappedDrive mapped('R', DRIVE_CDROM);
    EXPECT_EQ(100, Read(info_.Get(), L"CpuSpeed").Number());
    Call(info_.Get(), L"GetSystemInfo");
    ASSERT_TRUE(sink_.WaitFor(1, kPatience));
    EXPECT_EQ(200, Read(info_.Get(), L"CpuSpeed").Number());
    EXPECT_EQ(drives, Read(info_.Get(), L"NumDrives").Number());
    if (mapped.IsMapped()) {
        const auto other = Create();
        EXPECT_EQ(drives + 1, Read(other.Get(), L"NumDrives").Number());
    }
}

TEST_F(GeneralSysInfoObject, GathersEachTimeWithoutAVendor) {
    const ScratchHive machine(RegistryHive::kLocalMachine);
    const RegistryKey processor = machine.Create(kProcessor);
    processor.WriteText(L"VendorIdentifier", L"");
    for (const DWORD speed : {100u, 200u}) {
        processor.WriteNumber(L"~MHz", speed);
        EXPECT_EQ(static_cast<long>(speed), Read(info_.Get(), L"CpuSpeed").Number());
    }
}

TEST_F(GeneralSysInfoObject, KeepsNothingOpen) {
    const auto renew = [&] {
        const size_t before = sink_.Count();
        for (int round = 0; round < 5; ++round) {
            Call(info_.Get(), L"GetSystemInfo");
        }
        EXPECT_TRUE(sink_.WaitFor(before + 5, kPatience));
        PumpUntil([] { return false; }, 300); // the workers end
    };
    renew();
    const size_t handles = OpenHandleCount();
    renew();
    EXPECT_LE(OpenHandleCount(), handles + 2);
}

TEST(DriveInfoObject, KnowsNoDriveByItself) {
    const Apartment apartment;
    const auto drive = TestComponent::Get().Create(__uuidof(DriveInfo));
    EXPECT_EQ(L"", Read(drive.Get(), L"Letter").Text());
    EXPECT_EQ(VT_BSTR, Read(drive.Get(), L"Type").value.Type());
    for (const wchar_t* number : {L"TotalSize", L"FreeSpace", L"SystemDrive"}) {
        EXPECT_EQ(0, Read(drive.Get(), number).Number()) << number;
        EXPECT_EQ(VT_I4, Read(drive.Get(), number).value.Type()) << number;
    }
}

} // namespace
} // namespace tervane::test
