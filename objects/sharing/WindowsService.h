#pragma once

// A service of the NT family, known to the service manager by its name: whether it runs, whether it
// starts by itself, and how both are ended. Results are Windows error codes, 0 for success.

#include <windows.h>

#include <string>

namespace tervane {

// The functions of Windows' service manager as a table, which tests replace to get services that
// refuse, hang or are missing.
struct ServiceApi {
    decltype(&OpenSCManagerW) openManager;
    decltype(&OpenServiceW) open;
    decltype(&CloseServiceHandle) close;
    decltype(&QueryServiceStatus) queryStatus;
    decltype(&QueryServiceConfigW) queryConfig;
    decltype(&ChangeServiceConfigW) changeConfig;
    decltype(&ControlService) control;
    decltype(&EnumDependentServicesW) enumDependents;
    decltype(&Sleep) sleep;

    // The real ones.
    static const ServiceApi& System() noexcept;
};

class WindowsService {
public:
    explicit WindowsService(std::wstring name, const ServiceApi& api = ServiceApi::System())
        : name_(std::move(name)), api_(api) {}

    struct State {
        bool exists = false;
        bool runs = false; // or is about to start or to stop
        bool startsByItself = false;
    };
    DWORD Query(State& state) const;

    // Nobody can start it any more; it goes on running if it does.
    DWORD Disable() const;

    // Stops it after the services that depend on it, and returns when it has stopped.
    // ERROR_TIMEOUT when it has not within `milliseconds`; then it may still be stopping.
    DWORD Stop(DWORD milliseconds) const;

private:
    class Handle;

    DWORD AskToStop(const Handle& service) const;
    DWORD StopOne(const Handle& service, DWORD& budget) const;
    DWORD StopDependents(const Handle& manager, const Handle& service, DWORD& budget) const;

    std::wstring name_;
    const ServiceApi& api_;
};

} // namespace tervane
