#pragma once

// One script's life, at random: objects of all classes in an apartment of their own, any of their
// members with any arguments, objects dropped while they are busy, and messages that nobody sent.

#include "support/Classes.h"
#include "support/LoopbackServer.h"
#include "support/TestComponent.h"

#include <atomic>
#include <random>
#include <string>
#include <vector>

namespace tervane::test {

// A sink that lives as long as its object, and so can tell whether the object has fired all the
// events that its calls promised. It releases its object inside the first event if it is asked to.
class CountingSink final : public RecordingSink {
public:
    // Over all sinks, from any thread.
    static inline std::atomic<long> living = 0;
    static inline std::atomic<long> received = 0; // events
    static inline std::atomic<long> lost = 0;     // promised to a sink that has gone

    // With one reference, the caller's. `endsSilently` is for classes whose end ends what runs,
    // without an event; `progress` is an event that none is promised of, 0 when there is none such.
    CountingSink(bool endsSilently, DISPID progress)
        : endsSilently_(endsSilently), progress_(progress) {
        ++living;
    }

    // A call is about to promise an event, or has not done so after all.
    void Promise() { ++promised_; }
    void TakeBack() { --promised_; }
    bool IsOwed() const { return received_ < promised_; }
    // Takes over a reference, and gives it up inside the next event; at once if none is owed.
    void ReleaseInEvent(IDispatch* object) {
        object_ = object;
        if (!IsOwed()) { // the event may have come meanwhile
            ReleaseObject();
        }
    }

    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*,
                                     EXCEPINFO*, UINT*) override {
        if (event != progress_) {
            ++received_;
            ++received;
            ReleaseObject();
        }
        return S_OK;
    }

private:
    ~CountingSink() override {
        lost += endsSilently_ ? 0 : promised_ - received_;
        --living;
    }
    void ReleaseObject() {
        if (IDispatch* object = object_.exchange(nullptr)) {
            object->Release();
        }
    }

    const bool endsSilently_;
    const DISPID progress_;
    std::atomic<ULONG> references_ = 1;
    std::atomic<long> promised_ = 0;
    std::atomic<long> received_ = 0;
    std::atomic<IDispatch*> object_ = nullptr;
};

class RandomCalls {
public:
    RandomCalls(unsigned seed, const LoopbackServer& server) : random_(seed), server_(server) {}

    // On a thread of its own, for so long; then waits for the events that are owed and drops
    // everything. False when events stay out.
    bool Run(DWORD milliseconds);
    long Calls() const { return calls_; }

private:
    struct Entry {
        const ClassFacts* type;
        ComPtr<IDispatch> object;
        CountingSink* sink; // null when the class has no events; else one reference is ours
    };

    unsigned Below(unsigned limit) { return random_() % limit; }
    void Step();
    void Make();
    void CallAnyMember(Entry& entry);
    void Invoke(Entry& entry, const FUNCDESC& function, const std::wstring& name);
    Argument AnyValue(VARTYPE type, const std::wstring& member);
    void Drop(std::size_t index);
    void EndWaits(Entry& entry);
    bool Drain();

    std::mt19937 random_;
    const LoopbackServer& server_;
    std::vector<Entry> entries_;
    std::vector<Entry> dropped_; // without their objects, but with what tells of their events
    long calls_ = 0;
};

} // namespace tervane::test
