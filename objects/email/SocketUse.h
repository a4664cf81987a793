#pragma once

#include "ZelNet/SourceCode/sockets/InitializeSockets.h"

namespace tervane {

// A reference on the socket layer for as long as this lives.
class SocketUse {
public:
    SocketUse() : taken_(ZelNet::InitializeSockets()) {}
    ~SocketUse() {
        if (taken_) {
            ZelNet::UninitializeSockets();
        }
    }
    SocketUse(const SocketUse&) = delete;
    SocketUse& operator=(const SocketUse&) = delete;

    // False when there are no sockets.
    explicit operator bool() const { return taken_; }

private:
    bool taken_;
};

} // namespace tervane
