#include "tools/script_host/events/EventArguments.h"

#include <combaseapi.h>

namespace tervane::scripthost {

void EventArguments::PacketTraits::Close(Type stream) noexcept {
    stream->Seek({}, STREAM_SEEK_SET, nullptr);
    CoReleaseMarshalData(stream);
    stream->Release();
}

bool EventArguments::HoldsObject(const Variant& value) noexcept {
    return (value.Type() == VT_DISPATCH || value.Type() == VT_UNKNOWN) &&
           value.Get().punkVal != nullptr;
}

// Moves the object of `value` into a packet, leaving a null object in its place.
bool EventArguments::Pack(Variant& value) {
    REFIID iid = value.Type() == VT_DISPATCH ? __uuidof(IDispatch) : __uuidof(IUnknown);
    UniquePacket stream;
    if (FAILED(CoMarshalInterThreadInterfaceInStream(iid, value.Get().punkVal, stream.Put()))) {
        return false;
    }
    packets_.push_back({values_.size(), std::move(stream)});
    VARIANT null{};
    null.vt = value.Type();
    value = Variant(null);
    return true;
}

std::optional<EventArguments> EventArguments::CopyOf(const DISPPARAMS& parameters) {
    EventArguments copies;
    copies.values_.reserve(parameters.cArgs);
    copies.raw_.reserve(parameters.cArgs);
    for (UINT i = 0; i < parameters.cArgs; ++i) {
        std::optional<Variant> value = Variant::CopyOf(parameters.rgvarg[i]);
        if (!value || (HoldsObject(*value) && !copies.Pack(*value))) {
            return std::nullopt;
        }
        copies.values_.push_back(*std::move(value));
    }
    return copies;
}

DISPPARAMS EventArguments::Unpack() noexcept {
    for (Packet& packet : packets_) {
        Variant& value = values_[packet.index];
        VARIANT object{};
        object.vt = value.Type();
        REFIID iid = object.vt == VT_DISPATCH ? __uuidof(IDispatch) : __uuidof(IUnknown);
        // Takes the stream over, whether or not it succeeds.
        if (FAILED(CoGetInterfaceAndReleaseStream(packet.stream.Release(), iid,
                                                  reinterpret_cast<void**>(&object.punkVal)))) {
            object.punkVal = nullptr;
        }
        value = Variant(object);
    }
    packets_.clear();
    raw_.clear();
    for (const Variant& value : values_) {
        raw_.push_back(value.Get());
    }
    return {raw_.data(), nullptr, static_cast<UINT>(raw_.size()), 0};
}

} // namespace tervane::scripthost
