// The dial-up networking of the tests as a "rasapi32.dll": two devices and one entry, "Provider",
// which can be connected. It forgets everything with its process. The functions that it lacks are
// among those that old systems lack, too.

#include "tests/objects/dialup/FakeRas.h"

namespace {

using tervane::RasApi;
using tervane::WideRas;
using tervane::test::FakeRas;

RasApi<WideRas> Begin() {
    FakeRas& ras = FakeRas::Get();
    ras.Reset();
    ras.progress = {{RASCS_OpenPort, 0}, {RASCS_Authenticate, 0}, {RASCS_Connected, 0}};
    const RasApi<WideRas> api = FakeRas::Api<WideRas>();
    RASENTRYW entry = {};
    entry.dwSize = sizeof entry;
    api.setEntry(nullptr, L"Provider", &entry, sizeof entry, nullptr, 0);
    return api;
}

const RasApi<WideRas>& Api() {
    static const RasApi<WideRas> api = Begin();
    return api;
}

} // namespace

extern "C" {

DWORD WINAPI FakeEnumEntries(LPCWSTR reserved, LPCWSTR book, RASENTRYNAMEW* names, DWORD* bytes,
                             DWORD* count) {
    return Api().enumEntries(reserved, book, names, bytes, count);
}

DWORD WINAPI FakeGetEntry(LPCWSTR book, LPCWSTR name, RASENTRYW* entry, DWORD* bytes, BYTE* device,
                          DWORD* deviceBytes) {
    return Api().getEntry(book, name, entry, bytes, device, deviceBytes);
}

DWORD WINAPI FakeSetEntry(LPCWSTR book, LPCWSTR name, RASENTRYW* entry, DWORD bytes, BYTE* device,
                          DWORD deviceBytes) {
    return Api().setEntry(book, name, entry, bytes, device, deviceBytes);
}

DWORD WINAPI FakeValidateName(LPCWSTR book, LPCWSTR name) {
    return Api().validateName(book, name);
}

DWORD WINAPI FakeRenameEntry(LPCWSTR book, LPCWSTR name, LPCWSTR newName) {
    return Api().renameEntry(book, name, newName);
}

DWORD WINAPI FakeDeleteEntry(LPCWSTR book, LPCWSTR name) {
    return Api().deleteEntry(book, name);
}

DWORD WINAPI FakeGetDialParams(LPCWSTR book, RASDIALPARAMSW* parameters, BOOL* hasPassword) {
    return Api().getDialParams(book, parameters, hasPassword);
}

DWORD WINAPI FakeSetDialParams(LPCWSTR book, RASDIALPARAMSW* parameters, BOOL remove) {
    return Api().setDialParams(book, parameters, remove);
}

DWORD WINAPI FakeDial(RASDIALEXTENSIONS* extensions, LPCWSTR book, RASDIALPARAMSW* parameters,
                      DWORD notifier, void* window, HRASCONN* connection) {
    const DWORD error = Api().dial(extensions, book, parameters, notifier, window, connection);
    // Nobody waits for them at the end of the process.
    for (tervane::test::TestThread& sender : FakeRas::Get().senders) {
        sender.detach();
    }
    FakeRas::Get().senders.clear();
    return error;
}

DWORD WINAPI FakeHangUp(HRASCONN connection) {
    return Api().hangUp(connection);
}

DWORD WINAPI FakeEnumConnections(RASCONNW* connections, DWORD* bytes, DWORD* count) {
    return Api().enumConnections(connections, bytes, count);
}

DWORD WINAPI FakeGetStatus(HRASCONN connection, RASCONNSTATUSW* status) {
    return Api().getStatus(connection, status);
}

DWORD WINAPI FakeEnumDevices(RASDEVINFOW* devices, DWORD* bytes, DWORD* count) {
    return Api().enumDevices(devices, bytes, count);
}

DWORD WINAPI FakeGetErrorText(UINT error, LPWSTR text, DWORD size) {
    return Api().getErrorText(error, text, size);
}

} // extern "C"
