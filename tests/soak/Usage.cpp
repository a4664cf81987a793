#include "soak/Usage.h"

#include "ZelBase/Handles.h"
#include "support/HandleCount.h"
#include "support/MemoryUse.h"

#include <algorithm>

#include <tlhelp32.h>

namespace tervane::test {
namespace {

constexpr size_t kFewestRounds = 8;

size_t CountThreads() {
    const ZelBase::UniqueHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    size_t count = 0;
    for (BOOL more = Thread32First(snapshot.Get(), &entry); more;
         more = Thread32Next(snapshot.Get(), &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId();
    }
    return count;
}

// Nobody tells how many are used, so all that are left are taken for a moment.
size_t CountTlsSlots() {
    constexpr size_t kSlots = 1088;
    std::vector<DWORD> left;
    for (DWORD slot; (slot = TlsAlloc()) != TLS_OUT_OF_INDEXES;) {
        left.push_back(slot);
    }
    for (const DWORD slot : left) {
        TlsFree(slot);
    }
    return kSlots - left.size();
}

size_t MedianOf(std::vector<Usage> part, size_t Usage::*figure) {
    const auto middle = part.begin() + static_cast<std::ptrdiff_t>(part.size() / 2);
    std::nth_element(part.begin(), middle, part.end(),
                     [figure](const Usage& a, const Usage& b) { return a.*figure < b.*figure; });
    return (*middle).*figure;
}

} // namespace

Usage Usage::Now() {
    return {OpenHandleCount(), CountThreads(), MemoryInUse().committed / 1024, CountTlsSlots()};
}

std::string UsageSeries::Growth() const {
    struct Figure {
        const char* name;
        size_t Usage::*value;
        size_t tolerance;
    };
    constexpr Figure kFigures[] = {{"handles", &Usage::handles, 8},
                                   {"threads", &Usage::threads, 2},
                                   {"private KB", &Usage::privateKb, 2048},
                                   {"TLS slots", &Usage::tlsSlots, 0}};
    const auto quarter = static_cast<std::ptrdiff_t>(all_.size() / 4);
    std::string grown;
    for (const Figure& figure : kFigures) {
        if (all_.size() < kFewestRounds) {
            break;
        }
        const size_t before =
            MedianOf({all_.begin() + quarter, all_.begin() + 2 * quarter}, figure.value);
        const size_t after = MedianOf({all_.end() - quarter, all_.end()}, figure.value);
        if (after > before + figure.tolerance) {
            grown += std::string(figure.name) + " " + std::to_string(before) + " -> " +
                     std::to_string(after) + "; ";
        }
    }
    return grown;
}

} // namespace tervane::test
