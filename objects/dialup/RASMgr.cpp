#include "objects/dialup/RASMgr.h"

#include "component/Answers.h"
#include "component/Worker.h"
#include "objects/Classes.h"
#include "objects/dialup/DefaultConnection.h"
#include "objects/dialup/DialSession.h"
#include "objects/dialup/PhoneBook.h"
#include "objects/dialup/PhoneBookEntry.h"
#include "platform/text/LetterCase.h"
#include "platform/text/RegularExpression.h"

#include <raserror.h>

#include <algorithm>

namespace tervane {
namespace {

constexpr DISPID kOnConnectStateChange = 1;
constexpr DISPID kOnConnectComplete = 2;

using Lock = ZelBase::LocalMutexLock;

std::wstring CopyOf(BSTR text) {
    return std::wstring(TextOf(text));
}

bool SameName(std::wstring_view one, std::wstring_view other) {
    return LowerCase(one) == LowerCase(other);
}

} // namespace

HRESULT RASMgr::Fire_OnConnectStateChange(long id, long state, long error) noexcept {
    return FireEvent(*Sinks(), kOnConnectStateChange, {id, state, error});
}

HRESULT RASMgr::Fire_OnConnectComplete(long id, bool success, long error) noexcept {
    return FireEvent(*Sinks(), kOnConnectComplete, {id, success, error});
}

bool RASMgr::Note(DWORD error) noexcept {
    lastError_ = error;
    return error == ERROR_SUCCESS;
}

std::vector<std::wstring> RASMgr::Matching(std::vector<std::wstring> names, BSTR pattern) {
    const RegularExpression expression = RegularExpression::WholeTextMatch(TextOf(pattern));
    if (!expression.IsValid()) {
        Note(ERROR_INVALID_PARAMETER);
    }
    std::erase_if(names, [&](const std::wstring& name) { return !expression.Matches(name); });
    return names;
}

HRESULT RASMgr::get_Entries(VARIANT* result) {
    return AnswerTexts(result, [&] {
        std::vector<std::wstring> names;
        Note(PhoneBook(dialUp_.Get()).List(names));
        return names;
    });
}

HRESULT RASMgr::DoesEntryExist(BSTR entry, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        bool exists = false;
        return Note(PhoneBook(dialUp_.Get()).Exists(CopyOf(entry), exists)) && exists;
    });
}

HRESULT RASMgr::FindEntries(BSTR pattern, VARIANT* result) {
    return AnswerTexts(result, [&] {
        std::vector<std::wstring> names;
        Note(PhoneBook(dialUp_.Get()).List(names));
        return Matching(std::move(names), pattern);
    });
}

HRESULT RASMgr::CreateEntry(BSTR entry, BSTR phoneNumber, BSTR deviceName, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        return Note(PhoneBook(dialUp_.Get())
                        .Create(CopyOf(entry), CopyOf(phoneNumber), CopyOf(deviceName)));
    });
}

HRESULT RASMgr::RenameEntry(BSTR entry, BSTR newName, VARIANT_BOOL* result) {
    return AnswerFlag(
        result, [&] { return Note(dialUp_.Get()->RenameEntry(CopyOf(entry), CopyOf(newName))); });
}

HRESULT RASMgr::DeleteEntry(BSTR entry, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] { return Note(dialUp_.Get()->DeleteEntry(CopyOf(entry))); });
}

HRESULT RASMgr::GetEntry(BSTR entry, IDispatch** result) {
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = nullptr;
    return Guarded([&] {
        const ClassRow* row = FindClass(__uuidof(::PhoneBookEntry));
        auto* object = new tervane::PhoneBookEntry(*row, nullptr, dialUp_.Get());
        const ComPtr<IUnknown> owner(object->Inner());
        if (Note(object->LoadEntry(CopyOf(entry)))) {
            *result = QueryFor<IDispatch>(owner.Get()).Release();
        }
        return S_OK;
    });
}

long RASMgr::Register(const Session& session) {
    const Lock lock(lock_);
    sessions_.emplace(lastId_ + 1, session);
    return ++lastId_;
}

bool RASMgr::Unregister(long id) {
    const Lock lock(lock_);
    return sessions_.erase(id) != 0;
}

void RASMgr::RunSession(long id, DialSession& session) {
    const DWORD error = session.Run([this, id](DWORD state, DWORD stateError) {
        Fire_OnConnectStateChange(id, static_cast<long>(state), static_cast<long>(stateError));
    });
    Unregister(id);
    Fire_OnConnectComplete(id, error == ERROR_SUCCESS, static_cast<long>(error));
}

// The worker's reference keeps this object alive until the session has told its end.
bool RASMgr::StartSession(long id, const Session& session) {
    try {
        WorkerRequest request;
        request.object = AddReference(Controlling());
        request.work = [this, id, session] { RunSession(id, *session); };
        return StartWorker(std::move(request));
    } catch (const std::bad_alloc&) {
        return false;
    }
}

HRESULT RASMgr::Connect(BSTR entry, BSTR userName, BSTR password, long* result) {
    return AnswerNumber(result, [&] {
        const std::shared_ptr<const DialUp> dialUp = dialUp_.Get();
        const std::wstring name = CopyOf(entry);
        // What is sure to fail is told at once.
        DialCredentials stored;
        if (!Note(dialUp->ReadCredentials(name, stored))) {
            return 0L;
        }
        const auto session = std::make_shared<DialSession>(
            dialUp, DialSession::Request{name, CopyOf(userName),
                                         ZelBase::WideSecretText(TextOf(password))});
        const long id = Register(session);
        if (!StartSession(id, session)) {
            Unregister(id);
            Note(ERROR_NOT_ENOUGH_MEMORY);
            return 0L;
        }
        return id;
    });
}

HRESULT RASMgr::AbortConnect(long id, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        const Lock lock(lock_);
        const auto session = sessions_.find(id);
        if (session == sessions_.end()) {
            return Note(ERROR_INVALID_PARAMETER);
        }
        session->second->Abort();
        return Note(ERROR_SUCCESS);
    });
}

bool RASMgr::AbortSessions(const std::wstring& entry) {
    bool any = false;
    const Lock lock(lock_);
    for (const auto& [id, session] : sessions_) {
        if (SameName(session->Entry(), entry)) {
            session->Abort();
            any = true;
        }
    }
    return any;
}

DWORD RASMgr::HangUpConnections(const std::wstring& entry) {
    const std::shared_ptr<const DialUp> dialUp = dialUp_.Get();
    std::vector<DialConnection> connections;
    DWORD error = dialUp->Connections(connections);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    error = ERROR_NO_CONNECTION;
    for (const DialConnection& connection : connections) {
        if (SameName(connection.entry, entry)) {
            const DWORD hungUp = HangUpAndWait(*dialUp, connection.handle);
            // One that resists is what the script must hear of.
            error = error == ERROR_NO_CONNECTION || error == ERROR_SUCCESS ? hungUp : error;
        }
    }
    return error;
}

HRESULT RASMgr::HangUp(BSTR entry, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        const std::wstring name = CopyOf(entry);
        // A session whose connection is taken from it could not tell why it ended.
        const bool wasConnecting = AbortSessions(name);
        const DWORD error = HangUpConnections(name);
        return Note(wasConnecting && error == ERROR_NO_CONNECTION ? ERROR_SUCCESS : error);
    });
}

HRESULT RASMgr::get_ActiveConnections(VARIANT* result) {
    return AnswerTexts(result, [&] {
        std::vector<DialConnection> connections;
        Note(dialUp_.Get()->Connections(connections));
        std::vector<std::wstring> names;
        names.reserve(connections.size());
        for (DialConnection& connection : connections) {
            names.push_back(std::move(connection.entry));
        }
        return names;
    });
}

HRESULT RASMgr::GetConnectionState(BSTR entry, long* result) {
    return AnswerNumber(result, [&] {
        const std::shared_ptr<const DialUp> dialUp = dialUp_.Get();
        const std::wstring name = CopyOf(entry);
        DWORD state = RASCS_Disconnected;
        std::vector<DialConnection> connections;
        Note(dialUp->Connections(connections));
        for (const DialConnection& connection : connections) {
            if (SameName(connection.entry, name)) {
                dialUp->State(connection.handle, state); // gone meanwhile: not connected
            }
        }
        return state;
    });
}

HRESULT RASMgr::get_DefaultConnection(BSTR* result) {
    return AnswerText(result, [&] {
        std::vector<std::wstring> entries;
        return Note(PhoneBook(dialUp_.Get()).List(entries)) ? DefaultConnection() : std::wstring();
    });
}

HRESULT RASMgr::put_DefaultConnection(BSTR entry) {
    return Guarded([&] {
        const std::wstring name = CopyOf(entry);
        bool exists = false;
        if (!Note(PhoneBook(dialUp_.Get()).Exists(name, exists))) {
            return S_OK;
        }
        if (!exists && !name.empty()) {
            Note(ERROR_CANNOT_FIND_PHONEBOOK_ENTRY);
        } else if (!SetDefaultConnection(name)) {
            Note(ERROR_ACCESS_DENIED);
        }
        return S_OK;
    });
}

HRESULT RASMgr::FindDevices(BSTR pattern, VARIANT* result) {
    return AnswerTexts(result, [&] {
        std::vector<DialDevice> devices;
        Note(dialUp_.Get()->Devices(devices));
        std::vector<std::wstring> names;
        names.reserve(devices.size());
        for (DialDevice& device : devices) {
            names.push_back(std::move(device.name));
        }
        return Matching(std::move(names), pattern);
    });
}

HRESULT RASMgr::GetDeviceType(BSTR deviceName, BSTR* result) {
    return AnswerText(result, [&]() -> std::wstring {
        std::vector<DialDevice> devices;
        if (!Note(dialUp_.Get()->Devices(devices))) {
            return {};
        }
        for (DialDevice& device : devices) {
            if (SameName(device.name, TextOf(deviceName))) {
                return std::move(device.type);
            }
        }
        Note(ERROR_DEVICE_DOES_NOT_EXIST);
        return {};
    });
}

HRESULT RASMgr::get_LastError(BSTR* result) {
    return AnswerText(result, [&] { return dialUp_.Get()->ErrorText(lastError_); });
}

HRESULT RASMgr::get_LastErrorCode(long* result) {
    return AnswerNumber(result, [&] { return lastError_.load(); });
}

namespace create {

HRESULT RASMgr(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::RASMgr>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
