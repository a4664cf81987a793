#pragma once

// A mail message for scripts: header lines in their order, a plain-text body and an HTML body. It
// is data only; SmtpCtl sends it, PopCtl hands one out for each message it has retrieved.
//
// A member that is given no place for its result answers S_FALSE and does nothing.

#include "component/Automation.h"
#include "component/Control.h"
#include "objects/email/HeaderList.h"

#include <TERVANELib.h>

#include <string>

namespace tervane {

class EmailData final : public AutomationObject<IEmailData, Control> {
public:
    using Object::Object;

    HRESULT STDMETHODCALLTYPE get_To(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_To(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_From(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_From(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_Subject(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_Subject(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_XMailer(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_XMailer(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_Cc(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_Cc(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_Bcc(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_Bcc(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_Date(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_Date(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_NumHeaders(long* count) override;
    HRESULT STDMETHODCALLTYPE get_TextMessage(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE put_TextMessage(BSTR text) override;
    HRESULT STDMETHODCALLTYPE get_HtmlMessage(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE put_HtmlMessage(BSTR text) override;
    HRESULT STDMETHODCALLTYPE AddHeader(BSTR line, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE RemoveHeader(long index, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetHeader(long index, BSTR* line) override;
    HRESULT STDMETHODCALLTYPE ClearAllHeaders() override;
    HRESULT STDMETHODCALLTYPE SetDateToNow() override;
    HRESULT STDMETHODCALLTYPE GetHeaderByName(BSTR name, BSTR* value) override;
    HRESULT STDMETHODCALLTYPE SetHeaderByName(BSTR name, BSTR value, VARIANT_BOOL* result) override;

private:
    HRESULT ReadHeader(std::wstring_view name, BSTR* value) const noexcept;
    HRESULT WriteHeader(std::wstring_view name, std::wstring_view value) noexcept;

    HeaderList headers_;
    std::wstring textMessage_;
    std::wstring htmlMessage_;
};

} // namespace tervane
