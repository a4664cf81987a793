#pragma once

// What scripts see and change of a phone-book entry, apart from its name and its credentials.

#include "objects/dialup/Ipv4Text.h"

#include <string>

namespace tervane {

struct PhoneBookRecord {
    std::wstring phoneNumber;
    std::wstring areaCode;
    unsigned long countryCode = 0; // the international dialling code
    bool usesAreaAndCountryCodes = false;
    std::wstring deviceName;
    std::wstring deviceType;
    // None: left to the server that is dialled.
    Ipv4Bytes address = {};
    Ipv4Bytes dns = {};
    Ipv4Bytes alternateDns = {};
    Ipv4Bytes wins = {};
    Ipv4Bytes alternateWins = {};
    bool usesRemoteGateway = true;
    bool compressesHeaders = true;
};

} // namespace tervane
