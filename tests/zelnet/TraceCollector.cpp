#include "tests/zelnet/TraceCollector.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ZelNet {
namespace {

constexpr DWORD kLookMs = 2;

// "*" takes everything but blanks.
bool Matches(const char* pattern, const char* text) {
    if (*pattern != '*') {
        return *pattern == *text && (*text == 0 || Matches(pattern + 1, text + 1));
    }
    for (; *text != 0 && *text != ' '; ++text) {
        if (Matches(pattern + 1, text + 1)) {
            return true;
        }
    }
    return false;
}

std::unique_ptr<ZelBase::LogRing> OpenRing() {
    std::unique_ptr<ZelBase::LogRing> ring;
    ZelBase::LogRing::OpenShared(INFINITE, ring);
    return ring;
}

} // namespace

TraceCollector::TraceCollector() : ring_(OpenRing()), seen_(ring_->Section().written) {
    thread_ = tervane::test::TestThread([this] {
        while (!ending_) {
            Collect();
            Sleep(kLookMs);
        }
    });
}

TraceCollector::~TraceCollector() {
    ending_ = true;
    thread_.join();
}

void TraceCollector::Collect() {
    char process[sizeof ZelBase::LogRecord::process];
    std::snprintf(process, sizeof process, "0x%lx", GetCurrentProcessId());
    const std::lock_guard lock(mutex_);
    WaitForSingleObject(ring_->Mutex(), INFINITE);
    const ZelBase::LogSection& section = ring_->Section();
    const std::uint32_t count = std::min(section.written - seen_, section.slotCount);
    for (std::uint32_t back = count; back > 0; --back) {
        const auto slot = (section.nextSlot + section.slotCount - back) % section.slotCount;
        const ZelBase::LogRecord& record = section.records[slot];
        if (record.process == std::string(process)) {
            records_.insert(std::string(record.component) + "|" + record.function + "|" +
                            std::to_string(record.level) + "|" + record.text);
        }
    }
    seen_ = section.written;
    ReleaseMutex(ring_->Mutex());
}

bool TraceCollector::Has(const std::string& pattern, int patienceMs) {
    const auto isIt = [&](const std::string& record) {
        return Matches(pattern.c_str(), record.c_str());
    };
    for (int waited = 0; waited <= patienceMs; waited += 20) {
        {
            const std::lock_guard lock(mutex_);
            if (std::any_of(records_.begin(), records_.end(), isIt)) {
                return true;
            }
        }
        Sleep(20);
    }
    return false;
}

} // namespace ZelNet
