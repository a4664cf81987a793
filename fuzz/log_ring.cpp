// Sources: tools/log_viewer/RingCursor.cpp tools/log_viewer/RecordFilter.cpp
// Sources: tools/log_viewer/RecordText.cpp
//
// A log ring in which any process may have written anything: four bytes by which its counter
// advances, its header, and bytes that are repeated over all of its records. The viewer reads
// nothing outside of it, and what it shows of each record is one line that drives no terminal.

#include "fuzz/require.h"
#include "tools/log_viewer/RecordFilter.h"
#include "tools/log_viewer/RecordText.h"
#include "tools/log_viewer/RingCursor.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

using namespace ZelBase;

// Outside of texts there are but names, numbers and signs; within, six bytes for what is no letter.
void CheckJson(const std::string& json) {
    bool isInText = false;
    for (std::size_t i = 0; i < json.size(); ++i) {
        Require(json[i] >= 0x20 && json[i] < 0x7F);
        if (json[i] == '"') {
            isInText = !isInText;
        } else if (json[i] == '\\') {
            Require(isInText && json[i + 1] == 'u' &&
                    json.find_first_not_of("0123456789abcdef", i + 2) >= i + 6);
        } else {
            Require(isInText || std::strchr("{}:,0123456789", json[i]) != nullptr);
        }
    }
    Require(!isInText && json.starts_with('{') && json.ends_with('}'));
}

void Show(const LogBatch& batch) {
    Require(batch.records.size() <= kLogSlotCount);
    Require(batch.missed == 0 || batch.records.size() == kLogSlotCount);
    // A few of them: they repeat themselves.
    for (std::size_t i = 0; i < batch.records.size(); i += 50) {
        const LogRecord& record = batch.records[i];
        const std::string line = RecordLine(record, "now");
        Require(std::count(line.begin(), line.end(), '\t') == 7);
        Require(std::none_of(line.begin(), line.end(),
                             [](unsigned char c) { return (c < 0x20 && c != '\t') || c == 0x7F; }));
        CheckJson(RecordJson(record, "now", [](std::string_view text) {
            return std::wstring(text.begin(), text.end());
        }));
        RecordFilter filter;
        filter.texts = {"", std::string(FieldText(record.text))};
        filter.components = {std::string(FieldText(record.component))};
        Require(filter.IsWanted(record));
        filter.highestLevel = record.level - 1U;
        Require(record.level == 0 || !filter.IsWanted(record));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kHeader = offsetof(LogSection, records);
    std::uint32_t advance = 0;
    if (size <= sizeof advance + kHeader) {
        return 0;
    }
    std::memcpy(&advance, data, sizeof advance);
    data += sizeof advance;
    size -= sizeof advance;
    // At its real size, so that no byte behind it can be read.
    const auto section = std::make_unique<LogSection>();
    auto* bytes = reinterpret_cast<std::uint8_t*>(section.get());
    std::memcpy(bytes, data, kHeader);
    for (std::size_t i = kHeader; i < sizeof(LogSection); ++i) {
        bytes[i] = data[kHeader + (i - kHeader) % (size - kHeader)];
    }
    RingCursor cursor(*section);
    section->written += advance;
    Show(cursor.TakeNew(*section));
    Require(cursor.TakeNew(*section).records.empty());
    Show(cursor.TakeAll(*section));
    return 0;
}
