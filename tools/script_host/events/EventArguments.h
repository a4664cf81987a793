#pragma once

// Deep copies of an event's arguments on their way from the thread that fires to the script's
// thread. Values by reference become plain values, strings and arrays are duplicated, so that
// nothing points into the source's stack. An interface pointer belongs to the apartment it was
// created in and crosses as a marshalled packet. (Pointers inside arrays are only shared: they must
// be callable from any thread.)

#include "platform/ComValues.h"

#include <objidl.h>

#include <optional>
#include <vector>

namespace tervane::scripthost {

class EventArguments {
public:
    // nullopt if a value cannot be copied. Called on the firing thread.
    static std::optional<EventArguments> CopyOf(const DISPPARAMS& parameters);

    // The arguments as IDispatch::Invoke takes them; an object that cannot be reached any more is
    // a null object. Called once, on the script's thread; valid as long as this object.
    DISPPARAMS Unpack() noexcept;

private:
    // A marshalled interface pointer; unread, it would keep its object alive for ever.
    struct PacketTraits {
        using Type = IStream*;
        static Type Empty() noexcept { return nullptr; }
        static void Close(Type stream) noexcept;
    };
    using UniquePacket = ZelBase::UniqueResource<PacketTraits>;
    struct Packet {
        std::size_t index;
        UniquePacket stream;
    };

    static bool HoldsObject(const Variant& value) noexcept;
    bool Pack(Variant& value);

    // In the order of DISPPARAMS, last argument first.
    std::vector<Variant> values_;
    std::vector<Packet> packets_;
    // Shallow copies of `values_` for Unpack's result; its memory is had beforehand.
    std::vector<VARIANT> raw_;
};

} // namespace tervane::scripthost
