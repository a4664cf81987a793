#pragma once

// The sinks of one connection point. Events are fired from worker threads while the script's thread
// advises and unadvises, and reading takes no lock; two things make that safe:
//
// - Slots never move. The array grows by whole segments that stay until the end, so a reader's slot
//   is always there.
// - A sink that is taken out is released only when no reader is between loading its pointer and
//   adding a reference to it. Until then it waits on a list, which the last such reader empties.
//
// An unadvised slot holds null and is used again by the next Advise.

#include "ZelBase/threads/CriticalSection.h"
#include "component/AdvisedSink.h"

#include <array>
#include <atomic>
#include <memory>

namespace tervane {

class SinkArray {
public:
    SinkArray() = default;
    // Releases the sinks that are still advised. No other thread may use the array any more.
    ~SinkArray();
    SinkArray(const SinkArray&) = delete;
    SinkArray& operator=(const SinkArray&) = delete;

    // Stores the sink and returns its cookie, never 0; 0 when memory is exhausted. On the thread
    // that advises, see AdvisedSink.
    DWORD Add(ComPtr<IDispatch> sink) noexcept;
    // Empties the cookie's slot and drops the events that wait for its sink; false when no sink has
    // that cookie. Any thread.
    bool Remove(DWORD cookie) noexcept;

    // Number of slots in use or once used. Any thread, without a lock.
    DWORD Size() const noexcept { return size_.load(std::memory_order_acquire); }
    // The sink in slot `index` (below Size()), with a reference; null when it was unadvised.
    // Any thread, without a lock.
    ComPtr<AdvisedSink> At(DWORD index) noexcept;

private:
    struct Retired {
        ComPtr<AdvisedSink> sink;
        Retired* next = nullptr;
    };
    struct Slot {
        std::atomic<AdvisedSink*> sink = nullptr;
        // The list entry that will carry the sink when it is taken out: removal cannot run out of
        // memory.
        std::unique_ptr<Retired> entry;
    };

    // Segment n holds kFirstSegment << n slots.
    static constexpr DWORD kFirstSegment = 4;
    static constexpr DWORD kSegments = 24;

    Slot* Find(DWORD index) noexcept;
    Slot* FindFree(DWORD& index) noexcept;
    void ReleaseRetired() noexcept;
    void PushRetired(Retired* first) noexcept;

    ZelBase::CriticalSection writers_;
    std::array<std::atomic<Slot*>, kSegments> segments_ = {};
    std::atomic<DWORD> size_ = 0;
    std::atomic<LONG> readers_ = 0;
    std::atomic<Retired*> retired_ = nullptr;
};

} // namespace tervane
