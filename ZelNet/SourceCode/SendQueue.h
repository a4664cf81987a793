#pragma once

// What is still to be sent, in the order in which it was queued: bytes, which are copied, and
// sources, which are read when their turn has come. For one thread at a time.

#include "ZelBase/ADynaByteBuffer.h"
#include "ZelNet/SourceCode/SendSource.h"

#include <deque>
#include <memory>

namespace ZelNet {

class SendQueue {
public:
    // For the bytes in front, see ADynaByteBuffer. Throws std::bad_alloc.
    SendQueue(std::size_t capacity, std::size_t growth) : front_(capacity, growth) {}

    // False, and nothing queued, without memory.
    bool Append(const void* data, std::size_t size);
    bool Append(std::unique_ptr<SendSource> source);
    // With what the sources have still to give.
    std::size_t Size() const;
    // Copies the first `count` bytes, which stay in the queue. False when there are fewer, and
    // without memory: then for good, because a source is read only once.
    bool Peek(char* dest, std::size_t count);
    // Takes off bytes that have been copied; returns how many there were.
    std::size_t Skip(std::size_t count) { return front_.Skip(count); }
    void Clear();

private:
    bool Fill(std::size_t count);

    ZelBase::ADynaByteBuffer front_;
    std::deque<std::unique_ptr<SendSource>> sources_;
    // Bytes that were read and could not be kept: what is behind them must not be sent.
    std::size_t lost_ = 0;
};

} // namespace ZelNet
