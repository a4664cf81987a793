#include "objects/config/browser/ProxyServers.h"

#include "platform/text/LetterCase.h"

#include <algorithm>

namespace tervane {

bool HasLocalBypass(std::wstring_view list) noexcept {
    return FindIgnoringAsciiCase(list, kLocalBypass) != std::wstring_view::npos;
}

std::wstring WithLocalBypass(std::wstring_view list) {
    std::wstring with(list);
    if (!HasLocalBypass(list)) {
        with += list.empty() ? L"" : L";";
        with += kLocalBypass;
    }
    return with;
}

std::wstring WithoutLocalBypass(std::wstring_view list) {
    const std::size_t marker = FindIgnoringAsciiCase(list, kLocalBypass);
    if (marker == std::wstring_view::npos) {
        return std::wstring(list);
    }
    // Together with the semicolon before it.
    return std::wstring(list.substr(0, marker == 0 ? 0 : marker - 1));
}

std::wstring WithExceptions(std::wstring_view list, std::wstring_view exceptions) {
    return HasLocalBypass(list) ? WithLocalBypass(exceptions) : std::wstring(exceptions);
}

namespace {

constexpr std::array<std::wstring_view, kProxyProtocols> kNames = {L"http", L"https", L"ftp",
                                                                   L"gopher", L"socks"};
constexpr std::size_t kSocks = static_cast<std::size_t>(ProxyProtocol::kSocks);
constexpr std::wstring_view kBlanks = L" \t\r\n";
constexpr std::wstring_view kSeparators = L"; \t\r\n";

// "http = a:80" is one entry, so blanks beside "=" do not separate.
std::wstring CloseUpAssignments(std::wstring_view text) {
    std::wstring closed;
    closed.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'=') {
            while (!closed.empty() && kBlanks.find(closed.back()) != std::wstring_view::npos) {
                closed.pop_back();
            }
            closed += L'=';
            i = std::min(text.find_first_not_of(kBlanks, i + 1), text.size()) - 1;
        } else {
            closed += text[i];
        }
    }
    return closed;
}

void Append(std::wstring& text, std::wstring_view name, std::wstring_view address) {
    if (!text.empty()) {
        text += L';';
    }
    text += name;
    text += name.empty() ? L"" : L"=";
    text += address;
}

} // namespace

ProxyServers ProxyServers::Parse(std::wstring_view text) {
    ProxyServers servers;
    Addresses forAll;
    const std::wstring closed = CloseUpAssignments(text);
    const std::wstring_view rest = closed;
    for (std::size_t begin = 0; begin < rest.size();) {
        begin = std::min(rest.find_first_not_of(kSeparators, begin), rest.size());
        const std::size_t end = std::min(rest.find_first_of(kSeparators, begin), rest.size());
        const std::wstring_view entry = rest.substr(begin, end - begin);
        if (entry.find(L'=') != std::wstring_view::npos) {
            servers.AddEntry(entry);
        } else if (!entry.empty()) {
            forAll.emplace_back(entry);
        }
        begin = end;
    }
    for (std::size_t i = 0; i < kProxyProtocols; ++i) {
        if (i != kSocks && servers.known_[i].empty()) {
            servers.known_[i] = forAll;
        }
    }
    return servers;
}

void ProxyServers::AddEntry(std::wstring_view entry) {
    const std::size_t assignment = entry.find(L'=');
    const std::wstring_view address = entry.substr(assignment + 1);
    if (address.empty()) {
        return;
    }
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        if (EqualsIgnoringAsciiCase(entry.substr(0, assignment), kNames[i])) {
            known_[i].emplace_back(address);
            return;
        }
    }
    others_.emplace_back(entry);
}

std::wstring ProxyServers::Address(ProxyProtocol protocol) const {
    const Addresses& addresses = known_[static_cast<std::size_t>(protocol)];
    return addresses.empty() ? std::wstring() : addresses.front();
}

void ProxyServers::SetAddress(ProxyProtocol protocol, std::wstring_view address) {
    Addresses& addresses = known_[static_cast<std::size_t>(protocol)];
    addresses.clear();
    if (!address.empty()) {
        addresses.emplace_back(address);
    }
}

bool ProxyServers::IsOneForAll() const {
    return others_.empty() && known_[kSocks].empty() &&
           std::all_of(known_.begin(), known_.begin() + kSocks,
                       [this](const Addresses& other) { return other == known_.front(); });
}

std::wstring ProxyServers::Text() const {
    std::wstring text;
    if (IsOneForAll()) {
        for (const std::wstring& address : known_.front()) {
            Append(text, L"", address);
        }
        return text;
    }
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        for (const std::wstring& address : known_[i]) {
            Append(text, kNames[i], address);
        }
    }
    for (const std::wstring& entry : others_) {
        Append(text, L"", entry);
    }
    return text;
}

std::wstring_view TrimBlanks(std::wstring_view text) noexcept {
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::wstring_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

bool IsProxyAddress(std::wstring_view text) noexcept {
    return !text.empty() && std::none_of(text.begin(), text.end(), [](wchar_t letter) {
        return letter <= L' ' || letter == L';' || letter == L'=' || letter == 0x7F;
    });
}

} // namespace tervane
