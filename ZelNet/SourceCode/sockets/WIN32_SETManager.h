#pragma once

// The pool of socket event threads of the process, and Winsock's start and stop around it.

#include "ZelNet/SourceCode/sockets/WIN32_SocketEventThread.h"

#include <list>

namespace ZelNet {

class WIN32_SETManager final : public std::enable_shared_from_this<WIN32_SETManager> {
public:
    // The manager while there are users of sockets, else null.
    static std::shared_ptr<WIN32_SETManager> Current();
    // Count users; the first makes the manager, the last shuts it down. False when Winsock does not
    // start; the user is not counted then.
    static bool AddUser();
    static void RemoveUser();

    WIN32_SETManager();

    // Gives the socket a slot on the first thread that has one free, else on a new one.
    bool Attach(const std::shared_ptr<WIN32_SocketEventThreadListener>& listener, SOCKET socket,
                SocketPlace& place);
    // Ends a thread whose last socket has left, unless it got a new one meanwhile.
    void ReleaseThread(WIN32_SocketEventThread& thread);
    // Offers the thread no more sockets. Null if the manager has let it go before.
    std::shared_ptr<WIN32_SocketEventThread> Forget(const WIN32_SocketEventThread& thread);
    // The last that a thread does.
    void ThreadHasEnded(const WIN32_SocketEventThread& thread);

private:
    bool Initialize();
    void Shutdown();
    bool AddThread() ZELBASE_REQUIRES(lock_);
    bool IsOnAnyThread() ZELBASE_EXCLUDES(lock_);

    std::unique_ptr<ZelBase::Logger> logger_;
    ZelBase::CriticalSection lock_;
    // Those that take sockets.
    std::list<std::shared_ptr<WIN32_SocketEventThread>> threads_ ZELBASE_GUARDED_BY(lock_);
    // Those that have not come to their very end; the event is set while there are none.
    std::list<const WIN32_SocketEventThread*> live_ ZELBASE_GUARDED_BY(lock_);
    ZelBase::UniqueHandle noneLive_;
    bool beingDestroyed_ ZELBASE_GUARDED_BY(lock_) = false;
    bool winsockStarted_ = false;
};

} // namespace ZelNet
