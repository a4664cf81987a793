#pragma once

// One script's life, at random: objects of all classes in an apartment of their own, any of their
// members with any arguments, objects dropped while they are busy, and messages that nobody sent.

#include "soak/CountingSink.h"
#include "support/Classes.h"
#include "support/LoopbackServer.h"
#include "support/TestComponent.h"

#include <random>
#include <string>
#include <vector>

namespace tervane::test {

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
    void Prepare(IDispatch* object, REFCLSID type);
    void CallAnyMember(Entry& entry);
    void Invoke(Entry& entry, const FUNCDESC& function, const std::wstring& name);
    Variant AnyValue(VARTYPE type, const std::wstring& member);
    void Drop(size_t index);
    void PostStrayMessages();
    void EndWaits(Entry& entry);
    bool Drain();

    std::mt19937 random_;
    const LoopbackServer& server_;
    std::vector<Entry> entries_;
    std::vector<Entry> dropped_; // without their objects, but with what tells of their events
    long calls_ = 0;
};

} // namespace tervane::test
