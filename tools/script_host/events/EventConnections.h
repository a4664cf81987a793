#pragma once

// The objects whose events the script handles, and the way from an event to its handler: the
// script's global function named prefix + event. Everything here happens on the script's thread.
//
// A connection keeps its object alive until it is disconnected, because only the object's
// connection point can end it. An event that arrives after that - it may have been queued before -
// finds no connection any more and is dropped.

#include "tools/script_host/events/EventInterface.h"
#include "tools/script_host/events/EventQueue.h"

#include <ocidl.h>

#include <functional>
#include <memory>
#include <vector>

namespace tervane::scripthost {

class EventConnections : private EventReceiver {
public:
    // Calls a script function by name with the event's arguments.
    using Handler = std::function<void(const std::wstring& function, DISPPARAMS& arguments)>;

    explicit EventConnections(Handler handler);
    EventConnections(const EventConnections&) = delete;
    EventConnections& operator=(const EventConnections&) = delete;
    ~EventConnections() { Close(); }

    // False if no event can ever arrive: after Close, or if the system had no window left.
    bool IsOpen() { return queue_->IsOpen(); }
    // CONNECT_E_NOCONNECTION if the object has no events, else what the object answered. One object
    // may be connected several times, with different prefixes.
    HRESULT Connect(IUnknown* object, std::wstring prefix);
    // Ends all connections of the object; none at all is no error.
    void Disconnect(IUnknown* object) noexcept;
    // Calls the handlers of all events that have arrived.
    void HandleArrived() noexcept { queue_->DeliverArrived(); }
    // Ends all connections and drops the events under way, for good.
    void Close() noexcept;

private:
    struct Connection {
        ULONG id;
        std::wstring prefix;
        // COM's identity of the object.
        ComPtr<IUnknown> object;
        ComPtr<IConnectionPoint> point;
        // 0 until the object has accepted the sink.
        DWORD cookie;
    };
    using Position = std::vector<Connection>::iterator;

    void OnEvent(ULONG id, const std::wstring& event, DISPPARAMS& arguments) noexcept override;
    Position Find(ULONG id) noexcept;
    void End(Position position) noexcept;

    const Handler handler_;
    const std::shared_ptr<EventQueue> queue_;
    std::vector<Connection> connections_;
    ULONG lastId_ = 0;
};

} // namespace tervane::scripthost
