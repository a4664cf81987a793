#pragma once

// The embedded type library: what every object's IDispatch is served from, and what registration
// announces to the system. Objects read it from the library's own file, so they work before
// registration too.

#include "platform/ComValues.h"

#include <atomic>
#include <optional>
#include <string>

namespace tervane {

// The type information of an interface, dispinterface or coclass. It stays owned by the type
// library and lives as long as this library is loaded. Null when the type library cannot be loaded
// or does not know `id`. Any thread.
ITypeInfo* TypeInfoFor(REFGUID id) noexcept;

// The same for one interface, looked up only once.
template <typename Interface>
ITypeInfo* TypeInfoOf() noexcept {
    static std::atomic<ITypeInfo*> cached = nullptr;
    ITypeInfo* info = cached;
    if (!info) {
        info = TypeInfoFor(__uuidof(Interface));
        cached = info;
    }
    return info;
}

// The DISPID of a member's name, remembered as it was written: scripts ask for the same few names
// over and over. DISP_E_UNKNOWNNAME when the interface has no such member. Any thread.
HRESULT MemberId(ITypeInfo* info, LPOLESTR name, DISPID* id);

// The most arguments that a member of the interface takes when it is invoked with these DISPATCH_
// flags; nullopt when it has no such member. Any thread.
std::optional<UINT> MostArguments(ITypeInfo* info, DISPID member, WORD flags);

// Gives up all type information; only when no object lives any more and the process goes on.
void ReleaseTypeInfo() noexcept;

// The full path of this library's file. Empty when it is longer than MAX_PATH.
std::wstring ModulePath();

struct LoadedTypeLibrary {
    ComPtr<ITypeLib> library;
    // The file it came from.
    std::wstring path;
};

// Loads the type library from this library's file, else from the ".tlb" file beside it.
// The error of the second attempt when both fail.
HRESULT LoadModuleTypeLibrary(LoadedTypeLibrary& loaded);

// Announces the type library to the system, or takes that back. Taking back leaves what serves
// others: the entry of a copy in another folder that was registered later, and, as long as the
// other architecture's library is registered, the interfaces that both describe.
HRESULT RegisterTypeLibrary();
HRESULT UnregisterTypeLibrary();

} // namespace tervane
