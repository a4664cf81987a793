#include "ZelNet/SourceCode/ALineSocket.h"

#include "ZelBase/text/SecretText.h"
#include "ZelBase/threads/Mutex.h"
#include "ZelBase/threads/Thread.h"
#include "ZelNet/SourceCode/ComponentLogger.h"
#include "ZelNet/SourceCode/LineReading.h"
#include "ZelNet/SourceCode/SendQueue.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

namespace ZelNet {
namespace {

using ZelBase::ADynaByteBuffer;
using ZelBase::LogLevel;
using ZelBase::MutexLock;
using ZelBase::ThreadTerminateException;

constexpr std::size_t kBufferSize = 5120;
constexpr std::size_t kBufferGrowth = 1024;
// Data is received and sent in pieces of this size.
constexpr std::size_t kChunkSize = 512;

constexpr char kLineEndFormat[] = "NL found at index %lu";

const char kSourcePath[] = "ZelNet/SourceCode/ALineSocket";

std::uint32_t Count(std::size_t size) {
    return static_cast<std::uint32_t>(size);
}

} // namespace

// The listener of the TCP socket, with all that its callbacks need.
class ATcpNonBlockingLineSocket::InternalListener final
    : public TcpNonBlockingSocketListener,
      public std::enable_shared_from_this<InternalListener> {
public:
    InternalListener(ATcpNonBlockingLineSocket* owner, TcpNonBlockingClientSocket* socket)
        : owner_(owner), socket_(socket), logger_(CreateLogger("ATcpNonBlockingLineSocket")) {}

    bool IsValid() const { return socket_ && logger_ && mutex_.IsValid(); }

    bool Create(TcpNonBlockingLineSocketListener* listener, std::uint16_t localPort,
                const IpAddress& localAddress, bool secure);
    std::uint32_t ReceiveLine(std::string& line);
    std::uint32_t Receive(void* dest, std::uint32_t size);
    std::uint32_t Peek(void* dest, std::uint32_t size);
    std::uint32_t Send(const void* data, std::uint32_t size);
    bool Send(std::unique_ptr<SendSource> source);
    std::uint32_t Available();
    std::uint32_t BytesReceived();
    std::uint32_t Unsent();
    void ClearReceiveBuffer();
    void SetLineMode(bool lineMode);
    void BeginClosing() { closing_ = true; }
    // Ends `socket`, perhaps in a callback. Opened anew there, it may be calling on another thread,
    // which waits for the mutex of this callback; its end waits for that thread.
    void Release(std::shared_ptr<TcpNonBlockingClientSocket> socket) ZELBASE_NO_LOCK_ANALYSIS;

    void OnAccept(void* context, int error) override;
    void OnClose(void* context, int error) override;
    void OnConnect(void* context, int error) override;
    void OnOutOfBandData(void* context, int error) override;
    void OnReceive(void* context, int error) override;
    void OnSend(void* context, int error) override;

private:
    // Runs `operation` with the mutex held and returns its result; `failure` when the mutex cannot
    // be had.
    template <typename Operation, typename Result>
    Result WithLock(Operation operation, Result failure, int line = __builtin_LINE());

    // The socket may be closed in any call of the listener, and even be opened again there.
    bool IsOver(unsigned life) const { return closing_ || life_ != life; }
    bool ReceiveChunk(int error);
    void TraceChunk(const char* chunk, std::size_t size, const char* lineEnd);
    void AnnounceLines(const char* chunk, std::size_t size, const char* lineEnd, int error);
    void SendData(int error);
    bool SendChunk();
    // Calls the listener, unless the socket is closed.
    void Tell(void (TcpNonBlockingLineSocketListener::*callback)(void*, int), int error);

    ATcpNonBlockingLineSocket* const owner_;
    // Owned by the owner. Callbacks may use it: it outlives them.
    TcpNonBlockingClientSocket* const socket_;
    std::unique_ptr<ZelBase::Logger> logger_;
    // Guards the buffers and the use of the socket.
    ZelBase::WIN32_Mutex mutex_;
    // Null while the socket is closed. Not under the mutex: the callbacks that tell of connections
    // do not wait for user calls.
    std::atomic<TcpNonBlockingLineSocketListener*> listener_ = nullptr;
    // Counts how often the socket was opened.
    unsigned life_ = 0;
    ADynaByteBuffer receiveBuffer_{kBufferSize, kBufferGrowth};
    SendQueue sendQueue_{kBufferSize, kBufferGrowth};
    std::array<char, kChunkSize> staging_;
    std::uint32_t bytesReceived_ = 0;
    bool lineMode_ = true;
    // Not under the mutex, so that a close need not wait for a receive loop.
    std::atomic<bool> closing_ = false;
};

template <typename Operation, typename Result>
Result ATcpNonBlockingLineSocket::InternalListener::WithLock(Operation operation, Result failure,
                                                             int line) {
    try {
        // In a callback the thread has the mutex already. Locking it once more for every line would
        // cost more than reading the line.
        if (mutex_.OwnerThreadId() == GetCurrentThreadId()) {
            return operation();
        }
        MutexLock lock(&mutex_);
        return operation();
    } catch (const ThreadTerminateException&) {
        logger_->Log("ATcpNonBlockingLineSocket General", LogLevel::kError,
                     "Mutex ThreadTerminate Exception at %s line %d", kSourcePath, line);
    }
    return failure;
}

void ATcpNonBlockingLineSocket::InternalListener::Release(
    std::shared_ptr<TcpNonBlockingClientSocket> socket) ZELBASE_NO_LOCK_ANALYSIS {
    const bool isCallback = mutex_.OwnerThreadId() == GetCurrentThreadId();
    if (isCallback) {
        mutex_.Unlock();
    }
    socket.reset();
    if (isCallback) {
        mutex_.Lock(nullptr); // which the callback gives back at its end
    }
}

bool ATcpNonBlockingLineSocket::InternalListener::Create(TcpNonBlockingLineSocketListener* listener,
                                                         std::uint16_t localPort,
                                                         const IpAddress& localAddress,
                                                         bool secure) {
    return WithLock(
        [&] {
            // Before the socket is open, because from then on it may close.
            TcpNonBlockingLineSocketListener* none = nullptr;
            if (!listener_.compare_exchange_strong(none, listener)) {
                logger_->Log("Create", LogLevel::kError, "Socket already created.");
                return false;
            }
            if (!socket_->Create(this, localPort, localAddress, secure)) {
                listener_ = nullptr;
                return false;
            }
            ++life_;
            receiveBuffer_.Clear();
            sendQueue_.Clear();
            lineMode_ = true;
            closing_ = false;
            return true;
        },
        false);
}

std::uint32_t ATcpNonBlockingLineSocket::InternalListener::ReceiveLine(std::string& line) {
    return WithLock(
        [&] {
            const std::size_t available = receiveBuffer_.Size();
            logger_->Log("ReceiveLine", LogLevel::kTrace, "Called with %lu available characters",
                         static_cast<unsigned long>(available));
            if (available == 0) {
                return kNoLine;
            }
            if (!TakeLine(receiveBuffer_, line)) {
                logger_->Log("ReceiveLine", LogLevel::kTrace, "No LF found in available data");
                return kNoLine;
            }
            return Count(line.size());
        },
        kNoLine);
}

std::uint32_t ATcpNonBlockingLineSocket::InternalListener::Receive(void* dest, std::uint32_t size) {
    return WithLock(
        [&] {
            const std::uint32_t count = std::min(size, Count(receiveBuffer_.Size()));
            return receiveBuffer_.Read(dest, count, false) ? count : 0u;
        },
        0u);
}

std::uint32_t ATcpNonBlockingLineSocket::InternalListener::Peek(void* dest, std::uint32_t size) {
    return WithLock(
        [&] {
            receiveBuffer_.Read(dest, size, true); // all or nothing, on purpose
            return std::min(size, Count(receiveBuffer_.Size()));
        },
        0u);
}

std::uint32_t ATcpNonBlockingLineSocket::InternalListener::Send(const void* data,
                                                                std::uint32_t size) {
    if (!data || size == 0) {
        return 0;
    }
    return WithLock(
        [&] {
            if (!sendQueue_.Append(data, size)) {
                return 0u;
            }
            SendData(0);
            return size;
        },
        0u);
}

bool ATcpNonBlockingLineSocket::InternalListener::Send(std::unique_ptr<SendSource> source) {
    return WithLock(
        [&] {
            if (!sendQueue_.Append(std::move(source))) {
                return false;
            }
            SendData(0);
            return true;
        },
        false);
}

std::uint32_t ATcpNonBlockingLineSocket::InternalListener::Available() {
    return WithLock([&] { return Count(receiveBuffer_.Size()); }, 0u);
}

std::uint32_t ATcpNonBlockingLineSocket::InternalListener::BytesReceived() {
    return WithLock([&] { return bytesReceived_; }, 0u);
}

std::uint32_t ATcpNonBlockingLineSocket::InternalListener::Unsent() {
    return WithLock([&] { return Count(sendQueue_.Size()); }, 0u);
}

void ATcpNonBlockingLineSocket::InternalListener::ClearReceiveBuffer() {
    WithLock(
        [&] {
            receiveBuffer_.Clear();
            return true;
        },
        false);
}

void ATcpNonBlockingLineSocket::InternalListener::SetLineMode(bool lineMode) {
    WithLock([&] { return lineMode_ = lineMode; }, false);
}

void ATcpNonBlockingLineSocket::InternalListener::OnAccept(void* /*context*/, int error) {
    Tell(&TcpNonBlockingLineSocketListener::OnAccept, error);
}

void ATcpNonBlockingLineSocket::InternalListener::OnClose(void* /*context*/, int error) {
    if (auto* listener = listener_.exchange(nullptr)) {
        listener->OnClose(owner_, error);
    }
}

void ATcpNonBlockingLineSocket::InternalListener::OnConnect(void* /*context*/, int error) {
    Tell(&TcpNonBlockingLineSocketListener::OnConnect, error);
}

void ATcpNonBlockingLineSocket::InternalListener::OnOutOfBandData(void* /*context*/, int error) {
    Tell(&TcpNonBlockingLineSocketListener::OnOutOfBandData, error);
}

void ATcpNonBlockingLineSocket::InternalListener::OnReceive(void* /*context*/, int error) {
    const auto self = shared_from_this(); // the listener may destroy the owner
    WithLock(
        [&] {
            while (ReceiveChunk(error)) {
            }
            return true;
        },
        false);
}

// False when there is no more to do.
bool ATcpNonBlockingLineSocket::InternalListener::ReceiveChunk(int error) {
    char chunk[kChunkSize];
    const unsigned life = life_;
    const std::uint32_t size = closing_ ? 0 : socket_->Receive(chunk, sizeof chunk);
    if (size == 0) {
        return false;
    }
    bytesReceived_ += size;
    const bool isKept = receiveBuffer_.Append(chunk, size);
    const char* const lineEnd =
        isKept && lineMode_ && !IsOver(life) ? std::find(chunk, chunk + size, '\n') : chunk + size;
    TraceChunk(chunk, size, lineEnd);
    if (!isKept) {
        logger_->Log("ReceiveData", LogLevel::kError, "Out of memory. Closing the socket.");
        BeginClosing();
        socket_->Close(true);
        return false;
    }
    AnnounceLines(chunk, size, lineEnd, error);
    if (!IsOver(life)) {
        Tell(&TcpNonBlockingLineSocketListener::OnReceive, error);
    }
    return !IsOver(life);
}

// The first line's end is told together with the chunk: nothing is called between the two.
void ATcpNonBlockingLineSocket::InternalListener::TraceChunk(const char* chunk, std::size_t size,
                                                             const char* lineEnd) {
    ZelBase::LogTexts texts;
    texts.Add("Size = %lu", static_cast<unsigned long>(size));
    if (lineEnd != chunk + size) {
        texts.Add(kLineEndFormat, static_cast<unsigned long>(lineEnd - chunk));
    }
    logger_->Log("ReceiveData", LogLevel::kTrace, texts);
}

// Stops when the listener has closed the socket. The first line's end has been traced.
void ATcpNonBlockingLineSocket::InternalListener::AnnounceLines(const char* chunk, std::size_t size,
                                                                const char* lineEnd, int error) {
    const unsigned life = life_;
    const char* const end = chunk + size;
    while (lineEnd != end) {
        Tell(&TcpNonBlockingLineSocketListener::OnReceiveLine, error);
        if (IsOver(life)) {
            return;
        }
        lineEnd = std::find(lineEnd + 1, end, '\n');
        if (lineEnd != end) {
            logger_->Log("ReceiveData", LogLevel::kTrace, kLineEndFormat,
                         static_cast<unsigned long>(lineEnd - chunk));
        }
    }
}

void ATcpNonBlockingLineSocket::InternalListener::OnSend(void* /*context*/, int error) {
    const auto self = shared_from_this(); // the listener may destroy the owner
    WithLock(
        [&] {
            SendData(error);
            return true;
        },
        false);
}

void ATcpNonBlockingLineSocket::InternalListener::SendData(int error) {
    logger_->Log("SendData", LogLevel::kTrace, "SendData begin.");
    if (closing_) {
        return;
    }
    if (sendQueue_.Size() == 0) {
        logger_->Log("SendData", LogLevel::kTrace,
                     "No data in the send buffer.  Passing OnSend to caller.");
        Tell(&TcpNonBlockingLineSocketListener::OnSend, error);
        return;
    }
    while (sendQueue_.Size() != 0 && SendChunk() && !closing_) {
    }
}

// False when no more can be sent now.
bool ATcpNonBlockingLineSocket::InternalListener::SendChunk() {
    const std::size_t staged = std::min(staging_.size(), sendQueue_.Size());
    if (!sendQueue_.Peek(staging_.data(), staged)) {
        logger_->Log("SendData", LogLevel::kError,
                     "Could not acquire data from the send buffer.  Aborting send.");
        return false;
    }
    const std::uint32_t sent = socket_->Send(staging_.data(), Count(staged));
    ZelBase::WipeMemory(staging_.data(), staged); // as the buffer does with what has left it
    if (sent == 0) {
        logger_->Log("SendData", LogLevel::kTrace,
                     "Socket send queue full.  No data could be sent.  Waiting for next OnSend");
        return false;
    }
    logger_->Log("SendData", LogLevel::kTrace, "Sent %lu bytes of data from the send queue",
                 static_cast<unsigned long>(sent));
    if (sendQueue_.Skip(sent) != sent) {
        logger_->Log("SendData", LogLevel::kError,
                     "Could not remove data from the send buffer that was actually sent.  "
                     "Aborting send.");
        return false;
    }
    if (sent < staged) {
        logger_->Log("SendData", LogLevel::kTrace,
                     "Socket send queue full.  Only partial data could be sent.  Waiting for next "
                     "OnSend");
        return false;
    }
    return true;
}

void ATcpNonBlockingLineSocket::InternalListener::Tell(
    void (TcpNonBlockingLineSocketListener::*callback)(void*, int), int error) {
    if (auto* listener = listener_.load()) {
        (listener->*callback)(owner_, error);
    }
}

std::unique_ptr<ATcpNonBlockingLineSocket> ATcpNonBlockingLineSocket::Create() {
    std::unique_ptr<ATcpNonBlockingLineSocket> socket(new ATcpNonBlockingLineSocket);
    return socket->internal_->IsValid() ? std::move(socket) : nullptr;
}

ATcpNonBlockingLineSocket::ATcpNonBlockingLineSocket()
    : ownedSocket_(TcpNonBlockingClientSocket::Create()), socket_(ownedSocket_.get()) {
    internal_ = std::make_shared<InternalListener>(this, socket_);
}

ATcpNonBlockingLineSocket::~ATcpNonBlockingLineSocket() {
    internal_->BeginClosing();
    internal_->Release(std::move(ownedSocket_));
}

ATcpNonBlockingLineSocket*
ATcpNonBlockingLineSocket::Create(TcpNonBlockingLineSocketListener* listener,
                                  std::uint16_t localPort, const IpAddress& localAddress,
                                  bool secure) {
    return internal_->Create(listener, localPort, localAddress, secure) ? this : nullptr;
}

// Without the lock of the buffers, which it does not touch.
bool ATcpNonBlockingLineSocket::Connect(const std::string& host, std::uint16_t port) {
    return socket_->Connect(host, port);
}

std::uint32_t ATcpNonBlockingLineSocket::ReceiveLine(std::string& line) {
    return internal_->ReceiveLine(line);
}

std::uint32_t ATcpNonBlockingLineSocket::Receive(void* dest, std::uint32_t size) {
    return internal_->Receive(dest, size);
}

std::uint32_t ATcpNonBlockingLineSocket::Peek(void* dest, std::uint32_t size) {
    return internal_->Peek(dest, size);
}

std::uint32_t ATcpNonBlockingLineSocket::Send(const void* data, std::uint32_t size) {
    return internal_->Send(data, size);
}

bool ATcpNonBlockingLineSocket::Send(std::unique_ptr<SendSource> source) {
    return source && source->Remaining() > 0 && internal_->Send(std::move(source));
}

std::uint32_t ATcpNonBlockingLineSocket::Available() {
    return internal_->Available();
}

std::uint32_t ATcpNonBlockingLineSocket::BytesReceived() {
    return internal_->BytesReceived();
}

std::uint32_t ATcpNonBlockingLineSocket::Unsent() {
    return internal_->Unsent();
}

void ATcpNonBlockingLineSocket::ClearReceiveBuffer() {
    internal_->ClearReceiveBuffer();
}

void ATcpNonBlockingLineSocket::SetLineMode(bool lineMode) {
    internal_->SetLineMode(lineMode);
}

bool ATcpNonBlockingLineSocket::Close(bool fromEvent) {
    internal_->BeginClosing();
    return socket_->Close(fromEvent);
}

bool ATcpNonBlockingLineSocket::IsConnected() {
    return socket_->IsConnected();
}

} // namespace ZelNet
