#pragma once

// Internet Explorer for scripts: home page, favourites and proxy settings of the current user.
//
// A change that the registry refuses answers S_FALSE, which is no error to a script. What cannot be
// done at all is a failure of the call: E_INVALIDARG for an index out of range and for a name or an
// address that cannot be one, E_FAIL when the file system refuses and when there are no settings in
// which anything could be switched.

#include "component/Automation.h"
#include "component/ConnectionPoint.h"
#include "component/Control.h"
#include "objects/config/browser/BrowserSettings.h"
#include "objects/config/browser/Favorites.h"
#include "objects/config/browser/ProxyServers.h"

#include <TERVANELib.h>

#include <array>
#include <optional>
#include <string>

namespace tervane {

class ConfigureIE final : public AutomationObject<IConfigureIE, EventSource, Control> {
public:
    ConfigureIE(const ClassRow& row, IUnknown* outer);

    HRESULT STDMETHODCALLTYPE get_HomePage(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_HomePage(BSTR address) override;
    HRESULT STDMETHODCALLTYPE get_Version(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_ProgramPath(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE DisableConnectionWizard() override;
    HRESULT STDMETHODCALLTYPE get_NumFavorites(long* result) override;
    HRESULT STDMETHODCALLTYPE FavoriteURL(long index, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE FavoriteName(long index, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE AddFavorite(BSTR name, BSTR url) override;
    HRESULT STDMETHODCALLTYPE EnableAutomaticSettingDetection(long enable) override;
    HRESULT STDMETHODCALLTYPE get_AutoConfigurationScript(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_AutoConfigurationScript(BSTR address) override;
    HRESULT STDMETHODCALLTYPE get_HttpProxyServer(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_HttpProxyServer(BSTR address) override;
    HRESULT STDMETHODCALLTYPE get_HttpsProxyServer(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_HttpsProxyServer(BSTR address) override;
    HRESULT STDMETHODCALLTYPE get_FtpProxyServer(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_FtpProxyServer(BSTR address) override;
    HRESULT STDMETHODCALLTYPE get_GopherProxyServer(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_GopherProxyServer(BSTR address) override;
    HRESULT STDMETHODCALLTYPE get_SocksProxyServer(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_SocksProxyServer(BSTR address) override;
    HRESULT STDMETHODCALLTYPE get_ProxyExceptions(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_ProxyExceptions(BSTR exceptions) override;
    HRESULT STDMETHODCALLTYPE EnableLocalBypass(long enable) override;
    HRESULT STDMETHODCALLTYPE CommitProxyServers() override;

private:
    HRESULT GetProxy(ProxyProtocol protocol, BSTR* result) noexcept;
    HRESULT PutProxy(ProxyProtocol protocol, BSTR address) noexcept;

    BrowserSettings settings_;
    Favorites favorites_;
    // The addresses that were put and not committed yet.
    std::array<std::optional<std::wstring>, kProxyProtocols> putProxies_;
};

} // namespace tervane
