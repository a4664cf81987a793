#include "ZelNet/SourceCode/sockets/DnsMessage.h"

#include "ZelNet/SourceCode/sockets/WireReader.h"

#include <algorithm>
#include <bitset>
#include <cstring>

namespace ZelNet {
namespace {

// Header, section 4.1.1.
constexpr std::uint16_t kIdentifier = 1; // the name in the answer tells look-ups apart, not this
constexpr std::uint16_t kRecursionDesired = 0x0100;
constexpr std::size_t kAnswerCountOffset = 6;
constexpr std::size_t kHeaderLength = 12;
constexpr std::uint16_t kClassInternet = 1;

// Section 2.3.4. A name's text has one byte less in front and one behind than its wire form.
constexpr std::size_t kLongestLabel = 63;
constexpr std::size_t kLongestName = 253;

// Section 4.1.4: the two top bits of a length byte.
constexpr std::uint8_t kPointerMark = 0xC0;
// How far into a message pointers are followed.
constexpr std::size_t kPointerReach = 256;

void AppendU16(std::vector<std::uint8_t>& message, std::uint16_t value) {
    message.push_back(static_cast<std::uint8_t>(value >> 8));
    message.push_back(static_cast<std::uint8_t>(value));
}

bool AppendName(std::vector<std::uint8_t>& message, std::string_view name) {
    if (name.size() > kLongestName) {
        return false;
    }
    for (std::size_t start = 0; start <= name.size();) {
        const std::size_t end = std::min(name.find('.', start), name.size());
        const std::size_t length = end - start;
        if (length == 0 || length > kLongestLabel) {
            return false;
        }
        message.push_back(static_cast<std::uint8_t>(length));
        message.insert(message.end(), name.begin() + start, name.begin() + end);
        start = end + 1;
    }
    message.push_back(0);
    return true;
}

// Goes past a name without reading it: behind its first pointer, or behind its terminating zero.
void SkipName(WireReader& reader) {
    std::uint8_t length = 0;
    do {
        length = reader.ReadU8();
        if ((length & kPointerMark) == kPointerMark) {
            reader.Skip(1);
            return;
        }
        if (length > kLongestLabel) {
            reader.Fail(); // reserved, section 4.1.4
        }
        reader.Skip(length);
    } while (length != 0 && !reader.HasFailed());
}

// Reads one name, following compression pointers.
class NameDecoder {
public:
    // The reader is at the name.
    explicit NameDecoder(WireReader reader) : reader_(reader) {}

    // Nothing when the name is malformed.
    std::optional<std::string> Decode() {
        while (ReadLabel()) {
        }
        if (reader_.HasFailed()) {
            return std::nullopt;
        }
        return std::move(name_);
    }

private:
    // False at the end of the name.
    bool ReadLabel() {
        if (HasBeenHere()) {
            reader_.Fail();
        }
        const std::uint8_t length = reader_.ReadU8();
        if ((length & kPointerMark) == kPointerMark) {
            // The target is the second byte alone. The six low bits of the first belong to it too,
            // but are ignored on purpose: names further than 256 bytes into a message are decoded
            // wrongly, as they always were here. The number of pointers has no limit.
            reader_.Seek(reader_.ReadU8());
        } else if (length > kLongestLabel) {
            reader_.Fail(); // reserved
        } else if (length != 0) {
            AppendLabel(reader_.Read(length));
        }
        return length != 0 && !reader_.HasFailed();
    }

    void AppendLabel(std::span<const std::uint8_t> label) {
        if (!name_.empty()) {
            name_ += '.';
        }
        name_.append(label.begin(), label.end());
        if (name_.size() > kLongestName) {
            reader_.Fail();
        }
    }

    // A chain of pointers that comes back to a place where it has been would never end. Only places
    // that a pointer can lead to need remembering.
    bool HasBeenHere() {
        const std::size_t place = reader_.Position();
        if (place >= kPointerReach) {
            return false;
        }
        const bool been = visited_[place];
        visited_.set(place);
        return been;
    }

    WireReader reader_;
    std::string name_;
    std::bitset<kPointerReach> visited_;
};

// One resource record, section 4.1.3. The reader goes on behind the record's data, whatever is in
// it, and fails where the message is cut off. Nothing when the data cannot be understood.
std::optional<DnsAnswer> ReadAnswer(WireReader& reader) {
    // The owner is the name that was asked for or one of its aliases. Which one does not matter, so
    // it may be written in a way that decoding does not follow.
    SkipName(reader);
    DnsAnswer answer;
    answer.type = reader.ReadU16();
    reader.Skip(2 + 4); // class, time to live
    answer.dataLength = reader.ReadU16();
    const WireReader atData = reader;
    const auto data = reader.Read(answer.dataLength);
    if (reader.HasFailed()) {
        return std::nullopt;
    }
    if (answer.type == kDnsTypeAddress) {
        if (data.size() != sizeof answer.address) {
            return std::nullopt;
        }
        std::memcpy(&answer.address, data.data(), sizeof answer.address);
    } else if (answer.type == kDnsTypeAlias) {
        auto alias = NameDecoder(atData).Decode();
        if (!alias) {
            return std::nullopt;
        }
        answer.alias = std::move(*alias);
    }
    return answer;
}

} // namespace

std::optional<std::vector<std::uint8_t>> BuildDnsQuery(std::string_view name) {
    std::vector<std::uint8_t> message;
    message.reserve(kHeaderLength + name.size() + 6);
    AppendU16(message, kIdentifier);
    AppendU16(message, kRecursionDesired);
    AppendU16(message, 1); // questions
    message.resize(kHeaderLength);
    if (!AppendName(message, name)) {
        return std::nullopt;
    }
    AppendU16(message, kDnsTypeAddress);
    AppendU16(message, kClassInternet);
    return message;
}

std::optional<DnsReply> ParseDnsReply(std::span<const std::uint8_t> message) {
    WireReader reader(message);
    reader.Seek(kAnswerCountOffset);
    const std::uint16_t count = reader.ReadU16();
    reader.Seek(kHeaderLength);
    DnsReply reply;
    auto question = NameDecoder(reader).Decode();
    SkipName(reader);
    reader.Skip(2 + 2); // type and class of the question
    if (!question || reader.HasFailed()) {
        return std::nullopt;
    }
    reply.question = std::move(*question);
    // The count may lie; the message's end is what bounds the loop.
    for (unsigned index = 0; index < count && !reader.HasFailed(); ++index) {
        if (auto answer = ReadAnswer(reader)) {
            reply.answers.push_back(std::move(*answer));
        }
    }
    return reply;
}

} // namespace ZelNet
