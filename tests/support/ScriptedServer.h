#pragma once

// A server on the loopback that plays a conversation given as data, one script per connection it
// accepts. A script is a list of steps:
//
//   "S:text"       send the text as it stands (line ends included)
//   "C:text"       expect a line, its end left out; "*" at the end of the text stands for any rest
//   "SKIP"         expect a line, whatever it says, and keep no copy of it
//   "TEXT"         expect a mail's text up to its final dot, and keep it
//   "DRIP:text"    send it one byte at a time
//   "WAIT:ms"      do nothing for that long
//   "END"          send no more
//   "CLOSE"        close at once
//   "RESET"        end the connection with a reset
//   "SILENCE"      say nothing more and wait until the client closes
//
// A script that comes to its end waits for the client to close. What does not go by the script is
// noted as a problem and ends the connection.

#include <winsock2.h>

#include "ZelBase/Handles.h"
#include "support/TestThreads.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tervane::test {

class ScriptedServer {
public:
    using Script = std::vector<std::string>;

    explicit ScriptedServer(std::vector<Script> scripts);
    // Breaks off what is still being played.
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    std::uint16_t Port() const { return port_; }
    // Waits until the scripts have been played; what did not go by them, "" if all did.
    std::string Problems();
    // The mail texts received so far, without the final dot and unchanged otherwise.
    std::vector<std::string> Texts();

private:
    class Session;

    void Serve(const std::vector<Script>& scripts);
    SOCKET Accept();
    void Play(Session& session, const Script& script);
    void Note(const std::string& problem);
    void BreakOff();

    WSADATA winsock_;
    SOCKET listening_ = INVALID_SOCKET;
    std::uint16_t port_ = 0;
    const ZelBase::UniqueHandle wake_{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    TestMutex mutex_;
    SOCKET session_ = INVALID_SOCKET;
    bool ending_ = false;
    std::string problems_;
    std::vector<std::string> texts_;
    TestThread thread_;
};

} // namespace tervane::test
