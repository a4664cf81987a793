#pragma once

// The only way bytes from the network are read: every step checks that it stays inside the message.
// The first step that would leave it fails the reader for good; later reads give zeros, so that a
// decoder may read on and ask once at the end. Numbers are big-endian, as on the wire.

#include <cstddef>
#include <cstdint>
#include <span>

namespace ZelNet {

class WireReader {
public:
    // Reads `message`, which must outlive the reader, from its first byte on.
    explicit WireReader(std::span<const std::uint8_t> message) : message_(message) {}

    // Whether a step has left the message.
    bool HasFailed() const { return failed_; }
    std::size_t Position() const { return position_; }

    // Goes to an absolute position; the end itself is allowed.
    void Seek(std::size_t position) {
        failed_ = failed_ || position > message_.size();
        position_ = failed_ ? message_.size() : position;
    }

    void Skip(std::size_t count) { Read(count); }

    // The next `count` bytes; an empty span if there are not as many.
    std::span<const std::uint8_t> Read(std::size_t count) {
        if (failed_ || count > message_.size() - position_) {
            Fail();
            return {};
        }
        const auto bytes = message_.subspan(position_, count);
        position_ += count;
        return bytes;
    }

    std::uint8_t ReadU8() {
        const auto bytes = Read(1);
        return bytes.empty() ? std::uint8_t{0} : bytes[0];
    }

    std::uint16_t ReadU16() {
        const unsigned high = ReadU8();
        return static_cast<std::uint16_t>(high << 8 | ReadU8());
    }

    void Fail() {
        failed_ = true;
        position_ = message_.size();
    }

private:
    std::span<const std::uint8_t> message_;
    std::size_t position_ = 0;
    bool failed_ = false;
};

} // namespace ZelNet
