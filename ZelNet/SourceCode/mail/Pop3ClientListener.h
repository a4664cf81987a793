#pragma once

#include "ZelNet/SourceCode/mail/PopStatus.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ZelNet {

// What a user of APop3Client is told, on a socket event thread and with no lock of the client held.
// A notification must not block and must not destroy the client. A close of the connection ends
// what is under way with kTerminated; if nothing is, it comes as Connected(kTerminated).
class Pop3ClientListener {
public:
    virtual void Connected(PopStatus status) = 0;
    virtual void Greeted(PopStatus status) = 0;
    // After USER, and again, with `isPassword`, after PASS.
    virtual void LoginStep(bool isPassword, PopStatus status) = 0;
    // Number of messages and their total size in bytes, 0 on failure.
    virtual void MailCount(PopStatus status, std::uint32_t count, std::uint32_t totalSize) = 0;
    // The message's lines without their ends, as they were received: those that begin with a dot
    // have one more. The listener may take them; there are none on failure.
    virtual void Retrieved(PopStatus status, int index, std::vector<std::string>& lines) = 0;
    virtual void Deleted(int index, PopStatus status) = 0;
    virtual void QuitDone(PopStatus status) = 0;

protected:
    ~Pop3ClientListener() = default;
};

} // namespace ZelNet
