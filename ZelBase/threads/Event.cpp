#include "ZelBase/threads/Event.h"

#include "ZelBase/threads/WIN32_Event.h"

#include <new>

namespace ZelBase {

std::unique_ptr<Event> Event::Create() {
    std::unique_ptr<Event> event(new (std::nothrow) WIN32_Event);
    return event && event->IsValid() ? std::move(event) : nullptr;
}

} // namespace ZelBase
