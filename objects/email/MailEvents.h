#pragma once

// The events of the e-mail objects, fired on the object's own thread.

#include "ZelNet/SourceCode/mail/PopStates.h"
#include "ZelNet/SourceCode/mail/SmtpStates.h"
#include "component/SinkArray.h"

#include <optional>
#include <string_view>

namespace tervane {

// What scripts read in StatusCode; "SMTP_UNKNOWN_ERROR" for a number that is no status.
std::wstring_view NameOf(ZelNet::SmtpStatus status);

// What scripts read in LastError; nothing for a number that is no status.
std::optional<std::wstring_view> NameOf(ZelNet::PopStatus status);
inline constexpr std::wstring_view kUnknownPopStatus = L"POP_UNABLE_TO_DETERMINE_ERROR";

// Each calls every sink on this thread; the result is the last sink's. `object` is the one that
// fires.
HRESULT Fire_OnSmtpSendMailComplete(SinkArray& sinks, bool success, IDispatch* object) noexcept;
HRESULT Fire_OnPopConnect(SinkArray& sinks, bool success, IDispatch* object) noexcept;
HRESULT Fire_OnPopGetMailCount(SinkArray& sinks, LONG count, IDispatch* object) noexcept;
HRESULT Fire_OnPopRetrieveMessage(SinkArray& sinks, bool success, IDispatch* object) noexcept;
HRESULT Fire_OnPopDeleteMessage(SinkArray& sinks, bool success, LONG index,
                                IDispatch* object) noexcept;
HRESULT Fire_OnPopDisconnect(SinkArray& sinks, bool success, IDispatch* object) noexcept;

} // namespace tervane
