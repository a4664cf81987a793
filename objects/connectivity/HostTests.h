#pragma once

// Whether a name can be resolved and whether a host answers a ping. Names are in the ANSI code
// page. The caller holds a use of the socket layer and may be on any thread that may wait.

#include <cstdint>
#include <string>

namespace tervane {

// Whether `name` has an address. With a time-out, in milliseconds, all configured name servers are
// asked; without one (0) the system's resolver answers in its own time. The empty name has none.
bool CanResolve(const std::string& name, std::uint32_t timeoutMs);

// Whether the host, a dotted address or a name, answers one of at most `attempts` echo requests;
// none are sent when `attempts` is below 1. Each waits for `timeoutMs`.
bool AnswersPing(const std::string& name, std::uint16_t timeoutMs, long attempts);

} // namespace tervane
