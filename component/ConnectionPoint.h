#pragma once

// Outgoing events. A class with events has exactly one connection point, a member with an identity
// of its own whose lifetime is its object's.

#include "component/ClassTable.h"
#include "component/SinkArray.h"

#include <initializer_list>
#include <memory>

#include <ocidl.h>

namespace tervane {

class ConnectionPoint final : public IConnectionPoint {
public:
    // `owner` holds this object as a member.
    ConnectionPoint(IConnectionPointContainer& owner, const IID& events)
        : owner_(owner), events_(events), sinks_(std::make_shared<SinkArray>()) {}
    ConnectionPoint(const ConnectionPoint&) = delete;
    ConnectionPoint& operator=(const ConnectionPoint&) = delete;

    // Whoever fires without holding a reference to the object keeps the sinks alive by this.
    const std::shared_ptr<SinkArray>& Sinks() const noexcept { return sinks_; }
    const IID& Events() const noexcept { return events_; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return owner_.AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return owner_.Release(); }

    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* iid) override;
    HRESULT STDMETHODCALLTYPE
    GetConnectionPointContainer(IConnectionPointContainer** container) override;
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override;
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override;
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** connections) override;

private:
    IConnectionPointContainer& owner_;
    const IID& events_;
    std::shared_ptr<SinkArray> sinks_;
};

// The mix-in of classes with events.
class EventSource : public IConnectionPointContainer {
public:
    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** points) override;
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** point) override;

    void* FindInterface(REFIID iid) noexcept {
        return IsEqualIID(iid, IID_IConnectionPointContainer)
                   ? static_cast<IConnectionPointContainer*>(this)
                   : nullptr;
    }

protected:
    explicit EventSource(const ClassRow& row) : point_(*this, *row.eventInterface) {}
    ~EventSource() = default;

    const std::shared_ptr<SinkArray>& Sinks() const noexcept { return point_.Sinks(); }

private:
    ConnectionPoint point_;
};

// One argument of an event, by value. What it refers to is borrowed for the time of the firing.
class EventArgument {
public:
    // A flag travels as VT_I2, -1 or 0, although the type library says VARIANT_BOOL: deliberate,
    // scripts in the field see that number.
    EventArgument(bool truth) noexcept {
        value_.vt = VT_I2;
        value_.iVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
    }
    EventArgument(LONG number) noexcept {
        value_.vt = VT_I4;
        value_.lVal = number;
    }
    EventArgument(IDispatch* object) noexcept {
        value_.vt = VT_DISPATCH;
        value_.pdispVal = object;
    }
    EventArgument(const UniqueBstr& text) noexcept {
        value_.vt = VT_BSTR;
        value_.bstrVal = text.Get();
    }

    const VARIANT& Get() const noexcept { return value_; }

private:
    VARIANT value_ = {};
};

// Calls every sink that is advised, in slot order, on this thread; a sink that fails or throws does
// not keep the others from being called, and one that takes calls on its own thread only gets the
// event there (see AdvisedSink). The arguments stand in their declared order. The result of the
// last call; S_OK when no sink was called; E_INVALIDARG for more than eight arguments. Any thread.
HRESULT FireEvent(SinkArray& sinks, DISPID event,
                  std::initializer_list<EventArgument> arguments) noexcept;

} // namespace tervane
