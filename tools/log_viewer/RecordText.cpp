#include "tools/log_viewer/RecordText.h"

#include "tools/log_viewer/RecordFilter.h"

#include <cstdio>

using ZelBase::LogRecord;

namespace {

void AppendFormatted(std::string& line, const char* format, unsigned number) {
    char text[16];
    std::snprintf(text, sizeof text, format, number);
    line += text;
}

void AppendEscaped(std::string& line, std::string_view text) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F && c != '\\') {
            line += c;
        } else {
            AppendFormatted(line, "\\x%02x", byte);
        }
    }
}

// RFC 8259, section 7.
void AppendJsonText(std::string& line, std::wstring_view text) {
    line += '"';
    for (const wchar_t c : text) {
        if (c >= 0x20 && c < 0x7F && c != L'"' && c != L'\\') {
            line += static_cast<char>(c);
        } else {
            AppendFormatted(line, "\\u%04x", static_cast<unsigned>(c) & 0xFFFF);
        }
    }
    line += '"';
}

} // namespace

std::string RecordLine(const LogRecord& record, const std::string& time) {
    std::string line = time;
    for (const std::string_view text : {FieldText(record.process), FieldText(record.thread),
                                        FieldText(record.component), FieldText(record.function)}) {
        line += '\t';
        AppendEscaped(line, text);
    }
    line += '\t' + std::to_string(record.level) + '\t' + std::to_string(record.value) + '\t';
    AppendEscaped(line, FieldText(record.text));
    return line;
}

std::string RecordJson(const LogRecord& record, const std::string& time,
                       std::wstring (*decode)(std::string_view)) {
    std::string line = "{\"seconds\":" + std::to_string(record.time) +
                       ",\"level\":" + std::to_string(record.level) +
                       ",\"value\":" + std::to_string(record.value);
    const std::pair<const char*, std::string_view> fields[] = {
        {"time", time},
        {"process", FieldText(record.process)},
        {"thread", FieldText(record.thread)},
        {"component", FieldText(record.component)},
        {"function", FieldText(record.function)},
        {"text", FieldText(record.text)}};
    for (const auto& [name, text] : fields) {
        line += std::string(",\"") + name + "\":";
        AppendJsonText(line, decode(text));
    }
    return line + '}';
}
