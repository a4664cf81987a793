#include "ZelNet/SourceCode/WIN32_IcmpLibrary.h"

#include <algorithm>

namespace ZelNet {

std::unique_ptr<WIN32_IcmpLibrary>
WIN32_IcmpLibrary::Load(std::initializer_list<const char*> names) {
    std::unique_ptr<WIN32_IcmpLibrary> icmp(new WIN32_IcmpLibrary);
    // All of them before the first look-up of a function: a forwarded one is found in a module that
    // somebody else may be about to unload.
    for (const char* name : names) {
        icmp->libraries_.emplace_back(name);
    }
    const bool found = std::any_of(
        icmp->libraries_.begin(), icmp->libraries_.end(),
        [&](const ZelBase::SystemLibrary& library) { return icmp->FindFunctions(library); });
    if (!found) {
        return nullptr;
    }
    icmp->HoldModuleOf(reinterpret_cast<const void*>(icmp->createFile_));
    icmp->HoldModuleOf(reinterpret_cast<const void*>(icmp->closeHandle_));
    icmp->HoldModuleOf(reinterpret_cast<const void*>(icmp->sendEcho_));
    icmp->handle_ = icmp->createFile_();
    return icmp->handle_ != INVALID_HANDLE_VALUE ? std::move(icmp) : nullptr;
}

WIN32_IcmpLibrary::~WIN32_IcmpLibrary() {
    if (closeHandle_ && handle_ != INVALID_HANDLE_VALUE) {
        closeHandle_(handle_);
    }
}

bool WIN32_IcmpLibrary::FindFunctions(const ZelBase::SystemLibrary& library) {
    library.Find("IcmpCreateFile", createFile_);
    library.Find("IcmpCloseHandle", closeHandle_);
    library.Find("IcmpSendEcho", sendEcho_);
    return createFile_ && closeHandle_ && sendEcho_;
}

// A reference to a library that forwards does not hold the library that has the code: that one went
// when the last look-up of a name was done with it, and took the pings under way with it. Code that
// lies in no module, as a hook's may, stays where it is.
void WIN32_IcmpLibrary::HoldModuleOf(const void* function) {
    modules_.push_back(ZelBase::ReferenceModuleOf(function));
}

DWORD WIN32_IcmpLibrary::SendEcho(std::uint32_t address, const std::string& data, std::uint8_t ttl,
                                  void* reply, DWORD replySize, DWORD timeoutMs) const {
    IP_OPTION_INFORMATION options{};
    options.Ttl = ttl;
    // The data is only read.
    return sendEcho_(handle_, address, const_cast<char*>(data.data()),
                     static_cast<WORD>(data.size()), &options, reply, replySize, timeoutMs);
}

} // namespace ZelNet
