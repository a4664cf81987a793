#include "ZelBase/text/SecretText.h"

#include "ZelBase/text/TextConversion.h"

namespace ZelBase {

SecretText NarrowSecret(std::wstring_view text) {
    std::string bytes = Utf16ToBytes(text); // has reserved its room
    const WipeAtEnd wipe(bytes);
    return SecretText(bytes);
}

} // namespace ZelBase
