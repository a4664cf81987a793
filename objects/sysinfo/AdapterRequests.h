#pragma once

// The requests of one AdapterInfo: each gathers a list of objects on a thread of its own and leaves
// it in a table, under the request's number, for as long as the owner lives.
//
// No thread holds the owner, because its end is what ends the threads. What both need is here,
// shared between them, and goes with the last of them. At the end each thread gets some time to
// stop by itself; one that is stuck in a driver is killed. Therefore both locks are the kernel's: a
// lock whose holder was killed is had by the next in turn, while any other would stay locked. And
// what is done under them is short, so that a thread is hardly ever killed with one in hand.

#include "ZelBase/Handles.h"
#include "ZelBase/threads/Mutex.h"
#include "platform/ComValues.h"

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace tervane {

// The numbers of adapter requests. A caller chooses its own below 1000; all others are drawn in
// turn for the whole process, so that no two objects' requests are taken for each other.
class RequestIds {
public:
    static constexpr long kFirst = 1001;
    static constexpr long kLast = 2147483000;
    static constexpr long kAfterLast = 1000;

    constexpr explicit RequestIds(long first = kFirst) : next_(first) {}

    // `wanted` if it is from 1 to 999, else the next number. Any thread.
    long Choose(long wanted) {
        if (wanted >= 1 && wanted <= kMostChosen) {
            return wanted;
        }
        long drawn = next_;
        while (!next_.compare_exchange_weak(drawn, drawn == kLast ? kAfterLast : drawn + 1)) {
        }
        return drawn;
    }

private:
    static constexpr long kMostChosen = 999;

    std::atomic<long> next_;
};

class AdapterRequests : public std::enable_shared_from_this<AdapterRequests> {
public:
    // How long locks and, at the end, each thread are waited for.
    static constexpr DWORD kScriptPatienceMs = 10000;
    static constexpr DWORD kThreadsPatienceMs = 5000;
    static constexpr DWORD kThreadPatienceMs = 5000;
    static constexpr DWORD kResultsPatienceMs = 7000;

    // The elements of a list; nothing when it cannot be had. Runs on the request's thread and
    // should return soon once `stop` is set. May throw.
    using Gather =
        std::function<std::optional<std::vector<Variant>>(const std::atomic<bool>& stop)>;
    // Told on the request's thread, under a lock, that there is an outcome: it must neither wait
    // nor call back nor throw.
    using Report = std::function<void(long id, bool gathered)>;
    struct Outcome {
        long id = 0;
        bool isGathered = false;
    };

    enum class Found { kYes, kNo, kLocked, kNoMemory };

    // Use std::make_shared. `report` is called after the list of a request has come into the table,
    // or could not for lack of memory; never after Close.
    explicit AdapterRequests(Report report);
    AdapterRequests(const AdapterRequests&) = delete;
    AdapterRequests& operator=(const AdapterRequests&) = delete;

    // Starts a thread for the request. A number that is in use or has been used is no error: the
    // list that is gathered last stays. False when no thread can be had. Throws std::bad_alloc.
    bool Start(long id, Gather gather);

    // A copy of the array of a request: its objects get one more reference each. A request whose
    // list could not be gathered has an empty one.
    Found Find(long id, Variant& copy);

    // The outcomes, one by one, in the order in which they were reported; nothing when there is
    // none. Whoever was told by a message that anybody may send looks here whether it is true.
    std::optional<Outcome> TakeOutcome();

    // For the owner's end: no report comes any more, all threads end or are killed, and all lists
    // are released. Not on a request's thread.
    void Close();

private:
    struct Request;

    static DWORD WINAPI Run(void* argument) noexcept;

    void Finish(Request& request, std::optional<std::vector<Variant>> gathered) noexcept;
    bool Store(long id, std::optional<Variant> list, Variant& replaced) noexcept
        ZELBASE_REQUIRES(resultsMutex_);
    void ForgetEndedThreads() ZELBASE_REQUIRES(threadsMutex_);
    void EndThreads();

    const std::unique_ptr<ZelBase::Mutex> resultsMutex_;
    const std::unique_ptr<ZelBase::Mutex> threadsMutex_;
    std::atomic<bool> closing_ = false;
    Report report_ ZELBASE_GUARDED_BY(resultsMutex_);
    std::unordered_map<long, Variant> results_ ZELBASE_GUARDED_BY(resultsMutex_);
    std::list<Outcome> outcomes_ ZELBASE_GUARDED_BY(resultsMutex_);
    std::vector<ZelBase::UniqueHandle> threads_ ZELBASE_GUARDED_BY(threadsMutex_);
};

} // namespace tervane
