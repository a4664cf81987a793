// Sources: ZelNet/SourceCode/sockets/DnsMessage.cpp
//
// Any bytes as the answer of a name server: decoding ends, stays inside the message, and whatever
// it gives out is within the limits of the protocol.

#include "ZelNet/SourceCode/sockets/DnsMessage.h"
#include "fuzz/require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto reply = ZelNet::ParseDnsReply({data, size});
    if (!reply) {
        return 0;
    }
    Require(reply->question.size() <= 253);
    // Each answer takes at least eleven bytes.
    Require(reply->answers.size() <= size / 11);
    for (const ZelNet::DnsAnswer& answer : reply->answers) {
        Require(answer.dataLength < size);
        Require(answer.alias.size() <= 253);
        Require(answer.type == ZelNet::kDnsTypeAlias || answer.alias.empty());
    }
    // A question that can be asked comes back as it was.
    if (const auto query = ZelNet::BuildDnsQuery(reply->question)) {
        Require(query->size() == reply->question.size() + 18);
        const auto echo = ZelNet::ParseDnsReply(*query);
        Require(echo && echo->question == reply->question && echo->answers.empty());
    }
    return 0;
}
