#include "bench/BareTransfer.h"

#include "ZelBase/log/Logger.h"
#include "bench/LateBound.h"

#include <algorithm>
#include <string>

namespace bench {

void Require(bool held, const char* what) {
    if (!held) {
        Fail(what, E_UNEXPECTED);
    }
}

BareConnection::BareConnection(std::uint16_t port) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    Require(connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0,
            "connecting the bare socket");
}

void BareConnection::Move(std::size_t bytes, std::uint32_t records, bool sending) {
    const auto logger = ZelBase::Logger::Create();
    std::fill(piece_, piece_ + kPiece, 'x');
    std::uint32_t written = 0;
    for (std::size_t moved = 0; moved < bytes;) {
        const int part = static_cast<int>(std::min<std::size_t>(kPiece, bytes - moved));
        const int done = sending ? send(socket_, piece_, part, 0) : recv(socket_, piece_, part, 0);
        Require(done > 0, "moving bytes over the bare socket");
        moved += static_cast<std::size_t>(done);
        const auto due = static_cast<std::uint32_t>(1.0 * records * moved / bytes);
        for (; written < due; ++written) {
            logger->Log("Bench", ZelBase::LogLevel::kTrace, "Read %d bytes from socket", done);
        }
    }
}

std::string_view BareConnection::Say(std::string_view line) {
    const std::string whole = std::string(line) + "\r\n";
    const int size = static_cast<int>(whole.size());
    Require(send(socket_, whole.data(), size, 0) == size, "sending a line");
    return Hear();
}

std::string_view BareConnection::Hear() {
    std::size_t length = 0;
    while (recv(socket_, piece_ + length, 1, 0) == 1 && piece_[length] != '\n') {
        Require(++length < kPiece, "receiving a short line");
    }
    return {piece_, length};
}

} // namespace bench
