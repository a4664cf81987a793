#include "tools/log_viewer/RecordPrinter.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

using ZelBase::LogRecord;

namespace {

// A field as text; other processes wrote it, so its end is not taken on trust.
template <std::size_t Size>
std::string_view FieldText(const char (&field)[Size]) {
    return {field, strnlen(field, Size)};
}

void AppendEscaped(std::string& line, std::string_view text) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F && c != '\\') {
            line += c;
            continue;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02x", byte);
        line += escape;
    }
}

std::string TimeText(std::uint32_t time) {
    const __time64_t seconds = time;
    const std::tm* parts = _localtime64(&seconds);
    char text[32] = "?";
    if (parts) {
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", parts);
    }
    return text;
}

bool IsEqualIgnoringCase(std::string_view text, const std::string& name) {
    return text.size() == name.size() && _strnicmp(text.data(), name.data(), name.size()) == 0;
}

} // namespace

std::string RecordLine(const LogRecord& record) {
    std::string line = TimeText(record.time);
    for (const std::string_view text : {FieldText(record.process), FieldText(record.thread),
                                        FieldText(record.component), FieldText(record.function)}) {
        line += '\t';
        AppendEscaped(line, text);
    }
    line += '\t' + std::to_string(record.level) + '\t' + std::to_string(record.value) + '\t';
    AppendEscaped(line, FieldText(record.text));
    return line;
}

bool RecordPrinter::Print(const LogBatch& batch) {
    if (batch.missed > 0) {
        std::printf("--- %u records missed ---\n", batch.missed);
    }
    bool wantsMore = true;
    for (const LogRecord& record : batch.records) {
        if (!IsWanted(record)) {
            continue;
        }
        std::printf("%s\n", RecordLine(record).c_str());
        wantsMore = ++shown_ != options_.count;
        if (!wantsMore) {
            break;
        }
    }
    return std::fflush(stdout) == 0 && wantsMore;
}

bool RecordPrinter::IsWanted(const LogRecord& record) const {
    const std::string_view component = FieldText(record.component);
    return record.level <= options_.highestLevel &&
           (options_.components.empty() ||
            std::any_of(
                options_.components.begin(), options_.components.end(),
                [&](const std::string& name) { return IsEqualIgnoringCase(component, name); }));
}
