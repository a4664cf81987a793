#pragma once

// What TCP and UDP sockets have in common: a Winsock handle with a place on a socket event thread,
// and the passage of that thread's events to the user's listener.
//
// Locks and lifetime:
// 1. The mutex guards all fields but those that rule 6 and its readers need, which are atomic; they
//    change with it held. It is never held while the listener is called, while posting to
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
// 6. A life that is being delivered ends only on the thread of its delivery, so that there, in the
//    listener's call, the handle can be used without the mutex: a round of it for each piece of
//    data would cost as much as a third of receiving it.
// 7. An exception that leaves a listener closes the socket: what the listener has missed would
//    leave its operation waiting, or make it succeed with less than there was.

#include "ZelBase/threads/Event.h"
#include "ZelBase/threads/Mutex.h"
#include "ZelNet/SourceCode/IpAddress.h"
#include "ZelNet/SourceCode/sockets/GenericError.h"
#include "ZelNet/SourceCode/sockets/WIN32_SocketEventThread.h"

#include <atomic>
#include <optional>

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
    // The same for that life alone, without a trace of a call.
    bool CloseLife(unsigned life, bool fromEvent) ZELBASE_EXCLUDES(mutex_);
    // Whether that life is not over yet. Once it is, it stays so.
    bool IsLiving(unsigned life) const { return handle_ != INVALID_SOCKET && life_ == life; }
    unsigned Life() const ZELBASE_REQUIRES(mutex_) { return life_; }

    // What moving data takes: the mutex, unless the listener is being called on this thread.
    class HandleUse {
    public:
        explicit HandleUse(const WIN32_NonBlockingSocket& socket) ZELBASE_NO_LOCK_ANALYSIS {
            if (socket.deliveringThread_ != GetCurrentThreadId()) {
                lock_.emplace(&socket.mutex_);
            }
        }

    private:
        std::optional<ZelBase::MutexLock> lock_;
    };

    // Callbacks begin here: false means that the event must be dropped.
    bool Enter() ZELBASE_TRY_ACQUIRE(true, mutex_);
    // The same for what is left to tell of a certain life.
    bool Enter(unsigned life) ZELBASE_TRY_ACQUIRE(true, mutex_);
    // The same for OnClose, which is over if the socket is closed already. The listener is told,
    // for the last time, with DeliverClose.
    bool EnterClose() ZELBASE_TRY_ACQUIRE(true, mutex_);
    // Ends a life of which nobody has been told.
    void FinishClose(unsigned life) ZELBASE_EXCLUDES(mutex_);
    // ...and end here: calls the listener with the mutex given back.
    template <typename Call>
    void Deliver(Call call) ZELBASE_RELEASE(mutex_) {
        Deliver(call, false);
    }
    // The life ends with it.
    template <typename Call>
    void DeliverClose(Call call) ZELBASE_RELEASE(mutex_) {
        Deliver(std::move(call), true);
    }
    template <typename Listener>
    void Notify(Listener* listener, void (Listener::*callback)(void*, int), int error)
        ZELBASE_RELEASE(mutex_) {
        Deliver(CallOf(listener, callback, error));
    }
    // The call of a listener, which may be null.
    template <typename Listener>
    auto CallOf(Listener* listener, void (Listener::*callback)(void*, int), int error) const
        ZELBASE_REQUIRES(mutex_) {
        return [=, context = context_] {
            if (listener) {
                (listener->*callback)(context, GenericErrorOf(error));
            }
        };
    }

    void TraceCall(const char* operation) const;
    void LogError(const char* operation, const char* format, int error) const;

    mutable ZelBase::WIN32_Mutex mutex_;
    std::unique_ptr<ZelBase::Logger> logger_;
    // Written with the mutex held; read without it where a change does not matter, or cannot come.
    std::atomic<SOCKET> handle_ = INVALID_SOCKET;
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

    template <typename Call>
    void Deliver(Call call, bool isClose) ZELBASE_RELEASE(mutex_) {
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
        EndDelivery(delivery, isClose);
    }
    bool SelectEvents() ZELBASE_REQUIRES(mutex_);
    // What a close begins with. True when that is all that can be done now; else the place, if
    // there is one, is to be told.
    bool BeginClose(bool fromEvent, SocketPlace& place) ZELBASE_REQUIRES(mutex_);
    void CarryOutClose(const SocketPlace& place, unsigned life) ZELBASE_EXCLUDES(mutex_);
    SocketPlace Discard() ZELBASE_REQUIRES(mutex_);
    void LeavePlace(const SocketPlace& place, unsigned life) ZELBASE_EXCLUDES(mutex_);
    void CloseNow(unsigned life, int error) ZELBASE_EXCLUDES(mutex_);
    void BeginDelivery(Delivery& delivery) ZELBASE_REQUIRES(mutex_);
    void EndDelivery(const Delivery& delivery, bool isClose) ZELBASE_EXCLUDES(mutex_);
    void Unlink(const Delivery& delivery) ZELBASE_REQUIRES(mutex_);
    template <typename Condition>
    bool AnyDelivery(Condition condition) const ZELBASE_REQUIRES(mutex_);
    bool IsDelivered(unsigned life) const ZELBASE_REQUIRES(mutex_);
    bool IsDeliveredBesides(DWORD thread) const ZELBASE_REQUIRES(mutex_);

    ZelBase::WIN32_Event closed_;
    // The number of the present life, or of the last. Like the handle, which is set after it.
    std::atomic<unsigned> life_ = kNoLife;
    // OnClose of that life has begun; when the place is left, too, closed_ is set. Like the handle.
    std::atomic<bool> closing_ = false;
    // The thread on which that life is delivered, 0 when it is not. Like the handle.
    std::atomic<DWORD> deliveringThread_ = 0;
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
