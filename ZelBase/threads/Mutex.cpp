#include "ZelBase/threads/Mutex.h"

#include "ZelBase/threads/WIN32_Mutex.h"

#include <new>

namespace ZelBase {

std::unique_ptr<Mutex> Mutex::Create() {
    std::unique_ptr<Mutex> mutex(new (std::nothrow) WIN32_Mutex);
    return mutex && mutex->IsValid() ? std::move(mutex) : nullptr;
}

} // namespace ZelBase
