#pragma once

#include <cstdint>

namespace bench {

// The ports of bench/mail_server.py.
struct MailPorts {
    std::uint16_t smtp;
    std::uint16_t pop;
    std::uint16_t timekeeper;
};

// SmtpCtl and PopCtl with messages of several sizes, each against curl with the same message and
// server, and against the floor: the same bytes moved by a bare blocking socket in the pieces and
// with the trace records that the design sets.
void CompareMail(const MailPorts& ports);

// How much memory it takes to send, or to fetch, a message, beyond what is in use while it lies in
// its EmailData, as a multiple of its size. Each needs a process of its own.
void MeasureSendingMemory(const MailPorts& ports);
void MeasureFetchingMemory(const MailPorts& ports);

// Counts the requests of a second login of an object, and of fetching a megabyte, per 512 bytes;
// see RequestCount.h.
void CountMail(const MailPorts& ports);

} // namespace bench
