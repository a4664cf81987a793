// The switch of file and printer sharing: a service manager that does as it is told, since a real
// one would switch off this machine's sharing, and the bindings of the 9x family.

#include "objects/sharing/SharingSwitch.h"
#include "support/ScratchRegistry.h"

#include <gtest/gtest.h>

#include <string>

namespace tervane {
namespace {

using test::ScratchHive;

constexpr wchar_t kDependent[] = L"Dependent";

// A service manager with the server service and another one that depends on it.
struct ServiceState {
    DWORD openManagerError = 0, openError = 0, configError = 0, stopError = 0;
    DWORD state = SERVICE_RUNNING, dependentState = SERVICE_STOPPED;
    DWORD startType = SERVICE_AUTO_START;
    DWORD slept = 0, stopsAfter = 0;
    int handles = 0;
    std::string stops; // what was told to stop
};
ServiceState played;

struct FakeServices {
    // 1 for the server service and the manager, 2 for the dependent service.
    static SC_HANDLE Handle(DWORD error, INT_PTR which = 1) {
        SetLastError(error);
        played.handles += error == 0;
        return error == 0 ? reinterpret_cast<SC_HANDLE>(which) : nullptr;
    }
    static bool IsDependent(SC_HANDLE service) { return reinterpret_cast<INT_PTR>(service) == 2; }
    static BOOL Result(DWORD error) {
        SetLastError(error);
        return error == 0;
    }
    static SC_HANDLE WINAPI OpenManager(LPCWSTR, LPCWSTR, DWORD) {
        return Handle(played.openManagerError);
    }
    static SC_HANDLE WINAPI Open(SC_HANDLE, LPCWSTR name, DWORD) {
        return Handle(played.openError, std::wstring(name) == kDependent ? 2 : 1);
    }
    static BOOL WINAPI Close(SC_HANDLE) { return --played.handles >= 0; }
    static BOOL WINAPI QueryStatus(SC_HANDLE service, SERVICE_STATUS* status) {
        *status = {};
        status->dwCurrentState = IsDependent(service) ? played.dependentState : played.state;
        return TRUE;
    }
    static BOOL WINAPI QueryConfig(SC_HANDLE, QUERY_SERVICE_CONFIGW* config, DWORD size,
                                   DWORD* needed) {
        *needed = sizeof(*config) + 100; // texts behind it
        if (size < *needed) {
            return Result(ERROR_INSUFFICIENT_BUFFER);
        }
        config->dwStartType = played.startType;
        return TRUE;
    }
    static BOOL WINAPI ChangeConfig(SC_HANDLE, DWORD, DWORD start, DWORD, LPCWSTR, LPCWSTR, DWORD*,
                                    LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR) {
        if (played.configError == 0) {
            played.startType = start;
        }
        return Result(played.configError);
    }
    static BOOL WINAPI Control(SC_HANDLE service, DWORD, SERVICE_STATUS*) {
        if (played.stopError == 0) {
            played.stops += IsDependent(service) ? "dependent " : "server ";
            (IsDependent(service) ? played.dependentState : played.state) = SERVICE_STOP_PENDING;
        }
        return Result(played.stopError);
    }
    static BOOL WINAPI EnumDependents(SC_HANDLE, DWORD, ENUM_SERVICE_STATUSW* dependents,
                                      DWORD size, DWORD* needed, DWORD* count) {
        *count = 0;
        *needed =
            played.dependentState == SERVICE_STOPPED ? 0 : sizeof(*dependents) + sizeof(kDependent);
        if (size < *needed) {
            return Result(ERROR_MORE_DATA);
        }
        if (*needed != 0) {
            *count = 1;
            auto* name = reinterpret_cast<wchar_t*>(dependents + 1);
            dependents->lpServiceName = wcscpy(name, kDependent);
        }
        return TRUE;
    }
    static void Settle(DWORD& pending) {
        pending = pending == SERVICE_STOP_PENDING || pending == SERVICE_STOPPED ? SERVICE_STOPPED
                                                                                : SERVICE_RUNNING;
    }
    static void WINAPI Sleep(DWORD milliseconds) {
        played.slept += milliseconds;
        if (played.slept >= played.stopsAfter) {
            played.stopError = 0;
            Settle(played.state);
            Settle(played.dependentState);
        }
    }
    static const ServiceApi& Api() {
        static const ServiceApi api = {&OpenManager, &Open,           &Close,
                                       &QueryStatus, &QueryConfig,    &ChangeConfig,
                                       &Control,     &EnumDependents, &Sleep};
        return api;
    }
};

class SharingServiceTest : public testing::Test {
protected:
    SharingServiceTest() { played = {}; }
    ~SharingServiceTest() override { EXPECT_EQ(0, played.handles); }

    const SharingService sharing_{FakeServices::Api()};
    bool rebootNeeded_ = false;
    bool on_ = true;
};

TEST_F(SharingServiceTest, IsDisabledAndStoppedWithItsDependents) {
    played.dependentState = SERVICE_RUNNING;
    EXPECT_EQ(0u, sharing_.TurnOff(rebootNeeded_));
    EXPECT_FALSE(rebootNeeded_);
    EXPECT_EQ("dependent server ", played.stops);
    EXPECT_EQ(DWORD{SERVICE_STOPPED}, played.state);
    EXPECT_EQ(DWORD{SERVICE_STOPPED}, played.dependentState);
    EXPECT_EQ(DWORD{SERVICE_DISABLED}, played.startType);
    EXPECT_EQ(0u, sharing_.IsOn(on_));
    EXPECT_FALSE(on_);
}

TEST_F(SharingServiceTest, CountsAsOnWhenItRunsOrWillStartAndIsLeftAloneWhenOff) {
    const struct {
        DWORD state, start;
        bool isOn;
    } rows[] = {{SERVICE_RUNNING, SERVICE_AUTO_START, true},
                {SERVICE_STOPPED, SERVICE_AUTO_START, true},
                {SERVICE_RUNNING, SERVICE_DEMAND_START, true},
                {SERVICE_STOPPED, SERVICE_DEMAND_START, false}};
    for (const auto& row : rows) {
        played = {};
        played.state = row.state;
        played.startType = row.start;
        EXPECT_EQ(0u, sharing_.IsOn(on_));
        EXPECT_EQ(row.isOn, on_) << row.state << " " << row.start;
        EXPECT_EQ(0u, sharing_.TurnOff(rebootNeeded_));
        EXPECT_FALSE(rebootNeeded_);
        EXPECT_EQ(row.isOn ? DWORD{SERVICE_DISABLED} : row.start, played.startType);
    }
}

TEST_F(SharingServiceTest, IsNotChangedWhenTheSystemRefuses) {
    played.configError = ERROR_ACCESS_DENIED;
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, sharing_.TurnOff(rebootNeeded_));
    EXPECT_EQ(DWORD{SERVICE_RUNNING}, played.state);
    played.openError = ERROR_INVALID_HANDLE;
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, sharing_.IsOn(on_));
    EXPECT_FALSE(on_);
    played.openError = ERROR_SERVICE_DOES_NOT_EXIST;
    EXPECT_EQ(0u, sharing_.IsOn(on_));
    EXPECT_FALSE(on_);
    EXPECT_EQ(0u, sharing_.TurnOff(rebootNeeded_));
    played.openManagerError = RPC_S_SERVER_UNAVAILABLE;
    EXPECT_EQ(DWORD{RPC_S_SERVER_UNAVAILABLE}, sharing_.IsOn(on_));
    EXPECT_EQ(DWORD{RPC_S_SERVER_UNAVAILABLE}, sharing_.TurnOff(rebootNeeded_));
    EXPECT_FALSE(rebootNeeded_);
}

TEST_F(SharingServiceTest, GoesWithTheNextStartWhenItDoesNotStop) {
    played.stopsAfter = 1'000'000;
    EXPECT_EQ(0u, sharing_.TurnOff(rebootNeeded_));
    EXPECT_TRUE(rebootNeeded_);
    EXPECT_EQ(DWORD{SERVICE_DISABLED}, played.startType);
    EXPECT_EQ(30'000u, played.slept);

    played = {};
    played.stopError = ERROR_SERVICE_REQUEST_TIMEOUT;
    EXPECT_EQ(0u, sharing_.TurnOff(rebootNeeded_));
    EXPECT_TRUE(rebootNeeded_);
}

TEST_F(SharingServiceTest, IsAskedAgainWhileItIsStarting) {
    played.state = SERVICE_START_PENDING;
    played.stopError = ERROR_SERVICE_CANNOT_ACCEPT_CTRL;
    played.stopsAfter = 500;
    EXPECT_EQ(0u, sharing_.TurnOff(rebootNeeded_));
    EXPECT_FALSE(rebootNeeded_);
    EXPECT_EQ(DWORD{SERVICE_STOPPED}, played.state);
}

class SharingBindingsTest : public testing::Test {
protected:
    SharingBindingsTest() {
        // As two protocols over one adapter each leave it, and the components themselves.
        machine_.Fill(L"Enum\\Network\\", LR"(
            MSTCP\0000\Bindings: VREDIR\0000=; VSERVER\0000=
            MSTCP\0001\Bindings: VREDIR\0000=; VSERVER\0000=
            NETBEUI\0000\Bindings: VREDIR\0000=; VSERVER\0000=
            NWLINK\0000\Bindings: nwserver\0001=kept; VSERVERX\0000=
            VSERVER\0000\Bindings
            VREDIR\0000)");
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
