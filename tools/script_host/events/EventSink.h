#pragma once

// What a source calls when it fires: one object per connection. It is free of apartments - any
// thread may call it and any thread may release it last - because all it holds are names and the
// shared queue. On the script's own thread it calls the handler at once; from elsewhere it copies
// the arguments into the queue and returns without waiting.

#include "tools/script_host/ComBase.h"
#include "tools/script_host/events/EventInterface.h"
#include "tools/script_host/events/EventQueue.h"

#include <memory>

namespace tervane::scripthost {

class EventSink : public ComBase<IDispatch> {
public:
    EventSink(std::shared_ptr<EventQueue> queue, ULONG connection, EventInterface events)
        : queue_(std::move(queue)), connection_(connection), events_(std::move(events)) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override;
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override;
    // S_OK once the event is queued or handled; what the handler does is not told to the source.
    // E_OUTOFMEMORY if too many events wait.
    STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO*, UINT*) override;

private:
    const std::shared_ptr<EventQueue> queue_;
    const ULONG connection_;
    const EventInterface events_;
};

} // namespace tervane::scripthost
