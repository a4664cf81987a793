#include "ZelNet/SourceCode/mail/AMIME.h"

#include <algorithm>

namespace ZelNet {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kContentTypes[] = {
    "text/plain", "text/html", "text/richtext", "text/xml", "image/gif", "image/jpeg", "image/png"};
constexpr std::string_view kTransferEncodings[] = {"7bit", "base64", "Quoted-Printable"};
constexpr std::string_view kMultipartModes[] = {"multipart/mixed;", "multipart/alternative;"};

// The text of an enumerator; of a number that is none, the first.
template <std::size_t Size, typename Number>
std::string_view TextOf(const std::string_view (&texts)[Size], Number number) {
    const auto index = static_cast<std::size_t>(number);
    return texts[index < Size ? index : 0];
}

void AppendLine(std::string& out, std::string_view start, std::string_view rest) {
    out.append(start).append(rest).append(kLineEnd);
}

void AppendNonEmpty(std::string& out, std::string_view start, std::string_view rest) {
    if (!rest.empty()) {
        AppendLine(out, start, rest);
    }
}

// The text with one blank for each run of CR and LF.
std::string OneLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    bool inBreak = false;
    for (const char character : text) {
        const bool isBreak = character == '\r' || character == '\n';
        if (!isBreak) {
            line += character;
        } else if (!inBreak) {
            line += ' ';
        }
        inBreak = isBreak;
    }
    return line;
}

} // namespace

bool IsHeaderName(std::string_view name) noexcept {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char character) {
        return character > ' ' && character < 0x7F && character != ':';
    });
}

void AMIME::AddHeader(std::string_view name, std::string_view value) {
    if (!name.empty()) {
        dropping_ = !IsHeaderName(name);
    }
    const bool goesOn = name.empty() && !value.empty() && (value[0] == ' ' || value[0] == '\t');
    if (!dropping_ || (name.empty() && !goesOn)) {
        headers_.emplace_back(name, OneLine(value));
    }
}

void AMIME::SetContentType(MimeContentType type, std::string_view charset) {
    contentType_ = TextOf(kContentTypes, type);
    if (!charset.empty()) {
        contentType_.append("; charset=").append(charset);
    }
}

void AMIME::SetTransferEncoding(MimeTransferEncoding encoding) {
    transferEncoding_ = TextOf(kTransferEncodings, encoding);
}

void AMIME::SetBody(std::string body, bool encode) {
    auto text = std::make_shared<MimeText>();
    if (encode) {
        text->AppendEncoded(std::move(body));
    } else {
        text->Append(std::move(body));
    }
    body_ = std::move(text);
}

void AMIME::SetBody(WideMailText body) {
    auto text = std::make_shared<MimeText>();
    text->AppendEncoded(std::move(body));
    body_ = std::move(text);
}

void AMIME::SetMultipart(MimeMultipartMode mode) {
    contentType_ = TextOf(kMultipartModes, mode);
    contentType_.append("boundary=").append(MIME_BOUNDARY);
}

void AMIME::AddPart(std::unique_ptr<AMIME> part) {
    parts_.push_back(std::move(part));
}

std::string AMIME::HeaderBlock() const {
    std::string out;
    for (const auto& [name, value] : headers_) {
        if (!name.empty()) {
            out.append(name).append(": ");
        }
        AppendLine(out, value, {});
    }
    if (isTopLevel_) {
        AppendLine(out, "MIME-Version: ", "1-0"); // deliberately not "1.0"
    }
    AppendLine(out, "Content-type: ", contentType_.empty() ? DefaultContentType() : contentType_);
    AppendLine(out, "Content-Transfer-Encoding: ",
               transferEncoding_.empty() ? kTransferEncodings[0] : transferEncoding_);
    AppendNonEmpty(out, "Content-Description: ", description_);
    AppendNonEmpty(out, "Content-ID: ", contentId_);
    out.append(extraHeaders_).append(kLineEnd);
    return out;
}

std::string AMIME::Body() {
    return Composed().All();
}

std::shared_ptr<const MimeText> AMIME::TextToSend() {
    Composed().DoubleLoneDots();
    return body_;
}

// Moves the parts, if there are any, into the body, RFC 2046 section 5.1.1: a delimiter stands at
// the beginning of a line, and the line end before it belongs to it, not to the part.
MimeText& AMIME::Composed() {
    if (parts_.empty()) {
        return *body_;
    }
    // What needs memory comes first, as far as it can: a part whose text has been moved is lost.
    std::vector<std::string> starts;
    for (const auto& part : parts_) {
        std::string& start = starts.emplace_back(starts.empty() ? "" : kLineEnd);
        AppendLine(start, "--", MIME_BOUNDARY);
        start.append(part->HeaderBlock());
        part->Composed();
    }
    std::string end(kLineEnd);
    end.append("--").append(MIME_BOUNDARY).append("--");
    auto text = std::make_shared<MimeText>();
    text->ReservePieces(2 * parts_.size() + 1);
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        text->Append(std::move(starts[i]));
        text->Append(std::move(*parts_[i]->body_));
    }
    text->Append(std::move(end));
    parts_.clear();
    body_ = std::move(text);
    return *body_;
}

} // namespace ZelNet
