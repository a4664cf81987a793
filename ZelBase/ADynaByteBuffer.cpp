#include "ZelBase/ADynaByteBuffer.h"

#include "ZelBase/text/SecretText.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace ZelBase {

ADynaByteBuffer::ADynaByteBuffer(std::size_t capacity, std::size_t growth)
    : blockSize_(std::max<std::size_t>(growth, 1)) {
    if (!Reserve(capacity)) {
        throw std::bad_alloc();
    }
}

ADynaByteBuffer::~ADynaByteBuffer() {
    Clear();
}

bool ADynaByteBuffer::Append(const void* data, std::size_t count) {
    if (!data) {
        return false;
    }
    const char* bytes = static_cast<const char*>(data);
    const std::size_t length = count == kUntilNul ? std::strlen(bytes) : count;
    LocalMutexLock lock(mutex_);
    if (!Reserve(length)) {
        return false;
    }
    CopyIn(bytes, length);
    size_ += length;
    return true;
}

bool ADynaByteBuffer::Read(void* dest, std::size_t count, bool peek) {
    LocalMutexLock lock(mutex_);
    if (!dest || count == 0 || count > size_) {
        return false;
    }
    CopyOut(static_cast<char*>(dest), count);
    if (!peek) {
        TakeOff(count);
    }
    return true;
}

bool ADynaByteBuffer::ReadUntil(char delimiter, char* dest, std::size_t destSize,
                                std::size_t* length, bool includeDelimiter, bool peek) {
    LocalMutexLock lock(mutex_);
    if (!Search(delimiter)) {
        return false;
    }
    const std::size_t before = searched_;
    const std::size_t count = includeDelimiter ? before + 1 : before;
    if (count > destSize || (!dest && count > 0)) {
        return false;
    }
    CopyOut(dest, count);
    *length = count;
    if (!peek) {
        TakeOff(before + 1);
    }
    return true;
}

bool ADynaByteBuffer::Find(char delimiter, std::size_t* index) {
    LocalMutexLock lock(mutex_);
    if (!Search(delimiter)) {
        return false;
    }
    *index = searched_;
    return true;
}

std::size_t ADynaByteBuffer::Skip(std::size_t count) {
    LocalMutexLock lock(mutex_);
    const std::size_t taken = std::min(count, size_);
    TakeOff(taken);
    return taken;
}

std::size_t ADynaByteBuffer::Size() const {
    LocalMutexLock lock(mutex_);
    return size_;
}

std::size_t ADynaByteBuffer::Capacity() const {
    LocalMutexLock lock(mutex_);
    return blocks_.size() * blockSize_;
}

void ADynaByteBuffer::Clear() {
    LocalMutexLock lock(mutex_);
    TakeOff(size_);
}

// Makes room for `count` more bytes behind the last one. What was made before memory ran out stays,
// as spare room.
bool ADynaByteBuffer::Reserve(std::size_t count) {
    const std::size_t end = head_ + size_;
    if (count > static_cast<std::size_t>(-1) - end) {
        return false;
    }
    try {
        while (blocks_.size() * blockSize_ < end + count) {
            blocks_.push_back(std::make_unique_for_overwrite<char[]>(blockSize_));
        }
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

void ADynaByteBuffer::CopyIn(const char* data, std::size_t count) {
    std::size_t position = head_ + size_;
    while (count > 0) {
        const std::size_t offset = position % blockSize_;
        const std::size_t piece = std::min(count, blockSize_ - offset);
        std::memcpy(blocks_[position / blockSize_].get() + offset, data, piece);
        position += piece;
        data += piece;
        count -= piece;
    }
}

void ADynaByteBuffer::CopyOut(char* dest, std::size_t count) const {
    std::size_t position = head_;
    while (count > 0) {
        const std::size_t offset = position % blockSize_;
        const std::size_t piece = std::min(count, blockSize_ - offset);
        std::memcpy(dest, blocks_[position / blockSize_].get() + offset, piece);
        position += piece;
        dest += piece;
        count -= piece;
    }
}

void ADynaByteBuffer::TakeOff(std::size_t count) {
    Wipe(count);
    head_ += count;
    size_ -= count;
    searched_ -= std::min(searched_, count);
    RecycleBlocks();
    if (size_ == 0) {
        head_ = 0; // use the first block from its start
    }
}

void ADynaByteBuffer::Wipe(std::size_t count) noexcept {
    std::size_t position = head_;
    while (count > 0) {
        const std::size_t offset = position % blockSize_;
        const std::size_t piece = std::min(count, blockSize_ - offset);
        WipeMemory(blocks_[position / blockSize_].get() + offset, piece);
        position += piece;
        count -= piece;
    }
}

// Lets empty blocks at the front serve at the back. Without the little memory that this may take
// they stay where they are, until next time.
void ADynaByteBuffer::RecycleBlocks() noexcept {
    try {
        for (; head_ >= blockSize_; head_ -= blockSize_) {
            blocks_.push_back(std::move(blocks_.front()));
            blocks_.pop_front();
        }
    } catch (const std::bad_alloc&) {
    }
}

// Goes on where the last search for the same delimiter ended, and leaves searched_ at the hit.
bool ADynaByteBuffer::Search(char delimiter) {
    if (delimiter != searchedFor_) {
        searchedFor_ = delimiter;
        searched_ = 0;
    }
    while (searched_ < size_) {
        const std::size_t position = head_ + searched_;
        const std::size_t offset = position % blockSize_;
        const std::size_t piece = std::min(size_ - searched_, blockSize_ - offset);
        const char* start = blocks_[position / blockSize_].get() + offset;
        if (const void* hit = std::memchr(start, delimiter, piece)) {
            searched_ += static_cast<std::size_t>(static_cast<const char*>(hit) - start);
            return true;
        }
        searched_ += piece;
    }
    return false;
}

} // namespace ZelBase
