#include "platform/adapters/AdapterClassification.h"

#include "platform/adapters/HardwareAddress.h"
#include "platform/text/LetterCase.h"
#include "platform/text/RegularExpression.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

namespace tervane {
namespace {

// Patterns for whole texts in lower case. They are ASCII, so that other letters may keep theirs.
class PatternTable {
public:
    PatternTable(std::initializer_list<const wchar_t*> patterns) {
        for (const wchar_t* pattern : patterns) {
            patterns_.push_back(RegularExpression::WholeTextMatch(pattern));
        }
    }

    bool Matches(std::wstring_view text) const {
        const std::wstring lower = LowerAscii(text);
        return std::any_of(patterns_.begin(), patterns_.end(),
                           [&](const RegularExpression& pattern) {
                               // The table outlives every operation; each text is one.
                               pattern.BeginOperation();
                               return pattern.Matches(lower);
                           });
    }

private:
    std::vector<RegularExpression> patterns_;
};

const PatternTable& EthernetDescriptions() {
    // "ethenet" is a misspelling that a driver really carries, and the last two rows have no
    // leading ".*": both deliberately.
    static const PatternTable table = {
        L".*ether.*",
        L".*lan adapter.*",
        L".*ndis.*",
        L".*linksys.*",
        L".*10/100.*",
        L".*tamarack.*pc card.*",
        L".*ne[ ]*[1-9]000.*",
        L".*netflex.*controller.*",
        L".*netflex.*driver.*",
        L".*novel[l]?[ ]*[1-9]000.*",
        L".*intel.* pro.* adapter.*",
        L".*bus [ ]*master [ ]*adapter.*",
        L".*smc [ ]*ez [ ]*card.*",
        L".*netline[ ]* pci[ ]* card.*",
        L".*conexant systems.*",
        L".*ethenet.*",
        L".*efficient networks speedstream.*",
        L".*wireless.*lan.*card.*",
        L".*cable modem.*",
        L".*catc usb.*",
        L".*ez connect usb.*",
        L".*pci adapter.*",
        L".*3c508.*",
        L".*isa adapter.*",
        L".*usb.*",
        L".*alcatel speedtouch.*",
        L"efficient networks.*virtual miniport",
        L"intel.* pro/100",
    };
    return table;
}

// Nothing has had to be excluded so far; the table is kept for when something must.
const PatternTable& ExcludedDescriptions() {
    static const PatternTable table = {};
    return table;
}

const PatternTable& EthernetDrivers() {
    static const PatternTable table = {
        L"^ether.*", L"^el90x.*", L"^ea20.*", L"^ea10.*", L"^dfe.*", L"^cben4.*", L"^alcan.*",
    };
    return table;
}

// "WAN Miniport (PPPOE)", "WAN-Miniport (IP)", "Dial-Up Adapter", "RAS Async Adapter".
const PatternTable& PppDescriptions() {
    static const PatternTable table = {
        L".*dial[- ]*up.*",        L".*ppp.*",     L".*wan[- ]*miniport.*",
        L".*remote access.*wan.*", L".*ndiswan.*", L"ras async adapter.*",
    };
    return table;
}

// Descriptions are translated, these are not.
const PatternTable& PppDrivers() {
    static const PatternTable table = {
        L"pppmac.*",  L"ndiswan.*",      L"asyncmac.*", L"raspppoe.*",
        L"rasl2tp.*", L"pptpminiport.*", L"rassstp.*",  L"rasagilevpn.*",
    };
    return table;
}

struct AddressRange {
    HardwareAddressBytes address;
    HardwareAddressBytes mask;

    bool Contains(const HardwareAddressBytes& other) const noexcept {
        for (std::size_t i = 0; i < other.size(); ++i) {
            if ((other[i] & mask[i]) != (address[i] & mask[i])) {
                return false;
            }
        }
        return true;
    }
};

constexpr AddressRange kNonEthernetAddresses[] = {
    {{0x44, 0x45, 0x53, 0x54, 0x00, 0x00}, {0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00}},
    {{0x00, 0xC0, 0x45, 0x00, 0x00, 0x00}, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}},
    {{0x00, 0x03, 0x8A, 0x00, 0x00, 0x00}, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}},
    {{0x00, 0x53, 0x45, 0x00, 0x00, 0x00}, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}},
    {{0x00, 0x41, 0xBE, 0xF7, 0x5E, 0xF6}, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}},
    {{0x00, 0x00, 0x00, 0x00, 0x00, 0x00}, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}},
    {{0x00, 0x50, 0x77, 0x01, 0x8B, 0x58}, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}},
    {{0x00, 0x20, 0xEA, 0x09, 0xEB, 0xDF}, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}},
};

constexpr std::wstring_view kPhysicalBuses[] = {L"pci\\", L"isapnp\\", L"usb\\", L"pcmcia\\"};

} // namespace

bool IsExcludedDescription(std::wstring_view description) {
    return ExcludedDescriptions().Matches(description);
}

bool IsEthernetDescription(std::wstring_view description) {
    return !IsExcludedDescription(description) && EthernetDescriptions().Matches(description);
}

bool IsEthernetDriver(std::wstring_view driver) {
    return EthernetDrivers().Matches(driver);
}

bool NamesPhysicalBus(std::wstring_view text) {
    return std::any_of(std::begin(kPhysicalBuses), std::end(kPhysicalBuses),
                       [&](std::wstring_view bus) {
                           return FindIgnoringAsciiCase(text, bus) != std::wstring_view::npos;
                       });
}

bool IsNonEthernetAddress(std::wstring_view hardwareAddress) {
    const auto bytes = ParseHardwareAddress(hardwareAddress);
    return bytes && std::any_of(std::begin(kNonEthernetAddresses), std::end(kNonEthernetAddresses),
                                [&](const AddressRange& range) { return range.Contains(*bytes); });
}

bool IsNonEthernetAdapter(std::wstring_view hardwareAddress, std::wstring_view description) {
    // A modem that presents itself as an Ethernet adapter but dials.
    static const PatternTable modems = {L"usb cable modem"};
    return IsNonEthernetAddress(hardwareAddress) || modems.Matches(description);
}

bool IsPppAdapter(std::wstring_view description, std::wstring_view driver) {
    return PppDescriptions().Matches(description) || PppDrivers().Matches(driver);
}

} // namespace tervane
