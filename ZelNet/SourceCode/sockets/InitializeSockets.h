#pragma once

// Winsock and the socket event threads exist while somebody uses them: every user of sockets takes
// one reference before its first socket and gives it back after its last. Sockets that are still
// open when the last reference goes are closed with "not initialised".

namespace ZelNet {

// Takes a reference; the first one starts Winsock. False, and none taken, when that fails.
bool InitializeSockets();

// Gives a reference back. Always true; without a reference it does nothing.
bool UninitializeSockets();

// One use of the socket layer, given back where it was taken at the end of a scope.
class SocketLayerUse {
public:
    SocketLayerUse() : held_(InitializeSockets()) {}
    ~SocketLayerUse() {
        if (held_) {
            UninitializeSockets();
        }
    }
    SocketLayerUse(const SocketLayerUse&) = delete;
    SocketLayerUse& operator=(const SocketLayerUse&) = delete;

    explicit operator bool() const noexcept { return held_; }

private:
    bool held_;
};

} // namespace ZelNet
