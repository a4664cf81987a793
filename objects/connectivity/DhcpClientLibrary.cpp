#include "objects/connectivity/DhcpClientLibrary.h"

#include "ZelBase/SystemLibrary.h"

namespace tervane {
namespace {

class SystemLibrary final : public DhcpClientLibrary {
public:
    void ReleaseParameters(const std::wstring& adapter) const override {
        Call("DhcpReleaseParameters", adapter);
    }
    void AcquireParameters(const std::wstring& adapter) const override {
        Call("DhcpAcquireParameters", adapter);
    }

private:
    void Call(const char* name, std::wstring adapter) const {
        if (const auto function = library_.Find<DWORD(WINAPI*)(LPWSTR)>(name)) {
            function(adapter.data());
        }
    }

    const ZelBase::SystemLibrary library_{"dhcpcsvc.dll"};
};

} // namespace

std::shared_ptr<const DhcpClientLibrary> DhcpClientLibrary::Load() {
    return std::make_shared<SystemLibrary>();
}

} // namespace tervane
