#pragma once

#include "ZelNet/SourceCode/sockets/TcpNonBlockingSocketListener.h"

namespace ZelNet {

// What a user of a line socket is told; the rules are those of TcpNonBlockingSocketListener. The
// context is the ATcpNonBlockingLineSocket. OnReceive comes after every piece of data that has
// arrived, OnSend when all data has been handed to the system.
class TcpNonBlockingLineSocketListener : public TcpNonBlockingSocketListener {
public:
    // In line mode: a line's end has arrived. Called once for each, so that one ReceiveLine per
    // call takes them all.
    virtual void OnReceiveLine(void* context, int error) = 0;

protected:
    ~TcpNonBlockingLineSocketListener() = default;
};

} // namespace ZelNet
