#include "objects/config/browser/ConfigureIE.h"

#include "component/Answers.h"
#include "objects/Classes.h"
#include "objects/config/browser/ConnectionWizard.h"
#include "objects/config/browser/FavoriteName.h"
#include "objects/config/browser/Favorites.h"

#include <utility>

namespace tervane {
namespace {

// Runs `change`, which tells whether the registry let it happen. There is no place for that answer
// but the success code itself, which scripts do not see.
template <typename Change>
HRESULT MakeChange(Change change) noexcept {
    return Guarded([&] { return change() ? S_OK : S_FALSE; });
}

// Returns what `read` has at the index, and an empty text with a failure where there is nothing.
template <typename Read>
HRESULT AnswerAt(long index, BSTR* result, Read read) noexcept {
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = nullptr;
    return Guarded([&]() -> HRESULT {
        const std::optional<std::wstring> text =
            index < 0 ? std::nullopt : read(static_cast<std::size_t>(index));
        return text ? ReturnText(*text, result) : E_INVALIDARG;
    });
}

} // namespace

ConfigureIE::ConfigureIE(const ClassRow& row, IUnknown* outer)
    : Object(row, outer), favorites_(&FavoritesFolder) {}

HRESULT ConfigureIE::get_HomePage(BSTR* result) {
    return AnswerText(result, [&] { return settings_.HomePage(); });
}

HRESULT ConfigureIE::put_HomePage(BSTR address) {
    return MakeChange([&] { return settings_.SetHomePage(TextOf(address)); });
}

HRESULT ConfigureIE::get_Version(BSTR* result) {
    return AnswerText(result, [&] { return settings_.Version(); });
}

HRESULT ConfigureIE::get_ProgramPath(BSTR* result) {
    return AnswerText(result, [&] { return settings_.ProgramPath(); });
}

HRESULT ConfigureIE::DisableConnectionWizard() {
    return MakeChange([] { return CompleteConnectionWizard(CurrentPlatformFamily()); });
}

HRESULT ConfigureIE::get_NumFavorites(long* result) {
    return AnswerNumber(result, [&] { return favorites_.Count(); });
}

HRESULT ConfigureIE::FavoriteURL(long index, BSTR* result) {
    return AnswerAt(index, result, [&](std::size_t at) { return favorites_.Url(at); });
}

HRESULT ConfigureIE::FavoriteName(long index, BSTR* result) {
    return AnswerAt(index, result, [&](std::size_t at) { return favorites_.Name(at); });
}

HRESULT ConfigureIE::AddFavorite(BSTR name, BSTR url) {
    if (!IsFavoriteName(TextOf(name)) || !IsFavoriteUrl(TextOf(url))) {
        return E_INVALIDARG;
    }
    return Guarded([&] { return favorites_.Add(TextOf(name), TextOf(url)) ? S_OK : E_FAIL; });
}

HRESULT ConfigureIE::EnableAutomaticSettingDetection(long enable) {
    return Guarded([&]() -> HRESULT {
        switch (settings_.SetAutomaticDetection(enable != 0)) {
        case BrowserSettings::Detection::kSwitched:
            return S_OK;
        case BrowserSettings::Detection::kRefused:
            return S_FALSE;
        case BrowserSettings::Detection::kNoSettings:
            break;
        }
        return E_FAIL;
    });
}

HRESULT ConfigureIE::get_AutoConfigurationScript(BSTR* result) {
    return AnswerText(result, [&] { return settings_.AutoConfigurationScript(); });
}

HRESULT ConfigureIE::put_AutoConfigurationScript(BSTR address) {
    return MakeChange([&] { return settings_.SetAutoConfigurationScript(TextOf(address)); });
}

HRESULT ConfigureIE::GetProxy(ProxyProtocol protocol, BSTR* result) noexcept {
    return AnswerText(result, [&] {
        const std::optional<std::wstring>& put = putProxies_[static_cast<std::size_t>(protocol)];
        return put ? *put : ProxyServers::Parse(settings_.ProxyServerText()).Address(protocol);
    });
}

HRESULT ConfigureIE::PutProxy(ProxyProtocol protocol, BSTR address) noexcept {
    const std::wstring_view trimmed = TrimBlanks(TextOf(address));
    if (!trimmed.empty() && !IsProxyAddress(trimmed)) {
        return E_INVALIDARG;
    }
    return Guarded([&] {
        putProxies_[static_cast<std::size_t>(protocol)] = trimmed;
        return S_OK;
    });
}

HRESULT ConfigureIE::get_HttpProxyServer(BSTR* result) {
    return GetProxy(ProxyProtocol::kHttp, result);
}

HRESULT ConfigureIE::put_HttpProxyServer(BSTR address) {
    return PutProxy(ProxyProtocol::kHttp, address);
}

HRESULT ConfigureIE::get_HttpsProxyServer(BSTR* result) {
    return GetProxy(ProxyProtocol::kHttps, result);
}

HRESULT ConfigureIE::put_HttpsProxyServer(BSTR address) {
    return PutProxy(ProxyProtocol::kHttps, address);
}

HRESULT ConfigureIE::get_FtpProxyServer(BSTR* result) {
    return GetProxy(ProxyProtocol::kFtp, result);
}

HRESULT ConfigureIE::put_FtpProxyServer(BSTR address) {
    return PutProxy(ProxyProtocol::kFtp, address);
}

HRESULT ConfigureIE::get_GopherProxyServer(BSTR* result) {
    return GetProxy(ProxyProtocol::kGopher, result);
}

HRESULT ConfigureIE::put_GopherProxyServer(BSTR address) {
    return PutProxy(ProxyProtocol::kGopher, address);
}

HRESULT ConfigureIE::get_SocksProxyServer(BSTR* result) {
    return GetProxy(ProxyProtocol::kSocks, result);
}

HRESULT ConfigureIE::put_SocksProxyServer(BSTR address) {
    return PutProxy(ProxyProtocol::kSocks, address);
}

HRESULT ConfigureIE::get_ProxyExceptions(BSTR* result) {
    return AnswerText(result, [&] { return settings_.ProxyExceptions(); });
}

HRESULT ConfigureIE::put_ProxyExceptions(BSTR exceptions) {
    return MakeChange([&] { return settings_.SetProxyExceptions(TextOf(exceptions)); });
}

HRESULT ConfigureIE::EnableLocalBypass(long enable) {
    return MakeChange([&] { return settings_.SetLocalBypass(enable != 0); });
}

HRESULT ConfigureIE::CommitProxyServers() {
    return MakeChange([&] {
        // What is stored while no proxy is used is a leftover, not to be switched on along with
        // what was put.
        ProxyServers servers = ProxyServers::Parse(
            settings_.IsProxyEnabled() ? settings_.ProxyServerText() : std::wstring());
        for (std::size_t i = 0; i < kProxyProtocols; ++i) {
            if (putProxies_[i]) {
                servers.SetAddress(static_cast<ProxyProtocol>(i), *putProxies_[i]);
            }
        }
        if (!settings_.SetProxyServerText(servers.Text())) {
            return false;
        }
        putProxies_ = {};
        return true;
    });
}

namespace create {

HRESULT ConfigureIE(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::ConfigureIE>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
