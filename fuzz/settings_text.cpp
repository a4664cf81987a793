// Sources: objects/config/browser/ProxyServers.cpp
// Sources: objects/dialup/Ipv4Text.cpp objects/config/browser/FavoriteName.cpp
// Sources: objects/email/EnvelopeAddress.cpp ZelBase/text/TextConversion.cpp
//
// Any text where scripts and the registry give texts: what is read can be written and read again,
// and nothing passes that a registry value, a file name or a command could not hold.

#include "ZelNet/SourceCode/mail/CommandText.h"
#include "fuzz/require.h"
#include "objects/config/browser/FavoriteName.h"
#include "objects/config/browser/ProxyServers.h"
#include "objects/dialup/Ipv4Text.h"
#include "objects/email/EnvelopeAddress.h"

#include <cstdint>

namespace {

using namespace tervane;

void ReadProxies(const std::wstring& text) {
    const ProxyServers servers = ProxyServers::Parse(text);
    const std::wstring written = servers.Text();
    ProxyServers again = ProxyServers::Parse(written);
    Require(again.Text() == written);
    for (std::size_t i = 0; i < kProxyProtocols; ++i) {
        const auto protocol = static_cast<ProxyProtocol>(i);
        Require(again.Address(protocol) == servers.Address(protocol));
        again.SetAddress(protocol, L"proxy:8080");
        Require(ProxyServers::Parse(again.Text()).Address(protocol) == L"proxy:8080");
        if (IsProxyAddress(text)) {
            again.SetAddress(protocol, text);
            Require(ProxyServers::Parse(again.Text()).Address(protocol) == text);
        }
    }
}

void SwitchBypass(const std::wstring& list) {
    Require(HasLocalBypass(WithLocalBypass(list)));
    Require(WithLocalBypass(WithLocalBypass(list)) == WithLocalBypass(list));
    Require(!HasLocalBypass(WithoutLocalBypass(list)));
    Require(HasLocalBypass(list) || WithoutLocalBypass(WithLocalBypass(list)) == list);
    Require(HasLocalBypass(WithExceptions(L"a;<local>", list)));
}

void ReadAddresses(const std::wstring& text) {
    if (const auto bytes = ParseIpv4(text)) {
        Require(Ipv4Text(*bytes) == (text == L"0.0.0.0" ? L"" : text));
    }
    const std::string address = EnvelopeAddress(text);
    Require(address.size() <= text.size());
    Require(!ZelNet::IsEnvelopeAddress(address) ||
            address.find_first_of("\r\n<> \t") == std::string::npos);
    Require(address.find('\0') == std::string::npos);
}

void ReadNames(const std::wstring& text) {
    Require(!IsFavoriteName(text) || text.find_first_of(L"\\/:*?\"<>|\r\n") == text.npos);
    Require(!IsFavoriteUrl(text) || text.find_first_of(L"\r\n") == text.npos);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // One character per byte, and the first one beyond them now and then.
    std::wstring text(data, data + size);
    for (wchar_t& character : text) {
        character = character == 0xFF ? L'\uFF0E' : character;
    }
    ReadProxies(text);
    SwitchBypass(text);
    ReadAddresses(text);
    ReadNames(text);
    return 0;
}
