#include "tests/zelnet/SocketTesting.h"

#include "ZelBase/Handles.h"
#include "ZelBase/log/LogRing.h"
#include "tests/support/HandleCount.h"

#include <algorithm>
#include <chrono>

#include <tlhelp32.h>

namespace ZelNet {
namespace {

sockaddr_in LoopbackPort(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

// "*" takes everything but blanks.
bool Matches(const char* pattern, const char* text) {
    if (*pattern != '*') {
        return *pattern == *text && (*text == 0 || Matches(pattern + 1, text + 1));
    }
    for (; *text != 0 && *text != ' '; ++text) {
        if (Matches(pattern + 1, text + 1)) {
            return true;
        }
    }
    return false;
}

} // namespace

void LogReader::Collect() {
    std::unique_ptr<ZelBase::LogRing> ring;
    ZelBase::LogRing::OpenShared(INFINITE, ring);
    WaitForSingleObject(ring->Mutex(), INFINITE);
    for (const ZelBase::LogRecord& record : ring->Section().records) {
        if (std::strtoul(record.process, nullptr, 16) == GetCurrentProcessId()) {
            records_.insert(std::string(record.component) + "|" + record.function + "|" +
                            std::to_string(record.level) + "|" + record.text);
        }
    }
    ReleaseMutex(ring->Mutex());
}

bool LogReader::Has(const std::string& pattern, int patienceMs) {
    for (int waited = 0;; waited += 20) {
        Collect();
        if (std::ranges::any_of(records_, [&](const std::string& record) {
                return Matches(pattern.c_str(), record.c_str());
            })) {
            return true;
        }
        if (waited >= patienceMs) {
            return false;
        }
        Sleep(20);
    }
}

std::string LogReader::Text() {
    Collect();
    std::string text;
    for (const std::string& record : records_) {
        text += record + "\n";
    }
    return text;
}

std::uint16_t BindToLoopback(SOCKET socket) {
    sockaddr_in address = LoopbackPort(0);
    int length = sizeof address;
    EXPECT_EQ(bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length), 0);
    return ntohs(address.sin_port);
}

void Connection::Send(const std::string& data) const {
    for (std::size_t sent = 0; sent < data.size();) {
        const int count =
            send(socket_.Get(), data.data() + sent, static_cast<int>(data.size() - sent), 0);
        if (count <= 0) {
            return; // the client has closed, which some tests want
        }
        sent += static_cast<std::size_t>(count);
    }
}

std::string Connection::Receive(std::size_t size) const {
    std::string data;
    char buffer[4096];
    while (data.size() < size) {
        const int wanted = static_cast<int>(std::min(sizeof buffer, size - data.size()));
        const int count = recv(socket_.Get(), buffer, wanted, 0);
        if (count <= 0) {
            break;
        }
        data.append(buffer, static_cast<std::size_t>(count));
    }
    return data;
}

void Connection::Reset() {
    const linger hard{1, 0};
    setsockopt(socket_.Get(), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&hard),
               sizeof hard);
    socket_.Reset();
}

void Connection::AwaitEnd() const {
    Receive(static_cast<std::size_t>(-1));
}

TcpServer::TcpServer(Script script, int connections, int receiveBuffer)
    : listening_(socket(AF_INET, SOCK_STREAM, 0)), port_(BindToLoopback(listening_.Get())) {
    if (receiveBuffer != 0) {
        setsockopt(listening_.Get(), SOL_SOCKET, SO_RCVBUF,
                   reinterpret_cast<const char*>(&receiveBuffer), sizeof receiveBuffer);
    }
    EXPECT_EQ(listen(listening_.Get(), SOMAXCONN), 0);
    thread_ = ZelBase::ModulePin::StartThread([this, script, connections] {
        for (int index = 0; index < connections; ++index) {
            Connection connection(accept(listening_.Get(), nullptr, nullptr));
            script(connection);
        }
    });
}

TcpServer::~TcpServer() {
    EXPECT_EQ(WaitForSingleObject(thread_.Get(), kPatienceMs), WAIT_OBJECT_0);
}

std::uint16_t UnusedPort() {
    const UniqueSocket probe(socket(AF_INET, SOCK_STREAM, 0));
    return BindToLoopback(probe.Get());
}

int RecordingListener::State::Count(const std::string& word) const {
    return static_cast<int>(std::count_if(
        words.begin(), words.end(), [&](const std::string& next) { return next.find(word) == 0; }));
}

void RecordingListener::On(const std::string& callback, Hook hook) {
    std::lock_guard lock(state_->mutex);
    state_->hooks.emplace_back(callback, std::move(hook));
}

std::string RecordingListener::Await(const std::string& word, int count) {
    {
        std::unique_lock lock(state_->mutex);
        state_->changed.wait_for(lock, std::chrono::milliseconds(kPatienceMs),
                                 [&] { return state_->Count(word) >= count; });
    }
    return Words();
}

std::string RecordingListener::Words() {
    std::lock_guard lock(state_->mutex);
    std::string text;
    for (const std::string& word : state_->words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

int RecordingListener::Count(const std::string& word) {
    std::lock_guard lock(state_->mutex);
    return state_->Count(word);
}

void RecordingListener::Note(const std::string& callback, void* context, int error) {
    const auto state = state_;
    Hook hook;
    {
        std::lock_guard lock(state->mutex);
        const auto found =
            std::find_if(state->hooks.begin(), state->hooks.end(),
                         [&](const auto& candidate) { return candidate.first == callback; });
        hook = found == state->hooks.end() ? nullptr : found->second;
    }
    if (hook) {
        hook(context);
    }
    std::lock_guard lock(state->mutex);
    state->words.push_back(callback + ":" + std::to_string(error));
    state->changed.notify_all();
}

unsigned ThreadCount() {
    const ZelBase::UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    unsigned count = 0;
    for (BOOL more = Thread32First(snapshot.Get(), &entry); more;
         more = Thread32Next(snapshot.Get(), &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    }
    return count;
}

unsigned IdleThreadCount() {
    SCOPED_TRACE("the first one makes GoogleTest start a thread of its own");
    unsigned count = ThreadCount();
    for (unsigned before = count + 1; count != before;) { // those of an earlier test may be ending
        before = count;
        Sleep(20);
        count = ThreadCount();
    }
    return count;
}

unsigned HandleCount() {
    return static_cast<unsigned>(tervane::test::OpenHandleCount());
}

unsigned Settled(unsigned (*count)(), unsigned limit) {
    unsigned value = count();
    for (int waited = 0; value > limit && waited < kPatienceMs; waited += 10) {
        Sleep(10);
        value = count();
    }
    return value;
}

} // namespace ZelNet
