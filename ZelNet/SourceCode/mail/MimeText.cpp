#include "ZelNet/SourceCode/mail/MimeText.h"

#include "ZelBase/text/Base64.h"
#include "ZelBase/text/TextConversion.h"
#include "ZelNet/SourceCode/mail/SmtpStates.h"

#include <algorithm>
#include <cstring>

namespace ZelNet {

class MimeText::Reader final : public SendSource {
public:
    explicit Reader(std::shared_ptr<const MimeText> text) : text_(std::move(text)) {
        for (const Piece& piece : text_->pieces_) {
            remaining_ += SizeOf(piece);
        }
        Open();
    }

    std::size_t Remaining() const noexcept override { return remaining_; }
    std::size_t Read(char* dest, std::size_t room) noexcept override {
        std::size_t count = 0;
        while (count == 0 && remaining_ > 0) {
            count = text_->pieces_[piece_].isEncoded ? ReadEncoded(dest, room) : Take(dest, room);
            if (bytes_.empty() && wide_.empty()) {
                ++piece_;
                Open();
            }
        }
        remaining_ -= count;
        return count;
    }

private:
    static std::size_t SizeOf(const Piece& piece) noexcept {
        const std::size_t size = piece.bytes.size() + ZelBase::Utf8Size(piece.wide.text);
        return piece.isEncoded ? ZelBase::Base64Size(size) : size;
    }
    void Open() noexcept {
        if (piece_ < text_->pieces_.size()) {
            bytes_ = text_->pieces_[piece_].bytes;
            wide_ = text_->pieces_[piece_].wide.text;
        }
    }
    // The next bytes of the piece.
    std::size_t Take(char* dest, std::size_t room) noexcept {
        const std::size_t count = bytes_.copy(dest, room);
        bytes_.remove_prefix(count);
        return count;
    }
    // Only the piece's last bytes need not be a multiple of three; what is over waits for more.
    std::size_t ReadEncoded(char* dest, std::size_t room) noexcept {
        const std::size_t most = std::min(room / 4 * 3, sizeof raw_);
        const std::size_t left = most - waiting_;
        waiting_ += wide_.empty() ? Take(raw_ + waiting_, left)
                                  : ZelBase::TakeUtf8(wide_, raw_ + waiting_, left);
        const bool isLast = bytes_.empty() && wide_.empty();
        const std::size_t ready = isLast ? waiting_ : waiting_ / 3 * 3;
        const std::size_t count = ZelBase::Base64Encode({raw_, ready}, dest);
        waiting_ -= ready;
        std::memmove(raw_, raw_ + ready, waiting_);
        return count;
    }

    const std::shared_ptr<const MimeText> text_;
    std::size_t piece_ = 0;
    std::size_t remaining_ = 0;
    // What is left of the piece, and bytes of it that have been taken.
    std::string_view bytes_;
    std::wstring_view wide_;
    char raw_[1536];
    std::size_t waiting_ = 0;
};

void MimeText::Append(std::string bytes) {
    if (pieces_.empty() || pieces_.back().isEncoded) {
        pieces_.push_back({std::move(bytes), false, {}});
    } else {
        pieces_.back().bytes.append(bytes);
    }
}

void MimeText::AppendEncoded(std::string bytes) {
    if (!bytes.empty()) {
        pieces_.push_back({std::move(bytes), true, {}});
    }
}

void MimeText::AppendEncoded(WideMailText text) {
    if (!text.text.empty()) {
        pieces_.push_back({{}, true, std::move(text)});
    }
}

void MimeText::Append(MimeText other) {
    for (Piece& piece : other.pieces_) {
        if (piece.isEncoded) {
            pieces_.push_back(std::move(piece));
        } else {
            Append(std::move(piece.bytes));
        }
    }
}

// Base64 text has neither dots nor line ends, so that no such line reaches from one piece into
// another.
void MimeText::DoubleLoneDots() {
    for (Piece& piece : pieces_) {
        if (!piece.isEncoded) {
            ZelNet::DoubleLoneDots(piece.bytes, false);
        }
    }
}

std::string MimeText::All() const {
    std::string all;
    for (const Piece& piece : pieces_) {
        all += !piece.isEncoded ? piece.bytes
               : piece.wide.text.empty()
                   ? ZelBase::Base64Encode(piece.bytes)
                   : ZelBase::Base64Encode(ZelBase::Utf16ToUtf8(piece.wide.text));
    }
    return all;
}

std::unique_ptr<SendSource> MimeText::Read(std::shared_ptr<const MimeText> text) {
    return std::make_unique<Reader>(std::move(text));
}

} // namespace ZelNet
