#include "ZelNet/SourceCode/snmp/SnmpSession.h"

#include "ZelBase/threads/Mutex.h"

#include <cstring>
#include <new>

namespace ZelNet {
namespace {

constexpr UINT kBindingsSize = 24;
constexpr UINT kEntriesSize = 512;
static_assert(sizeof(SnmpVarBindList) <= kBindingsSize && sizeof(SnmpVarBind) <= kEntriesSize);

// No text of the Internet MIB is longer; a longer one is not believed.
constexpr UINT kLongestText = 0x10000;

bool IsText(BYTE type) {
    switch (type) {
    case ASN_BITS:
    case ASN_OCTETSTRING:
    case ASN_IPADDRESS:
    case ASN_OPAQUE:
        return true;
    default:
        return false;
    }
}

bool IsNumber(BYTE type) {
    switch (type) {
    case ASN_INTEGER:
    case ASN_COUNTER32:
    case ASN_GAUGE32:
    case ASN_TIMETICKS:
    case ASN_UINTEGER32:
        return true;
    default:
        return false;
    }
}

// How a binding says that it has no value: as it was asked, or by an exception (RFC 3416).
bool IsMissing(BYTE type) {
    switch (type) {
    case ASN_NULL:
    case SNMP_EXCEPTION_NOSUCHOBJECT:
    case SNMP_EXCEPTION_NOSUCHINSTANCE:
    case SNMP_EXCEPTION_ENDOFMIBVIEW:
        return true;
    default:
        return false;
    }
}

std::optional<VarBind> Read(const SnmpVarBind& entry) {
    VarBind read;
    read.oid = Oid(entry.name);
    read.type = entry.value.asnType;
    if (!read.oid.IsValid() || IsMissing(read.type)) {
        return std::nullopt;
    }
    if (IsNumber(read.type)) {
        read.number = entry.value.asnValue.number;
    } else if (IsText(read.type)) {
        const AsnOctetString& text = entry.value.asnValue.string;
        if (text.length > kLongestText || (text.length > 0 && !text.stream)) {
            return std::nullopt;
        }
        read.octets.assign(text.stream, text.stream + text.length);
    }
    return read;
}

} // namespace

std::optional<std::int32_t> VarBind::Integer() const {
    return type == ASN_INTEGER ? std::optional(number) : std::nullopt;
}

std::optional<IpAddress> VarBind::Address() const {
    std::uint32_t value = 0;
    if (type != ASN_IPADDRESS || octets.size() != sizeof value) {
        return std::nullopt;
    }
    std::memcpy(&value, octets.data(), sizeof value);
    return IpAddress(value);
}

std::optional<std::string> VarBind::Octets() const {
    return type == ASN_OCTETSTRING ? std::optional(octets) : std::nullopt;
}

std::shared_ptr<SnmpSession> SnmpSession::Open(std::unique_ptr<SnmpAgent> agent) {
    if (!agent) {
        return nullptr;
    }
    std::shared_ptr<SnmpSession> session(new SnmpSession(std::move(agent)));
    return session->Start() ? session : nullptr;
}

bool SnmpSession::Start() {
    void* bindings = agent_->MemAlloc(kBindingsSize);
    bindings_ = bindings ? new (bindings) SnmpVarBindList{} : nullptr;
    entries_ = agent_->MemAlloc(kEntriesSize);
    HANDLE trapEvent = nullptr;
    AsnObjectIdentifier view = {};
    return bindings_ && entries_ && agent_->ExtensionInit(0, &trapEvent, &view);
}

SnmpSession::~SnmpSession() {
    for (void* memory : {static_cast<void*>(bindings_), entries_}) {
        if (memory) {
            agent_->MemFree(memory);
        }
    }
}

std::optional<VarBind> SnmpSession::Ask(Request request, const Oid& oid) {
    const ZelBase::TimedMutexLock turn(turn_.get(), ZelBase::kInfinite);
    if (!turn) {
        return std::nullopt;
    }
    SnmpVarBind& entry = *new (entries_) SnmpVarBind{};
    entry.value.asnType = ASN_NULL;
    if (!oid.CopyTo(*agent_, entry.name)) {
        return std::nullopt;
    }
    *bindings_ = {&entry, 1};
    AsnInteger32 errorStatus = SNMP_ERRORSTATUS_NOERROR;
    AsnInteger32 errorIndex = 0;
    const bool answered =
        agent_->ExtensionQuery(static_cast<BYTE>(request), bindings_, &errorStatus, &errorIndex) &&
        errorStatus == SNMP_ERRORSTATUS_NOERROR;
    // Freed however the reading ends.
    const std::unique_ptr<SnmpSession, void (*)(SnmpSession*)> freed(
        this, [](SnmpSession* session) { session->FreeEntry(); });
    return answered ? Read(entry) : std::nullopt;
}

void SnmpSession::FreeEntry() {
    const SnmpVarBind& entry = Entry();
    if (entry.name.ids) {
        agent_->MemFree(entry.name.ids);
    }
    const AsnAny& value = entry.value;
    if (IsText(value.asnType) && value.asnValue.string.dynamic && value.asnValue.string.stream) {
        agent_->MemFree(value.asnValue.string.stream);
    } else if (value.asnType == ASN_OBJECTIDENTIFIER && value.asnValue.object.ids) {
        agent_->MemFree(value.asnValue.object.ids);
    }
}

} // namespace ZelNet
