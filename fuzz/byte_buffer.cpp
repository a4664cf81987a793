// Sources: ZelBase/ADynaByteBuffer.cpp ZelNet/SourceCode/LineReading.cpp
//
// The input is a list of operations on a byte buffer, which a plain string goes through as well:
// both must agree after every step.

#include "ZelBase/ADynaByteBuffer.h"
#include "ZelNet/SourceCode/LineReading.h"
#include "fuzz/require.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace {

class Operations {
public:
    Operations(const std::uint8_t* data, std::size_t size)
        : rest_(reinterpret_cast<const char*>(data), size), buffer_(Number(), Number()) {}

    void Run() {
        while (!rest_.empty()) {
            Step();
            Require(buffer_.Size() == model_.size());
            Require(buffer_.Capacity() >= buffer_.Size());
        }
        std::string all(model_.size(), ' ');
        Require(buffer_.Read(all.data(), all.size(), true) == !all.empty());
        Require(all == model_);
    }

private:
    std::size_t Number() {
        if (rest_.empty()) {
            return 0;
        }
        const auto number = static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(1);
        return number;
    }

    void Step() {
        switch (Number() % 8) {
        case 0:
            return Append();
        case 1:
            return Read(false);
        case 2:
            return Read(true);
        case 3:
            return ReadUntil(false);
        case 4:
            return ReadUntil(true);
        case 5:
            return TakeLine();
        case 6:
            return Skip();
        default:
            buffer_.Clear();
            model_.clear();
        }
    }

    void Append() {
        const std::string_view bytes = rest_.substr(0, Number());
        Require(buffer_.Append(bytes.data(), bytes.size()));
        model_ += bytes;
        rest_.remove_prefix(std::min(bytes.size(), rest_.size()));
    }

    void Read(bool peek) {
        std::string bytes(Number(), ' ');
        const bool possible = !bytes.empty() && bytes.size() <= model_.size();
        Require(buffer_.Read(bytes.data(), bytes.size(), peek) == possible);
        if (possible) {
            Require(bytes == model_.substr(0, bytes.size()));
            model_.erase(0, peek ? 0 : bytes.size());
        }
    }

    void ReadUntil(bool peek) {
        const char delimiter = static_cast<char>(Number());
        const bool include = Number() % 2 == 1;
        std::string bytes(Number(), ' ');
        std::size_t length = 0;
        const std::size_t hit = model_.find(delimiter);
        std::size_t found = 0;
        Require(buffer_.Find(delimiter, &found) == (hit != std::string::npos));
        const bool possible = hit != std::string::npos && hit + (include ? 1 : 0) <= bytes.size();
        Require(buffer_.ReadUntil(delimiter, bytes.data(), bytes.size(), &length, include, peek) ==
                possible);
        if (possible) {
            Require(found == hit && length == hit + (include ? 1 : 0));
            Require(bytes.substr(0, length) == model_.substr(0, length));
            model_.erase(0, peek ? 0 : hit + 1);
        }
    }

    void TakeLine() {
        std::string line;
        const std::size_t end = model_.find('\n');
        Require(ZelNet::TakeLine(buffer_, line) == (end != std::string::npos));
        if (end == std::string::npos) {
            return;
        }
        std::string expected = model_.substr(0, end);
        model_.erase(0, end + 1);
        if (!expected.empty() && expected.back() == '\r') {
            expected.pop_back();
        } else if (!model_.empty() && model_.front() == '\r') {
            model_.erase(0, 1);
        }
        Require(line == expected);
    }

    void Skip() {
        const std::size_t count = Number();
        const std::size_t possible = std::min(count, model_.size());
        Require(buffer_.Skip(count) == possible);
        model_.erase(0, possible);
    }

    std::string_view rest_;
    ZelBase::ADynaByteBuffer buffer_;
    std::string model_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Operations(data, size).Run();
    return 0;
}
