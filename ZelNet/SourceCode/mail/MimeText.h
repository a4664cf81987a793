#pragma once

// The body of a message as it goes over the wire. What goes in base64 is kept as it was given and
// is encoded when it is read: a large message would else lie in memory several times.

#include "ZelNet/SourceCode/SendSource.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ZelNet {

// A text of UTF-16 characters, and what keeps it.
struct WideMailText {
    std::shared_ptr<const void> owner;
    std::wstring_view text;
};

class MimeText {
public:
    // Append bytes that are sent as they are, or as their base64 text, or what another one has. A
    // wide text goes as the base64 text of its UTF-8 form, and is converted when it is read, too.
    void Append(std::string bytes);
    void AppendEncoded(std::string bytes);
    void AppendEncoded(WideMailText text);
    void Append(MimeText other);
    void ReservePieces(std::size_t count) { pieces_.reserve(count); }
    // Doubles the dot of each line that consists of one, the very first line excepted.
    void DoubleLoneDots();
    // As a whole.
    std::string All() const;

    // Reads `text` once from its start; the text must not be appended to any more.
    static std::unique_ptr<SendSource> Read(std::shared_ptr<const MimeText> text);

private:
    class Reader;
    // Encoded ones are not empty; no two that are not follow each other. Either the bytes or the
    // wide text is empty.
    struct Piece {
        std::string bytes;
        bool isEncoded = false;
        WideMailText wide = {};
    };

    std::vector<Piece> pieces_;
};

} // namespace ZelNet
