#include "objects/sysinfo/AdapterRequests.h"

#include "ZelBase/ModulePin.h"
#include "ZelBase/TimedMutexLock.h"

#include <utility>

#include <objbase.h>

namespace tervane {

using ZelBase::TimedMutexLock;

struct AdapterRequests::Request {
    std::shared_ptr<AdapterRequests> owner;
    long id;
    Gather gather;
};

AdapterRequests::AdapterRequests(Report report)
    : resultsMutex_(ZelBase::Mutex::Create()), threadsMutex_(ZelBase::Mutex::Create()),
      report_(std::move(report)) {}

bool AdapterRequests::Start(long id, Gather gather) {
    auto request = std::make_unique<Request>(Request{shared_from_this(), id, std::move(gather)});
    const TimedMutexLock lock(threadsMutex_.get(), kScriptPatience);
    if (!lock) {
        return false;
    }
    ForgetEndedThreads();
    ZelBase::UniqueHandle& thread = threads_.emplace_back();
    // Suspended, so that no thread runs that the list does not know.
    thread = ZelBase::ModulePin::StartThread(&AdapterRequests::Run, request.get(),
                                             ZelBase::ModulePin::Start::kSuspended);
    if (!thread) {
        threads_.pop_back();
        return false;
    }
    static_cast<void>(request.release()); // the thread's now
    ResumeThread(thread.Get());
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
    std::optional<std::vector<Variant>> gathered;
    try {
        gathered = request->gather(request->owner->closing_);
    } catch (...) {
        gathered = std::nullopt; // as when the list cannot be had
    }
    request->gather = nullptr;
    request->owner->Finish(request->id, std::move(gathered));
    if (initialized) {
        CoUninitialize();
    }
    return 0;
}

void AdapterRequests::Finish(long id, std::optional<std::vector<Variant>> gathered) noexcept {
    try {
        const bool succeeded = gathered.has_value();
        std::optional<Variant> list =
            MakeArray(succeeded ? std::move(*gathered) : std::vector<Variant>());
        Variant replaced; // released after the lock
        const TimedMutexLock lock(resultsMutex_.get(), INFINITE);
        if (!lock || closing_ || !list) {
            return;
        }
        replaced = std::exchange(results_[id], std::move(*list));
        report_(id, succeeded);
    } catch (...) {
        // Out of memory for the last thing to say: the script finds no result.
    }
}

AdapterRequests::Found AdapterRequests::Find(long id, Variant& copy) {
    const TimedMutexLock lock(resultsMutex_.get(), kScriptPatience);
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
    const TimedMutexLock lock(resultsMutex_.get(), kResultsPatience);
    if (lock) {
        report_ = nullptr;
        released.swap(results_);
    }
}

void AdapterRequests::EndThreads() {
    const TimedMutexLock lock(threadsMutex_.get(), kThreadsPatience);
    if (!lock) {
        return;
    }
    for (const ZelBase::UniqueHandle& thread : threads_) {
        if (WaitForSingleObject(thread.Get(), kThreadPatience) == WAIT_TIMEOUT) {
            TerminateThread(thread.Get(), 1);
        }
    }
    threads_.clear();
}

} // namespace tervane
