#include "ZelBase/log/LogRing.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace ZelBase {
namespace {

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

// Somebody else may have made the section: smaller, which the mapping has refused already, or of
// addresses without memory behind them, on which a write would end the process.
bool IsWritable(const void* view) noexcept {
    MEMORY_BASIC_INFORMATION memory = {};
    return VirtualQuery(view, &memory, sizeof memory) == sizeof memory &&
           memory.State == MEM_COMMIT && (memory.Protect & PAGE_READWRITE) != 0 &&
           memory.RegionSize >= sizeof(LogSection);
}

} // namespace

// How the objects of a place are named and protected.
class LogRing::NameSpace {
public:
    explicit NameSpace(Place place) noexcept
        : global_(place == Place::kMachine && HasGlobalNamespace()),
          named_(place != Place::kProcess) {
        // An empty access list that is present lets nobody in, an absent one everybody: services
        // and users of all accounts share the ring.
        InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION);
        SetSecurityDescriptorDacl(&descriptor_, TRUE, nullptr, FALSE);
        attributes_ = {sizeof attributes_, &descriptor_, FALSE};
    }
    SECURITY_ATTRIBUTES* Security() noexcept { return global_ ? &attributes_ : nullptr; }

    // The full name of an object, null if it has none; valid until the next call.
    const char* Name(const char* name) noexcept {
        std::strcpy(name_, global_ ? "Global\\" : "");
        return named_ ? std::strcat(name_, name) : nullptr;
    }

private:
    const bool global_;
    const bool named_;
    SECURITY_DESCRIPTOR descriptor_ = {};
    SECURITY_ATTRIBUTES attributes_ = {};
    char name_[64] = {};
};

LogRing::Result LogRing::Open(Place place, DWORD patienceMs,
                              std::unique_ptr<LogRing>& ring) noexcept {
    std::unique_ptr<LogRing> opened(new (std::nothrow) LogRing(place));
    const Result result = opened ? opened->OpenObjects(patienceMs) : Result::kRefused;
    if (result == Result::kOpened) {
        ring = std::move(opened);
    }
    return result;
}

// Since Windows Vista ordinary accounts may not make a section for all sessions, and anybody may
// have put something else in the place of any object. A log that only the session sees is better
// than none, without which there would be no thread and no socket either.
LogRing::Result LogRing::OpenShared(DWORD patienceMs, std::unique_ptr<LogRing>& ring) noexcept {
    const DWORD start = GetTickCount();
    const Result result = Open(Place::kMachine, patienceMs, ring);
    if (result != Result::kRefused) {
        return result;
    }
    // The patience is for both together.
    const DWORD waited = std::min<DWORD>(GetTickCount() - start, patienceMs);
    return Open(Place::kSession, patienceMs - waited, ring);
}

LogRing::Result LogRing::OpenObjects(DWORD patienceMs) noexcept {
    NameSpace names(place_);
    event_.Reset(CreateEventA(names.Security(), TRUE, FALSE, names.Name(kEventName)));
    if (!event_) {
        return Result::kRefused;
    }
    mutex_.Reset(CreateMutexA(names.Security(), FALSE, names.Name(kMutexName)));
    if (!mutex_) {
        return Result::kRefused;
    }
    if (!Acquired(WaitForSingleObject(mutex_.Get(), patienceMs))) {
        return Result::kLocked;
    }
    const bool opened = OpenSection(names);
    ReleaseMutex(mutex_.Get());
    return opened ? Result::kOpened : Result::kRefused;
}

// Called with the mutex held, so that no one sees a section without its header.
bool LogRing::OpenSection(NameSpace& names) noexcept {
    section_.Reset(CreateFileMappingA(INVALID_HANDLE_VALUE, names.Security(), PAGE_READWRITE, 0,
                                      sizeof(LogSection), names.Name(kSectionName)));
    isNew_ = section_ && GetLastError() != ERROR_ALREADY_EXISTS;
    if (!section_) {
        return false;
    }
    view_.Reset(MapViewOfFile(section_.Get(), FILE_MAP_WRITE, 0, 0, sizeof(LogSection)));
    if (!view_ || !IsWritable(view_.Get())) {
        return false;
    }
    auto* section = static_cast<LogSection*>(view_.Get());
    if (isNew_) {
        std::memset(section, 0, sizeof *section);
    }
    // An old section without size is that of a process which died between making and filling it.
    if (section->totalSize == 0) {
        section->totalSize = sizeof *section;
        section->slotCount = kLogSlotCount;
    }
    return true;
}

// Nobody may stop this process by keeping the ring locked, as one does that stands in a debugger or
// in a crash dialog: it costs one wait in all and not one for each record.
bool LogRing::Write(const LogRecord& head, Texts texts, DWORD patienceMs) noexcept {
    if (!Acquired(WaitForSingleObject(mutex_.Get(), stuck_ ? 0 : patienceMs))) {
        stuck_ = true;
        return false;
    }
    stuck_ = false;
    // Stamped here and not earlier, so that times never run backwards along the ring.
    const std::uint32_t now = Now();
    for (const std::string_view text : texts) {
        Append(head, text, now);
    }
    PulseEvent(event_.Get());
    ReleaseMutex(mutex_.Get());
    return true;
}

// Called with the mutex held, so that nothing is done here that could be done before.
void LogRing::Append(const LogRecord& head, std::string_view text, std::uint32_t time) noexcept {
    auto* section = static_cast<LogSection*>(view_.Get());
    // An index from outside the ring can only be damage; the ring then starts over at its front.
    const std::uint32_t next = *const_cast<volatile std::uint32_t*>(&section->nextSlot);
    const std::uint32_t slot = next < kLogSlotCount ? next : 0;
    LogRecord& record = section->records[slot];
    std::memcpy(&record, &head, offsetof(LogRecord, text));
    record.time = time;
    std::memcpy(record.text, text.data(), text.size());
    std::memset(record.text + text.size(), 0,
                sizeof record - offsetof(LogRecord, text) - text.size());
    section->nextSlot = (slot + 1) % kLogSlotCount;
    ++section->written;
}

} // namespace ZelBase
