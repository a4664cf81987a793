#include "objects/email/ReceivedMail.h"

#include "objects/Classes.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace tervane {
namespace {

// Takes the first line off `text`.
std::string_view TakeLine(std::string_view& text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

bool IsSeparator(std::string_view line) {
    return line.empty() || line == "\r";
}

// Mail says little about what its bytes mean without being decoded: they are taken as UTF-8 where
// they are, and else as the characters of the same number. Returns how many there are, at most as
// many as bytes.
std::size_t Widen(std::string_view line, wchar_t* out) {
    const int size = static_cast<int>(line.size());
    const int length =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, line.data(), size, out, size);
    if (length > 0) {
        return static_cast<std::size_t>(length);
    }
    std::transform(line.begin(), line.end(), out, [](char byte) {
        return static_cast<wchar_t>(static_cast<unsigned char>(byte));
    });
    return line.size();
}

UniqueBstr AllocateBstr(std::size_t length) {
    const bool fits = length <= std::numeric_limits<UINT>::max() / sizeof(wchar_t) - 2;
    return UniqueBstr(fits ? SysAllocStringLen(nullptr, static_cast<UINT>(length)) : nullptr);
}

bool Shorten(UniqueBstr& text, std::size_t length) {
    if (SysStringLen(text.Get()) != length) {
        text = MakeBstr({text.Get(), length});
    }
    return static_cast<bool>(text);
}

// The lines, joined by CR LF, are written where they are to stay: a message may be large.
UniqueBstr JoinLines(std::string_view lines) {
    const auto count = static_cast<std::size_t>(std::count(lines.begin(), lines.end(), '\n'));
    const std::size_t spare = lines.ends_with('\n') ? 2 : 0; // the last line ends without
    UniqueBstr joined = AllocateBstr(lines.size() + count - spare);
    if (!joined) {
        return joined;
    }
    std::size_t length = 0;
    while (!lines.empty()) {
        wchar_t* const out = joined.Get() + length;
        const std::size_t size = Widen(TakeLine(lines), out);
        length += size;
        if (!lines.empty()) {
            out[size] = L'\r';
            out[size + 1] = L'\n';
            length += 2;
        }
    }
    return Shorten(joined, length) ? std::move(joined) : UniqueBstr();
}

bool AddHeader(IEmailData& emailData, std::string_view line) {
    UniqueBstr text = AllocateBstr(line.size());
    VARIANT_BOOL result = VARIANT_FALSE;
    return text && Shorten(text, Widen(line, text.Get())) &&
           SUCCEEDED(emailData.AddHeader(text.Get(), &result));
}

} // namespace

ComPtr<IEmailData> MakeReceivedMail(std::string text) {
    ComPtr<IEmailData> emailData;
    const ClassRow* row = FindClass(__uuidof(::EmailData));
    if (FAILED(create::EmailData(*row, nullptr, __uuidof(IEmailData),
                                 reinterpret_cast<void**>(emailData.Put())))) {
        return {};
    }
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::string_view line = TakeLine(rest);
        if (IsSeparator(line)) {
            break;
        }
        if (!AddHeader(*emailData.Get(), line)) {
            return {};
        }
    }
    const UniqueBstr body = JoinLines(rest);
    std::string().swap(text); // the property keeps a copy of the body, and memory is not endless
    if (!body || FAILED(emailData->put_TextMessage(body.Get()))) {
        return {};
    }
    return emailData;
}

} // namespace tervane
