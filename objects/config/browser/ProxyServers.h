#pragma once

// The proxy servers as the browser stores them, in one text: "http=a:80;https=b:80", or just
// "a:80", which is meant for all protocols but socks, whose servers speak another language. Entries
// are separated by semicolons or blanks. What the text says beyond that - protocols that nobody
// here knows, several servers for one protocol, of which the first one counts - survives a change
// of the rest.

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace tervane {

// The list of hosts that are reached without the proxy, and the marker in it that stands for all
// local addresses. Windows keeps the marker as the list's last entry, and so does this: what would
// stand behind it counts as part of it and goes with it.
//
// A result of "" means that nothing is to be stored.
inline constexpr std::wstring_view kLocalBypass = L"<local>";

bool HasLocalBypass(std::wstring_view list) noexcept;
// Either returns a list that is so already as it stands.
std::wstring WithLocalBypass(std::wstring_view list);
std::wstring WithoutLocalBypass(std::wstring_view list);
// `exceptions` in place of those in `list`, whose marker stays if it has it. The marker is not
// doubled when the exceptions bring it along, as those that were read from a list do.
std::wstring WithExceptions(std::wstring_view list, std::wstring_view exceptions);

enum class ProxyProtocol { kHttp, kHttps, kFtp, kGopher, kSocks };
inline constexpr std::size_t kProxyProtocols = 5;

class ProxyServers {
public:
    // Any text can be read; entries without an address are dropped.
    static ProxyServers Parse(std::wstring_view text);

    // "" when the protocol has none.
    std::wstring Address(ProxyProtocol protocol) const;
    // `address` satisfies IsProxyAddress, or is "" for none.
    void SetAddress(ProxyProtocol protocol, std::wstring_view address);

    // In the order http, https, ftp, gopher, socks, others; without any protocol when the first
    // four have the same and there is nothing else; "" when nothing is left.
    std::wstring Text() const;

private:
    using Addresses = std::vector<std::wstring>;

    void AddEntry(std::wstring_view entry);
    bool IsOneForAll() const;

    std::array<Addresses, kProxyProtocols> known_;
    Addresses others_; // whole entries, as they were
};

// Blanks around `text` removed.
std::wstring_view TrimBlanks(std::wstring_view text) noexcept;

// Whether a trimmed text can stand as an address, a host or "host:port": it is neither empty nor
// does it contain what would end it or make it another entry.
bool IsProxyAddress(std::wstring_view text) noexcept;

} // namespace tervane
