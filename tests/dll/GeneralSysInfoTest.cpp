// GeneralSysInfo, DriveInfo and the adapters of one computer as scripts meet them.

#include "support/AdapterRegistry.h"
#include "support/Classes.h"
#include "support/MappedDrive.h"
#include "support/ObjectTest.h"
#include "support/TestThreads.h"

#include <algorithm>
#include <climits>

namespace tervane::test {
namespace {

constexpr wchar_t kProcessor[] = L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";

class GeneralSysInfoTest : public ObjectTest {
protected:
    GeneralSysInfoTest() : ObjectTest(L"GeneralSysInfo") {}

    // A figure; it must be a number.
    long Figure(const wchar_t* member) { return FigureOf(object_.Get(), member); }
    static long FigureOf(IDispatch* object, const wchar_t* member) {
        const CallResult result = Read(object, member);
        EXPECT_EQ(VT_I4, result.value.Type()) << member;
        return result.value.Get().lVal;
    }
    // The object that a method hands out; null for anything else.
    ComPtr<IDispatch> Item(const wchar_t* method, long index) {
        const CallResult result = Call(object_.Get(), method, {index});
        const bool isObject = result.status == S_OK && result.value.Type() == VT_DISPATCH;
        return AddReference(isObject ? result.value.Get().pdispVal : nullptr);
    }
};

TEST_F(GeneralSysInfoTest, AnswersEveryMember) {
    for (const wchar_t* text : {L"CpuVendor", L"CpuDescription", L"CpuFamily", L"OS", L"HostName",
                                L"DomainName", L"DnsServers"}) {
        EXPECT_EQ(VT_BSTR, Read(object_.Get(), text).value.Type()) << text;
    }
    for (const wchar_t* number : {L"CpuSpeed", L"RamSize", L"NumDrives", L"NumLiveAdapters",
                                  L"OsMajorNumber", L"OsBuildNumber"}) {
        EXPECT_GT(Figure(number), 0) << number;
    }
    for (const wchar_t* number : {L"OsMinorNumber", L"UsbSupported", L"NumUsbPorts",
                                  L"NumOpenUsbPorts", L"NumStaticAdapters"}) {
        EXPECT_GE(Figure(number), 0) << number;
    }
    EXPECT_NE(L"", Ask(L"CpuVendor"));
    EXPECT_EQ(0u, sink_.Count());
}

TEST_F(GeneralSysInfoTest, HandsOutDrivesAndAdapters) {
    const long system = Figure(L"SystemDriveIndex");
    std::wstring letters;
    long free = 0;
    for (long index = 0; index < Figure(L"NumDrives"); ++index) {
        const auto drive = Item(L"GetDriveInfo", index);
        letters += test::Ask(drive.Get(), L"Letter");
        EXPECT_EQ(index == system ? 1 : 0, FigureOf(drive.Get(), L"SystemDrive"));
        EXPECT_TRUE(test::Ask(drive.Get(), L"Type").ends_with(L"_DRIVE"));
        if (index == system) {
            EXPECT_EQ(FigureOf(drive.Get(), L"TotalSize"), Figure(L"SystemDriveTotalSize"));
            free = FigureOf(drive.Get(), L"FreeSpace");
        }
    }
    // Others write to that disk, too; but they do not fill or empty it now.
    EXPECT_NEAR(free, Figure(L"SystemDriveFreeSpace"), Figure(L"SystemDriveTotalSize") / 50.0);
    EXPECT_GE(Figure(L"LargestFreeDriveSpace"), Figure(L"SystemDriveFreeSpace") * 0.98);
    EXPECT_TRUE(std::is_sorted(letters.begin(), letters.end()));
    const std::pair<const wchar_t*, const wchar_t*> lists[] = {
        {L"GetDriveInfo", L"NumDrives"},
        {L"GetLiveAdapterInfo", L"NumLiveAdapters"},
        {L"GetStaticAdapterInfo", L"NumStaticAdapters"}};
    for (const auto& [method, count] : lists) {
        for (long index = 0; index < Figure(count); ++index) {
            EXPECT_TRUE(Item(method, index)) << method << index;
        }
        for (const long index : {-1L, Figure(count), LONG_MIN, LONG_MAX}) {
            EXPECT_FALSE(Item(method, index)) << method << index;
            EXPECT_TRUE(Ask(method, {index}).starts_with(L"error")) << method << index;
        }
    }
}

// The way of every script: from the registry through the snapshot to the properties.
TEST_F(GeneralSysInfoTest, TellsOfAnAdapterWhatTheRegistrySays) {
    const AdapterHives hives;
    AddNtCard(hives, {L"{1}", L"0000", L"3Com EtherLink XL", L"PCI\\VEN_10B7\\1", L"EL90XBC"});
    hives.machine.Fill(kInterfaces, L"{1}: EnableDHCP=#1; NameServer=10.0.0.2,10.0.0.3");
    ASSERT_EQ(1, Figure(L"NumStaticAdapters"));
    ExpectAnswers(Item(L"GetStaticAdapterInfo", 0).Get(),
                  {{L"Cookie", {}, L"{1}"},
                   {L"Name", {}, L"3Com EtherLink XL"},
                   {L"Driver", {}, L"EL90XBC"},
                   {L"UsingDhcp", {}, L"1"},
                   {L"IsDnsStatic", {}, L"1"},
                   {L"EthernetAdapter", {}, L"true"},
                   {L"StaticNameServers", {}, L"[10.0.0.2, 10.0.0.3]"}});
}

TEST_F(GeneralSysInfoTest, MayBeReadWhileItIsRenewed) {
    constexpr std::size_t kRenewals = 5;
    const auto info = QueryFor<IGeneralSysInfo>(object_.Get());
    for (std::size_t renewal = 0; renewal < kRenewals; ++renewal) {
        info->GetSystemInfo();
    }
    OnThreads(4, [&](int) {
        for (int round = 0; round < 200; ++round) {
            UniqueBstr vendor;
            EXPECT_EQ(S_OK, info->get_CpuVendor(vendor.Put()));
            EXPECT_EQ(12u, TextOf(vendor.Get()).size());
        }
    });
    EXPECT_TRUE(sink_.WaitFor(kRenewals, kPatience));
}

TEST_F(GeneralSysInfoTest, KeepsItsFactsUntilRenewedAndItsDrivesForEver) {
    const ScratchHive machine(RegistryHive::kLocalMachine);
    const RegistryKey processor = machine.Create(kProcessor);
    processor.WriteNumber(L"~MHz", 100);
    const long drives = Figure(L"NumDrives");
    EXPECT_EQ(100, Figure(L"CpuSpeed"));
    processor.WriteNumber(L"~MHz", 200);
    const MappedDrive mapped('R', DRIVE_CDROM);
    EXPECT_EQ(100, Figure(L"CpuSpeed"));
    Ask(L"GetSystemInfo");
    EXPECT_EQ(L"1()", Event());
    EXPECT_EQ(200, Figure(L"CpuSpeed"));
    EXPECT_EQ(drives, Figure(L"NumDrives"));
    if (mapped.IsMapped()) {
        EXPECT_EQ(drives + 1, FigureOf(New(L"GeneralSysInfo").Get(), L"NumDrives"));
    }
}

TEST_F(GeneralSysInfoTest, GathersEachTimeWithoutAVendor) {
    const ScratchHive machine(RegistryHive::kLocalMachine);
    const RegistryKey processor = machine.Create(kProcessor);
    processor.WriteText(L"VendorIdentifier", L"");
    for (const DWORD speed : {100u, 200u}) {
        processor.WriteNumber(L"~MHz", speed);
        EXPECT_EQ(static_cast<long>(speed), Figure(L"CpuSpeed"));
    }
}

TEST_F(GeneralSysInfoTest, KnowsNoDriveWhereNoneWasGiven) {
    ExpectAnswers(New(L"DriveInfo").Get(), {{L"Letter", {}, L""},
                                            {L"TotalSize", {}, L"0"},
                                            {L"FreeSpace", {}, L"0"},
                                            {L"SystemDrive", {}, L"0"}});
}

} // namespace
} // namespace tervane::test
