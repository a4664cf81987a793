#include "ZelNet/SourceCode/sockets/DnsMessage.h"

#include <gtest/gtest.h>

namespace ZelNet {
namespace {

using namespace std::string_literals;

std::span<const std::uint8_t> Bytes(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// A reply to "www.a.example" with the given answer count; the question ends at offset 31.
std::string Reply(char count, const std::string& answers) {
    return "\0\1\x81\x80\0\1\0"s + count + "\0\0\0\0\3www\1a\7example\0\0\1\0\1"s + answers;
}

const std::string kOwner = "\xC0\x0C"s;
const std::string kAddressRecord = kOwner + "\0\1\0\1\0\0\0\x3C\0\4\x0A\1\2\3"s;
const std::string kAliasRecord = kOwner + "\0\5\0\1\0\0\0\x3C\0\5\2xy\xC0\x12"s;
const std::string kTextRecord = kOwner + "\0\x10\0\1\0\0\0\x3C\0\3\2ab"s;

std::string Record(const char* type, const std::string& data) {
    const char length[] = {0, static_cast<char>(data.size())};
    return kOwner + "\0"s + type + "\0\1\0\0\0\x3C"s + std::string(length, 2) + data;
}

std::string Describe(const DnsReply& reply) {
    std::string text = reply.question;
    for (const DnsAnswer& answer : reply.answers) {
        text += " " + std::to_string(answer.type) + "/" + std::to_string(answer.dataLength);
        text += answer.type == kDnsTypeAlias ? "=" + answer.alias : "";
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(&answer.address);
        text += answer.type == kDnsTypeAddress ? "=" + std::to_string(bytes[0]) : "";
    }
    return text;
}

TEST(DnsMessage, BuildsTheQuestionForAnAddress) {
    const auto query = BuildDnsQuery("www.a.example");
    ASSERT_TRUE(query);
    const std::string expected =
        "\0\1\1\0\0\1\0\0\0\0\0\0\3www\1a\7example\0\0\1\0\1"s; // name length + 18
    EXPECT_EQ(std::string(query->begin(), query->end()), expected);
}

TEST(DnsMessage, RefusesNamesThatNoMessageCanHold) {
    const std::string label(63, 'a');
    const std::string longest = label + "." + label + "." + label + "." + std::string(61, 'b');
    EXPECT_TRUE(BuildDnsQuery(longest));
    for (const std::string& name : {""s, "."s, "a."s, ".a"s, "a..b"s, label + "a.example",
                                    longest + "b", std::string(65536, 'a')}) {
        EXPECT_FALSE(BuildDnsQuery(name)) << name.substr(0, 80);
    }
}

struct ReplyCase {
    const char* what;
    std::string message;
    const char* expected; // null: not even a question
};

TEST(DnsMessage, TakesRepliesApart) {
    // A label whose tail is a pointer back to the label, when it begins at offset 43.
    const std::string growing = "\1q\xC0\x2B"s;
    std::string manyPointers; // 100 pointers, each to the one before, the first to the question
    for (int index = 0; index < 100; ++index) {
        manyPointers += "\xC0"s + static_cast<char>(index == 0 ? 12 : 43 + 2 * (index - 1));
    }
    const ReplyCase cases[] = {
        {"an address", Reply(1, kAddressRecord), "www.a.example 1/4=10"},
        {"an alias, then an address", Reply(2, kAliasRecord + kAddressRecord),
         "www.a.example 5/5=xy.example 1/4=10"},
        {"unknown data", Reply(2, kTextRecord + kAddressRecord), "www.a.example 16/3 1/4=10"},
        {"a count that promises more", Reply('\x7F', kAddressRecord), "www.a.example 1/4=10"},
        {"an address of six bytes",
         Reply(2, kOwner + "\0\1\0\1\0\0\0\x3C\0\6\1\2\3\4\5\6"s + kAddressRecord),
         "www.a.example 1/4=10"},
        {"data beyond the end", Reply(1, kOwner + "\0\x10\0\1\0\0\0\x3C\xFF\xFF\1\2"s),
         "www.a.example"},
        {"an owner that is a loop", Reply(1, "\xC0\x1F"s + kAddressRecord.substr(2)),
         "www.a.example 1/4=10"},
        {"an owner that points behind byte 255",
         Reply(2, Record("\x10", std::string(250, 't')) + "\xC1\x20"s + kAddressRecord.substr(2)),
         "www.a.example 16/250 1/4=10"},
        {"an owner of a reserved label type", Reply(1, "\x41"s + std::string(80, 'x')),
         "www.a.example"},
        {"an alias that is a loop", Reply(2, Record("\5", "\xC0\x2B"s) + kAddressRecord),
         "www.a.example 1/4=10"},
        {"an alias that grows for ever", Reply(2, Record("\5", growing) + kAddressRecord),
         "www.a.example 1/4=10"},
        {"an alias over a hundred pointers",
         Reply(3, Record("\x10", manyPointers) + Record("\5", "\xC0\xF1"s) + kAddressRecord),
         "www.a.example 16/200 5/2=www.a.example 1/4=10"},
        {"the six low bits of a pointer are ignored", Reply(1, Record("\5", "\xFF\x0C"s)),
         "www.a.example 5/2=www.a.example"},
        {"a header alone", Reply(1, "").substr(0, 12), nullptr},
        {"a question that loops", "\0\1\x81\x80\0\1\0\1\0\0\0\0\xC0\x0C\0\1\0\1"s, nullptr},
    };
    for (const ReplyCase& row : cases) {
        const auto reply = ParseDnsReply(Bytes(row.message));
        ASSERT_EQ(reply.has_value(), row.expected != nullptr) << row.what;
        if (reply) {
            EXPECT_EQ(Describe(*reply), row.expected) << row.what;
        }
    }
}

TEST(DnsMessage, ANameOfManyKilobytesIsMalformed) {
    std::string name;
    for (int index = 0; index < 1000; ++index) {
        name += "\x3F"s + std::string(63, 'n');
    }
    EXPECT_FALSE(ParseDnsReply(Bytes("\0\1\x81\x80\0\1\0\1\0\0\0\0"s + name + "\0\0\1\0\1"s)));
    // As an owner it is only skipped.
    const auto reply = ParseDnsReply(Bytes(Reply(1, name + "\0"s + kAddressRecord.substr(2))));
    ASSERT_TRUE(reply);
    EXPECT_EQ(Describe(*reply), "www.a.example 1/4=10");
}

} // namespace
} // namespace ZelNet
