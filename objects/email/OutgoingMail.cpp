#include "objects/email/OutgoingMail.h"

#include "ZelBase/text/TextConversion.h"
#include "objects/email/EnvelopeAddress.h"
#include "objects/email/HeaderList.h"
#include "platform/ComValues.h"

namespace tervane {
namespace {

using ZelBase::Utf16ToUtf8;
using ZelNet::AMIME;
using ZelNet::MimeContentType;
using ZelNet::MimeMultipartMode;
using ZelNet::MimeTransferEncoding;

constexpr char kCharset[] = "utf-8";
constexpr wchar_t kDefaultMailer[] = L"<AnonymousMailer>";

using Getter = HRESULT (STDMETHODCALLTYPE IEmailData::*)(BSTR*);

// Empty when the property cannot be read.
std::optional<UniqueBstr> Read(IEmailData& emailData, Getter property) {
    UniqueBstr text;
    if (FAILED((emailData.*property)(text.Put()))) {
        return std::nullopt;
    }
    return text;
}

bool IsEmpty(IEmailData& emailData, Getter property) {
    const auto text = Read(emailData, property);
    return text && TextOf(text->Get()).empty();
}

void FillIn(IEmailData& emailData) {
    if (IsEmpty(emailData, &IEmailData::get_Date)) {
        emailData.SetDateToNow();
    }
    if (IsEmpty(emailData, &IEmailData::get_XMailer)) {
        emailData.put_XMailer(MakeBstr(kDefaultMailer).Get());
    }
}

// A line without a name, the continuation of the one before for instance, goes out whole. So does
// one that begins with a blank and has a ": " somewhere in its text. A line of nothing but blanks
// would end the header for some servers.
void AddHeaderLine(AMIME& message, std::wstring_view line) {
    const auto parts = SplitHeader(line);
    const std::string name = parts ? Utf16ToUtf8(Trimmed(parts->name, kBlanks)) : std::string();
    const bool isContinuation = line.starts_with(L' ') || line.starts_with(L'\t');
    if (!name.empty() && (!isContinuation || ZelNet::IsHeaderName(name))) {
        message.AddHeader(name, Utf16ToUtf8(Trimmed(parts->value, kBlanks)));
    } else if (!Trimmed(line, kBlanks).empty()) {
        message.AddHeader({}, Utf16ToUtf8(Trimmed(line, L"\r\n")));
    }
}

bool AddHeaders(IEmailData& emailData, AMIME& message) {
    long count = 0;
    if (FAILED(emailData.get_NumHeaders(&count))) {
        return false;
    }
    for (long index = 0; index < count; ++index) {
        UniqueBstr line;
        if (FAILED(emailData.GetHeader(index, line.Put()))) {
            return false;
        }
        AddHeaderLine(message, TextOf(line.Get()));
    }
    return true;
}

void SetContent(AMIME& message, MimeContentType type, ZelNet::WideMailText body) {
    message.SetContentType(type, kCharset);
    message.SetTransferEncoding(MimeTransferEncoding::kBase64);
    message.SetBody(std::move(body));
}

void AddPart(AMIME& message, MimeContentType type, ZelNet::WideMailText body) {
    auto part = std::make_unique<AMIME>(AMIME::Level::kPart);
    SetContent(*part, type, std::move(body));
    message.AddPart(std::move(part));
}

void SetContents(AMIME& message, ZelNet::WideMailText text, ZelNet::WideMailText html) {
    if (html.text.empty()) {
        SetContent(message, MimeContentType::kPlainText, std::move(text));
    } else if (text.text.empty()) {
        SetContent(message, MimeContentType::kHtml, std::move(html));
    } else {
        // Deliberate: the HTML comes first, although RFC 2046 section 5.1.4 wants the plainest
        // first, and the whole is called base64, although only its parts are.
        message.SetMultipart(MimeMultipartMode::kAlternative);
        message.SetTransferEncoding(MimeTransferEncoding::kBase64);
        AddPart(message, MimeContentType::kHtml, std::move(html));
        AddPart(message, MimeContentType::kPlainText, std::move(text));
    }
}

// What the property gives is kept as it is until it is sent: a large body in another form as well
// would be a lot.
std::optional<ZelNet::WideMailText> ReadBody(IEmailData& emailData, Getter property) {
    auto body = Read(emailData, property);
    if (!body) {
        return std::nullopt;
    }
    const auto text = TextOf(body->Get());
    return ZelNet::WideMailText{std::make_shared<UniqueBstr>(std::move(*body)), text};
}

std::optional<std::string> ReadAddress(IEmailData& emailData, Getter property) {
    const auto header = Read(emailData, property);
    return header ? std::optional(EnvelopeAddress(TextOf(header->Get()))) : std::nullopt;
}

} // namespace

std::optional<OutgoingMail> ReadOutgoingMail(IEmailData& emailData) {
    FillIn(emailData);
    auto sender = ReadAddress(emailData, &IEmailData::get_From);
    auto recipient = ReadAddress(emailData, &IEmailData::get_To);
    auto text = ReadBody(emailData, &IEmailData::get_TextMessage);
    auto html = ReadBody(emailData, &IEmailData::get_HtmlMessage);
    auto message = std::make_unique<AMIME>();
    if (!sender || !recipient || !text || !html || !AddHeaders(emailData, *message)) {
        return std::nullopt;
    }
    SetContents(*message, std::move(*text), std::move(*html));
    return OutgoingMail{std::move(*sender), std::move(*recipient), std::move(message)};
}

} // namespace tervane
