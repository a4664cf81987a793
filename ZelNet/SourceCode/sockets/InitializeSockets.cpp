#include "ZelNet/SourceCode/sockets/InitializeSockets.h"

#include "ZelNet/SourceCode/sockets/WIN32_SETManager.h"

namespace ZelNet {

bool InitializeSockets() {
    return WIN32_SETManager::AddUser();
}

bool UninitializeSockets() {
    WIN32_SETManager::RemoveUser();
    return true;
}

} // namespace ZelNet
