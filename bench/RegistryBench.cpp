#include "bench/RegistryBench.h"

#include "bench/Comparison.h"
#include "bench/LateBound.h"
#include "bench/RequestCount.h"

#include <iterator>
#include <string>

namespace bench {
namespace {

using tervane::Variant;

constexpr const wchar_t* kKey = L"Software\\TervaneBench";
constexpr wchar_t kText[] = L"a text of ordinary length, as settings have";

// Lives as long as what is read.
class StoredText {
public:
    StoredText() { RegSetKeyValueW(HKEY_CURRENT_USER, kKey, L"Text", REG_SZ, kText, sizeof kText); }
    ~StoredText() { RegDeleteKeyW(HKEY_CURRENT_USER, kKey); }
    StoredText(const StoredText&) = delete;
    StoredText& operator=(const StoredText&) = delete;
};

void ExpectText(std::wstring_view text) {
    if (text != kText) {
        Fail("reading the registry", E_UNEXPECTED);
    }
}

class ScriptReader {
public:
    void Read() const { ExpectText(registry_.Call(L"GetValue", {&hive_, &key_, &name_}).Text()); }

private:
    LateBound registry_{L"Tervane.Registry2"};
    Variant hive_ = Variant::FromLong(1);
    Variant key_ = Text(kKey);
    Variant name_ = Text(L"Text");
};

void ReadBare() {
    HKEY key = nullptr;
    wchar_t text[100] = {};
    DWORD size = sizeof text;
    RegOpenKeyExW(HKEY_CURRENT_USER, kKey, 0, KEY_READ, &key);
    RegQueryValueExW(key, L"Text", nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size);
    RegCloseKey(key);
    ExpectText(text);
}

} // namespace

void CompareRegistryRead() {
    const StoredText stored;
    const ScriptReader ours;
    const LateBound theirs(L"WScript.Shell");
    const Variant path = Text(std::wstring(L"HKCU\\") + kKey + L"\\Text");
    Compare(
        {"Registry2.GetValue : WScript.Shell.RegRead", 0.6, 200}, [&] { ours.Read(); },
        [&] { ExpectText(theirs.Call(L"RegRead", {&path}).Text()); });
}

void CountRegistryRead() {
    constexpr int kReads = 100;
    const char* const kWhat = "a Registry2.GetValue : open, query, close";
    const StoredText stored;
    const ScriptReader ours;
    const auto repeat = [](const auto& read) {
        for (int i = 0; i < kReads; ++i) {
            read();
        }
    };
    ours.Read();
    ReadBare();
    MarkRequests({kWhat, kReads, 3});
    repeat([&] { ours.Read(); });
    MarkRequests({.what = kWhat, .units = kReads, .isTheirs = true});
    repeat([] { ReadBare(); });
    MarkEndOfRequests();
}

} // namespace bench
