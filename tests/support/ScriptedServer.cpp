#include "support/ScriptedServer.h"

#include <optional>
#include <string_view>

namespace tervane::test {
namespace {

// How long the server waits for its client, in milliseconds.
constexpr DWORD kPatience = 20000;

std::optional<std::string> Behind(const std::string& step, std::string_view word) {
    if (!step.starts_with(word)) {
        return std::nullopt;
    }
    return step.substr(word.size());
}

bool IsMatch(const std::string& line, const std::string& expected) {
    return expected.ends_with('*') ? line.starts_with(expected.substr(0, expected.size() - 1))
                                   : line == expected;
}

} // namespace

class ScriptedServer::Session {
public:
    explicit Session(SOCKET socket) : socket_(socket) {
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&kPatience),
                   sizeof kPatience);
        const int atOnce = 1;
        setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&atOnce),
                   sizeof atOnce);
    }
    ~Session() { closesocket(socket_); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Send(const std::string& data) {
        std::size_t sent = 0;
        while (sent < data.size()) {
            const int count =
                send(socket_, data.data() + sent, static_cast<int>(data.size() - sent), 0);
            if (count <= 0) {
                return; // the client has closed, as some scripts want
            }
            sent += static_cast<std::size_t>(count);
        }
    }
    void Drip(const std::string& data) {
        for (char byte : data) {
            Send(std::string(1, byte));
            Sleep(1);
        }
    }
    // What comes before `end`; nothing when the client closes first.
    std::optional<std::string> ReceiveUntil(const std::string& end) {
        std::size_t searched = 0;
        std::size_t found;
        while ((found = received_.find(end, searched)) == std::string::npos) {
            searched = received_.size() < end.size() ? 0 : received_.size() - end.size();
            if (!Receive()) {
                return std::nullopt;
            }
        }
        std::string text = received_.substr(0, found);
        received_.erase(0, found + end.size());
        return text;
    }
    // Nothing of it must have been received yet.
    void SkipLine() {
        char byte = 0;
        while (byte != '\n' && recv(socket_, &byte, 1, 0) == 1) {
        }
    }
    void EndSending() { shutdown(socket_, SD_SEND); }
    void AwaitEnd() {
        while (Receive()) {
        }
    }
    void Reset() {
        const linger hard{1, 0};
        setsockopt(socket_, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&hard),
                   sizeof hard);
    }

private:
    bool Receive() {
        char buffer[65536];
        const int count = recv(socket_, buffer, sizeof buffer, 0);
        if (count > 0) {
            received_.append(buffer, static_cast<std::size_t>(count));
        }
        return count > 0;
    }

    SOCKET socket_;
    std::string received_;
};

ScriptedServer::ScriptedServer(std::vector<Script> scripts) {
    WSAStartup(MAKEWORD(2, 2), &winsock_);
    listening_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int length = sizeof address;
    bind(listening_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    getsockname(listening_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
    listen(listening_, SOMAXCONN);
    WSAEventSelect(listening_, wake_.Get(), FD_ACCEPT);
    thread_ = TestThread([this, scripts = std::move(scripts)] { Serve(scripts); });
}

ScriptedServer::~ScriptedServer() {
    BreakOff();
    if (thread_.joinable()) {
        thread_.join();
    }
    closesocket(listening_);
    WSACleanup();
}

void ScriptedServer::BreakOff() {
    const std::lock_guard lock(mutex_);
    ending_ = true;
    SetEvent(wake_.Get());
    shutdown(session_, SD_BOTH);
}

void ScriptedServer::Serve(const std::vector<Script>& scripts) {
    for (const Script& script : scripts) {
        const SOCKET accepted = Accept();
        if (accepted == INVALID_SOCKET) {
            Note("no client came");
            return;
        }
        Session session(accepted);
        {
            const std::lock_guard lock(mutex_);
            session_ = accepted;
        }
        Play(session, script);
        const std::lock_guard lock(mutex_);
        session_ = INVALID_SOCKET;
    }
}

SOCKET ScriptedServer::Accept() {
    do {
        {
            const std::lock_guard lock(mutex_);
            if (ending_) {
                break;
            }
        }
        const SOCKET accepted = accept(listening_, nullptr, nullptr);
        if (accepted != INVALID_SOCKET) {
            u_long isNonBlocking = 0; // as it is by its descent
            WSAEventSelect(accepted, nullptr, 0);
            ioctlsocket(accepted, FIONBIO, &isNonBlocking);
            return accepted;
        }
    } while (WaitForSingleObject(wake_.Get(), kPatience) == WAIT_OBJECT_0);
    return INVALID_SOCKET;
}

void ScriptedServer::Play(Session& session, const Script& script) {
    for (const std::string& step : script) {
        if (const auto text = Behind(step, "S:")) {
            session.Send(*text);
        } else if (const auto slow = Behind(step, "DRIP:")) {
            session.Drip(*slow);
        } else if (const auto expected = Behind(step, "C:")) {
            const auto line = session.ReceiveUntil("\r\n");
            if (!line || !IsMatch(*line, *expected)) {
                Note("expected \"" + *expected + "\", got " +
                     (line ? "\"" + line->substr(0, 200) + "\"" : "the end"));
                return;
            }
        } else if (step == "SKIP") {
            session.SkipLine();
        } else if (step == "TEXT") {
            const auto text = session.ReceiveUntil("\r\n.\r\n");
            const std::lock_guard lock(mutex_);
            texts_.push_back(text.value_or("(incomplete)"));
        } else if (const auto pause = Behind(step, "WAIT:")) {
            Sleep(static_cast<DWORD>(std::stoi(*pause)));
        } else if (step == "END") {
            session.EndSending();
        } else if (step == "RESET") {
            session.Reset();
            return;
        } else if (step == "CLOSE") {
            return;
        }
    }
    session.AwaitEnd();
}

void ScriptedServer::Note(const std::string& problem) {
    const std::lock_guard lock(mutex_);
    problems_ += problem + "; ";
}

std::string ScriptedServer::Problems() {
    if (thread_.joinable()) {
        thread_.join();
    }
    const std::lock_guard lock(mutex_);
    return problems_;
}

std::vector<std::string> ScriptedServer::Texts() {
    const std::lock_guard lock(mutex_);
    return texts_;
}

} // namespace tervane::test
