#include "tools/script_host/events/EventConnections.h"

#include "tools/script_host/events/EventSink.h"

#include <olectl.h>

#include <algorithm>

namespace tervane::scripthost {

EventConnections::EventConnections(Handler handler)
    : handler_(std::move(handler)),
      queue_(std::make_shared<EventQueue>(static_cast<EventReceiver&>(*this))) {}

HRESULT EventConnections::Connect(IUnknown* object, std::wstring prefix) {
    ComPtr<IConnectionPointContainer> container = QueryFor<IConnectionPointContainer>(object);
    std::optional<EventInterface> events = EventInterface::Of(object);
    ComPtr<IConnectionPoint> point;
    if (!container || !events ||
        FAILED(container->FindConnectionPoint(events->Id(), point.Put()))) {
        return CONNECT_E_NOCONNECTION;
    }
    const ULONG id = ++lastId_;
    ComPtr<IDispatch> sink(new EventSink(queue_, id, *std::move(events)));
    // Known before it is advised: an object may fire at once.
    ComPtr<IConnectionPoint> advisedPoint = AddReference(point.Get());
    connections_.push_back(
        {id, std::move(prefix), QueryFor<IUnknown>(object), std::move(point), 0});
    DWORD cookie = 0;
    HRESULT result = advisedPoint->Advise(sink.Get(), &cookie);
    Position position = Find(id);
    if (position == connections_.end()) {
        // A handler has disconnected the object meanwhile.
        if (SUCCEEDED(result)) {
            advisedPoint->Unadvise(cookie);
        }
        return S_OK;
    }
    if (FAILED(result)) {
        connections_.erase(position);
        return result;
    }
    position->cookie = cookie;
    return S_OK;
}

EventConnections::Position EventConnections::Find(ULONG id) noexcept {
    return std::find_if(connections_.begin(), connections_.end(),
                        [id](const Connection& connection) { return connection.id == id; });
}

void EventConnections::Disconnect(IUnknown* object) noexcept {
    ComPtr<IUnknown> identity = QueryFor<IUnknown>(object);
    auto isOfObject = [&](const Connection& connection) {
        return connection.object.Get() == identity.Get();
    };
    // Searched anew each time: what runs when a connection ends may end others.
    for (;;) {
        Position found = std::find_if(connections_.begin(), connections_.end(), isOfObject);
        if (found == connections_.end()) {
            return;
        }
        End(found);
    }
}

// Off the list first: an event that is fired during Unadvise finds nothing any more.
void EventConnections::End(Position position) noexcept {
    Connection connection = std::move(*position);
    connections_.erase(position);
    if (connection.cookie != 0) {
        connection.point->Unadvise(connection.cookie);
    }
}

void EventConnections::Close() noexcept {
    queue_->Close();
    while (!connections_.empty()) {
        End(connections_.begin());
    }
}

void EventConnections::OnEvent(ULONG id, const std::wstring& event,
                               DISPPARAMS& arguments) noexcept {
    Position connection = Find(id);
    if (connection == connections_.end()) {
        return;
    }
    try {
        // The handler may disconnect, so nothing of the connection is used from here on.
        handler_(connection->prefix + event, arguments);
    } catch (...) {
        // Out of memory before the script was entered; errors of scripts are no exceptions.
    }
}

} // namespace tervane::scripthost
