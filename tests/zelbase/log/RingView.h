#pragma once

// The log ring as a viewer of other make knows it: by its names and by byte offsets, and without
// the library's own declarations.

#include "ZelBase/Handles.h"

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace ZelBase::test {

struct RingRecord {
    std::string component, function, process, thread, text;
    std::uint32_t time, value;
    unsigned level;
};

class RingView {
public:
    static constexpr std::uint32_t kSize = 143216;
    static constexpr std::uint32_t kSlots = 199;
    static constexpr std::uint32_t kRecordSize = 716;

    // Opens what a logger has made; `prefix` is that of the names.
    explicit RingView(const std::string& prefix = "Global\\");

    bool IsOpen() const { return mutex_ && view_; }
    void Lock() { WaitForSingleObject(mutex_.Get(), INFINITE); }
    void Unlock() { ReleaseMutex(mutex_.Get()); }

    // Header fields by offset: 0 size, 4 next slot, 8 counter, 12 slots.
    std::uint32_t& Header(std::size_t offset);
    unsigned char* Slot(std::uint32_t index);

    // As if the newest record had been written then.
    void SetTimeOfNewest(std::tm local);

    // The records of a component that this process wrote, oldest first.
    std::vector<RingRecord> RecordsOf(const std::string& component);

private:
    RingRecord Parse(std::uint32_t index);

    UniqueHandle mutex_;
    UniqueHandle section_;
    UniqueMappedView view_;
};

} // namespace ZelBase::test
