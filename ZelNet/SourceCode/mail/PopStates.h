#pragma once

// The POP3 conversation (RFC 1939) as tables: in some states a command is due, in the others a
// line, and each row says what follows. The numbers are those in trace records.

#include <cstdint>
#include <string_view>

namespace ZelNet {

// How a step of reading a mailbox ended. The client itself reports 0 to 8; the others are for those
// who drive it.
enum class PopStatus {
    kSuccess = 0,
    kSocketFailure = 1,
    kAuthenticationError = 2,
    kConnectError = 3,
    kTerminated = 4, // the connection was closed
    kInvalidArguments = 5,
    kBusy = 6,
    kInvalidState = 7,
    kUnexpected = 8, // the server refused
    kInternalError = 9,
    kWorkInProgress = 10,
    kAlreadyConnected = 11,
    kNotYetConnected = 12,
    kTimeout = 13,
};

// Whether a status line (RFC 1939, section 3) tells success. Only its first character counts.
bool IsPositivePopReply(std::string_view line);

// The drop listing of STAT (RFC 1939, section 5): the first two numbers in the line, whatever
// stands around them. What is missing is 0; what is too large for the type is its largest value.
struct PopDropListing {
    std::uint32_t count = 0;
    std::uint32_t totalSize = 0;
};
PopDropListing ReadDropListing(std::string_view line);

enum class PopClientState {
    kClosed = 0,
    kAwaitGreeting = 1,
    kSendUser = 2,
    kAwaitUser = 3,
    kSendPassword = 4,
    kAwaitPassword = 5,
    kReady = 6,
    kSendStat = 7,
    kAwaitStat = 8,
    kSendRetrieve = 9,
    kAwaitRetrieve = 10,
    kReceiveMessage = 11,
    kSendDelete = 12,
    kAwaitDelete = 13,
    kSendQuit = 14,
    kAwaitQuit = 15,
};

// What the client tells its listener.
enum class PopNotification {
    kConnected,
    kGreeted,
    kUserStep,
    kPasswordStep,
    kMailCount,
    kRetrieved,
    kDeleted,
    kQuitDone,
};

// What follows a command's fixed text.
enum class PopArgument { kNone, kLogin, kPassword, kIndex };

struct PopCommand {
    PopClientState state; // in which it is due
    PopClientState next;
    std::string_view text;
    PopArgument argument;
};

struct PopReplyRule {
    PopClientState state; // in which the status line is awaited
    const char* traceName;
    PopClientState next;
    PopClientState nextWhenRefused;
    // What ends here: the listener is told when the server refuses or closes, and, unless the
    // message follows first, when it agrees.
    PopNotification notification;
    PopStatus refusal;
    bool closesWhenRefused;
};

// The command that is due in `state`; null when none is.
const PopCommand* FindPopCommand(PopClientState state);
// What a status line in `state` leads to; null when none is awaited.
const PopReplyRule* FindPopReplyRule(PopClientState state);
// What a status line in `state` will lead to, when the command that is due has been sent; of a
// message that is being received, what its own status line led to. Null when nothing is under way.
const PopReplyRule* FindPopRuleUnderWay(PopClientState state);

} // namespace ZelNet
