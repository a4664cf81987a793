#pragma once

// A queue of bytes: appended at the back, taken off the front. It keeps them in blocks, so that
// neither growing nor taking moves what is in it, and remembers how far it has looked for a
// delimiter, so that a long line that comes in small pieces is searched once. Cost is linear in the
// bytes that pass through.
//
// It grows block by block and never shrinks; the blocks at the front serve again at the back. Bytes
// that have been taken off are overwritten: passwords pass through here. Each operation is complete
// in itself and may be called from any thread.

#include "ZelBase/threads/LocalMutex.h"

#include <cstddef>
#include <deque>
#include <memory>

namespace ZelBase {

class ADynaByteBuffer {
public:
    // As a count: up to, and without, the terminating NUL.
    static constexpr std::size_t kUntilNul = static_cast<std::size_t>(-1);

    // Room for `capacity` bytes at once, then in steps of `growth` (at least 1). Both are rounded
    // to whole blocks of `growth` bytes. Throws std::bad_alloc.
    ADynaByteBuffer(std::size_t capacity, std::size_t growth);
    ~ADynaByteBuffer();
    ADynaByteBuffer(const ADynaByteBuffer&) = delete;
    ADynaByteBuffer& operator=(const ADynaByteBuffer&) = delete;

    // Appends `count` bytes. False, and nothing appended, without memory or for null `data`.
    bool Append(const void* data, std::size_t count);
    // Copies the first `count` bytes to `dest` and, unless `peek`, takes them off. False, and
    // nothing copied or taken, when `count` is 0 or more than there is.
    bool Read(void* dest, std::size_t count, bool peek);
    // Copies the bytes before the first `delimiter` to `dest`, with `includeDelimiter` that too,
    // and sets `length` to how many these are (no NUL is added). Unless `peek`, takes them and the
    // delimiter off. False, and nothing changed, when there is no delimiter, or the result is
    // longer than `destSize` or has nowhere to go for a null `dest`.
    bool ReadUntil(char delimiter, char* dest, std::size_t destSize, std::size_t* length,
                   bool includeDelimiter, bool peek);
    // Where the first `delimiter` is, in bytes from the front; false when there is none.
    bool Find(char delimiter, std::size_t* index);
    // Takes off up to `count` bytes and returns how many.
    std::size_t Skip(std::size_t count);
    std::size_t Size() const;
    std::size_t Capacity() const;
    void Clear();

private:
    using Block = std::unique_ptr<char[]>;

    bool Reserve(std::size_t count) ZELBASE_REQUIRES(mutex_);
    void CopyIn(const char* data, std::size_t count) ZELBASE_REQUIRES(mutex_);
    void CopyOut(char* dest, std::size_t count) const ZELBASE_REQUIRES(mutex_);
    void TakeOff(std::size_t count) ZELBASE_REQUIRES(mutex_);
    void Wipe(std::size_t count) noexcept ZELBASE_REQUIRES(mutex_);
    void RecycleBlocks() noexcept ZELBASE_REQUIRES(mutex_);
    bool Search(char delimiter) ZELBASE_REQUIRES(mutex_);

    const std::size_t blockSize_;
    mutable LocalMutex mutex_;
    std::deque<Block> blocks_ ZELBASE_GUARDED_BY(mutex_);
    // Where the first byte is in the first block.
    std::size_t head_ ZELBASE_GUARDED_BY(mutex_) = 0;
    std::size_t size_ ZELBASE_GUARDED_BY(mutex_) = 0;
    // The first searched_ bytes do not contain searchedFor_.
    std::size_t searched_ ZELBASE_GUARDED_BY(mutex_) = 0;
    char searchedFor_ ZELBASE_GUARDED_BY(mutex_) = 0;
};

} // namespace ZelBase
