// Hardware addresses from drivers: the real ones of this machine, and drivers that misbehave.

#include "platform/adapters/DriverAddress.h"

#include "ZelBase/Handles.h"
#include "ZelBase/threads/ModulePin.h"
#include "ZelNet/SourceCode/IpHelper.h"
#include "platform/adapters/HardwareAddress.h"
#include "platform/adapters/StaticAdapter.h"
#include "support/AdapterRegistry.h"
#include "support/TestThreads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace tervane {
namespace {

using namespace std::string_literals;

// A device that exists or not, has a name or not, and answers what a test wants.
struct PlayedDriver {
    bool hasName = false;
    bool mayBeDefined = true;
    bool exists = true;
    DWORD queryError = ERROR_FILE_NOT_FOUND;
    std::map<DWORD, std::vector<unsigned char>> answers = {}; // by object
    std::function<void()> whenFound = [] {};                  // its name
    std::function<void()> whenAsked = [] {};
    std::string calls = {};
};
PlayedDriver driver;

DWORD WINAPI PlayQuery(LPCSTR name, LPSTR target, DWORD size) {
    driver.calls += std::string("query ") + name + ";";
    if (!driver.hasName || size < 4) {
        SetLastError(driver.queryError);
        return 0;
    }
    driver.whenFound();
    strcpy(target, "x");
    return 3;
}

BOOL WINAPI PlayDefine(DWORD flags, LPCSTR name, LPCSTR target) {
    driver.calls += "define " + std::to_string(flags) + " " + name + " " + target + ";";
    driver.hasName = driver.mayBeDefined && flags == 1;
    return driver.mayBeDefined;
}

HANDLE WINAPI PlayOpen(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD how,
                       DWORD, HANDLE) {
    EXPECT_EQ(static_cast<DWORD>(GENERIC_READ), access);
    EXPECT_EQ(static_cast<DWORD>(FILE_SHARE_READ | FILE_SHARE_WRITE), share);
    EXPECT_EQ(static_cast<DWORD>(OPEN_EXISTING), how);
    driver.calls += std::string("open ") + name + ";";
    return driver.exists && driver.hasName ? CreateEventW(nullptr, FALSE, FALSE, nullptr)
                                           : INVALID_HANDLE_VALUE;
}

BOOL WINAPI PlayControl(HANDLE, DWORD code, LPVOID input, DWORD inputSize, LPVOID output,
                        DWORD outputSize, LPDWORD size, LPOVERLAPPED) {
    EXPECT_EQ(0x170002u, code);
    EXPECT_EQ(4u, inputSize);
    EXPECT_EQ(4096u, outputSize);
    driver.whenAsked();
    const auto answer = driver.answers.find(*static_cast<DWORD*>(input));
    if (answer == driver.answers.end()) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    *size = static_cast<DWORD>(answer->second.size());
    std::copy(answer->second.begin(), answer->second.end(), static_cast<unsigned char*>(output));
    return TRUE;
}

constexpr DeviceApi kPlayed = {&PlayQuery, &PlayDefine, &PlayOpen, &PlayControl, nullptr};

class DriverAddressTest : public testing::Test {
protected:
    DriverAddressTest() { driver = PlayedDriver(); }
    static std::optional<std::wstring> Read(const std::wstring& name) {
        return DriverAddresses(kPlayed).Read(name);
    }
};

TEST_F(DriverAddressTest, DefinesANameAndTakesItBack) {
    driver.answers[0x01010102] = {0, 0x10, 0x5A, 0xAB, 1, 2};
    EXPECT_EQ(L"00-10-5A-AB-01-02", Read(L"El90x1"));
    EXPECT_EQ("query El90x1;define 1 El90x1 \\Device\\El90x1;open \\\\.\\El90x1;"
              "define 7 El90x1 \\Device\\El90x1;",
              driver.calls);
    driver = {.hasName = true};
    driver.answers[0x04010101] = {1, 2, 3, 4, 5, 6}; // an FDDI card
    EXPECT_EQ(L"01-02-03-04-05-06", Read(L"{1}"));
    EXPECT_EQ("query {1};open \\\\.\\{1};", driver.calls); // there is a name already
}

TEST_F(DriverAddressTest, BelievesOnlySixBytes) {
    for (const std::size_t size : {0, 5, 7, 4096}) {
        driver.answers[0x01010102].resize(size, 1);
        EXPECT_EQ(std::nullopt, Read(L"El90x1")) << size;
        EXPECT_TRUE(driver.calls.ends_with("define 7 El90x1 \\Device\\El90x1;"));
    }
}

TEST_F(DriverAddressTest, FailsWithoutADevice) {
    const std::pair<PlayedDriver, const char*> rows[] = {
        {{.queryError = ERROR_ACCESS_DENIED}, "query El90x1;"},
        {{.mayBeDefined = false}, "query El90x1;define 1 El90x1 \\Device\\El90x1;"},
        {{.exists = false},
         "query El90x1;define 1 El90x1 \\Device\\El90x1;open \\\\.\\El90x1;"
         "define 7 El90x1 \\Device\\El90x1;"}};
    for (const auto& [played, calls] : rows) {
        driver = played;
        EXPECT_EQ(std::nullopt, Read(L"El90x1"));
        EXPECT_EQ(calls, driver.calls);
    }
    driver = PlayedDriver();
    for (const std::wstring& name : {L""s, L"\x4E2D"s, L"a\0b"s}) {
        EXPECT_EQ(std::nullopt, Read(name));
    }
    EXPECT_EQ("", driver.calls);
}

TEST_F(DriverAddressTest, KnowsTheCardThatCannotBeAsked) {
    EXPECT_EQ(L"00-c0-49-43-0f-53", Read(L"USRPCIAWR3"));
    EXPECT_EQ(L"00-c0-49-43-0f-5d", Read(L"xUSRPCIAWR"));
    EXPECT_EQ("", driver.calls);
    EXPECT_EQ(std::nullopt, Read(L"usrpciawr3"));
    EXPECT_TRUE(driver.calls.starts_with("query usrpciawr3;"));
}

// A name that whoever has looked it up is slow to use, and a driver that is slow to answer.
TEST_F(DriverAddressTest, TakesNoNameFromAnotherThread) {
    std::atomic<bool> isAsked = false;
    driver.answers[0x01010102].resize(6, 7);
    driver.whenFound = [] { Sleep(300); };
    driver.whenAsked = [&] {
        isAsked = true;
        Sleep(100);
    };
    const auto read = [] { EXPECT_EQ(L"07-07-07-07-07-07", Read(L"El90x1")); };
    test::TestThread first(read);
    while (!isAsked) {
        Sleep(1);
    }
    read();
    first.join();
    EXPECT_FALSE(driver.hasName);
}

TEST_F(DriverAddressTest, WaitsForAStuckDriverOnceInAList) {
    const ZelBase::UniqueHandle isStuck(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const ZelBase::UniqueHandle goOn(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    driver.hasName = true;
    driver.answers[0x01010102].resize(6, 9);
    driver.whenAsked = [&] {
        SetEvent(isStuck.Get());
        WaitForSingleObject(goOn.Get(), INFINITE);
    };
    const auto stuck = ZelBase::ModulePin::StartThread([] { Read(L"A"); });
    WaitForSingleObject(isStuck.Get(), INFINITE);
    DriverAddresses list(kPlayed);
    EXPECT_EQ(std::nullopt, list.Read(L"B"));
    SetEvent(goOn.Get());
    WaitForSingleObject(stuck.Get(), INFINITE);
    driver.calls.clear();
    EXPECT_EQ(std::nullopt, list.Read(L"B"));
    EXPECT_TRUE(driver.calls.empty());
    EXPECT_EQ(L"09-09-09-09-09-09", Read(L"B"));
}

// The adapters of this machine, installed by the test. Wine's network driver, which makes their
// devices, comes up at some time after the first program of a session.
TEST(StaticAdapterTest, TellsTheAddressesThatTheStackTells) {
    std::vector<IP_ADAPTER_INFO> places(100);
    auto size = static_cast<ULONG>(places.size() * sizeof places[0]);
    if (ZelNet::IpHelper::Load()->GetAdaptersInfo(places.data(), &size) != ERROR_SUCCESS) {
        GTEST_SKIP() << "this machine has no network adapter";
    }
    const test::AdapterHives hives;
    std::map<std::wstring, std::wstring> told;
    for (const IP_ADAPTER_INFO* live = places.data(); live; live = live->Next) {
        const std::string name = live->AdapterName;
        const std::wstring instance(name.begin(), name.end());
        test::AddNtCard(hives, {instance, std::to_wstring(told.size()), L"Card", L""});
        told[instance] = FormatHardwareAddress({live->Address, live->AddressLength});
    }
    int compared = 0;
    for (int waited = 0; compared == 0 && waited < 20000; waited += 100) {
        Sleep(waited == 0 ? 0 : 100);
        for (const StaticAdapter& adapter : ListStaticAdapters()) {
            if (adapter.hardwareAddress != kNoHardwareAddress) {
                EXPECT_EQ(told[adapter.cookie], adapter.hardwareAddress);
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 0);
}

} // namespace
} // namespace tervane
