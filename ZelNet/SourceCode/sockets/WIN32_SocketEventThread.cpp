#include "ZelNet/SourceCode/sockets/WIN32_SocketEventThread.h"

#include "ZelBase/threads/Mutex.h"
#include "ZelNet/SourceCode/ComponentLogger.h"
#include "ZelNet/SourceCode/sockets/WIN32_SETManager.h"

#include <algorithm>

namespace ZelNet {
namespace {

using ZelBase::CriticalSectionLock;
using ZelBase::LogLevel;
using ZelBase::LogTexts;
using ZelBase::MutexLock;

// How long adding and posting wait for a slot.
constexpr std::uint32_t kSlotTimeoutMs = 500;
// Attempts to close a socket whose own lock is busy, when the thread ends.
constexpr int kCloseAttempts = 10;

// The wait list: what makes the loop end, what tells it of changes, then the sockets.
constexpr DWORD kStopPosition = 0;
constexpr DWORD kChangePosition = 1;
constexpr DWORD kFirstSocketPosition = 2;

// In the order in which they are passed on when several have happened.
struct NetworkEvent {
    long bit;
    int errorIndex;
    void (WIN32_SocketEventThreadListener::*callback)(int error);
};
constexpr NetworkEvent kNetworkEvents[] = {
    {FD_ACCEPT, FD_ACCEPT_BIT, &WIN32_SocketEventThreadListener::OnAccept},
    {FD_CONNECT, FD_CONNECT_BIT, &WIN32_SocketEventThreadListener::OnConnect},
    {FD_READ, FD_READ_BIT, &WIN32_SocketEventThreadListener::OnReceive},
    {FD_WRITE, FD_WRITE_BIT, &WIN32_SocketEventThreadListener::OnSend},
    {FD_CLOSE, FD_CLOSE_BIT, &WIN32_SocketEventThreadListener::OnClose},
};

std::atomic<std::uint64_t> lastPlaceId = 0;

// The thread that came to its end last and waits to be deleted by another one. Never destroyed,
// because it may outlive all static objects.
struct EndedThread {
    // Returns the one before.
    std::shared_ptr<WIN32_SocketEventThread>
    Exchange(std::shared_ptr<WIN32_SocketEventThread> next) {
        CriticalSectionLock guard(lock);
        return std::exchange(last, std::move(next));
    }

    ZelBase::CriticalSection lock;
    std::shared_ptr<WIN32_SocketEventThread> last ZELBASE_GUARDED_BY(lock);
};

EndedThread& Ended() {
    static EndedThread& ended = *new EndedThread;
    return ended;
}

} // namespace

struct WIN32_SocketEventThread::WaitList {
    // One more than there can be, see ServeSocket.
    std::array<HANDLE, kFirstSocketPosition + kSlots + 1> handles{};
    std::array<Slot*, kFirstSocketPosition + kSlots + 1> slots{};
    DWORD count = 0;

    void Add(HANDLE handle, Slot* slot = nullptr) {
        handles[count] = handle;
        slots[count] = slot;
        ++count;
    }
};

// A slot with which the loop is at work: its lock is held.
class ZELBASE_SCOPED_LOCKABLE WIN32_SocketEventThread::ServedSlot {
public:
    // The analysis does not see the lock in the member.
    ServedSlot(WIN32_SocketEventThread& thread, Slot& slot)
        ZELBASE_ACQUIRE(slot.mutex) ZELBASE_NO_LOCK_ANALYSIS : thread_(thread),
                                                               slot_(slot),
                                                               lock_(&slot.mutex) {
        thread_.served_ = &slot;
    }
    ~ServedSlot() ZELBASE_RELEASE() ZELBASE_NO_LOCK_ANALYSIS { thread_.served_ = nullptr; }
    ServedSlot(const ServedSlot&) = delete;
    ServedSlot& operator=(const ServedSlot&) = delete;

    // Calls the listener, unless the socket has left.
    template <typename Call>
    void Deliver(std::uint64_t id, Call call) ZELBASE_NO_LOCK_ANALYSIS {
        if (!slot_.inUse || slot_.id != id) {
            return;
        }
        listener_ = slot_.listener;
        try {
            call(*listener_);
        } catch (...) {
            thread_.logger_->Log("Run", LogLevel::kError,
                                 "Uncaught exception in a socket callback. Closing the socket.");
            listener_->OnClose(WSAENOBUFS);
        }
    }

private:
    WIN32_SocketEventThread& thread_;
    Slot& slot_;
    // Kept until the lock is released: the callback may remove the socket, and the listener's end
    // may wait for threads that want to post here.
    std::shared_ptr<WIN32_SocketEventThreadListener> listener_;
    MutexLock lock_;
};

struct WIN32_SocketEventThread::Signalled {
    WSANETWORKEVENTS events{};
    std::uint64_t id = 0;
    WSAEVENT event = WSA_INVALID_EVENT;
    SOCKET socket = INVALID_SOCKET;
};

std::shared_ptr<WIN32_SocketEventThread>
WIN32_SocketEventThread::Create(const std::shared_ptr<WIN32_SETManager>& manager) {
    auto created = std::make_shared<WIN32_SocketEventThread>(manager);
    if (!created->IsValid()) {
        return nullptr;
    }
    created->self_ = created;
    if (!created->thread_->Execute()) {
        created->self_.reset();
        return nullptr;
    }
    return created;
}

bool WIN32_SocketEventThread::Attach(
    const std::shared_ptr<WIN32_SocketEventThreadListener>& listener, SOCKET socket,
    SocketPlace& place) {
    const auto manager = WIN32_SETManager::Current();
    return manager && manager->Attach(listener, socket, place);
}

void WIN32_SocketEventThread::ReapEnded() {
    Retire(nullptr);
}

WIN32_SocketEventThread::WIN32_SocketEventThread(const std::shared_ptr<WIN32_SETManager>& manager)
    : manager_(manager), logger_(CreateLogger("WIN32_SocketEventThread")),
      stopEvent_(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
      changeEvent_(CreateEventA(nullptr, FALSE, FALSE, nullptr)),
      thread_(ZelBase::Thread::Create()) {
    if (thread_) {
        thread_->SetThreadFunction([this](ZelBase::Thread*, std::uint32_t) { return Run(); });
    }
}

WIN32_SocketEventThread::~WIN32_SocketEventThread() {
    if (thread_) {
        Join();
    }
}

bool WIN32_SocketEventThread::IsValid() const {
    return logger_ && stopEvent_ && changeEvent_ && thread_;
}

bool WIN32_SocketEventThread::IsCurrentThread() const {
    return threadId_ == GetCurrentThreadId();
}

unsigned WIN32_SocketEventThread::LogName() const {
    return static_cast<unsigned>(LogNumber(thread_.get()));
}

void WIN32_SocketEventThread::Stop() {
    SetEvent(stopEvent_.Get());
}

void WIN32_SocketEventThread::Join() {
    thread_->Terminate(false);
}

bool WIN32_SocketEventThread::AddSocket(
    const std::shared_ptr<WIN32_SocketEventThreadListener>& listener, SOCKET socket,
    SocketPlace& place) {
    if (IsCurrentThread()) {
        return false;
    }
    for (std::size_t index = 0; index < slotsMade_ || MakeSlot(); ++index) {
        if (!slots_[index]->inUse && FillSlot(index, listener, socket, place)) {
            return true;
        }
    }
    return false;
}

bool WIN32_SocketEventThread::MakeSlot() {
    if (slotsMade_ == kSlots) {
        return false;
    }
    auto slot = std::make_unique<Slot>();
    if (!slot->mutex.IsValid()) {
        return false;
    }
    slots_[slotsMade_] = std::move(slot);
    ++slotsMade_;
    return true;
}

bool WIN32_SocketEventThread::FillSlot(
    std::size_t index, const std::shared_ptr<WIN32_SocketEventThreadListener>& listener,
    SOCKET socket, SocketPlace& place) {
    Slot& slot = *slots_[index];
    if (!slot.mutex.Lock(kSlotTimeoutMs, nullptr)) {
        return false;
    }
    ZelBase::MutexReleaser releaser(slot.mutex);
    UniqueWsaEvent event(WSACreateEvent());
    if (slot.inUse || !event) {
        return false;
    }
    {
        CriticalSectionLock guard(removedEventsLock_);
        removedEvents_.reserve(removedEvents_.size() + kSlots);
    }
    slot.listener = listener;
    slot.event = std::move(event);
    slot.socket = socket;
    slot.id = ++lastPlaceId;
    slot.inUse = true;
    place = {shared_from_this(), index, slot.id, slot.event.Get()};
    const std::size_t count = ++socketCount_;
    logger_->Log("AddSocket", LogLevel::kTrace,
                 "Adding socket #%d from listener: %lu with event: %lu to thread: %0x count: %lu",
                 static_cast<int>(index), LogNumber(listener.get()), LogNumber(slot.event.Get()),
                 LogName(), static_cast<unsigned long>(count));
    // Last: the loop looks without the lock, and tells of the socket.
    slot.waitedFor = slot.event.Get();
    SetEvent(changeEvent_.Get());
    return true;
}

void WIN32_SocketEventThread::RemoveSocket(const SocketPlace& place) {
    // The last reference must not go while the slot is locked.
    std::shared_ptr<WIN32_SocketEventThreadListener> listener;
    if (!LeaveSlot(*slots_[place.slot], place, listener)) {
        return;
    }
    // Counted last: whoever finds that the last socket has left finds its slot free.
    const std::size_t left = --socketCount_;
    SetEvent(changeEvent_.Get());
    if (left != 0) {
        return;
    }
    logger_->Log("RemoveSocket", LogLevel::kTrace, "Releasing thread: %0x", LogName());
    if (IsCurrentThread()) {
        // A callback is running under its slot's lock, with which the manager's must not be taken:
        // the loop does it when the callback is over.
        lastSocketLeft_ = true;
    } else if (const auto manager = manager_.lock()) {
        manager->ReleaseThread(*this);
    }
}

// False when the place is no longer the socket's. In a callback the event thread has the lock.
bool WIN32_SocketEventThread::LeaveSlot(Slot& slot, const SocketPlace& place,
                                        std::shared_ptr<WIN32_SocketEventThreadListener>& listener)
    ZELBASE_NO_LOCK_ANALYSIS {
    if (IsCurrentThread() && served_ == &slot) {
        return Vacate(slot, place, listener);
    }
    MutexLock lock(&slot.mutex);
    return Vacate(slot, place, listener);
}

bool WIN32_SocketEventThread::Vacate(Slot& slot, const SocketPlace& place,
                                     std::shared_ptr<WIN32_SocketEventThreadListener>& listener) {
    if (!slot.inUse || slot.id != place.id) {
        return false;
    }
    slot.waitedFor = nullptr; // first: the loop tells of the socket no more
    logger_->Log("RemoveSocket", LogLevel::kTrace,
                 "removing socket #%d from listener: %lu with event: %lu from thread: %0x",
                 static_cast<int>(place.slot), LogNumber(slot.listener.get()),
                 LogNumber(slot.event.Get()), LogName());
    {
        CriticalSectionLock guard(removedEventsLock_);
        removedEvents_.push_back(std::move(slot.event));
    }
    listener = std::move(slot.listener);
    slot.socket = INVALID_SOCKET;
    slot.posted.count = 0;
    slot.hasPosts = false;
    slot.inUse = false;
    return true;
}

void WIN32_SocketEventThread::PostOnClose(const SocketPlace& place) {
    if (Post(place, {PostedType::kClose, kNoValue})) {
        return;
    }
    auto& late = slots_[place.slot]->lateClose;
    std::uint64_t newest = late;
    while (newest < place.id && !late.compare_exchange_weak(newest, place.id)) {
    }
    SetEvent(changeEvent_.Get());
}

bool WIN32_SocketEventThread::PostOnConnect(const SocketPlace& place) {
    return Post(place, {PostedType::kConnect, kNoValue});
}

bool WIN32_SocketEventThread::PostOnSend(const SocketPlace& place) {
    return Post(place, {PostedType::kSend, kNoValue});
}

bool WIN32_SocketEventThread::PostFinishConnect(const SocketPlace& place, std::uint32_t address) {
    return Post(place, {PostedType::kFinishConnect, address});
}

bool WIN32_SocketEventThread::Post(const SocketPlace& place, PostedEvent event) {
    Slot& slot = *slots_[place.slot];
    if (!slot.mutex.Lock(kSlotTimeoutMs, nullptr)) {
        return false;
    }
    ZelBase::MutexReleaser releaser(slot.mutex);
    PostedQueue& posted = slot.posted;
    if (!slot.inUse || slot.id != place.id || posted.count == posted.events.size()) {
        return false;
    }
    posted.events[posted.count++] = event;
    slot.hasPosts = true;
    SetEvent(changeEvent_.Get());
    return true;
}

std::uint32_t WIN32_SocketEventThread::Run() {
    auto self = std::move(self_);
    threadId_ = GetCurrentThreadId();
    try {
        while (ServeOneWait()) {
            ReleaseIfUnused();
        }
    } catch (...) {
        logger_->Log("Run", LogLevel::kError, "Uncaught exception. Ending the thread.");
        endError_ = WSAENOBUFS;
    }
    if (const auto manager = manager_.lock()) {
        manager->Forget(*this);
    }
    CloseRemainingSockets();
    CloseRemovedEvents();
    Retire(std::move(self));
    threadId_ = 0;
    if (const auto manager = manager_.lock()) {
        manager->ThreadHasEnded(*this);
    }
    return 0;
}

// False when the thread shall end.
bool WIN32_SocketEventThread::ServeOneWait() {
    WaitList list;
    BuildWaitList(list);
    const DWORD position = WaitForMultipleObjects(list.count, list.handles.data(), FALSE, INFINITE);
    if (position == kStopPosition) {
        return false;
    }
    if (position == kChangePosition) {
        logger_->Log("Run", LogLevel::kTrace, "Waking up for change event");
        DeliverPosted();
        CloseRemovedEvents();
        return true;
    }
    if (position == WAIT_FAILED) {
        logger_->Log("Run", LogLevel::kError,
                     "Invalid handle detected. Rebuilding event thread list.");
        return true;
    }
    return ServeSocket(list, position);
}

// Without any slot's lock: only this thread closes an event, and whoever takes or leaves a slot
// after it was looked at sets the change event.
void WIN32_SocketEventThread::BuildWaitList(WaitList& list) {
    list.Add(stopEvent_.Get());
    list.Add(changeEvent_.Get());
    LogTexts texts;
    static_assert(LogTexts::kMost > kSlots);
    for (std::size_t index = 0; index < slotsMade_; ++index) {
        Slot& slot = *slots_[index];
        if (const WSAEVENT event = slot.waitedFor) {
            list.Add(event, &slot);
            texts.Add("Socket #%lu, event = %lu alive.", static_cast<unsigned long>(index),
                      LogNumber(event));
        }
    }
    texts.Add("Waiting for socket events with %d sockets",
              static_cast<int>(list.count - kFirstSocketPosition));
    logger_->Log("Run", LogLevel::kTrace, texts);
}

void WIN32_SocketEventThread::DeliverPosted() {
    for (std::size_t index = 0; index < slotsMade_; ++index) {
        Slot& slot = *slots_[index];
        if (slot.inUse && (slot.hasPosts || slot.lateClose == slot.id)) {
            DeliverPosted(slot);
        }
    }
}

// A socket whose lock is busy for long drops the event, as it does with all others. A close is
// delivered again until the socket has left.
void WIN32_SocketEventThread::DeliverPosted(Slot& slot) {
    ServedSlot served(*this, slot);
    const PostedQueue posted = std::exchange(slot.posted, PostedQueue());
    slot.hasPosts = false;
    const std::uint64_t id = slot.id;
    bool close = slot.lateClose == id;
    for (std::size_t index = 0; index < posted.count && !close; ++index) {
        close = DeliverPosted(served, id, posted.events[index]);
    }
    if (!close) {
        return;
    }
    served.Deliver(id, [](WIN32_SocketEventThreadListener& listener) { listener.OnClose(0); });
    if (slot.inUse && slot.id == id) {
        slot.lateClose = id;
        SetEvent(changeEvent_.Get());
    }
}

// True when it was the close, which remains to be delivered.
bool WIN32_SocketEventThread::DeliverPosted(ServedSlot& served, std::uint64_t id,
                                            PostedEvent event) {
    logger_->Log("Run", LogLevel::kTrace, "Processing post event for event: %lu",
                 static_cast<unsigned long>(event.type));
    bool close = false;
    served.Deliver(id, [&](WIN32_SocketEventThreadListener& listener) {
        switch (event.type) {
        case PostedType::kClose:
            close = true;
            return;
        case PostedType::kConnect:
            return listener.OnConnect(0);
        case PostedType::kSend:
            return listener.OnSend(0);
        case PostedType::kFinishConnect:
            return listener.FinishConnect(event.value);
        }
    });
    return close;
}

// False when the thread shall end.
bool WIN32_SocketEventThread::ServeSocket(const WaitList& list, DWORD position) {
    // The bound is one higher than the last slot on purpose; the list has an empty place there.
    if (position - kFirstSocketPosition > kSlots) {
        logger_->Log("Run", LogLevel::kError,
                     "Received an invalid index from WaitForMultilpleObjects");
        return false;
    }
    Slot* slot = list.slots[position];
    Signalled signalled;
    signalled.event = list.handles[position];
    if (!slot) {
        LogUnmatchedEvent();
        return true;
    }
    bool goOn = true;
    ServedSlot served(*this, *slot);
    if (EnumerateEvents(*slot, signalled, goOn)) {
        DispatchEvents(served, signalled);
    }
    return goOn;
}

void WIN32_SocketEventThread::LogUnmatchedEvent() {
    logger_->Log("Run", LogLevel::kWarning,
                 "WaitForMultilpleObjects returned with event that could not be matched");
}

// Finds out what has happened to the slot's socket. False when there is nothing to dispatch; then
// `goOn` tells whether the thread can go on.
bool WIN32_SocketEventThread::EnumerateEvents(Slot& slot, Signalled& signalled, bool& goOn) {
    if (!slot.inUse || slot.event.Get() != signalled.event) {
        LogUnmatchedEvent();
        return false;
    }
    signalled.id = slot.id;
    signalled.socket = slot.socket;
    if (slot.socket == INVALID_SOCKET) {
        logger_->Log("Run", LogLevel::kWarning,
                     "WaitForMultilpleObjects returned with event for a socket marked as invalid");
        WSAResetEvent(signalled.event);
        return false;
    }
    if (WSAEnumNetworkEvents(slot.socket, signalled.event, &signalled.events) != 0) {
        const int error = WSAGetLastError();
        if (error == WSAENOTSOCK) {
            logger_->Log("Run", LogLevel::kWarning,
                         "WSAEnumNetworkEvents returned with dead socket");
            WSAResetEvent(signalled.event);
            return false;
        }
        logger_->Log("Run", LogLevel::kError, "WSAEnumNetworkEvents failed with code: %d", error);
        endError_ = error;
        goOn = false;
        return false;
    }
    return true;
}

// What follows each other without a callback between is written at once, before the callback.
void WIN32_SocketEventThread::DispatchEvents(ServedSlot& served, const Signalled& signalled) {
    LogTexts texts;
    texts.Add("Network events: %lu on event: %lu",
              static_cast<unsigned long>(signalled.events.lNetworkEvents),
              LogNumber(signalled.event));
    for (std::size_t index = 0; index < std::size(kNetworkEvents); ++index) {
        if (!IsPassedOn(signalled, index, texts)) {
            continue;
        }
        logger_->Log("Run", LogLevel::kTrace, texts);
        texts.Clear();
        const NetworkEvent& event = kNetworkEvents[index];
        served.Deliver(signalled.id, [&](WIN32_SocketEventThreadListener& listener) {
            (listener.*event.callback)(signalled.events.iErrorCode[event.errorIndex]);
        });
    }
    logger_->Log("Run", LogLevel::kTrace, texts);
}

bool WIN32_SocketEventThread::IsPassedOn(const Signalled& signalled, std::size_t index,
                                         LogTexts& texts) {
    const NetworkEvent& event = kNetworkEvents[index];
    if ((signalled.events.lNetworkEvents & event.bit) == 0) {
        texts.Add("Processing events that do no belong to this socket.");
        return false;
    }
    if (event.bit == FD_CONNECT && signalled.events.iErrorCode[event.errorIndex] == WSAEINTR) {
        texts.Add("Ingoring interrupted call on event: %lu", LogNumber(signalled.event));
        return false;
    }
    if (event.bit == FD_CLOSE) {
        texts.Add("Events(%u) for socket(%u), closing.",
                  static_cast<unsigned>(signalled.events.lNetworkEvents),
                  static_cast<unsigned>(signalled.socket));
    }
    return true;
}

void WIN32_SocketEventThread::ReleaseIfUnused() {
    if (!std::exchange(lastSocketLeft_, false)) {
        return;
    }
    if (const auto manager = manager_.lock()) {
        manager->ReleaseThread(*this);
    }
}

void WIN32_SocketEventThread::CloseRemovedEvents() {
    CriticalSectionLock guard(removedEventsLock_);
    if (removedEvents_.empty()) {
        return;
    }
    LogTexts texts;
    texts.Add("Clearing events");
    for (const UniqueWsaEvent& event : removedEvents_) {
        if (texts.Count() == LogTexts::kMost) {
            logger_->Log("Run", LogLevel::kTrace, texts);
            texts.Clear();
        }
        texts.Add("Clearing event: %u", static_cast<unsigned>(LogNumber(event.Get())));
    }
    logger_->Log("Run", LogLevel::kTrace, texts);
    removedEvents_.clear();
}

// The manager no longer knows this thread, so no more sockets come.
void WIN32_SocketEventThread::CloseRemainingSockets() {
    for (std::size_t index = 0; index < slotsMade_; ++index) {
        Slot& slot = *slots_[index];
        SocketPlace place;
        place.slot = index;
        place.id = slot.id;
        for (int attempt = 0; slot.inUse && attempt < kCloseAttempts; ++attempt) {
            ServedSlot served(*this, slot);
            served.Deliver(place.id, [&](WIN32_SocketEventThreadListener& listener) {
                listener.OnClose(endError_);
            });
        }
        if (slot.inUse) {
            RemoveSocket(place);
        }
    }
}

// A thread joins the one that came to its end before it, so that no two wait for each other.
void WIN32_SocketEventThread::Retire(std::shared_ptr<WIN32_SocketEventThread> self) {
    if (const auto previous = Ended().Exchange(std::move(self))) {
        previous->Join();
    }
}

} // namespace ZelNet
