#pragma once

// One use of the socket layer, given back where it was taken at the end of a scope.

#include "ZelNet/SourceCode/sockets/InitializeSockets.h"

namespace tervane {

class SocketLayerUse {
public:
    SocketLayerUse() : held_(ZelNet::InitializeSockets()) {}
    ~SocketLayerUse() {
        if (held_) {
            ZelNet::UninitializeSockets();
        }
    }
    SocketLayerUse(const SocketLayerUse&) = delete;
    SocketLayerUse& operator=(const SocketLayerUse&) = delete;

    explicit operator bool() const noexcept { return held_; }

private:
    bool held_;
};

} // namespace tervane
