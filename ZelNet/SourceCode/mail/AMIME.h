#pragma once

// A mail message as it goes over the wire (RFC 2045, RFC 2046): a list of header lines, the lines
// that describe the content, and a body or parts. It only composes; nothing is parsed here.
//
// Three places differ from the RFCs on purpose, because receivers in the field know this sender by
// them: the version line reads "1-0" (RFC 2045 section 4 has a point), the boundary follows its
// semicolon without a blank and without quotes, and an encoded body is one line however long
// (section 6.8 has lines of 76).

#include "ZelNet/SourceCode/mail/MimeText.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZelNet {

// Between the parts of every multipart message: long and random enough never to occur in a body,
// so it is neither made anew per message nor searched for in the body.
inline constexpr std::string_view MIME_BOUNDARY =
    "3FC440BC44204c7d8CB9E436D5F4DA71308C06271A0749d3885DF264A65A3472";

// A number that is none of these means the first.
enum class MimeContentType {
    kPlainText = 0,
    kHtml = 1,
    kRichText = 2,
    kXml = 3,
    kGif = 4,
    kJpeg = 5,
    kPng = 6,
};
enum class MimeTransferEncoding { k7Bit = 0, kBase64 = 1, kQuotedPrintable = 2 };
enum class MimeMultipartMode { kMixed = 0, kAlternative = 1 };

// Whether a header may have that name: visible ASCII characters without the colon (RFC 5322,
// section 3.6.8).
bool IsHeaderName(std::string_view name) noexcept;

class AMIME {
public:
    // Whether the message says which MIME version it is; parts do not.
    enum class Level { kTop, kPart };

    explicit AMIME(Level level = Level::kTop) : isTopLevel_(level == Level::kTop) {}
    virtual ~AMIME() = default;
    AMIME(const AMIME&) = delete;
    AMIME& operator=(const AMIME&) = delete;

    // Appends a header line "name: value". Without a name the value is the whole line, which goes
    // on with the one before if it begins with a blank. No line break gets into the message: each
    // run of CR and LF becomes one blank. A name that is none (see IsHeaderName) is dropped with
    // its value and the lines that go on with it.
    void AddHeader(std::string_view name, std::string_view value);
    void SetContentType(MimeContentType type, std::string_view charset = {});
    void SetTransferEncoding(MimeTransferEncoding encoding);
    void SetDescription(std::string_view description) { description_ = description; }
    void SetContentId(std::string_view contentId) { contentId_ = contentId; }
    // Whole lines with their ends.
    void SetExtraHeaders(std::string_view lines) { extraHeaders_ = lines; }
    // The body as it stands, or its base64 text. The transfer encoding is the caller's to set.
    void SetBody(std::string body, bool encode);
    // The base64 text of the body's UTF-8 form.
    void SetBody(WideMailText body);
    // Makes this a multipart message, whose body is composed of its parts.
    void SetMultipart(MimeMultipartMode mode);
    // Appends a part; it must be one of Level::kPart.
    void AddPart(std::unique_ptr<AMIME> part);

    // The message's own header lines, then those that describe the content, then the empty line.
    std::string HeaderBlock() const;
    // The body as it is sent: the dot of each lone dot between other lines is doubled in it for
    // good (see DoubleLoneDots). Whoever reads it may outlive this message.
    std::shared_ptr<const MimeText> TextToSend();
    // The body as one text, as it is now.
    std::string Body();

protected:
    // What an empty content type stands for.
    virtual std::string_view DefaultContentType() const { return "text/plain"; }

private:
    MimeText& Composed();

    std::vector<std::pair<std::string, std::string>> headers_;
    // Whether the last header that has a name was dropped.
    bool dropping_ = false;
    std::string contentType_;
    std::string transferEncoding_;
    std::string description_;
    std::string contentId_;
    std::string extraHeaders_;
    std::shared_ptr<MimeText> body_ = std::make_shared<MimeText>();
    std::vector<std::unique_ptr<AMIME>> parts_;
    bool isTopLevel_;
};

} // namespace ZelNet
