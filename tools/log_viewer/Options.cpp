#include "tools/log_viewer/Options.h"

#include <charconv>

namespace {

bool ParseNumber(const std::string& text, std::uint32_t highest, std::uint32_t& number) {
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end && number <= highest;
}

bool ParseOption(const std::string& name, const std::string& value, Options& options) {
    if (name == "--component") {
        options.components.push_back(value);
        return !value.empty();
    }
    if (name == "--level") {
        return ParseNumber(value, 255, options.highestLevel);
    }
    return name == "--count" && ParseNumber(value, 0xFFFFFFFF, options.count) && options.count > 0;
}

} // namespace

std::optional<Options> ParseOptions(const std::vector<std::string>& arguments) {
    Options options;
    auto next = arguments.begin();
    if (next != arguments.end() && (*next == "dump" || *next == "follow")) {
        options.follow = *next++ == "follow";
    }
    while (next != arguments.end()) {
        const std::string& name = *next++;
        if (next == arguments.end() || !ParseOption(name, *next++, options)) {
            return std::nullopt;
        }
    }
    return options;
}
