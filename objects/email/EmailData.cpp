#include "objects/email/EmailData.h"

#include "ZelNet/SourceCode/mail/MailDate.h"
#include "component/ComEdge.h"
#include "objects/Classes.h"
#include "objects/email/StoredText.h"

namespace tervane {
namespace {

// What a flag result says for success: deliberately not VARIANT_TRUE. Scripts test it for non-zero
// only, and those in the field print this number.
constexpr VARIANT_BOOL kDone = 1;

HRESULT ReadBody(const std::wstring& body, BSTR* text) noexcept {
    return text ? ReturnText(body, text) : S_FALSE;
}

// Out of range for every list when `index` is negative.
std::size_t Position(long index) noexcept {
    return index < 0 ? static_cast<std::size_t>(-1) : static_cast<std::size_t>(index);
}

} // namespace

HRESULT EmailData::ReadHeader(std::wstring_view name, BSTR* value) const noexcept {
    if (!value) {
        return S_FALSE;
    }
    const auto found = headers_.Find(name);
    const HRESULT result = ReturnText(found.value_or(std::wstring_view()), value);
    return result == S_OK && !found ? S_FALSE : result;
}

HRESULT EmailData::WriteHeader(std::wstring_view name, std::wstring_view value) noexcept {
    return Guarded([&] {
        headers_.Set(name, value);
        return S_OK;
    });
}

HRESULT EmailData::get_To(BSTR* value) {
    return ReadHeader(L"To", value);
}

HRESULT EmailData::put_To(BSTR value) {
    return WriteHeader(L"To", TextOf(value));
}

HRESULT EmailData::get_From(BSTR* value) {
    return ReadHeader(L"From", value);
}

HRESULT EmailData::put_From(BSTR value) {
    return WriteHeader(L"From", TextOf(value));
}

HRESULT EmailData::get_Subject(BSTR* value) {
    return ReadHeader(L"Subject", value);
}

HRESULT EmailData::put_Subject(BSTR value) {
    return WriteHeader(L"Subject", TextOf(value));
}

HRESULT EmailData::get_XMailer(BSTR* value) {
    return ReadHeader(L"X-Mailer", value);
}

HRESULT EmailData::put_XMailer(BSTR value) {
    return WriteHeader(L"X-Mailer", TextOf(value));
}

HRESULT EmailData::get_Cc(BSTR* value) {
    return ReadHeader(L"Cc", value);
}

HRESULT EmailData::put_Cc(BSTR value) {
    return WriteHeader(L"Cc", TextOf(value));
}

HRESULT EmailData::get_Bcc(BSTR* value) {
    return ReadHeader(L"Bcc", value);
}

HRESULT EmailData::put_Bcc(BSTR value) {
    return WriteHeader(L"Bcc", TextOf(value));
}

HRESULT EmailData::get_Date(BSTR* value) {
    return ReadHeader(L"Date", value);
}

HRESULT EmailData::put_Date(BSTR value) {
    return WriteHeader(L"Date", TextOf(value));
}

HRESULT EmailData::get_NumHeaders(long* count) {
    if (!count) {
        return S_FALSE;
    }
    *count = static_cast<long>(headers_.Count());
    return S_OK;
}

HRESULT EmailData::get_TextMessage(BSTR* text) {
    return ReadBody(textMessage_, text);
}

HRESULT EmailData::put_TextMessage(BSTR text) {
    return StoreText(textMessage_, text);
}

HRESULT EmailData::get_HtmlMessage(BSTR* text) {
    return ReadBody(htmlMessage_, text);
}

HRESULT EmailData::put_HtmlMessage(BSTR text) {
    return StoreText(htmlMessage_, text);
}

HRESULT EmailData::AddHeader(BSTR line, VARIANT_BOOL* result) {
    if (!result) {
        return S_FALSE;
    }
    return Guarded([&] {
        headers_.Add(std::wstring(TextOf(line)));
        *result = kDone;
        return S_OK;
    });
}

HRESULT EmailData::RemoveHeader(long index, VARIANT_BOOL* result) {
    if (!result) {
        return S_FALSE;
    }
    return Guarded([&] {
        if (headers_.Remove(Position(index))) {
            return S_OK; // deliberately without a result: callers see what they passed in
        }
        *result = VARIANT_FALSE;
        return S_FALSE;
    });
}

HRESULT EmailData::GetHeader(long index, BSTR* line) {
    if (!line) {
        return S_FALSE;
    }
    const std::wstring* found = headers_.At(Position(index));
    const HRESULT result = ReturnText(found ? *found : std::wstring_view(), line);
    return result == S_OK && !found ? S_FALSE : result;
}

HRESULT EmailData::ClearAllHeaders() {
    headers_.Clear();
    return S_OK;
}

HRESULT EmailData::SetDateToNow() {
    return Guarded([&] {
        const std::string date = ZelNet::MailDate(std::chrono::system_clock::now());
        headers_.Set(L"Date", std::wstring(date.begin(), date.end()));
        return S_OK;
    });
}

HRESULT EmailData::GetHeaderByName(BSTR name, BSTR* value) {
    return ReadHeader(TextOf(name), value);
}

HRESULT EmailData::SetHeaderByName(BSTR name, BSTR value, VARIANT_BOOL* result) {
    if (!result) {
        return S_FALSE;
    }
    const HRESULT written = WriteHeader(TextOf(name), TextOf(value));
    if (written == S_OK) {
        *result = kDone;
    }
    return written;
}

namespace create {

HRESULT EmailData(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::EmailData>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
