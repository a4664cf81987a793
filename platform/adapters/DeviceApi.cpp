#include "platform/adapters/DeviceApi.h"

namespace tervane {
namespace {

BOOL WINAPI RefuseToDefine(DWORD, LPCSTR, LPCSTR) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}

bool IsWine() noexcept {
    const HMODULE ntdll = GetModuleHandleA("ntdll.dll");
    return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

} // namespace

const DeviceApi& DeviceApi::System() noexcept {
    static const DeviceApi api = {&QueryDosDeviceA, IsWine() ? &RefuseToDefine : &DefineDosDeviceA,
                                  &CreateFileA, &DeviceIoControl, nullptr};
    return api;
}

} // namespace tervane
