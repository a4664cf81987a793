#include "component/AdvisedSink.h"

#include "component/AdvisingThread.h"
#include "component/ComEdge.h"

#include <optional>

namespace tervane {
namespace {

// Nothing when the sink throws: that is no answer.
std::optional<HRESULT> Call(IDispatch& sink, DISPID event, DISPPARAMS& parameters) noexcept {
    return Contained(
        [&]() -> std::optional<HRESULT> {
            Variant result;
            return sink.Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                               result.Put(), nullptr, nullptr);
        },
        std::nullopt);
}

bool RefusesThread(HRESULT answer) noexcept {
    return answer == RPC_E_WRONG_THREAD || answer == E_UNEXPECTED;
}

} // namespace

AdvisedSink::AdvisedSink(ComPtr<IDispatch> sink)
    : sink_(std::move(sink)), thread_(AdvisingThread::Current()) {}

ComPtr<AdvisedSink> AdvisedSink::Create(ComPtr<IDispatch> sink) noexcept {
    try {
        return ComPtr<AdvisedSink>(new AdvisedSink(std::move(sink)));
    } catch (const std::bad_alloc&) {
        return {};
    }
}

ULONG AdvisedSink::Release() noexcept {
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT AdvisedSink::Deliver(DISPID event, DISPPARAMS& parameters) noexcept {
    if (waiting_ != 0 && DeliverLater(event, parameters)) {
        return S_OK;
    }
    const std::optional<HRESULT> answer = Call(*sink_.Get(), event, parameters);
    if (answer && RefusesThread(*answer) && thread_ && !thread_->IsCurrent()) {
        DeliverLater(event, parameters);
    }
    return answer.value_or(E_UNEXPECTED);
}

bool AdvisedSink::DeliverLater(DISPID event, const DISPPARAMS& parameters) noexcept {
    const bool isQueued = !isUnadvised_ && thread_->Queue(*this, event, parameters);
    if (isUnadvised_) {
        thread_->Forget(*this); // unadvised meanwhile, perhaps before this one was there
    }
    return isQueued;
}

void AdvisedSink::Unadvise() noexcept {
    isUnadvised_ = true;
    if (thread_) {
        thread_->Forget(*this);
    }
}

PendingEvent::PendingEvent(AdvisedSink& sink, DISPID event, const DISPPARAMS& parameters) noexcept
    : sink_(AddReference(&sink)), event_(event) {
    ++sink.waiting_;
    for (UINT i = 0; i < parameters.cArgs && isValid_; ++i) {
        std::optional<Variant> copy = Variant::CopyOf(parameters.rgvarg[i]);
        isValid_ = copy.has_value();
        if (copy) {
            arguments_[count_++] = std::move(*copy);
        }
    }
}

void PendingEvent::Deliver() const noexcept {
    if (sink_->isUnadvised_) {
        return;
    }
    VARIANT arguments[kMostEventArguments];
    for (UINT i = 0; i < count_; ++i) {
        arguments[i] = arguments_[i].Get(); // still owned here
    }
    DISPPARAMS parameters = {arguments, nullptr, count_, 0};
    Call(*sink_->Interface(), event_, parameters);
}

} // namespace tervane
