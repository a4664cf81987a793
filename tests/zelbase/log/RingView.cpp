#include "tests/zelbase/log/RingView.h"

#include <cstring>

namespace ZelBase::test {
namespace {

// A text field that must end within its size.
std::string Field(const unsigned char* field, std::size_t size) {
    const void* end = std::memchr(field, 0, size);
    return end ? std::string(reinterpret_cast<const char*>(field)) : "field without end";
}

} // namespace

RingView::RingView(const std::string& prefix)
    : mutex_(OpenMutexA(SYNCHRONIZE, FALSE, (prefix + "ZelKit::WIN32_Logger::Mutex2").c_str())),
      section_(OpenFileMappingA(FILE_MAP_WRITE, FALSE,
                                (prefix + "ZelKit::WIN32_Logger::Mapping2").c_str())),
      view_(MapViewOfFile(section_.Get(), FILE_MAP_WRITE, 0, 0, kSize)) {}

std::uint32_t& RingView::Header(std::size_t offset) {
    return *reinterpret_cast<std::uint32_t*>(static_cast<char*>(view_.Get()) + offset);
}

unsigned char* RingView::Slot(std::uint32_t index) {
    return static_cast<unsigned char*>(view_.Get()) + 16 + index * kRecordSize;
}

void RingView::SetTimeOfNewest(std::tm local) {
    const auto time = static_cast<std::uint32_t>(std::mktime(&local));
    Lock();
    std::memcpy(Slot((Header(4) + kSlots - 1) % kSlots) + 128, &time, sizeof time);
    Unlock();
}

std::vector<RingRecord> RingView::RecordsOf(const std::string& component) {
    char process[32];
    std::snprintf(process, sizeof process, "0x%lx", GetCurrentProcessId());
    std::vector<RingRecord> records;
    Lock();
    for (std::uint32_t i = 0; i < kSlots; ++i) {
        RingRecord record = Parse((Header(4) + i) % kSlots);
        if (record.component == component && record.process == process) {
            records.push_back(std::move(record));
        }
    }
    Unlock();
    return records;
}

RingRecord RingView::Parse(std::uint32_t index) {
    const unsigned char* slot = Slot(index);
    RingRecord record = {};
    record.component = Field(slot, 64);
    record.function = Field(slot + 64, 64);
    std::memcpy(&record.time, slot + 128, 4);
    std::memcpy(&record.value, slot + 132, 4);
    record.level = slot[136];
    record.process = Field(slot + 137, 32);
    record.thread = Field(slot + 169, 32);
    record.text = Field(slot + 201, 512);
    return record;
}

} // namespace ZelBase::test
