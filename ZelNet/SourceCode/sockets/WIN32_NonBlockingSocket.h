#pragma once

// What TCP and UDP sockets have in common: a Winsock handle with a place on a socket event thread,
// and the passage of that thread's events to the user's listener.
//
// Locks and lifetime:
// 1. The mutex guards all fields. It is never held while the listener is called, while posting to
//    the slot or while leaving it, so it comes last in the order slot, user's locks, mutex.
// 2. From its opening to its close a socket has one life. A listener may close the socket and open
//    it again, so deliveries of several lives can run at once, each life on its own event thread.
// 3. A delivery is the time from the decision to call the listener until the call has returned. It
//    is noted under the mutex, with its thread and its life. Releasing the socket waits for the
//    deliveries on other threads.
// 4. The slot keeps the object alive, and so does each call. The user's reference is another one
//    whose end forgets the listener and closes the socket (see MakeSocket).
// 5. A close that comes while a delivery of the same life runs is carried out at its end: nothing
//    can get lost between a busy slot and the queue. The event thread repeats a posted close until
//    the socket has left its slot.
// 6. An exception that leaves a listener closes the socket: what the listener has missed would
//    leave its operation waiting, or make it succeed with less than there was.

#include "ZelBase/threads/Event.h"
#include "ZelBase/threads/Mutex.h"
#include "ZelNet/SourceCode/IpAddress.h"
#include "ZelNet/SourceCode/sockets/GenericError.h"
#include "ZelNet/SourceCode/sockets/WIN32_SocketEventThread.h"

namespace ZelNet {

class WIN32_NonBlockingSocket : public WIN32_SocketEventThreadListener,
                                public std::enable_shared_from_this<WIN32_NonBlockingSocket> {
public:
    WIN32_NonBlockingSocket(const WIN32_NonBlockingSocket&) = delete;
    WIN32_NonBlockingSocket& operator=(const WIN32_NonBlockingSocket&) = delete;

    bool IsValid() const;
    // The end of the user's reference.
    void Abandon() noexcept;

protected:
    explicit WIN32_NonBlockingSocket(const char* component);
    virtual ~WIN32_NonBlockingSocket() = default;

    // No callback starts afterwards.
    virtual void ForgetListener() ZELBASE_REQUIRES(mutex_) = 0;

    // Tells the socket's lives apart; no life has this number.
    static constexpr unsigned kNoLife = 0;

    // A listener may learn of its close before the close is over, and open the socket again.
    void AwaitClosing() ZELBASE_EXCLUDES(mutex_);
    // Begins a life: opens a handle and gives it a place on an event thread; binds it if port or
    // address is given. After a failure the caller ends `life` with FinishClose.
    bool Open(int type, std::uint16_t localPort, const IpAddress& localAddress, unsigned& life)
        ZELBASE_REQUIRES(mutex_);
    bool BindHandle(std::uint16_t port, const IpAddress& address) ZELBASE_REQUIRES(mutex_);
    bool ShutdownHandle(int how) ZELBASE_REQUIRES(mutex_);
    bool CloseSocket(bool fromEvent) ZELBASE_EXCLUDES(mutex_);
    // The same for that life alone.
    bool CloseLife(unsigned life, bool fromEvent) ZELBASE_EXCLUDES(mutex_);
    // Whether that life is not over yet.
    bool IsLiving(unsigned life) const ZELBASE_REQUIRES(mutex_) {
        return handle_ != INVALID_SOCKET && life_ == life;
    }
    unsigned Life() const ZELBASE_REQUIRES(mutex_) { return life_; }

    // Callbacks begin here: false means that the event must be dropped.
    bool Enter() ZELBASE_TRY_ACQUIRE(true, mutex_);
    // The same for what is left to tell of a certain life.
    bool Enter(unsigned life) ZELBASE_TRY_ACQUIRE(true, mutex_);
    // The same for OnClose, which is over if the socket is closed already. The listener is told,
    // for the last time, in between.
    bool EnterClose(unsigned& life) ZELBASE_TRY_ACQUIRE(true, mutex_);
    void FinishClose(unsigned life) ZELBASE_EXCLUDES(mutex_);
    // ...and end here: calls the listener with the mutex given back.
    template <typename Call>
    void Deliver(Call call) ZELBASE_RELEASE(mutex_) {
        Delivery delivery;
        BeginDelivery(delivery);
        mutex_.Unlock();
        try {
            call();
        } catch (...) {
            logger_->Log("Deliver", ZelBase::LogLevel::kError,
                         "Uncaught exception in a listener. Closing the socket.");
            delivery.failed = true;
        }
        EndDelivery(delivery);
    }
    template <typename Listener>
    void Notify(Listener* listener, void (Listener::*callback)(void*, int), int error)
        ZELBASE_RELEASE(mutex_) {
        Deliver([=, context = context_] {
            if (listener) {
                (listener->*callback)(context, GenericErrorOf(error));
            }
        });
    }

    void TraceCall(const char* operation) const;
    void LogError(const char* operation, const char* format, int error) const;

    mutable ZelBase::WIN32_Mutex mutex_;
    std::unique_ptr<ZelBase::Logger> logger_;
    SOCKET handle_ ZELBASE_GUARDED_BY(mutex_) = INVALID_SOCKET;
    SocketPlace place_ ZELBASE_GUARDED_BY(mutex_);
    bool created_ ZELBASE_GUARDED_BY(mutex_) = false;
    void* context_ ZELBASE_GUARDED_BY(mutex_) = nullptr;

private:
    // On the stack of the thread that delivers.
    struct Delivery {
        DWORD thread = GetCurrentThreadId();
        unsigned life = kNoLife;
        bool failed = false;
        Delivery* next = nullptr;
    };

    bool SelectEvents() ZELBASE_REQUIRES(mutex_);
    SocketPlace Discard() ZELBASE_REQUIRES(mutex_);
    void CloseNow(unsigned life, int error) ZELBASE_EXCLUDES(mutex_);
    bool IsOver(unsigned life) ZELBASE_EXCLUDES(mutex_);
    void BeginDelivery(Delivery& delivery) ZELBASE_REQUIRES(mutex_);
    void EndDelivery(const Delivery& delivery) ZELBASE_EXCLUDES(mutex_);
    template <typename Condition>
    bool AnyDelivery(Condition condition) const ZELBASE_REQUIRES(mutex_);
    bool IsDelivered(unsigned life) const ZELBASE_REQUIRES(mutex_);
    bool IsDeliveredBesides(DWORD thread) const ZELBASE_REQUIRES(mutex_);

    ZelBase::WIN32_Event closed_;
    // The number of the present life, or of the last.
    unsigned life_ ZELBASE_GUARDED_BY(mutex_) = kNoLife;
    // OnClose of that life has begun; when the place is left, too, closed_ is set.
    bool closing_ ZELBASE_GUARDED_BY(mutex_) = false;
    // That life shall end with its delivery.
    bool closeRequested_ ZELBASE_GUARDED_BY(mutex_) = false;
    // Winsock's code for why, 0 when it was asked for.
    int closeError_ ZELBASE_GUARDED_BY(mutex_) = 0;
    Delivery* deliveries_ ZELBASE_GUARDED_BY(mutex_) = nullptr;
    // The thread that waits until no other one delivers; 0 for none.
    DWORD awaitingThread_ ZELBASE_GUARDED_BY(mutex_) = 0;
    ZelBase::WIN32_Event alone_;
};

// Makes a socket of class `Socket` and returns the user's reference to it, as `Interface`.
template <typename Interface, typename Socket>
std::shared_ptr<Interface> MakeSocket() {
    auto socket = std::make_shared<Socket>();
    if (!socket->IsValid()) {
        return nullptr;
    }
    return std::shared_ptr<Interface>(socket.get(), [socket](Interface*) { socket->Abandon(); });
}

} // namespace ZelNet
