#include "objects/sharing/WindowsService.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace tervane {

const ServiceApi& ServiceApi::System() noexcept {
    static const ServiceApi api = {
        &OpenSCManagerW,     &OpenServiceW,           &CloseServiceHandle,
        &QueryServiceStatus, &QueryServiceConfigW,    &ChangeServiceConfigW,
        &ControlService,     &EnumDependentServicesW, &Sleep,
    };
    return api;
}

namespace {

// How long to wait before asking a stopping service again. It tells how long it expects to
// take; a tenth of that is the usual interval. The service manager has no event to wait for.
constexpr DWORD kShortestIntervalMs = 20;
constexpr DWORD kLongestIntervalMs = 1000;

constexpr DWORD kStopAccess = SERVICE_STOP | SERVICE_QUERY_STATUS | SERVICE_ENUMERATE_DEPENDENTS;

// A structure with texts behind it. `fill` gets the place, its size and where to tell the size that
// it needs, and returns whether it succeeded.
template <typename Structure, typename Fill>
DWORD ReadSized(std::vector<std::byte>& place, Fill fill) {
    DWORD size = 0;
    for (;;) {
        place.resize(std::max<std::size_t>(size, sizeof(Structure)));
        if (fill(reinterpret_cast<Structure*>(place.data()), static_cast<DWORD>(place.size()),
                 &size)) {
            return ERROR_SUCCESS;
        }
        const DWORD error = GetLastError();
        const bool isTooSmall = error == ERROR_MORE_DATA || error == ERROR_INSUFFICIENT_BUFFER;
        if (!isTooSmall || size <= place.size()) {
            return error;
        }
    }
}

} // namespace

// Owns a handle of the service manager; which function closes it is a matter of the table.
class WindowsService::Handle {
public:
    Handle(const ServiceApi& api, SC_HANDLE handle)
        : api_(api), handle_(handle), error_(handle ? ERROR_SUCCESS : GetLastError()) {}
    ~Handle() {
        if (handle_) {
            api_.close(handle_);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    static Handle Manager(const ServiceApi& api) {
        return {api, api.openManager(nullptr, nullptr, SC_MANAGER_CONNECT)};
    }
    // A service; the error is the manager's when there is none.
    Handle Open(const wchar_t* name, DWORD access) const {
        if (!handle_) {
            SetLastError(error_);
            return {api_, nullptr};
        }
        return {api_, api_.open(handle_, name, access)};
    }

    SC_HANDLE Get() const noexcept { return handle_; }
    // Why there is no handle; ERROR_SUCCESS when there is one.
    DWORD Error() const noexcept { return error_; }

private:
    const ServiceApi& api_;
    SC_HANDLE handle_;
    DWORD error_;
};

DWORD WindowsService::Query(State& state) const {
    state = {};
    const Handle manager = Handle::Manager(api_);
    const Handle service = manager.Open(name_.c_str(), SERVICE_QUERY_STATUS | SERVICE_QUERY_CONFIG);
    if (service.Error() == ERROR_SERVICE_DOES_NOT_EXIST) {
        return ERROR_SUCCESS;
    }
    SERVICE_STATUS status = {};
    if (service.Error() != ERROR_SUCCESS) {
        return service.Error();
    }
    if (!api_.queryStatus(service.Get(), &status)) {
        return GetLastError();
    }
    std::vector<std::byte> place;
    const DWORD error = ReadSized<QUERY_SERVICE_CONFIGW>(
        place, [&](QUERY_SERVICE_CONFIGW* config, DWORD size, DWORD* needed) {
            return api_.queryConfig(service.Get(), config, size, needed);
        });
    if (error == ERROR_SUCCESS) {
        const DWORD start = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(place.data())->dwStartType;
        state = {.exists = true,
                 .runs = status.dwCurrentState != SERVICE_STOPPED,
                 .startsByItself = start <= SERVICE_AUTO_START};
    }
    return error;
}

DWORD WindowsService::Disable() const {
    const Handle manager = Handle::Manager(api_);
    const Handle service = manager.Open(name_.c_str(), SERVICE_CHANGE_CONFIG);
    if (service.Error() != ERROR_SUCCESS) {
        return service.Error();
    }
    const BOOL changed =
        api_.changeConfig(service.Get(), SERVICE_NO_CHANGE, SERVICE_DISABLED, SERVICE_NO_CHANGE,
                          nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    return changed ? ERROR_SUCCESS : GetLastError();
}

DWORD WindowsService::Stop(DWORD milliseconds) const {
    const Handle manager = Handle::Manager(api_);
    const Handle service = manager.Open(name_.c_str(), kStopAccess);
    if (service.Error() != ERROR_SUCCESS) {
        return service.Error();
    }
    const DWORD error = StopDependents(manager, service, milliseconds);
    return error == ERROR_SUCCESS ? StopOne(service, milliseconds) : error;
}

DWORD WindowsService::StopDependents(const Handle& manager, const Handle& service,
                                     DWORD& budget) const {
    std::vector<std::byte> place;
    DWORD count = 0;
    DWORD error = ReadSized<ENUM_SERVICE_STATUSW>(place, [&](ENUM_SERVICE_STATUSW* dependents,
                                                             DWORD size, DWORD* needed) {
        return api_.enumDependents(service.Get(), SERVICE_ACTIVE, dependents, size, needed, &count);
    });
    // Those that depend on others come before them.
    const auto* dependents = reinterpret_cast<const ENUM_SERVICE_STATUSW*>(place.data());
    for (DWORD i = 0; i < count && error == ERROR_SUCCESS; ++i) {
        const Handle dependent = manager.Open(dependents[i].lpServiceName, kStopAccess);
        error = dependent.Error() == ERROR_SUCCESS ? StopOne(dependent, budget) : dependent.Error();
    }
    return error;
}

// ERROR_SERVICE_CANNOT_ACCEPT_CTRL from one that is just starting and does not listen yet.
DWORD WindowsService::AskToStop(const Handle& service) const {
    SERVICE_STATUS status = {};
    return api_.control(service.Get(), SERVICE_CONTROL_STOP, &status) ? ERROR_SUCCESS
                                                                      : GetLastError();
}

DWORD WindowsService::StopOne(const Handle& service, DWORD& budget) const {
    DWORD asked = ERROR_SERVICE_CANNOT_ACCEPT_CTRL;
    for (;;) {
        if (asked == ERROR_SERVICE_CANNOT_ACCEPT_CTRL) {
            asked = AskToStop(service);
        }
        if (asked != ERROR_SUCCESS && asked != ERROR_SERVICE_CANNOT_ACCEPT_CTRL) {
            return asked == ERROR_SERVICE_NOT_ACTIVE ? static_cast<DWORD>(ERROR_SUCCESS) : asked;
        }
        SERVICE_STATUS status = {};
        if (!api_.queryStatus(service.Get(), &status)) {
            return GetLastError();
        }
        if (status.dwCurrentState == SERVICE_STOPPED) {
            return ERROR_SUCCESS;
        }
        if (budget == 0) {
            return ERROR_TIMEOUT;
        }
        const DWORD interval = std::min(
            budget, std::clamp(status.dwWaitHint / 10, kShortestIntervalMs, kLongestIntervalMs));
        api_.sleep(interval);
        budget -= interval;
    }
}

} // namespace tervane
