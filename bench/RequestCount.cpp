#include "bench/RequestCount.h"

#include "ZelBase/Handles.h"

#include <cstdio>

namespace bench {
namespace {

// What is still done when the end of the work has been told.
constexpr DWORD kAftermathMs = 1000;

// The only trace that a request for a name leaves is its entry, whether there is the name or not.
void Mark(const std::string& text) {
    Sleep(kAftermathMs);
    const ZelBase::UniqueHandle none(
        OpenMutexA(SYNCHRONIZE, FALSE, ("TervaneBench|" + text).c_str()));
}

} // namespace

void MarkRequests(const Counted& work) {
    char numbers[100];
    std::snprintf(numbers, sizeof numbers, "|%s|%zu|%g|%g|", work.isTheirs ? "theirs" : "ours",
                  work.units, work.most, work.mostRings);
    Mark(work.what + numbers);
}

void MarkEndOfRequests() {
    Mark("");
}

} // namespace bench
