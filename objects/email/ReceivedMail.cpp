#include "objects/email/ReceivedMail.h"

#include "objects/Classes.h"

#include <algorithm>
#include <string_view>

namespace tervane {
namespace {

using Lines = std::vector<std::string>;

bool IsSeparator(std::string_view line) {
    return line.empty() || line == "\r\n" || line == "\r" || line == "\n";
}

// Mail says little about what its bytes mean without being decoded: they are taken as UTF-8 where
// they are, and else as the characters of the same number.
void AppendWide(std::wstring& out, std::string_view line) {
    const std::size_t start = out.size();
    const int size = static_cast<int>(line.size());
    const int length =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, line.data(), size, nullptr, 0);
    if (length <= 0) {
        std::transform(line.begin(), line.end(), std::back_inserter(out), [](char byte) {
            return static_cast<wchar_t>(static_cast<unsigned char>(byte));
        });
        return;
    }
    out.resize(start + static_cast<std::size_t>(length));
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, line.data(), size, out.data() + start,
                        length);
}

// The lines' memory is given back as they are taken over.
UniqueBstr JoinLines(Lines::iterator first, Lines::iterator last) {
    std::size_t size = 0;
    std::for_each(first, last, [&size](const std::string& line) { size += line.size() + 2; });
    std::wstring body;
    body.reserve(size);
    for (auto line = first; line != last; ++line) {
        if (line != first) {
            body.append(L"\r\n");
        }
        AppendWide(body, *line);
        *line = std::string();
    }
    return MakeBstr(body);
}

bool AddHeader(IEmailData& emailData, std::string_view line) {
    std::wstring wide;
    AppendWide(wide, line);
    const UniqueBstr text = MakeBstr(wide);
    VARIANT_BOOL result = VARIANT_FALSE;
    return text && SUCCEEDED(emailData.AddHeader(text.Get(), &result));
}

} // namespace

ComPtr<IEmailData> MakeReceivedMail(std::vector<std::string> lines) {
    ComPtr<IEmailData> emailData;
    const ClassRow* row = FindClass(__uuidof(::EmailData));
    if (FAILED(create::EmailData(*row, nullptr, __uuidof(IEmailData),
                                 reinterpret_cast<void**>(emailData.Put())))) {
        return {};
    }
    const auto separator = std::find_if(lines.begin(), lines.end(), IsSeparator);
    const auto body = separator == lines.end() ? separator : separator + 1;
    const bool complete = std::all_of(lines.begin(), separator, [&](const std::string& line) {
        return AddHeader(*emailData.Get(), line);
    });
    const UniqueBstr text = JoinLines(body, lines.end());
    if (!complete || !text || FAILED(emailData->put_TextMessage(text.Get()))) {
        return {};
    }
    return emailData;
}

} // namespace tervane
