#include "Options.h"

#include <functional>
#include <map>

namespace {

using Setter = std::function<void(const std::wstring&)>;

std::map<std::wstring, Setter> ValueSetters(Options& options) {
    const auto number = [](auto& target) {
        return [&target](const std::wstring& text) { target = std::stoi(text); };
    };
    const auto control = [&options](ControlOption::Kind kind) {
        return [&options, kind](const std::wstring& text) {
            options.controls.push_back({kind, text});
        };
    };
    using Kind = ControlOption::Kind;
    return {{L"--title", [&](const std::wstring& text) { options.title = text; }},
            {L"--count", number(options.count)},
            {L"--appear-after", number(options.appearAfter)},
            {L"--vanish-after", number(options.vanishAfter)},
            {L"--hang-after", number(options.hangAfter)},
            {L"--lifetime", number(options.lifetimeSeconds)},
            {L"--group", control(Kind::kGroup)},
            {L"--button", control(Kind::kButton)},
            {L"--check-box", control(Kind::kCheckBox)},
            {L"--edit", control(Kind::kEdit)}};
}

} // namespace

bool ReadOptions(int count, wchar_t** arguments, Options& options) {
    const auto setters = ValueSetters(options);
    for (int i = 1; i < count; ++i) {
        const std::wstring name = arguments[i];
        if (name == L"--hidden") {
            options.hidden = true;
        } else if (name == L"--end") {
            options.controls.push_back({ControlOption::Kind::kEnd, L""});
        } else if (const auto setter = setters.find(name); setter != setters.end() && ++i < count) {
            setter->second(arguments[i]);
        } else {
            return false;
        }
    }
    return true;
}
