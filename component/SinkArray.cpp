#include "component/SinkArray.h"

#include <bit>
#include <memory>
#include <new>

namespace tervane {

SinkArray::~SinkArray() {
    ReleaseRetired();
    for (DWORD i = 0; i < Size(); ++i) {
        ComPtr<AdvisedSink>(Find(i)->sink.load()).Reset();
    }
    for (auto& segment : segments_) {
        delete[] segment.load();
    }
}

SinkArray::Slot* SinkArray::Find(DWORD index) noexcept {
    // Slots before segment n: kFirstSegment * (2^n - 1).
    const DWORD segment = std::bit_width((index / kFirstSegment + 1) / 2);
    const DWORD before = kFirstSegment * ((1u << segment) - 1);
    return segments_[segment].load(std::memory_order_acquire) + (index - before);
}

// The first free slot, made if need be; null when memory or segments run out. Under writers_.
SinkArray::Slot* SinkArray::FindFree(DWORD& index) noexcept {
    const DWORD size = Size();
    for (index = 0; index < size; ++index) {
        if (Slot* slot = Find(index); !slot->sink.load()) {
            return slot;
        }
    }
    const DWORD segment = std::bit_width((index / kFirstSegment + 1) / 2);
    if (segment >= kSegments) {
        return nullptr;
    }
    if (!segments_[segment].load()) {
        Slot* slots = new (std::nothrow) Slot[kFirstSegment << segment];
        if (!slots) {
            return nullptr;
        }
        segments_[segment].store(slots, std::memory_order_release);
    }
    return Find(index);
}

DWORD SinkArray::Add(ComPtr<IDispatch> sink) noexcept {
    std::unique_ptr<Retired> entry(new (std::nothrow) Retired);
    ComPtr<AdvisedSink> advised = AdvisedSink::Create(std::move(sink));
    if (!entry || !advised) {
        return 0;
    }
    const ZelBase::CriticalSectionLock lock(writers_);
    DWORD index = 0;
    Slot* slot = FindFree(index);
    if (!slot) {
        return 0;
    }
    slot->entry = std::move(entry);
    slot->sink.store(advised.Release());
    if (index == Size()) {
        size_.store(index + 1, std::memory_order_release);
    }
    return index + 1;
}

bool SinkArray::Remove(DWORD cookie) noexcept {
    std::unique_ptr<Retired> entry;
    {
        const ZelBase::CriticalSectionLock lock(writers_);
        if (cookie == 0 || cookie > Size()) {
            return false;
        }
        Slot* slot = Find(cookie - 1);
        AdvisedSink* sink = slot->sink.exchange(nullptr);
        if (!sink) {
            return false;
        }
        entry = std::move(slot->entry);
        entry->sink.Reset(sink);
    }
    entry->sink->Unadvise();
    PushRetired(entry.release());
    ReleaseRetired();
    return true;
}

ComPtr<AdvisedSink> SinkArray::At(DWORD index) noexcept {
    ++readers_;
    ComPtr<AdvisedSink> sink = AddReference(Find(index)->sink.load());
    --readers_;
    ReleaseRetired();
    return sink;
}

void SinkArray::PushRetired(Retired* first) noexcept {
    while (first) {
        Retired* rest = first->next;
        first->next = retired_.load();
        while (!retired_.compare_exchange_weak(first->next, first)) {
        }
        first = rest;
    }
}

// Whoever takes the list owns it. What is on it was out of its slot before it came there, so once
// no reader is seen after the taking, nobody can still be about to use it.
void SinkArray::ReleaseRetired() noexcept {
    while (retired_.load() && readers_.load() == 0) {
        Retired* list = retired_.exchange(nullptr);
        if (readers_.load() != 0) {
            PushRetired(list);
            continue;
        }
        while (list) {
            const std::unique_ptr<Retired> done(list);
            list = done->next;
        }
    }
}

} // namespace tervane
