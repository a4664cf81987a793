#pragma once

// What class factories, registration and the interfaces that tell hosts what an object is know of
// the creatable classes. The classes live above and are handed down when the library is loaded.

#include <span>

#include <unknwn.h>

namespace tervane {

struct ClassRow;

// Creates an instance, aggregated when `outer` is not null, and queries it for `iid`.
// `*out` is null on failure.
using InstanceCreator = HRESULT(const ClassRow& row, IUnknown* outer, REFIID iid, void** out);

struct ClassRow {
    const CLSID* clsid;
    // Registered as the class's name: "<Class> Class".
    const wchar_t* description;
    // Number of the registration script, a resource of type "REGISTRY".
    UINT script;
    const IID* defaultInterface;
    // The outgoing dispinterface; null when the class fires no events.
    const IID* eventInterface;
    InstanceCreator* create;
};

// Hands over all classes, in registration order; they stay the caller's. Once, before any other
// thread can ask.
void UseClasses(std::span<const ClassRow> rows) noexcept;

// All classes; none before they are handed over.
std::span<const ClassRow> ClassTable() noexcept;

// The row of `clsid`, or null.
const ClassRow* FindClass(REFCLSID clsid) noexcept;

} // namespace tervane
