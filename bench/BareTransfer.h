#pragma once

// The least that moving bytes can cost in the way the sockets of ZelNet do it: a blocking socket
// that is served in pieces of 512 bytes, with as many trace records as they write.

#include <winsock2.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace bench {

// Ends the program unless it held.
void Require(bool held, const char* what);

// A blocking connection over loopback; closed with the object.
class BareConnection {
public:
    explicit BareConnection(std::uint16_t port);
    ~BareConnection() { closesocket(socket_); }
    BareConnection(const BareConnection&) = delete;
    BareConnection& operator=(const BareConnection&) = delete;

    // Sends or receives `bytes` bytes, with `records` trace records spread over the pieces.
    void Send(std::size_t bytes, std::uint32_t records) { Move(bytes, records, true); }
    void Receive(std::size_t bytes, std::uint32_t records) { Move(bytes, records, false); }
    // Sends the line and returns the line that the server replies.
    std::string_view Say(std::string_view line);
    // Waits for a line of less than 512 bytes and returns it without its LF, until the next use.
    std::string_view Hear();

private:
    void Move(std::size_t bytes, std::uint32_t records, bool sending);

    static constexpr int kPiece = 512;

    SOCKET socket_;
    char piece_[kPiece] = {};
};

} // namespace bench
