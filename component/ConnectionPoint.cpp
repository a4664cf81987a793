#include "component/ConnectionPoint.h"

#include "component/InterfaceEnumerator.h"

#include <algorithm>
#include <vector>

#include <olectl.h>

namespace tervane {
namespace {

struct PointTraits {
    static IConnectionPoint* Copy(IConnectionPoint* const& point) noexcept {
        point->AddRef();
        return point;
    }
    static void Drop(IConnectionPoint*& point) noexcept { point->Release(); }
};
using PointEnumerator = InterfaceEnumerator<IEnumConnectionPoints, IConnectionPoint*, PointTraits>;

struct ConnectionTraits {
    static CONNECTDATA Copy(const CONNECTDATA& connection) noexcept {
        connection.pUnk->AddRef();
        return connection;
    }
    static void Drop(CONNECTDATA& connection) noexcept { connection.pUnk->Release(); }
};
using ConnectionEnumerator = InterfaceEnumerator<IEnumConnections, CONNECTDATA, ConnectionTraits>;

// The event dispinterface where the sink has it, else its plain IDispatch.
ComPtr<IDispatch> SinkInterface(IUnknown* sink, REFIID events) noexcept {
    ComPtr<IDispatch> found;
    if (FAILED(sink->QueryInterface(events, reinterpret_cast<void**>(found.Put())))) {
        found.Release();
        found = QueryFor<IDispatch>(sink);
    }
    return found;
}

} // namespace

HRESULT STDMETHODCALLTYPE ConnectionPoint::QueryInterface(REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IConnectionPoint)) {
        return E_NOINTERFACE;
    }
    AddRef();
    *out = static_cast<IConnectionPoint*>(this);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE ConnectionPoint::GetConnectionInterface(IID* iid) {
    if (!iid) {
        return E_POINTER;
    }
    *iid = events_;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE
ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    if (!container) {
        return E_POINTER;
    }
    return owner_.QueryInterface(IID_IConnectionPointContainer,
                                 reinterpret_cast<void**>(container));
}

HRESULT STDMETHODCALLTYPE ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
    if (!cookie) {
        return E_POINTER;
    }
    *cookie = 0;
    if (!sink) {
        return E_POINTER;
    }
    ComPtr<IDispatch> events = SinkInterface(sink, events_);
    if (!events) {
        return CONNECT_E_CANNOTCONNECT;
    }
    *cookie = sinks_->Add(std::move(events));
    return *cookie != 0 ? S_OK : E_OUTOFMEMORY;
}

HRESULT STDMETHODCALLTYPE ConnectionPoint::Unadvise(DWORD cookie) {
    return sinks_->Remove(cookie) ? S_OK : CONNECT_E_NOCONNECTION;
}

HRESULT STDMETHODCALLTYPE ConnectionPoint::EnumConnections(IEnumConnections** connections) {
    if (!connections) {
        return E_POINTER;
    }
    *connections = nullptr;
    return Guarded([&] {
        const DWORD size = sinks_->Size();
        const auto elements = std::make_shared<ConnectionEnumerator::Elements>();
        for (DWORD i = 0; i < size; ++i) {
            if (const ComPtr<AdvisedSink> sink = sinks_->At(i)) {
                elements->Add({sink->Interface(), i + 1});
            }
        }
        *connections = ConnectionEnumerator::Create(elements);
        return S_OK;
    });
}

HRESULT STDMETHODCALLTYPE EventSource::EnumConnectionPoints(IEnumConnectionPoints** points) {
    if (!points) {
        return E_POINTER;
    }
    *points = nullptr;
    return Guarded([&] {
        const auto elements = std::make_shared<PointEnumerator::Elements>();
        elements->Add(&point_);
        *points = PointEnumerator::Create(elements);
        return S_OK;
    });
}

HRESULT STDMETHODCALLTYPE EventSource::FindConnectionPoint(REFIID iid, IConnectionPoint** point) {
    if (!point) {
        return E_POINTER;
    }
    *point = nullptr;
    if (!IsEqualIID(iid, point_.Events())) {
        return CONNECT_E_NOCONNECTION;
    }
    point_.AddRef();
    *point = &point_;
    return S_OK;
}

HRESULT FireEvent(SinkArray& sinks, DISPID event,
                  std::initializer_list<EventArgument> arguments) noexcept {
    VARIANT reversed[kMostEventArguments];
    const std::size_t count = arguments.size();
    if (count > kMostEventArguments) {
        return E_INVALIDARG;
    }
    std::transform(arguments.begin(), arguments.begin() + count,
                   std::reverse_iterator(reversed + count),
                   [](const EventArgument& argument) { return argument.Get(); });
    DISPPARAMS parameters = {reversed, nullptr, static_cast<UINT>(count), 0};

    HRESULT last = S_OK;
    const DWORD size = sinks.Size();
    for (DWORD i = 0; i < size; ++i) {
        if (const ComPtr<AdvisedSink> sink = sinks.At(i)) {
            last = sink->Deliver(event, parameters);
        }
    }
    return last;
}

} // namespace tervane
