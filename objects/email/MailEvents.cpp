#include "objects/email/MailEvents.h"

#include "component/ConnectionPoint.h"

#include <iterator>

namespace tervane {
namespace {

// By number. Deliberate: 5 and 11 have one name, scripts never told them apart.
constexpr std::wstring_view kSmtpNames[] = {
    L"SMTP_SUCCESS",      L"SMTP_SOCKET_FAILURE", L"SMTP_CONNECT_ERROR", L"SMTP_TERMINATED",
    L"SMTP_INVALID_ARGS", L"SMTP_BUSY_WORKING",   L"SMTP_INVALID_STATE", L"SMTP_UNEXPECTED",
    L"SMTP_AUTH_ERROR",   L"SMTP_TIMEOUT_ERR",    L"SMTP_INTERNAL_ERR",  L"SMTP_BUSY_WORKING",
    L"SMTP_ABORTED",
};

// By number; 6 and 10 have one name, likewise.
constexpr std::wstring_view kPopNames[] = {
    L"POP_SUCCESS",           L"POP_SOCKET_FAILURE", L"POP_AUTH_ERROR",   L"POP_CONNECT_ERROR",
    L"POP_TERMINATED",        L"POP_INVALID_ARGS",   L"POP_BUSY_WORKING", L"POP_INVALID_STATE",
    L"POP_UNEXPECTED",        L"POP_INTERNAL_ERR",   L"POP_BUSY_WORKING", L"POP_ALREADY_CONNECTED",
    L"POP_NOT_YET_CONNECTED", L"POP_TIMEOUT",
};

} // namespace

std::wstring_view NameOf(ZelNet::SmtpStatus status) {
    const auto index = static_cast<std::size_t>(status);
    return index < std::size(kSmtpNames) ? kSmtpNames[index] : L"SMTP_UNKNOWN_ERROR";
}

std::optional<std::wstring_view> NameOf(ZelNet::PopStatus status) {
    const auto index = static_cast<std::size_t>(status);
    return index < std::size(kPopNames) ? std::optional(kPopNames[index]) : std::nullopt;
}

namespace {

// The events' numbers in the type library.
enum SmtpEvent : DISPID { kOnSmtpSendMailComplete = 1 };
enum PopEvent : DISPID {
    kOnPopConnect = 1,
    kOnPopGetMailCount = 2,
    kOnPopRetrieveMessage = 3,
    kOnPopDeleteMessage = 4,
    kOnPopDisconnect = 5,
};

// These flags are numbers in the type library, unlike those of other objects.
LONG Number(bool flag) {
    return flag ? 1 : 0;
}

} // namespace

HRESULT Fire_OnSmtpSendMailComplete(SinkArray& sinks, bool success, IDispatch* object) noexcept {
    return FireEvent(sinks, kOnSmtpSendMailComplete, {Number(success), object});
}

HRESULT Fire_OnPopConnect(SinkArray& sinks, bool success, IDispatch* object) noexcept {
    return FireEvent(sinks, kOnPopConnect, {Number(success), object});
}

HRESULT Fire_OnPopGetMailCount(SinkArray& sinks, LONG count, IDispatch* object) noexcept {
    return FireEvent(sinks, kOnPopGetMailCount, {count, object});
}

HRESULT Fire_OnPopRetrieveMessage(SinkArray& sinks, bool success, IDispatch* object) noexcept {
    return FireEvent(sinks, kOnPopRetrieveMessage, {Number(success), object});
}

HRESULT Fire_OnPopDeleteMessage(SinkArray& sinks, bool success, LONG index,
                                IDispatch* object) noexcept {
    return FireEvent(sinks, kOnPopDeleteMessage, {Number(success), index, object});
}

HRESULT Fire_OnPopDisconnect(SinkArray& sinks, bool success, IDispatch* object) noexcept {
    return FireEvent(sinks, kOnPopDisconnect, {Number(success), object});
}

} // namespace tervane
