#include "objects/email/MailEvents.h"

#include "component/ConnectionPoint.h"

namespace tervane {
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
