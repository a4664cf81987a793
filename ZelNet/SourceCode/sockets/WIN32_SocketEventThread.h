#pragma once

// A thread that waits for the network events of up to five sockets and passes them on.
//
// A socket lives in a slot. Whoever adds it fills the slot; from then on the thread's loop works
// with it, and other threads reach it by posting: the pair is queued on the slot and the change
// event wakes the loop, which delivers it as a callback on its own thread. Each slot has a lock,
// which the loop holds during callbacks. That is why adding and posting wait for it only for a
// while, and why nobody posts to its slot, or leaves it, with the lock of the socket held. A socket
// is added with its lock held: no callback of it can be in a slot yet.
//
// The thread goes when its last socket has left. It cannot delete itself while it runs, so it
// leaves itself to the next one that goes, or to whoever opens or shuts the socket layer next.

#include "ZelBase/Handles.h"
#include "ZelBase/UniqueResource.h"
#include "ZelBase/log/Logger.h"
#include "ZelBase/threads/CriticalSection.h"
#include "ZelBase/threads/Mutex.h"
#include "ZelBase/threads/Thread.h"

#include <winsock2.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace ZelNet {

// Winsock's resources as owners; see ZelBase/UniqueResource.h.
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

// What a socket event thread calls, on its own thread and with the socket's slot locked. The
// argument of the network events is a Winsock error code. A callback must not block: up to four
// other sockets wait for it. It may remove the socket from the thread.
class WIN32_SocketEventThreadListener {
public:
    virtual void OnAccept(int error) = 0;
    virtual void OnClose(int error) = 0;
    virtual void OnConnect(int error) = 0;
    virtual void OnReceive(int error) = 0;
    virtual void OnSend(int error) = 0;
    // Only ever posted: the address to connect to, in network order.
    virtual void FinishConnect(std::uint32_t address) = 0;

protected:
    ~WIN32_SocketEventThreadListener() = default;
};

class WIN32_SETManager;
class WIN32_SocketEventThread;

// A socket's stay in a slot. The identifier is never used twice, so that a post that comes too late
// does not reach the slot's next socket.
struct SocketPlace {
    std::shared_ptr<WIN32_SocketEventThread> thread;
    std::size_t slot = 0;
    std::uint64_t id = 0;
    WSAEVENT event = WSA_INVALID_EVENT;
};

class WIN32_SocketEventThread final : public std::enable_shared_from_this<WIN32_SocketEventThread> {
public:
    static constexpr std::size_t kSlots = 5;

    // A new thread that runs already; null when the system cannot provide one.
    static std::shared_ptr<WIN32_SocketEventThread>
    Create(const std::shared_ptr<WIN32_SETManager>& manager);

    // Gives the socket a slot on any thread, a new one if need be. The listener is kept alive until
    // the socket is removed. False when there is no socket layer or no more threads.
    static bool Attach(const std::shared_ptr<WIN32_SocketEventThreadListener>& listener,
                       SOCKET socket, SocketPlace& place);

    // Deletes the last thread that has ended.
    static void ReapEnded();

    // Use Create.
    explicit WIN32_SocketEventThread(const std::shared_ptr<WIN32_SETManager>& manager);
    ~WIN32_SocketEventThread();
    WIN32_SocketEventThread(const WIN32_SocketEventThread&) = delete;
    WIN32_SocketEventThread& operator=(const WIN32_SocketEventThread&) = delete;

    // Gives the socket a slot of this thread; false when all are taken, and on the event thread
    // itself. Called with the manager's lock held.
    bool AddSocket(const std::shared_ptr<WIN32_SocketEventThreadListener>& listener, SOCKET socket,
                   SocketPlace& place);
    // Frees the slot. No callback starts afterwards; on other threads than the event thread it
    // waits for one that is running. A place that is no longer the socket's is ignored.
    void RemoveSocket(const SocketPlace& place);

    // Queues OnClose, unless the socket has left its place. A slot that was busy for half a second,
    // or whose queue is full, is closed when it has time: nothing else would end the socket.
    void PostOnClose(const SocketPlace& place);
    // Queue a callback. False when the socket has left its place, when the slot was busy for half a
    // second, and when the queue is full.
    bool PostOnConnect(const SocketPlace& place);
    bool PostOnSend(const SocketPlace& place);
    bool PostFinishConnect(const SocketPlace& place, std::uint32_t address);

    bool IsCurrentThread() const;
    std::size_t SocketCount() const { return socketCount_; }
    // The wrapped thread as it appears in log texts.
    unsigned LogName() const;
    // Makes the loop end.
    void Stop();
    // Waits until the thread has ended; not for the thread itself.
    void Join();

private:
    static constexpr std::uint32_t kNoValue = 0xFFFFFFFF;

    enum class PostedType { kClose = 1, kConnect = 2, kSend = 3, kFinishConnect = 4 };
    struct PostedEvent {
        PostedType type = PostedType::kClose;
        std::uint32_t value = kNoValue;
    };
    // Of fixed size, so that a close can be posted even without memory. A socket never has more
    // than a few posts under way.
    struct PostedQueue {
        std::array<PostedEvent, 8> events;
        std::size_t count = 0;
    };
    // Each round of a lock of the system costs as much as a call of the system, so the loop takes a
    // slot's once for all that there is to do with the slot, and not to see that there is nothing.
    struct Slot {
        ZelBase::WIN32_Mutex mutex;
        // These are written with the mutex held, and read without it to pass by. The event is the
        // one to wait for, null when the slot is free.
        std::atomic<bool> inUse = false;
        std::atomic<WSAEVENT> waitedFor = nullptr;
        std::atomic<std::uint64_t> id = 0;
        std::atomic<bool> hasPosts = false;
        std::shared_ptr<WIN32_SocketEventThreadListener> listener ZELBASE_GUARDED_BY(mutex);
        UniqueWsaEvent event ZELBASE_GUARDED_BY(mutex);
        SOCKET socket ZELBASE_GUARDED_BY(mutex) = INVALID_SOCKET;
        PostedQueue posted ZELBASE_GUARDED_BY(mutex);
        // The newest place whose close could not be queued.
        std::atomic<std::uint64_t> lateClose = 0;
    };
    struct WaitList;
    struct Signalled;
    class ServedSlot;

    bool IsValid() const;
    bool MakeSlot();
    bool FillSlot(std::size_t index,
                  const std::shared_ptr<WIN32_SocketEventThreadListener>& listener, SOCKET socket,
                  SocketPlace& place);
    bool Vacate(Slot& slot, const SocketPlace& place,
                std::shared_ptr<WIN32_SocketEventThreadListener>& listener)
        ZELBASE_REQUIRES(slot.mutex);
    bool LeaveSlot(Slot& slot, const SocketPlace& place,
                   std::shared_ptr<WIN32_SocketEventThreadListener>& listener);
    bool Post(const SocketPlace& place, PostedEvent event);

    std::uint32_t Run();
    bool ServeOneWait();
    void BuildWaitList(WaitList& list);
    void DeliverPosted();
    void DeliverPosted(Slot& slot);
    bool DeliverPosted(ServedSlot& served, std::uint64_t id, PostedEvent event);
    bool ServeSocket(const WaitList& list, DWORD position);
    void LogUnmatchedEvent();
    bool EnumerateEvents(Slot& slot, Signalled& signalled, bool& goOn) ZELBASE_REQUIRES(slot.mutex);
    void DispatchEvents(ServedSlot& served, const Signalled& signalled);
    bool IsPassedOn(const Signalled& signalled, std::size_t index, ZelBase::LogTexts& texts);
    void ReleaseIfUnused();
    void CloseRemovedEvents();
    void CloseRemainingSockets();
    static void Retire(std::shared_ptr<WIN32_SocketEventThread> self);

    const std::weak_ptr<WIN32_SETManager> manager_;
    std::unique_ptr<ZelBase::Logger> logger_;
    ZelBase::UniqueHandle stopEvent_;
    ZelBase::UniqueHandle changeEvent_;
    std::unique_ptr<ZelBase::Thread> thread_;
    // Keeps the object alive from its start until Run takes it over.
    std::shared_ptr<WIN32_SocketEventThread> self_;
    std::atomic<DWORD> threadId_ = 0;
    std::atomic<std::size_t> socketCount_ = 0;
    // Made one after another as sockets come: most threads never have a second one.
    std::array<std::unique_ptr<Slot>, kSlots> slots_;
    std::atomic<std::size_t> slotsMade_ = 0;
    // Of the event thread alone: the slot whose lock it holds.
    Slot* served_ = nullptr;
    ZelBase::CriticalSection removedEventsLock_;
    // Only the loop closes them, so that none is closed while it is waited for. There is always
    // room for those of all slots.
    std::vector<UniqueWsaEvent> removedEvents_ ZELBASE_GUARDED_BY(removedEventsLock_);
    // Of the event thread alone: its last socket left during a callback.
    bool lastSocketLeft_ = false;
    // What sockets that are still there are told when the loop ends.
    int endError_ = WSANOTINITIALISED;
};

} // namespace ZelNet
