#include "objects/sysinfo/AdapterRequests.h"

#include "ZelBase/threads/ModulePin.h"
#include "ZelBase/threads/Mutex.h"
#include "component/ComEdge.h"
#include "platform/text/MatchingLock.h"

#include <objbase.h>

#include <utility>

namespace tervane {

using ZelBase::TimedMutexLock;

struct AdapterRequests::Request {
    std::shared_ptr<AdapterRequests> owner;
    long id;
    Gather gather;
    // Made in advance: the end of a request must be told whatever happens.
    std::list<Outcome> outcome;
};

AdapterRequests::AdapterRequests(Report report)
    : resultsMutex_(ZelBase::Mutex::Create()), threadsMutex_(ZelBase::Mutex::Create()),
      report_(std::move(report)) {}

bool AdapterRequests::Start(long id, Gather gather) {
    auto request = std::make_unique<Request>(
        Request{shared_from_this(), id, std::move(gather), std::list<Outcome>(1)});
    const TimedMutexLock lock(threadsMutex_.get(), kScriptPatienceMs);
    if (!lock) {
        return false;
    }
    ForgetEndedThreads();
    ZelBase::UniqueHandle& thread = threads_.emplace_back();
    thread = ZelBase::ModulePin::StartThread(&AdapterRequests::Run, request.get());
    if (!thread) {
        threads_.pop_back();
        return false;
    }
    static_cast<void>(request.release()); // the thread's now
    return true;
}

// A page that asks every second must not pile up handles for as long as it is open.
void AdapterRequests::ForgetEndedThreads() {
    std::erase_if(threads_, [](const ZelBase::UniqueHandle& thread) {
        return WaitForSingleObject(thread.Get(), 0) == WAIT_OBJECT_0;
    });
}

DWORD WINAPI AdapterRequests::Run(void* argument) noexcept {
    const std::unique_ptr<Request> request(static_cast<Request*>(argument));
    const bool initialized = SUCCEEDED(CoInitialize(nullptr));
    auto gathered =
        Contained([&] { return request->gather(request->owner->closing_); }, std::nullopt);
    request->gather = nullptr;
    request->owner->Finish(*request, std::move(gathered));
    if (initialized) {
        CoUninitialize();
    }
    return 0;
}

void AdapterRequests::Finish(Request& request,
                             std::optional<std::vector<Variant>> gathered) noexcept {
    const bool isGathered = gathered.has_value();
    auto list = MakeArray(isGathered ? std::move(*gathered) : std::vector<Variant>());
    Variant replaced; // released after the lock
    const TimedMutexLock lock(resultsMutex_.get(), INFINITE);
    if (!lock || closing_) {
        return;
    }
    Outcome& outcome = request.outcome.front();
    outcome = {request.id, Store(request.id, std::move(list), replaced) && isGathered};
    outcomes_.splice(outcomes_.end(), request.outcome);
    report_(outcome.id, outcome.isGathered);
}

// False when memory is exhausted; then the table has no list of that number.
bool AdapterRequests::Store(long id, std::optional<Variant> list, Variant& replaced) noexcept {
    const auto before = results_.find(id);
    if (before != results_.end()) {
        replaced = std::move(before->second);
        results_.erase(before);
    }
    try {
        return list && results_.emplace(id, std::move(*list)).second;
    } catch (...) {
        return false;
    }
}

std::optional<AdapterRequests::Outcome> AdapterRequests::TakeOutcome() {
    const TimedMutexLock lock(resultsMutex_.get(), kScriptPatienceMs);
    if (!lock || outcomes_.empty()) {
        return std::nullopt;
    }
    const Outcome outcome = outcomes_.front();
    outcomes_.pop_front();
    return outcome;
}

AdapterRequests::Found AdapterRequests::Find(long id, Variant& copy) {
    const TimedMutexLock lock(resultsMutex_.get(), kScriptPatienceMs);
    if (!lock) {
        return Found::kLocked;
    }
    const auto found = results_.find(id);
    if (found == results_.end()) {
        return Found::kNo;
    }
    auto copied = Variant::CopyOf(found->second.Get());
    if (!copied) {
        return Found::kNoMemory;
    }
    copy = std::move(*copied);
    return Found::kYes;
}

void AdapterRequests::Close() {
    closing_ = true;
    EndThreads();
    std::unordered_map<long, Variant> released;
    const TimedMutexLock lock(resultsMutex_.get(), kResultsPatienceMs);
    if (lock) {
        report_ = nullptr;
        released.swap(results_);
    }
}

void AdapterRequests::EndThreads() {
    const TimedMutexLock lock(threadsMutex_.get(), kThreadsPatienceMs);
    if (!lock) {
        return;
    }
    for (const ZelBase::UniqueHandle& thread : threads_) {
        if (WaitForSingleObject(thread.Get(), kThreadPatienceMs) == WAIT_TIMEOUT) {
            ThreadKiller().Kill(thread.Get());
        }
    }
    threads_.clear();
}

} // namespace tervane
