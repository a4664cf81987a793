#include "ZelBase/LogRing.h"

#include <cstring>

namespace ZelBase {
namespace {

constexpr DWORD kWriteTimeoutMs = 1000;
constexpr char kEventName[] = "ZelKit::WIN32_Logger::Event2";
constexpr char kMutexName[] = "ZelKit::WIN32_Logger::Mutex2";
constexpr char kSectionName[] = "ZelKit::WIN32_Logger::Mapping2";

// Terminal sessions have name spaces of their own, except for names that ask for the common one.
// Systems before Windows 2000 know neither sessions nor the prefix.
bool HasGlobalNamespace() noexcept {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    return GetVersionExA(&version) && version.dwPlatformId == VER_PLATFORM_WIN32_NT &&
           version.dwMajorVersion > 4;
}

bool Acquired(DWORD waitResult) noexcept {
    return waitResult == WAIT_OBJECT_0 || waitResult == WAIT_ABANDONED;
}

// Seconds since 1970. Asks the system, because the C run-time library's way costs a tenth of a
// whole record on some systems.
std::uint32_t Now() noexcept {
    constexpr std::uint64_t kUnitsPerSecond = 10'000'000; // of 100 ns
    constexpr std::uint64_t kSecondsFrom1601To1970 = 11'644'473'600;
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    const std::uint64_t units =
        static_cast<std::uint64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
    return static_cast<std::uint32_t>(units / kUnitsPerSecond - kSecondsFrom1601To1970);
}

class NameSpace {
public:
    NameSpace() noexcept : global_(HasGlobalNamespace()) {
        // An empty access list that is present lets nobody in, an absent one everybody: services
        // and users of all accounts share the ring.
        InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION);
        SetSecurityDescriptorDacl(&descriptor_, TRUE, nullptr, FALSE);
        attributes_ = {sizeof attributes_, &descriptor_, FALSE};
    }
    SECURITY_ATTRIBUTES* Security() noexcept { return global_ ? &attributes_ : nullptr; }

    // The full name of an object; valid until the next call.
    const char* Name(const char* name) noexcept {
        std::strcpy(name_, global_ ? "Global\\" : "");
        return std::strcat(name_, name);
    }

private:
    bool global_;
    SECURITY_DESCRIPTOR descriptor_ = {};
    SECURITY_ATTRIBUTES attributes_ = {};
    char name_[64] = {};
};

} // namespace

LogRing::LogRing() noexcept {
    NameSpace names;
    event_.Reset(CreateEventA(names.Security(), TRUE, FALSE, names.Name(kEventName)));
    if (!event_) {
        return;
    }
    mutex_.Reset(CreateMutexA(names.Security(), FALSE, names.Name(kMutexName)));
    if (!mutex_) {
        return;
    }
    if (!Acquired(WaitForSingleObject(mutex_.Get(), INFINITE))) {
        mutex_.Reset();
        return;
    }
    OpenSection(names.Name(kSectionName), names.Security());
    ReleaseMutex(mutex_.Get());
}

// Called with the mutex held, so that no one sees a section without its header.
void LogRing::OpenSection(const char* name, SECURITY_ATTRIBUTES* security) noexcept {
    section_.Reset(CreateFileMappingA(INVALID_HANDLE_VALUE, security, PAGE_READWRITE, 0,
                                      sizeof(LogSection), name));
    const bool existed = GetLastError() == ERROR_ALREADY_EXISTS;
    if (!section_) {
        return;
    }
    view_.Reset(MapViewOfFile(section_.Get(), FILE_MAP_WRITE, 0, 0, sizeof(LogSection)));
    auto* section = static_cast<LogSection*>(view_.Get());
    if (!section) {
        return;
    }
    if (!existed) {
        std::memset(section, 0, sizeof *section);
    }
    // An old section without size is that of a process which died between making and filling it.
    if (section->totalSize == 0) {
        section->totalSize = sizeof *section;
        section->slotCount = kLogSlotCount;
    }
}

bool LogRing::IsValid() const noexcept {
    return mutex_ && section_ && view_ && event_;
}

bool LogRing::Write(LogRecord& record) noexcept {
    if (!IsValid() || !Acquired(WaitForSingleObject(mutex_.Get(), kWriteTimeoutMs))) {
        return false;
    }
    auto* section = static_cast<LogSection*>(view_.Get());
    // An index from outside the ring can only be damage; the ring then starts over at its front.
    const std::uint32_t next = *const_cast<volatile std::uint32_t*>(&section->nextSlot);
    const std::uint32_t slot = next < kLogSlotCount ? next : 0;
    // Stamped here and not earlier, so that times never run backwards along the ring.
    record.time = Now();
    section->records[slot] = record;
    section->nextSlot = (slot + 1) % kLogSlotCount;
    ++section->written;
    PulseEvent(event_.Get());
    ReleaseMutex(mutex_.Get());
    return true;
}

} // namespace ZelBase
