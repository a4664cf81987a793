#include "ZelNet/SourceCode/sockets/WIN32_TcpNonBlockingClientSocket.h"

#include "ZelNet/SourceCode/sockets/NetworkInfo.h"

#include <algorithm>
#include <chrono>
#include <random>

namespace ZelNet {
namespace {

using ZelBase::LogLevel;
using ZelBase::MutexLock;

// What FinishConnect is given when a name has no address.
constexpr std::uint32_t kNoAddress = 0xFFFFFFFF;
// The error that the socket then closes with.
constexpr int kNoAddressError = 13;

// One of the addresses, at random.
std::uint32_t PickAddress(const std::vector<DnsRecord>& records) {
    const auto isAddress = [](const DnsRecord& record) { return record.type == kDnsTypeAddress; };
    const auto count = std::count_if(records.begin(), records.end(), isAddress);
    if (count == 0) {
        return kNoAddress;
    }
    std::minstd_rand generator(static_cast<std::minstd_rand::result_type>(
        std::chrono::system_clock::now().time_since_epoch().count()));
    auto picked = std::find_if(records.begin(), records.end(), isAddress);
    for (auto index = generator() % static_cast<unsigned long>(count); index > 0; --index) {
        picked = std::find_if(std::next(picked), records.end(), isAddress);
    }
    return picked->address.GetValue();
}

int Length(std::uint32_t size) {
    return static_cast<int>(std::min<std::uint32_t>(size, INT_MAX));
}

} // namespace

// What the resolver's callback needs; its own, so that the socket may be gone by then.
struct WIN32_TcpNonBlockingClientSocket::PendingConnect {
    std::weak_ptr<WIN32_TcpNonBlockingClientSocket> socket;
    unsigned life;
    SocketPlace place;
    // Ends with the callback, so that nobody has to wait for the callback in order to end it.
    std::shared_ptr<ADns> resolver;
};

std::shared_ptr<TcpNonBlockingClientSocket> TcpNonBlockingClientSocket::Create() {
    return MakeSocket<TcpNonBlockingClientSocket, WIN32_TcpNonBlockingClientSocket>();
}

WIN32_TcpNonBlockingClientSocket::WIN32_TcpNonBlockingClientSocket()
    : WIN32_NonBlockingSocket("WIN32_TcpNonBlockingClientSocket") {
    context_ = static_cast<TcpNonBlockingClientSocket*>(this);
}

bool WIN32_TcpNonBlockingClientSocket::Create(TcpNonBlockingSocketListener* listener,
                                              std::uint16_t localPort,
                                              const IpAddress& localAddress, bool secure) {
    AwaitClosing();
    unsigned life = kNoLife;
    {
        MutexLock lock(&mutex_);
        TraceCall("Create");
        if (Open(SOCK_STREAM, localPort, localAddress, life)) {
            listener_ = listener;
            secure_ = secure;
            connecting_ = connected_ = receivedWhileConnecting_ = false;
            sendPending_ = false;
            return true;
        }
    }
    FinishClose(life);
    return false;
}

bool WIN32_TcpNonBlockingClientSocket::Bind(std::uint16_t port, const IpAddress& address) {
    MutexLock lock(&mutex_);
    TraceCall("Bind");
    return BindHandle(port, address);
}

bool WIN32_TcpNonBlockingClientSocket::Connect(const std::string& host, std::uint16_t port) {
    if (host.empty()) {
        logger_->Log("Connect", LogLevel::kError, "Invalid argument.");
        return false;
    }
    unsigned life = kNoLife;
    if (!BeginConnecting(port, life)) {
        return false;
    }
    const std::uint32_t address = inet_addr(host.c_str());
    bool underWay = false;
    try {
        underWay = address != INADDR_NONE ? StartConnect(address, life) == 0 : Resolve(host, life);
    } catch (const std::bad_alloc&) {
        logger_->Log("Connect", LogLevel::kError, "Out of memory.");
    }
    return EndConnecting(life, underWay);
}

bool WIN32_TcpNonBlockingClientSocket::Connect(const IpAddress& address, std::uint16_t port) {
    if (!address.IsValid() || address.GetValue() == kNoAddress) {
        logger_->Log("Connect", LogLevel::kError, "Invalid argument.");
        return false;
    }
    unsigned life = kNoLife;
    return BeginConnecting(port, life) &&
           EndConnecting(life, StartConnect(address.GetValue(), life) == 0);
}

bool WIN32_TcpNonBlockingClientSocket::BeginConnecting(std::uint16_t port, unsigned& life) {
    MutexLock lock(&mutex_);
    TraceCall("Connect");
    if (!created_ || connecting_ || connected_) {
        logger_->Log("Connect", LogLevel::kError, "Socket cannot be connected now.");
        return false;
    }
    remotePort_ = port;
    connecting_ = true;
    receivedWhileConnecting_ = false;
    sendPending_ = false;
    life = Life();
    return true;
}

bool WIN32_TcpNonBlockingClientSocket::EndConnecting(unsigned life, bool underWay) {
    if (!underWay) {
        MutexLock lock(&mutex_);
        connecting_ = connecting_ && !IsLiving(life);
    }
    return underWay;
}

// Returns 0 when OnConnect will follow, else Winsock's error.
int WIN32_TcpNonBlockingClientSocket::StartConnect(std::uint32_t address, unsigned life) {
    SocketPlace place;
    {
        MutexLock lock(&mutex_);
        sockaddr_in remote{};
        remote.sin_family = AF_INET;
        remote.sin_port = htons(remotePort_);
        remote.sin_addr.s_addr = address;
        const SOCKET handle = IsLiving(life) ? handle_.load() : INVALID_SOCKET;
        if (connect(handle, reinterpret_cast<const sockaddr*>(&remote), sizeof remote) != 0) {
            const int error = WSAGetLastError();
            if (error == WSAEWOULDBLOCK) {
                logger_->Log("FinishConnect", LogLevel::kTrace, "Connect returned would block.");
                return 0;
            }
            logger_->Log("FinishConnect", LogLevel::kError,
                         "Connect failed with error code %d, hande %d", error,
                         static_cast<int>(handle));
            return error;
        }
        logger_->Log("FinishConnect", LogLevel::kTrace, "Connect returned immediately.");
        place = place_;
    }
    if (place.thread) {
        place.thread->PostOnConnect(place);
    }
    return 0;
}

bool WIN32_TcpNonBlockingClientSocket::Resolve(const std::string& host, unsigned life) {
    const auto network = NetworkInfo::Create();
    const auto servers = network ? network->DnsServers() : std::vector<std::string>();
    if (!ADns::HasUsableServer(servers)) {
        logger_->Log("Connect", LogLevel::kError, "No DNS servers could be found");
        return false;
    }
    const std::shared_ptr<ADns> resolver = ADns::Create();
    if (!resolver) {
        logger_->Log("Connect", LogLevel::kError, "Could not create a DNS resolver");
        return false;
    }
    resolver->SetDnsServers(servers);
    auto pending = std::make_unique<PendingConnect>();
    pending->socket =
        std::static_pointer_cast<WIN32_TcpNonBlockingClientSocket>(shared_from_this());
    pending->life = life;
    pending->resolver = resolver;
    {
        MutexLock lock(&mutex_);
        // A close that has begun has taken the resolver to abort already, and takes no second one.
        if (!IsLiving(life) || !connecting_) {
            return false;
        }
        pending->place = place_;
        resolver_ = resolver;
    }
    const bool resolving = resolver->ResolveName(host, &OnResolved, pending.get());
    if (resolving) {
        static_cast<void>(pending.release()); // the callback's now
    }
    bool taken = false;
    {
        MutexLock lock(&mutex_);
        taken = resolver_ != resolver; // by the close, or after the answer
        if (!resolving && !taken) {
            resolver_.reset();
        }
    }
    if (resolving && taken) {
        resolver->Abort(); // the close may have done so before there was anything to abort
    }
    return resolving;
}

// Called by the resolver, on the event thread of its own socket.
void WIN32_TcpNonBlockingClientSocket::OnResolved(bool /*success*/, void* pendingConnect,
                                                  const std::vector<DnsRecord>& records) {
    const std::unique_ptr<PendingConnect> pending(static_cast<PendingConnect*>(pendingConnect));
    const auto& place = pending->place;
    if (place.thread && place.thread->PostFinishConnect(place, PickAddress(records))) {
        return;
    }
    // The socket has left its place, or is kept busy there; then it must not be left to wait for a
    // connection that nobody makes.
    if (const auto socket = pending->socket.lock()) {
        socket->CloseLife(pending->life, false);
    }
}

void WIN32_TcpNonBlockingClientSocket::FinishConnect(std::uint32_t address) {
    unsigned life = kNoLife;
    std::shared_ptr<ADns> resolver;
    {
        MutexLock lock(&mutex_);
        life = Life();
        resolver = std::move(resolver_);
    }
    if (address == kNoAddress) {
        OnClose(kNoAddressError);
        return;
    }
    const int error = StartConnect(address, life);
    if (error != 0) {
        OnConnect(error); // Connect has returned long ago
    }
}

std::uint32_t WIN32_TcpNonBlockingClientSocket::Receive(void* buffer, std::uint32_t size) {
    return ReceiveWith("Receive", 0, buffer, size);
}

std::uint32_t WIN32_TcpNonBlockingClientSocket::Peek(void* buffer, std::uint32_t size) {
    return ReceiveWith("Peek", MSG_PEEK, buffer, size);
}

std::uint32_t WIN32_TcpNonBlockingClientSocket::ReceiveWith(const char* operation, int flags,
                                                            void* buffer, std::uint32_t size) {
    const HandleUse use(*this);
    TraceCall(operation);
    if (secure_) {
        return 0;
    }
    const int received = recv(handle_, static_cast<char*>(buffer), Length(size), flags);
    if (received == SOCKET_ERROR) {
        LogError(operation, "recv() failed with error code: %d.", WSAGetLastError());
        return 0;
    }
    return static_cast<std::uint32_t>(received);
}

std::uint32_t WIN32_TcpNonBlockingClientSocket::Send(const void* data, std::uint32_t size) {
    const HandleUse use(*this);
    TraceCall("Send");
    if (secure_) {
        return 0;
    }
    const int sent = send(handle_, static_cast<const char*>(data), Length(size), 0);
    if (sent == SOCKET_ERROR) {
        const int error = WSAGetLastError();
        if (error == WSAEWOULDBLOCK) {
            sendPending_ = true;
        }
        LogError("Send", "send() failed with error code: %d.", error);
        return 0;
    }
    return static_cast<std::uint32_t>(sent);
}

bool WIN32_TcpNonBlockingClientSocket::Shutdown(int how) {
    MutexLock lock(&mutex_);
    TraceCall("Shutdown");
    return ShutdownHandle(how);
}

bool WIN32_TcpNonBlockingClientSocket::Close(bool fromEvent) {
    return CloseSocket(fromEvent);
}

bool WIN32_TcpNonBlockingClientSocket::GetPeer(IpAddress& address, std::uint16_t& port) {
    MutexLock lock(&mutex_);
    TraceCall("GetPeer");
    sockaddr_in peer{};
    int length = sizeof peer;
    if (getpeername(handle_, reinterpret_cast<sockaddr*>(&peer), &length) != 0) {
        LogError("GetPeer", "getpeername() failed with error code: %d.", WSAGetLastError());
        return false;
    }
    address.SetAddress(static_cast<std::uint32_t>(peer.sin_addr.s_addr));
    port = ntohs(peer.sin_port);
    return true;
}

void WIN32_TcpNonBlockingClientSocket::SetContext(void* context) {
    MutexLock lock(&mutex_);
    context_ = context;
}

bool WIN32_TcpNonBlockingClientSocket::IsConnected() {
    MutexLock lock(&mutex_);
    return connected_;
}

bool WIN32_TcpNonBlockingClientSocket::IsSendPending() {
    return sendPending_;
}

void WIN32_TcpNonBlockingClientSocket::OnAccept(int error) {
    if (Enter()) {
        Notify(listener_, &TcpNonBlockingSocketListener::OnAccept, error);
    }
}

void WIN32_TcpNonBlockingClientSocket::OnClose(int error) {
    if (!EnterClose()) {
        return;
    }
    connecting_ = connected_ = false;
    DeliverClose([resolver = std::move(resolver_), listener = std::exchange(listener_, nullptr),
                  context = context_, error] {
        if (resolver) {
            resolver->Abort();
        }
        if (listener) {
            listener->OnClose(context, GenericErrorOf(error));
        }
    });
}

void WIN32_TcpNonBlockingClientSocket::OnConnect(int error) {
    if (!Enter()) {
        return;
    }
    logger_->Log("OnConnect", LogLevel::kTrace, "Calling OnConnect with errorcode %d", error);
    // A connect that returned at once is both posted and signalled.
    TcpNonBlockingSocketListener* listener = connecting_ ? listener_ : nullptr;
    connected_ = connected_ || (connecting_ && error == 0);
    connecting_ = false;
    const bool received = std::exchange(receivedWhileConnecting_, false);
    Deliver([this, listener, context = context_, error, received, life = Life()] {
        if (listener) {
            listener->OnConnect(context, GenericErrorOf(error));
        }
        if (received && Enter(life)) { // the listener may have opened the socket anew
            DeliverReceive(0);
        }
    });
}

void WIN32_TcpNonBlockingClientSocket::OnReceive(int error) {
    if (Enter()) {
        DeliverReceive(error);
    }
}

void WIN32_TcpNonBlockingClientSocket::DeliverReceive(int error) {
    logger_->Log("OnReceive", LogLevel::kTrace, "Calling OnReceive");
    receivedWhileConnecting_ = receivedWhileConnecting_ || connecting_;
    Notify(connecting_ ? nullptr : listener_, &TcpNonBlockingSocketListener::OnReceive, error);
}

void WIN32_TcpNonBlockingClientSocket::OnSend(int error) {
    if (!Enter()) {
        return;
    }
    logger_->Log("OnSend", LogLevel::kTrace, "Calling OnSend()");
    sendPending_ = false;
    Notify(listener_, &TcpNonBlockingSocketListener::OnSend, error);
}

} // namespace ZelNet
