#pragma once

// One sink that was advised, and how an event gets to it.
//
// Events are fired on whatever thread an operation ends on, and the sink is called there. Script
// engines take calls on their own thread only and refuse all others, with RPC_E_WRONG_THREAD or
// E_UNEXPECTED: deliberately, an event refused with one of these two is delivered once more on the
// thread that advised the sink. Any other answer is ignored, and so is every answer of that thread
// itself. While an event waits for that thread, or is being taken there, later ones for the same
// sink queue behind it, so that they come in their order.

#include "component/ModuleState.h"
#include "platform/ComValues.h"

#include <array>
#include <atomic>
#include <memory>

namespace tervane {

class AdvisingThread;

// No event has more arguments.
inline constexpr UINT kMostEventArguments = 8;

// Counts its references as an interface does, to be held by ComPtr.
class AdvisedSink {
public:
    // On the thread that advises; null when memory is exhausted.
    static ComPtr<AdvisedSink> Create(ComPtr<IDispatch> sink) noexcept;
    AdvisedSink(const AdvisedSink&) = delete;
    AdvisedSink& operator=(const AdvisedSink&) = delete;

    ULONG AddRef() noexcept { return ++references_; }
    ULONG Release() noexcept;

    IDispatch* Interface() const noexcept { return sink_.Get(); }

    // Calls the sink on this thread and returns its answer, or, if earlier events wait for its own
    // thread, puts this one behind them: S_OK. E_UNEXPECTED for a sink that throws. `parameters`
    // are copied where they are kept. Any thread.
    HRESULT Deliver(DISPID event, DISPPARAMS& parameters) noexcept;

    // Drops the events that wait, and lets no more of them wait. Any thread.
    void Unadvise() noexcept;

private:
    friend class PendingEvent;

    explicit AdvisedSink(ComPtr<IDispatch> sink);
    ~AdvisedSink() = default;

    bool DeliverLater(DISPID event, const DISPPARAMS& parameters) noexcept;

    std::atomic<ULONG> references_ = 1;
    const ComPtr<IDispatch> sink_;
    // Null where no window could be made: then refused events are lost.
    const std::shared_ptr<AdvisingThread> thread_;
    // Events that wait for that thread, or are being delivered there.
    std::atomic<LONG> waiting_ = 0;
    std::atomic<bool> isUnadvised_ = false;
};

// An event on its way to its sink's own thread. It holds the sink and the library: the object that
// fired it may be gone before it comes.
class PendingEvent {
public:
    // Copies the arguments; check the result with IsValid.
    PendingEvent(AdvisedSink& sink, DISPID event, const DISPPARAMS& parameters) noexcept;
    ~PendingEvent() { --sink_->waiting_; }
    PendingEvent(const PendingEvent&) = delete;
    PendingEvent& operator=(const PendingEvent&) = delete;

    // False when memory ran out.
    bool IsValid() const noexcept { return isValid_; }
    bool IsFor(const AdvisedSink& sink) const noexcept { return sink_.Get() == &sink; }

    // Calls the sink, if it is still advised.
    void Deliver() const noexcept;

private:
    // First member, last to go.
    ModuleLock module_;
    ComPtr<AdvisedSink> sink_;
    DISPID event_;
    // As in DISPPARAMS, the last one first.
    std::array<Variant, kMostEventArguments> arguments_;
    UINT count_ = 0;
    bool isValid_ = true;
};

} // namespace tervane
