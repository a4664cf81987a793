#pragma once

// Mail and name servers on the loopback that answer whoever comes, as often as they come, each line
// by the word it begins with. One thread serves all of them and allocates nothing, so that tests
// which count allocations see only those of the client. It waits for an event, because under Wine a
// `select` with a time-out once in many thousands never returns. For conversations with mistakes in
// them see ScriptedServer.

#include <winsock2.h>

#include "ZelBase/Handles.h"
#include "support/TestComponent.h"

#include <atomic>

namespace tervane::test {

class LoopbackServer {
public:
    enum Service { kSmtp, kPop3, kServices };

    // The name server listens on port 53 of `nameServer`, and knows every name to be 127.0.0.1;
    // null: there is none.
    explicit LoopbackServer(const char* nameServer = nullptr);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    int Port(Service service) const { return ports_[service]; }
    // False when the port was refused: it may belong to another server, or to administrators.
    bool HasNameServer() const { return names_ != INVALID_SOCKET; }

private:
    struct Session {
        SOCKET socket = INVALID_SOCKET;
        Service service = kSmtp;
        int length = 0;
        char line[1024];
    };
    static constexpr int kSessions = 40;

    static DWORD WINAPI Run(void* self);
    void Serve();
    void Accept(Service service);
    static bool Receive(Session& session);
    static void AnswerLines(Session& session);
    bool AnswerName() const;

    WSADATA winsock_;
    SOCKET listening_[kServices];
    SOCKET names_ = INVALID_SOCKET;
    int ports_[kServices];
    Session sessions_[kSessions];
    std::atomic<bool> ending_ = false;
    const ZelBase::UniqueHandle wake_{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    ZelBase::UniqueHandle thread_;
};

// Settings with which an object sends to such a server, and reads from it.
void PrepareSmtp(IDispatch* smtp, const LoopbackServer& server,
                 const ComPtr<IDispatch>& mail = New(L"EmailData"));
void PreparePop(IDispatch* pop, const LoopbackServer& server);

} // namespace tervane::test
