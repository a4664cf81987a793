// The switch of file and printer sharing: real services of Wine's service manager, services that
// misbehave in ways that a real one cannot be made to, and the bindings of the 9x family.

#include "objects/sharing/SharingSwitch.h"
#include "support/OtherWindows.h"
#include "support/ScratchRegistry.h"

#include <gtest/gtest.h>

#include <string>

namespace tervane {
namespace {

using test::ScratchHive;

// What a service does that this program plays: it runs until it is told to stop, and takes a while
// then.
SERVICE_STATUS_HANDLE reporter;

void Report(DWORD state) {
    SERVICE_STATUS status = {};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = state;
    status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP : 0;
    status.dwWaitHint = 500;
    SetServiceStatus(reporter, &status);
}

HANDLE told;

void WINAPI OnControl(DWORD control) {
    if (control == SERVICE_CONTROL_STOP) {
        Report(SERVICE_STOP_PENDING);
        SetEvent(told);
    }
}

void WINAPI ServiceMain(DWORD, LPWSTR* arguments) {
    told = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    reporter = RegisterServiceCtrlHandlerW(arguments[0], &OnControl);
    Report(SERVICE_RUNNING);
    WaitForSingleObject(told, 60'000);
    Sleep(150);
    Report(SERVICE_STOPPED);
}

TEST(PlayedServiceTest, DISABLED_Body) {
    wchar_t any[] = L"";
    const SERVICE_TABLE_ENTRYW services[] = {{any, &ServiceMain}, {nullptr, nullptr}};
    StartServiceCtrlDispatcherW(services);
}

struct ServiceHandleTraits {
    using Type = SC_HANDLE;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type handle) noexcept { CloseServiceHandle(handle); }
};
using UniqueService = ZelBase::UniqueResource<ServiceHandleTraits>;

// The command that runs the body above.
std::wstring BodyCommand() {
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    return L"\"" + std::wstring(program) +
           L"\" --gtest_also_run_disabled_tests --gtest_filter=PlayedServiceTest.DISABLED_Body";
}

DWORD StateOf(SC_HANDLE service) {
    SERVICE_STATUS status = {};
    QueryServiceStatus(service, &status);
    return status.dwCurrentState;
}

DWORD StartTypeOf(SC_HANDLE service) {
    alignas(QUERY_SERVICE_CONFIGW) char place[8192];
    auto* config = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(place);
    DWORD size = 0;
    return QueryServiceConfigW(service, config, sizeof(place), &size) ? config->dwStartType : 99;
}

bool Configure(SC_HANDLE service, DWORD type, DWORD start, const wchar_t* command) {
    return ChangeServiceConfigW(service, type, start, SERVICE_NO_CHANGE, command, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr);
}

bool SetStartType(SC_HANDLE service, DWORD start) {
    return Configure(service, SERVICE_NO_CHANGE, start, nullptr);
}

bool Start(SC_HANDLE service) {
    StartServiceW(service, 0, nullptr);
    for (int i = 0; i < 500 && StateOf(service) != SERVICE_RUNNING; ++i) {
        Sleep(20);
    }
    return StateOf(service) == SERVICE_RUNNING;
}

// Wine's own entry for the server service, played by the body above, as Wine's does not run. It is
// disabled before and after each test.
class SharingServiceTest : public testing::Test {
protected:
    void SetUp() override {
        if (!test::IsWine()) {
            GTEST_SKIP() << "would switch off the sharing of this machine";
        }
        ASSERT_TRUE(Configure(server_.Get(), SERVICE_WIN32_OWN_PROCESS, SERVICE_DISABLED,
                              BodyCommand().c_str()));
    }
    void TearDown() override {
        if (test::IsWine()) {
            SERVICE_STATUS status = {};
            ControlService(server_.Get(), SERVICE_CONTROL_STOP, &status);
            Configure(server_.Get(), SERVICE_WIN32_SHARE_PROCESS, SERVICE_DISABLED,
                      L"C:\\windows\\system32\\svchost.exe -k netsvcs");
        }
    }

    const UniqueService manager_{OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)};
    const UniqueService server_{OpenServiceW(manager_.Get(), L"LanmanServer", SERVICE_ALL_ACCESS)};
    const SharingService sharing_;
    bool on_ = false;
    bool rebootNeeded_ = true;
};

constexpr wchar_t kDependent[] = L"TervaneTestDependent";

// Wine's function finds no dependents.
BOOL WINAPI EnumOneDependent(SC_HANDLE, DWORD, ENUM_SERVICE_STATUSW* dependents, DWORD size,
                             DWORD* needed, DWORD* count) {
    *needed = sizeof(*dependents) + sizeof(kDependent);
    *count = size < *needed ? 0 : 1;
    if (size < *needed) {
        SetLastError(ERROR_MORE_DATA);
        return FALSE;
    }
    auto* name = reinterpret_cast<wchar_t*>(dependents + 1);
    dependents->lpServiceName = wcscpy(name, kDependent);
    return TRUE;
}

TEST_F(SharingServiceTest, IsDisabledAndStoppedWithItsDependents) {
    ServiceApi api = ServiceApi::System();
    api.enumDependents = &EnumOneDependent;
    const SharingService sharing(api);
    ASSERT_TRUE(SetStartType(server_.Get(), SERVICE_DEMAND_START));
    if (!Start(server_.Get())) {
        GTEST_SKIP() << "the service manager does not start this program as a service here";
    }
    const UniqueService dependent(CreateServiceW(
        manager_.Get(), kDependent, nullptr, SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS,
        SERVICE_DEMAND_START, SERVICE_ERROR_IGNORE, BodyCommand().c_str(), nullptr, nullptr,
        L"LanmanServer\0", nullptr, nullptr));
    ASSERT_TRUE(dependent);
    EXPECT_TRUE(Start(dependent.Get()));

    EXPECT_EQ(0u, sharing.IsOn(on_));
    EXPECT_TRUE(on_);
    EXPECT_EQ(0u, sharing.TurnOff(rebootNeeded_));
    EXPECT_FALSE(rebootNeeded_);
    EXPECT_EQ(DWORD{SERVICE_STOPPED}, StateOf(server_.Get()));
    EXPECT_EQ(DWORD{SERVICE_STOPPED}, StateOf(dependent.Get()));
    EXPECT_EQ(DWORD{SERVICE_DISABLED}, StartTypeOf(server_.Get()));
    EXPECT_EQ(DWORD{SERVICE_DEMAND_START}, StartTypeOf(dependent.Get()));
    EXPECT_EQ(0u, sharing.IsOn(on_));
    EXPECT_FALSE(on_);
    DeleteService(dependent.Get());
}

TEST_F(SharingServiceTest, CountsAsOnWhenItWillStartAndIsLeftAloneWhenOff) {
    ASSERT_TRUE(SetStartType(server_.Get(), SERVICE_DEMAND_START));
    EXPECT_EQ(0u, sharing_.IsOn(on_));
    EXPECT_FALSE(on_);
    EXPECT_EQ(0u, sharing_.TurnOff(rebootNeeded_));
    EXPECT_EQ(DWORD{SERVICE_DEMAND_START}, StartTypeOf(server_.Get()));

    ASSERT_TRUE(SetStartType(server_.Get(), SERVICE_AUTO_START));
    EXPECT_EQ(0u, sharing_.IsOn(on_));
    EXPECT_TRUE(on_);
    EXPECT_EQ(0u, sharing_.TurnOff(rebootNeeded_));
    EXPECT_FALSE(rebootNeeded_);
    EXPECT_EQ(DWORD{SERVICE_DISABLED}, StartTypeOf(server_.Get()));
}

// A service manager with one service, which does as it is told here.
struct FakeServices {
    static inline DWORD openManagerError, openError, configError, stopError;
    static inline DWORD state, startType, slept, stopsAfter;
    static inline int handles;

    static void Reset() {
        openManagerError = openError = configError = stopError = 0;
        state = SERVICE_RUNNING;
        startType = SERVICE_AUTO_START;
        slept = 0;
        stopsAfter = 0;
        handles = 0;
    }
    static SC_HANDLE Handle(DWORD error) {
        SetLastError(error);
        handles += error == 0;
        return error == 0 ? reinterpret_cast<SC_HANDLE>(1) : nullptr;
    }
    static BOOL Result(DWORD error) {
        SetLastError(error);
        return error == 0;
    }
    static SC_HANDLE WINAPI OpenManager(LPCWSTR, LPCWSTR, DWORD) {
        return Handle(openManagerError);
    }
    static SC_HANDLE WINAPI Open(SC_HANDLE, LPCWSTR, DWORD) { return Handle(openError); }
    static BOOL WINAPI Close(SC_HANDLE) { return --handles >= 0; }
    static BOOL WINAPI QueryStatus(SC_HANDLE, SERVICE_STATUS* status) {
        *status = {};
        status->dwCurrentState = state;
        return TRUE;
    }
    static BOOL WINAPI QueryConfig(SC_HANDLE, QUERY_SERVICE_CONFIGW* config, DWORD size,
                                   DWORD* needed) {
        *needed = sizeof(*config) + 100; // texts behind it
        if (size < *needed) {
            return Result(ERROR_INSUFFICIENT_BUFFER);
        }
        config->dwStartType = startType;
        return TRUE;
    }
    static BOOL WINAPI ChangeConfig(SC_HANDLE, DWORD, DWORD start, DWORD, LPCWSTR, LPCWSTR, DWORD*,
                                    LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR) {
        if (configError == 0) {
            startType = start;
        }
        return Result(configError);
    }
    static BOOL WINAPI Control(SC_HANDLE, DWORD, SERVICE_STATUS*) {
        if (stopError == 0) {
            state = SERVICE_STOP_PENDING;
        }
        return Result(stopError);
    }
    static BOOL WINAPI EnumDependents(SC_HANDLE, DWORD, ENUM_SERVICE_STATUSW*, DWORD, DWORD*,
                                      DWORD* count) {
        *count = 0;
        return TRUE;
    }
    static void WINAPI Sleep(DWORD milliseconds) {
        slept += milliseconds;
        if (slept >= stopsAfter) {
            stopError = 0;
            state = state == SERVICE_STOP_PENDING ? SERVICE_STOPPED : SERVICE_RUNNING;
        }
    }
    static const ServiceApi& Api() {
        static const ServiceApi api = {&OpenManager, &Open,           &Close,
                                       &QueryStatus, &QueryConfig,    &ChangeConfig,
                                       &Control,     &EnumDependents, &Sleep};
        return api;
    }
};

class ObstinateServiceTest : public testing::Test {
protected:
    ObstinateServiceTest() { FakeServices::Reset(); }
    ~ObstinateServiceTest() override { EXPECT_EQ(0, FakeServices::handles); }

    const SharingService sharing_{FakeServices::Api()};
    bool rebootNeeded_ = false;
    bool on_ = true;
};

TEST_F(ObstinateServiceTest, IsNotChangedWhenTheSystemRefuses) {
    FakeServices::configError = ERROR_ACCESS_DENIED;
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, sharing_.TurnOff(rebootNeeded_));
    EXPECT_EQ(DWORD{SERVICE_RUNNING}, FakeServices::state);
    FakeServices::openError = ERROR_INVALID_HANDLE;
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, sharing_.IsOn(on_));
    EXPECT_FALSE(on_);
    FakeServices::openError = ERROR_SERVICE_DOES_NOT_EXIST;
    EXPECT_EQ(0u, sharing_.IsOn(on_));
    EXPECT_FALSE(on_);
    EXPECT_EQ(0u, sharing_.TurnOff(rebootNeeded_));
    FakeServices::openManagerError = RPC_S_SERVER_UNAVAILABLE;
    EXPECT_EQ(DWORD{RPC_S_SERVER_UNAVAILABLE}, sharing_.IsOn(on_));
    EXPECT_EQ(DWORD{RPC_S_SERVER_UNAVAILABLE}, sharing_.TurnOff(rebootNeeded_));
    EXPECT_FALSE(rebootNeeded_);
}

TEST_F(ObstinateServiceTest, GoesWithTheNextStartWhenItDoesNotStop) {
    FakeServices::stopsAfter = 1'000'000;
    EXPECT_EQ(0u, sharing_.TurnOff(rebootNeeded_));
    EXPECT_TRUE(rebootNeeded_);
    EXPECT_EQ(DWORD{SERVICE_DISABLED}, FakeServices::startType);
    EXPECT_EQ(30'000u, FakeServices::slept);

    FakeServices::Reset();
    FakeServices::stopError = ERROR_SERVICE_REQUEST_TIMEOUT;
    EXPECT_EQ(0u, sharing_.TurnOff(rebootNeeded_));
    EXPECT_TRUE(rebootNeeded_);
}

TEST_F(ObstinateServiceTest, IsAskedAgainWhileItIsStarting) {
    FakeServices::state = SERVICE_START_PENDING;
    FakeServices::stopError = ERROR_SERVICE_CANNOT_ACCEPT_CTRL;
    FakeServices::stopsAfter = 500;
    EXPECT_EQ(0u, sharing_.TurnOff(rebootNeeded_));
    EXPECT_FALSE(rebootNeeded_);
    EXPECT_EQ(DWORD{SERVICE_STOPPED}, FakeServices::state);
}

class SharingBindingsTest : public testing::Test {
protected:
    SharingBindingsTest() {
        // As two protocols over one adapter each leave it, and the components themselves.
        for (const wchar_t* path :
             {L"MSTCP\\0000\\Bindings", L"MSTCP\\0001\\Bindings", L"NETBEUI\\0000\\Bindings"}) {
            Bindings(path).WriteText(L"VREDIR\\0000", L"");
            Bindings(path).WriteText(L"VSERVER\\0000", L"");
        }
        Bindings(L"NWLINK\\0000\\Bindings").WriteText(L"nwserver\\0001", L"kept");
        Bindings(L"NWLINK\\0000\\Bindings").WriteText(L"VSERVERX\\0000", L"");
        Bindings(L"VSERVER\\0000\\Bindings");
        Bindings(L"VREDIR\\0000");
    }
    RegistryKey Bindings(const std::wstring& path) {
        return machine_.Create(L"Enum\\Network\\" + path);
    }

    ScratchHive machine_{RegistryHive::kLocalMachine};
    bool on_ = false;
    bool rebootNeeded_ = true;
};

TEST_F(SharingBindingsTest, AreRemovedFromEveryProtocol) {
    const SharingBindings sharing;
    EXPECT_EQ(0u, sharing.IsOn(on_));
    EXPECT_TRUE(on_);
    EXPECT_EQ(0u, sharing.TurnOff(rebootNeeded_));
    EXPECT_TRUE(rebootNeeded_);
    EXPECT_EQ(std::vector<std::wstring>{L"VREDIR\\0000"},
              Bindings(L"MSTCP\\0001\\Bindings").ValueNames());
    EXPECT_EQ(std::vector<std::wstring>{L"VSERVERX\\0000"},
              Bindings(L"NWLINK\\0000\\Bindings").ValueNames());
    EXPECT_EQ(0u, sharing.IsOn(on_));
    EXPECT_FALSE(on_);
    EXPECT_EQ(0u, sharing.TurnOff(rebootNeeded_));
    EXPECT_FALSE(rebootNeeded_);
}

TEST_F(SharingBindingsTest, StayAllWhenOneIsRefused) {
    // Refused last, so that the others have to be put back.
    const SharingBindings sharing(test::RefuseValue(L"nwserver\\0001"));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, sharing.TurnOff(rebootNeeded_));
    EXPECT_FALSE(rebootNeeded_);
    EXPECT_EQ(L"", Bindings(L"MSTCP\\0000\\Bindings").ReadText(L"VSERVER\\0000"));
    EXPECT_EQ(L"", Bindings(L"NETBEUI\\0000\\Bindings").ReadText(L"VSERVER\\0000"));
    EXPECT_EQ(L"kept", Bindings(L"NWLINK\\0000\\Bindings").ReadText(L"nwserver\\0001"));
}

} // namespace
} // namespace tervane
