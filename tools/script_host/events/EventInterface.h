#pragma once

// What an object's type information tells of the events it fires: the identifier of its default
// source dispinterface and the events' names. Only objects that describe their class
// (IProvideClassInfo, and IProvideClassInfo2 to name the interface) can be asked.

#include "platform/ComValues.h"

#include <map>
#include <optional>
#include <string>

namespace tervane::scripthost {

class EventInterface {
public:
    // nullopt if the object has no events that a script could be told of.
    static std::optional<EventInterface> Of(IUnknown* source);

    const IID& Id() const noexcept { return id_; }
    // Null if there is no such event.
    const std::wstring* NameOf(DISPID event) const noexcept;

private:
    EventInterface(const IID& id, std::map<DISPID, std::wstring> names)
        : id_(id), names_(std::move(names)) {}

    IID id_;
    std::map<DISPID, std::wstring> names_;
};

} // namespace tervane::scripthost
