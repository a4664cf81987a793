#include "tools/log_viewer/RecordFilter.h"

#include <algorithm>

namespace {

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsSame(char a, char b) {
    return Lower(a) == Lower(b);
}

bool IsEqual(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), IsSame);
}

bool Contains(std::string_view text, std::string_view part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(), IsSame) != text.end() ||
           part.empty();
}

bool FitsOne(const std::vector<std::string>& wanted, std::string_view text,
             bool (*fits)(std::string_view, std::string_view)) {
    return wanted.empty() || std::any_of(wanted.begin(), wanted.end(),
                                         [&](const std::string& one) { return fits(text, one); });
}

} // namespace

bool RecordFilter::IsWanted(const ZelBase::LogRecord& record) const {
    return record.level <= highestLevel && record.time >= since &&
           FitsOne(components, FieldText(record.component), IsEqual) &&
           FitsOne(functions, FieldText(record.function), IsEqual) &&
           FitsOne(processes, FieldText(record.process), IsEqual) &&
           FitsOne(texts, FieldText(record.text), Contains);
}
