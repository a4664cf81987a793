#include "ZelNet/SourceCode/SendQueue.h"

#include "ZelBase/text/SecretText.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

namespace ZelNet {
namespace {

// Bytes that were queued behind a source. They are overwritten in the end: passwords pass through
// queues.
class CopiedBytes final : public SendSource {
public:
    CopiedBytes(const void* data, std::size_t size)
        : bytes_(static_cast<const char*>(data), size) {}
    ~CopiedBytes() override { ZelBase::WipeMemory(bytes_.data(), bytes_.size()); }

    std::size_t Remaining() const noexcept override { return bytes_.size() - position_; }
    std::size_t Read(char* dest, std::size_t room) noexcept override {
        const std::size_t count = std::min(room, Remaining());
        std::memcpy(dest, bytes_.data() + position_, count);
        position_ += count;
        return count;
    }

private:
    std::string bytes_;
    std::size_t position_ = 0;
};

} // namespace

bool SendQueue::Append(const void* data, std::size_t size) {
    if (sources_.empty()) {
        return front_.Append(data, size);
    }
    try {
        return Append(std::make_unique<CopiedBytes>(data, size));
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool SendQueue::Append(std::unique_ptr<SendSource> source) {
    try {
        sources_.push_back(std::move(source));
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

std::size_t SendQueue::Size() const {
    std::size_t size = front_.Size() + lost_;
    for (const auto& source : sources_) {
        size += source->Remaining();
    }
    return size;
}

bool SendQueue::Peek(char* dest, std::size_t count) {
    return lost_ == 0 && Fill(count) && front_.Read(dest, count, true);
}

void SendQueue::Clear() {
    front_.Clear();
    sources_.clear();
    lost_ = 0;
}

// Reads sources until there are `count` bytes in front.
bool SendQueue::Fill(std::size_t count) {
    char block[2048];
    static_assert(sizeof block >= SendSource::kLeastRoom);
    while (front_.Size() < count && !sources_.empty()) {
        const std::size_t read = sources_.front()->Read(block, sizeof block);
        const bool isKept = front_.Append(block, read);
        ZelBase::WipeMemory(block, read);
        if (!isKept) {
            lost_ = read;
            return false;
        }
        if (sources_.front()->Remaining() == 0) {
            sources_.pop_front();
        }
    }
    return true;
}

} // namespace ZelNet
