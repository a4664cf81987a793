#include "tools/log_viewer/Options.h"

#include "ZelBase/text/AnsiText.h"
#include "tools/log_viewer/LocalTime.h"

#include <charconv>
#include <cstdio>

namespace {

bool ParseNumber(const std::string& text, std::uint32_t highest, std::uint32_t& number,
                 int base = 10) {
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, base);
    return result.ec == std::errc() && result.ptr == end && number <= highest;
}

// In either notation; records have the one with "0x".
bool ParseProcess(const std::string& text, std::vector<std::string>& processes) {
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    std::uint32_t id = 0;
    if (!ParseNumber(text.substr(isHex ? 2 : 0), 0xFFFFFFFF, id, isHex ? 16 : 10)) {
        return false;
    }
    char name[16];
    std::snprintf(name, sizeof name, "0x%x", id);
    processes.emplace_back(name);
    return true;
}

bool ParseSince(const std::string& text, std::uint32_t now, std::uint32_t& since) {
    const std::optional<std::uint32_t> moment = ParseMoment(text, now);
    since = moment.value_or(0);
    return moment.has_value();
}

bool ParseSwitch(const std::wstring& name, Options& options) {
    if (name == L"--help" || name == L"-h" || name == L"/?") {
        return options.help = true;
    }
    if (name == L"--json") {
        return options.json = true;
    }
    return name == L"--plain" && (options.plain = true);
}

bool ParseOption(const std::wstring& name, const std::wstring& wide, std::uint32_t now,
                 Options& options) {
    const std::string value = ZelBase::WideToAnsi(wide);
    RecordFilter& filter = options.filter;
    const std::pair<const wchar_t*, std::vector<std::string>*> lists[] = {
        {L"--component", &filter.components},
        {L"--function", &filter.functions},
        {L"--text", &filter.texts}};
    for (const auto& [list, values] : lists) {
        if (name == list) {
            values->push_back(value);
            return !value.empty();
        }
    }
    if (name == L"--process") {
        return ParseProcess(value, filter.processes);
    }
    if (name == L"--level") {
        return ParseNumber(value, 255, filter.highestLevel);
    }
    if (name == L"--since") {
        return ParseSince(value, now, filter.since);
    }
    if (name == L"--save") {
        options.file = wide;
        return !wide.empty();
    }
    return name == L"--count" && ParseNumber(value, 0xFFFFFFFF, options.count) && options.count > 0;
}

} // namespace

std::optional<Options> ParseOptions(const std::vector<std::wstring>& arguments, std::uint32_t now) {
    Options options;
    auto next = arguments.begin();
    if (next != arguments.end() && (*next == L"dump" || *next == L"follow")) {
        options.follow = *next++ == L"follow";
    }
    while (next != arguments.end()) {
        const std::wstring& name = *next++;
        if (!ParseSwitch(name, options) &&
            (next == arguments.end() || !ParseOption(name, *next++, now, options))) {
            return std::nullopt;
        }
    }
    return options;
}
