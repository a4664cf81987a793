#pragma once

#include "ZelNet/SourceCode/sockets/ATcpNonBlockingClientSocket.h"

#include <memory>

namespace ZelNet {

class TcpNonBlockingClientSocket : public ATcpNonBlockingClientSocket {
public:
    // A new socket, not open yet; null when the system cannot provide one. Releasing it closes it:
    // a callback that is running on another thread is waited for, and none follows.
    static std::shared_ptr<TcpNonBlockingClientSocket> Create();
    using ATcpNonBlockingClientSocket::Create;

protected:
    ~TcpNonBlockingClientSocket() = default;
};

} // namespace ZelNet
