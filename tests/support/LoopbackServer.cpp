#include "support/LoopbackServer.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

namespace tervane::test {
namespace {

struct Answer {
    std::string_view word; // "" for the greeting
    std::string_view reply;
};

// Lines that begin with none of the words are the text of a mail.
constexpr Answer kSmtpAnswers[] = {
    {"", "220 hello\r\n"},
    {"HELO", "250 ok\r\n"},
    {"EHLO", "250 ok\r\n"},
    {"MAIL", "250 ok\r\n"},
    {"RCPT", "250 ok\r\n"},
    {"DATA", "354 go on\r\n"},
    {".", "250 taken\r\n"},
    {"QUIT", "221 bye\r\n"},
    // AUTH LOGIN of "me" with "secret".
    {"AUTH", "334 VXNlcm5hbWU6\r\n"},
    {"bWU=", "334 UGFzc3dvcmQ6\r\n"},
    {"c2VjcmV0", "235 ok\r\n"},
};
constexpr Answer kPopAnswers[] = {
    {"", "+OK hello\r\n"},
    {"USER", "+OK\r\n"},
    {"PASS", "+OK\r\n"},
    {"STAT", "+OK 2 40\r\n"},
    {"DELE", "+OK\r\n"},
    {"QUIT", "+OK bye\r\n"},
    {"RETR", "+OK\r\nFrom: a@b.example\r\nSubject: one\r\n\r\nfirst line\r\nsecond line\r\n.\r\n"},
};

template <std::size_t Count>
std::string_view Find(const Answer (&answers)[Count], std::string_view line) {
    for (const Answer& answer : answers) {
        if (line.empty() ? answer.word.empty()
                         : !answer.word.empty() && line.starts_with(answer.word)) {
            return answer.reply;
        }
    }
    return {};
}

void Reply(SOCKET socket, LoopbackServer::Service service, std::string_view line) {
    const std::string_view reply =
        service == LoopbackServer::kSmtp ? Find(kSmtpAnswers, line) : Find(kPopAnswers, line);
    send(socket, reply.data(), static_cast<int>(reply.size()), 0);
}

// Bound to the address, or none.
SOCKET Bind(int type, const char* address, int port) {
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_addr.s_addr = inet_addr(address);
    name.sin_port = htons(static_cast<u_short>(port));
    const SOCKET bound = socket(AF_INET, type, 0);
    if (bind(bound, reinterpret_cast<sockaddr*>(&name), sizeof name) != 0) {
        closesocket(bound);
        return INVALID_SOCKET;
    }
    return bound;
}

} // namespace

LoopbackServer::LoopbackServer(const char* nameServer) {
    WSAStartup(MAKEWORD(2, 2), &winsock_);
    for (int i = 0; i < kServices; ++i) {
        sockaddr_in name{};
        int length = sizeof name;
        listening_[i] = Bind(SOCK_STREAM, "127.0.0.1", 0);
        getsockname(listening_[i], reinterpret_cast<sockaddr*>(&name), &length);
        ports_[i] = ntohs(name.sin_port);
        listen(listening_[i], SOMAXCONN);
        WSAEventSelect(listening_[i], wake_.Get(), FD_ACCEPT);
    }
    if (nameServer) {
        names_ = Bind(SOCK_DGRAM, nameServer, 53);
        WSAEventSelect(names_, wake_.Get(), FD_READ);
    }
    thread_.Reset(CreateThread(nullptr, 0, &LoopbackServer::Run, this, 0, nullptr));
}

LoopbackServer::~LoopbackServer() {
    ending_ = true;
    SetEvent(wake_.Get());
    WaitForSingleObject(thread_.Get(), INFINITE);
    for (const Session& session : sessions_) {
        closesocket(session.socket);
    }
    for (const SOCKET socket : listening_) {
        closesocket(socket);
    }
    closesocket(names_);
    WSACleanup();
}

DWORD WINAPI LoopbackServer::Run(void* self) {
    static_cast<LoopbackServer*>(self)->Serve();
    return 0;
}

// Nobody blocks: whatever has woken the thread, each socket is asked for all that it has.
void LoopbackServer::Serve() {
    while (WaitForSingleObject(wake_.Get(), INFINITE) == WAIT_OBJECT_0 && !ending_) {
        for (const Service service : {kSmtp, kPop3}) {
            Accept(service);
        }
        for (Session& session : sessions_) {
            if (session.socket != INVALID_SOCKET && !Receive(session)) {
                closesocket(session.socket);
                session.socket = INVALID_SOCKET;
            }
        }
        while (names_ != INVALID_SOCKET && AnswerName()) {
        }
    }
}

void LoopbackServer::Accept(Service service) {
    SOCKET accepted;
    while ((accepted = accept(listening_[service], nullptr, nullptr)) != INVALID_SOCKET) {
        const auto free =
            std::find_if(std::begin(sessions_), std::end(sessions_),
                         [](const Session& session) { return session.socket == INVALID_SOCKET; });
        if (free == std::end(sessions_)) {
            closesocket(accepted);
            continue;
        }
        WSAEventSelect(accepted, wake_.Get(), FD_READ | FD_CLOSE);
        free->socket = accepted;
        free->service = service;
        free->length = 0;
        Reply(accepted, service, "");
    }
}

// False when the client has closed.
bool LoopbackServer::Receive(Session& session) {
    for (;;) {
        const int space = static_cast<int>(sizeof session.line) - session.length;
        const int count = recv(session.socket, session.line + session.length, space, 0);
        if (count <= 0) {
            return count < 0 && WSAGetLastError() == WSAEWOULDBLOCK;
        }
        session.length += count;
        AnswerLines(session);
    }
}

void LoopbackServer::AnswerLines(Session& session) {
    std::string_view rest(session.line, static_cast<std::size_t>(session.length));
    for (std::size_t end; (end = rest.find("\r\n")) != std::string_view::npos;
         rest.remove_prefix(end + 2)) {
        if (end != 0) {
            Reply(session.socket, session.service, rest.substr(0, end));
        }
    }
    // A line too long to be kept is a mail's; what follows of it is taken for the next one.
    session.length = rest.size() == sizeof session.line ? 0 : static_cast<int>(rest.size());
    std::memmove(session.line, rest.data(), static_cast<std::size_t>(session.length));
}

// The question once more, and an answer that points back to its name: RFC 1035, section 4.1.
bool LoopbackServer::AnswerName() const {
    constexpr unsigned char kFlags[] = {0x81, 0x80, 0, 1, 0, 1};
    constexpr unsigned char kRecord[] = {0xC0, 12, 0, 1, 0, 1, 0, 0, 0, 9, 0, 4, 127, 0, 0, 1};
    char message[512 + sizeof kRecord];
    sockaddr_in client{};
    int size = sizeof client;
    const int length =
        recvfrom(names_, message, 512, 0, reinterpret_cast<sockaddr*>(&client), &size);
    if (length > 12) {
        std::memcpy(message + 2, kFlags, sizeof kFlags);
        std::memcpy(message + length, kRecord, sizeof kRecord);
        sendto(names_, message, length + static_cast<int>(sizeof kRecord), 0,
               reinterpret_cast<sockaddr*>(&client), size);
    }
    return length >= 0;
}

namespace {

void PrepareMail(IDispatch* control, const wchar_t* name, int port) {
    const std::pair<const wchar_t*, Argument> settings[] = {{name, L"127.0.0.1"},
                                                            {L"Port", port},
                                                            {L"Login", L"me"},
                                                            {L"Password", L"secret"},
                                                            {L"Timeout", 5}};
    for (const auto& [property, value] : settings) {
        Write(control, property, value);
    }
}

} // namespace

void PrepareSmtp(IDispatch* smtp, const LoopbackServer& server, const ComPtr<IDispatch>& mail) {
    Write(mail.Get(), L"From", L"me@a.example");
    Write(mail.Get(), L"To", L"you@b.example");
    Write(mail.Get(), L"TextMessage", L"text");
    Write(smtp, L"EmailData", mail);
    PrepareMail(smtp, L"SmtpServer", server.Port(LoopbackServer::kSmtp));
}

void PreparePop(IDispatch* pop, const LoopbackServer& server) {
    PrepareMail(pop, L"PopServer", server.Port(LoopbackServer::kPop3));
}

} // namespace tervane::test
