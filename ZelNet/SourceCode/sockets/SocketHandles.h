#pragma once

// Winsock's resources as owners; see ZelBase/UniqueResource.h.

#include "ZelBase/UniqueResource.h"

#include <winsock2.h>

namespace ZelNet {

struct SocketTraits {
    using Type = SOCKET;
    static Type Empty() noexcept { return INVALID_SOCKET; }
    static void Close(Type socket) noexcept { closesocket(socket); }
};
using UniqueSocket = ZelBase::UniqueResource<SocketTraits>;

struct WsaEventTraits {
    using Type = WSAEVENT;
    static Type Empty() noexcept { return WSA_INVALID_EVENT; }
    static void Close(Type event) noexcept { WSACloseEvent(event); }
};
using UniqueWsaEvent = ZelBase::UniqueResource<WsaEventTraits>;

} // namespace ZelNet
