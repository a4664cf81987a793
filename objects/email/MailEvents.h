#pragma once

// The events of the e-mail objects, fired on the object's own thread.

#include "component/SinkArray.h"

namespace tervane {

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
