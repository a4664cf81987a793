#pragma once

#include <cstddef>

namespace ZelNet {

// What is sent piece by piece, so that it need not lie in a queue as a whole. Used by one thread at
// a time; its operations neither throw nor wait.
class SendSource {
public:
    // The least room that Read is given.
    static constexpr std::size_t kLeastRoom = 12;

    virtual ~SendSource() = default;
    // How many bytes are still to be read.
    virtual std::size_t Remaining() const noexcept = 0;
    // Copies the next bytes, at most `room`, and returns how many; none only at the end.
    virtual std::size_t Read(char* dest, std::size_t room) noexcept = 0;
};

} // namespace ZelNet
