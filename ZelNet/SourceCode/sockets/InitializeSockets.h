#pragma once

// Winsock and the socket event threads exist while somebody uses them: every user of sockets takes
// one reference before its first socket and gives it back after its last. Sockets that are still
// open when the last reference goes are closed with "not initialised".

namespace ZelNet {

// Takes a reference; the first one starts Winsock. False, and none taken, when that fails.
bool InitializeSockets();

// Gives a reference back. Always true; without a reference it does nothing.
bool UninitializeSockets();

} // namespace ZelNet
