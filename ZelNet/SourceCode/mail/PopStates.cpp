#include "ZelNet/SourceCode/mail/PopStates.h"

#include <algorithm>
#include <iterator>

namespace ZelNet {
namespace {

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

// Takes the first run of digits and all before it off `text`.
std::uint32_t TakeNumber(std::string_view& text) {
    const auto first = std::find_if(text.begin(), text.end(), IsDigit);
    const auto last = std::find_if_not(first, text.end(), IsDigit);
    std::uint64_t number = 0;
    for (auto digit = first; digit != last; ++digit) {
        number =
            std::min<std::uint64_t>(number * 10 + static_cast<unsigned>(*digit - '0'), UINT32_MAX);
    }
    text.remove_prefix(static_cast<std::size_t>(last - text.begin()));
    return static_cast<std::uint32_t>(number);
}

} // namespace

bool IsPositivePopReply(std::string_view line) {
    return line.starts_with('+');
}

PopDropListing ReadDropListing(std::string_view line) {
    PopDropListing listing;
    listing.count = TakeNumber(line);
    listing.totalSize = TakeNumber(line);
    return listing;
}

namespace {

using State = PopClientState;
using Argument = PopArgument;
using Tell = PopNotification;
using Status = PopStatus;

constexpr PopCommand kCommands[] = {
    {State::kSendUser, State::kAwaitUser, "USER ", Argument::kLogin},
    {State::kSendPassword, State::kAwaitPassword, "PASS ", Argument::kPassword},
    {State::kSendStat, State::kAwaitStat, "STAT", Argument::kNone},
    {State::kSendRetrieve, State::kAwaitRetrieve, "RETR ", Argument::kIndex},
    {State::kSendDelete, State::kAwaitDelete, "DELE ", Argument::kIndex},
    {State::kSendQuit, State::kAwaitQuit, "QUIT", Argument::kNone},
};

constexpr PopReplyRule kReplyRules[] = {
    {State::kAwaitGreeting, "WAIT_FOR_HEADER", State::kSendUser, State::kAwaitGreeting,
     Tell::kGreeted, Status::kConnectError, true},
    {State::kAwaitUser, "WAIT_FOR_USER/PASS_RESPONSE", State::kSendPassword, State::kAwaitUser,
     Tell::kUserStep, Status::kAuthenticationError, true},
    {State::kAwaitPassword, "WAIT_FOR_USER/PASS_RESPONSE", State::kReady, State::kAwaitPassword,
     Tell::kPasswordStep, Status::kAuthenticationError, true},
    {State::kAwaitStat, "WAIT_FOR_STAT_RESPONSE", State::kReady, State::kReady, Tell::kMailCount,
     Status::kUnexpected, false},
    {State::kAwaitRetrieve, "WAIT_FOR_RETR_RESPONSE", State::kReceiveMessage, State::kReady,
     Tell::kRetrieved, Status::kUnexpected, false},
    {State::kAwaitDelete, "WAIT_FOR_DELE_RESPONSE", State::kReady, State::kReady, Tell::kDeleted,
     Status::kUnexpected, false},
    {State::kAwaitQuit, "WAIT_FOR_QUIT_RESPONSE", State::kReady, State::kReady, Tell::kQuitDone,
     Status::kUnexpected, false},
};

template <typename Row, std::size_t Size>
const Row* Find(const Row (&rows)[Size], State state) {
    const auto* row = std::find_if(std::begin(rows), std::end(rows),
                                   [state](const Row& next) { return next.state == state; });
    return row == std::end(rows) ? nullptr : row;
}

} // namespace

const PopCommand* FindPopCommand(PopClientState state) {
    return Find(kCommands, state);
}

const PopReplyRule* FindPopReplyRule(PopClientState state) {
    return Find(kReplyRules, state);
}

const PopReplyRule* FindPopRuleUnderWay(PopClientState state) {
    if (state == State::kReceiveMessage) {
        return FindPopReplyRule(State::kAwaitRetrieve);
    }
    const PopCommand* command = FindPopCommand(state);
    return FindPopReplyRule(command ? command->next : state);
}

} // namespace ZelNet
