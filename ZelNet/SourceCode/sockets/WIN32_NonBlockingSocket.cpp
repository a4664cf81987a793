#include "ZelNet/SourceCode/sockets/WIN32_NonBlockingSocket.h"

#include "ZelNet/SourceCode/ComponentLogger.h"

namespace ZelNet {
namespace {

using ZelBase::LogLevel;
using ZelBase::MutexLock;

// How long an event waits for the socket's mutex before it is dropped.
constexpr std::uint32_t kCallbackTimeoutMs = 500;
// How long a close waits for its own handler before it calls it again.
constexpr std::uint32_t kCloseTimeoutMs = 500;

constexpr long kEvents = FD_READ | FD_WRITE | FD_ACCEPT | FD_CONNECT | FD_CLOSE;

} // namespace

WIN32_NonBlockingSocket::WIN32_NonBlockingSocket(const char* component)
    : logger_(CreateLogger(component)) {}

bool WIN32_NonBlockingSocket::IsValid() const {
    return logger_ && mutex_.IsValid() && closed_.IsValid() && alone_.IsValid();
}

void WIN32_NonBlockingSocket::Abandon() noexcept {
    try {
        bool wait = false;
        {
            MutexLock lock(&mutex_);
            ForgetListener();
            wait = IsDeliveredBesides(GetCurrentThreadId());
            if (wait) {
                awaitingThread_ = GetCurrentThreadId();
            }
        }
        if (wait) {
            alone_.Wait(nullptr);
        }
        CloseSocket(true);
    } catch (...) {
        logger_->Log("Abandon", LogLevel::kError, "Could not close the socket.");
    }
}

void WIN32_NonBlockingSocket::AwaitClosing() {
    if (!closing_) {
        return;
    }
    {
        MutexLock lock(&mutex_);
        const auto isInThatClose = [life = Life()](const Delivery& delivery) {
            return delivery.life == life && delivery.thread == GetCurrentThreadId();
        };
        if (!closing_ || AnyDelivery(isInThatClose)) {
            return;
        }
    }
    closed_.Wait(kCloseTimeoutMs, nullptr);
}

bool WIN32_NonBlockingSocket::Open(int type, std::uint16_t localPort, const IpAddress& localAddress,
                                   unsigned& life) {
    life = kNoLife;
    if (handle_ != INVALID_SOCKET) {
        logger_->Log("Create", LogLevel::kError, "Socket already created.");
        return false;
    }
    const SOCKET handle = socket(AF_INET, type, 0);
    if (handle == INVALID_SOCKET) {
        LogError("Create", "Socket creation failed with error code: %d", WSAGetLastError());
        return false;
    }
    logger_->Log("Create", LogLevel::kTrace, "Socket creation succeeded.  handle: %lu",
                 LogNumber(handle));
    life = ++life_; // first, so that nobody takes the new handle for one of the life before
    deliveringThread_ = 0;
    handle_ = handle;
    closing_ = closeRequested_ = false;
    closeError_ = 0;
    closed_.Reset();
    try {
        created_ = SelectEvents();
    } catch (const std::bad_alloc&) {
        logger_->Log("Create", LogLevel::kError, "Out of memory.");
    }
    const bool bind = localPort != 0 || !(localAddress == IpAddress()) || !localAddress.IsValid();
    if (created_ && bind && !BindHandle(localPort, localAddress)) {
        logger_->Log("Create", LogLevel::kError, "Bind failed.");
        created_ = false;
    }
    // Until FinishClose no other thread opens the socket anew: an event of this life could reach
    // the next one's listener.
    closing_ = !created_;
    return created_;
}

bool WIN32_NonBlockingSocket::SelectEvents() {
    if (!WIN32_SocketEventThread::Attach(shared_from_this(), handle_, place_)) {
        logger_->Log("Create", LogLevel::kError, "WIN32_SocketEventThread::Attach() failed.");
        return false;
    }
    if (WSAEventSelect(handle_, place_.event, kEvents) != 0) {
        LogError("Create", "WSAEvent Select failed with error code: %d", WSAGetLastError());
        return false;
    }
    return true;
}

bool WIN32_NonBlockingSocket::BindHandle(std::uint16_t port, const IpAddress& address) {
    if (!address.IsValid()) {
        logger_->Log("Bind", LogLevel::kError, "Invalid argument.");
        return false;
    }
    sockaddr_in local{};
    local.sin_family = AF_INET;
    local.sin_port = htons(port);
    local.sin_addr.s_addr = inet_addr(address.GetText().c_str());
    if (local.sin_addr.s_addr == INADDR_NONE) {
        logger_->Log("Bind", LogLevel::kError, "Invalid IP address.");
        return false;
    }
    if (::bind(handle_, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0) {
        LogError("Bind", "Bind failed with code: %d", WSAGetLastError());
        return false;
    }
    logger_->Log("Bind", LogLevel::kTrace, "Bind succeeded.");
    return true;
}

bool WIN32_NonBlockingSocket::ShutdownHandle(int how) {
    if (shutdown(handle_, how) != 0) {
        LogError("Shutdown", "shutdown() failed with error code: %d.", WSAGetLastError());
        return false;
    }
    return true;
}

bool WIN32_NonBlockingSocket::CloseSocket(bool fromEvent) {
    // Every socket is closed once more when it is released. That is no call worth a trace when
    // there is nothing to close.
    if (handle_ == INVALID_SOCKET) {
        return false;
    }
    unsigned life = kNoLife;
    SocketPlace place;
    {
        MutexLock lock(&mutex_);
        if (handle_ == INVALID_SOCKET) {
            return false;
        }
        TraceCall("Close");
        life = life_;
        if (BeginClose(fromEvent, place)) {
            return true;
        }
    }
    CarryOutClose(place, life);
    return true;
}

bool WIN32_NonBlockingSocket::CloseLife(unsigned life, bool fromEvent) {
    SocketPlace place;
    {
        MutexLock lock(&mutex_);
        if (!IsLiving(life)) {
            return false;
        }
        if (BeginClose(fromEvent, place)) {
            return true;
        }
    }
    CarryOutClose(place, life);
    return true;
}

bool WIN32_NonBlockingSocket::BeginClose(bool fromEvent, SocketPlace& place) {
    logger_->Log("Close", LogLevel::kTrace, "Calling Shutdown() on socket %d.",
                 static_cast<int>(handle_));
    ShutdownHandle(SD_BOTH);
    const bool onEventThread = place_.thread && place_.thread->IsCurrentThread();
    if (!place_.thread || (fromEvent && onEventThread)) {
        return false;
    }
    closeRequested_ = true;
    if (IsDelivered(life_)) {
        return true; // the delivery closes the socket at its end
    }
    place = place_;
    return false;
}

void WIN32_NonBlockingSocket::CarryOutClose(const SocketPlace& place, unsigned life) {
    if (place.thread) {
        place.thread->PostOnClose(place);
    } else {
        CloseNow(life, 0);
    }
}

// Calls the close handler until it could do its work; it drops the call when the mutex is busy.
// Only the thread that does this can end the life and let the next begin.
void WIN32_NonBlockingSocket::CloseNow(unsigned life, int error) {
    do {
        OnClose(error);
    } while (IsLiving(life) && !closed_.Wait(kCloseTimeoutMs, nullptr));
}

bool WIN32_NonBlockingSocket::Enter() {
    return mutex_.Lock(kCallbackTimeoutMs, nullptr);
}

bool WIN32_NonBlockingSocket::Enter(unsigned life) {
    if (!Enter()) {
        return false;
    }
    if (!IsLiving(life)) {
        mutex_.Unlock();
        return false;
    }
    return true;
}

bool WIN32_NonBlockingSocket::EnterClose() {
    if (!Enter()) {
        return false;
    }
    if (handle_ == INVALID_SOCKET) {
        mutex_.Unlock();
        return false;
    }
    logger_->Log("OnClose", LogLevel::kTrace, "OnClose Begin");
    closing_ = true;
    closeRequested_ = false;
    return true;
}

void WIN32_NonBlockingSocket::FinishClose(unsigned life) {
    SocketPlace place;
    {
        MutexLock lock(&mutex_);
        if (!IsLiving(life)) {
            return;
        }
        place = Discard();
    }
    LeavePlace(place, life);
}

void WIN32_NonBlockingSocket::LeavePlace(const SocketPlace& place, unsigned life) {
    if (place.thread) {
        place.thread->RemoveSocket(place);
    }
    MutexLock lock(&mutex_);
    if (life_ == life) {
        closing_ = false;
        closed_.Set();
    }
}

// Closes the handle. Returns the place on the event thread, which remains to be left.
SocketPlace WIN32_NonBlockingSocket::Discard() {
    logger_->Log("OnClose", LogLevel::kTrace, "Calling closesocket() on socket %d.",
                 static_cast<int>(handle_));
    if (closesocket(handle_) != 0) {
        const int error = WSAGetLastError();
        if (error == WSAENOTSOCK) {
            logger_->Log("OnClose", LogLevel::kWarning, "closesocket() returned already closed.");
        } else {
            LogError("OnClose", "closesocket() failed with error code: %d.", error);
        }
    }
    handle_ = INVALID_SOCKET;
    deliveringThread_ = 0;
    created_ = false;
    ForgetListener();
    return std::exchange(place_, SocketPlace());
}

void WIN32_NonBlockingSocket::BeginDelivery(Delivery& delivery) {
    delivery.life = life_;
    delivery.next = std::exchange(deliveries_, &delivery);
    deliveringThread_ = delivery.thread;
}

void WIN32_NonBlockingSocket::EndDelivery(const Delivery& delivery, bool isClose) {
    const unsigned life = delivery.life;
    bool closeAgain = false;
    bool discarded = false;
    int error = 0;
    SocketPlace place;
    {
        MutexLock lock(&mutex_);
        Unlink(delivery);
        if (delivery.failed && IsLiving(life)) {
            closeRequested_ = true;
            closeError_ = WSAENOBUFS;
        }
        closeAgain = closeRequested_ && IsLiving(life) && !IsDelivered(life);
        error = closeError_;
        // The listener may have closed the socket in its OnClose, and even have opened it again.
        discarded = isClose && !closeAgain && IsLiving(life);
        if (discarded) {
            place = Discard();
        }
    }
    if (closeAgain) {
        CloseNow(life, error);
    } else if (discarded) {
        LeavePlace(place, life);
    }
}

void WIN32_NonBlockingSocket::Unlink(const Delivery& delivery) {
    Delivery** link = &deliveries_;
    while (*link != &delivery) {
        link = &(*link)->next;
    }
    *link = delivery.next;
    if (delivery.life == life_ && !IsDelivered(life_)) {
        deliveringThread_ = 0;
    }
    if (awaitingThread_ != 0 && !IsDeliveredBesides(awaitingThread_)) {
        alone_.Set();
    }
}

template <typename Condition>
bool WIN32_NonBlockingSocket::AnyDelivery(Condition condition) const {
    const Delivery* delivery = deliveries_;
    while (delivery && !condition(*delivery)) {
        delivery = delivery->next;
    }
    return delivery != nullptr;
}

bool WIN32_NonBlockingSocket::IsDelivered(unsigned life) const {
    return AnyDelivery([&](const Delivery& delivery) { return delivery.life == life; });
}

bool WIN32_NonBlockingSocket::IsDeliveredBesides(DWORD thread) const {
    return AnyDelivery([&](const Delivery& delivery) { return delivery.thread != thread; });
}

void WIN32_NonBlockingSocket::TraceCall(const char* operation) const {
    logger_->Log(operation, LogLevel::kTrace, "Calling %s.", operation);
}

void WIN32_NonBlockingSocket::LogError(const char* operation, const char* format, int error) const {
    logger_->Log(operation, LogLevel::kError, format, error);
}

} // namespace ZelNet
