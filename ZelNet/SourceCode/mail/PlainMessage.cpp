#include "ZelNet/SourceCode/mail/PlainMessage.h"

#include "ZelNet/SourceCode/mail/MailDate.h"

namespace ZelNet {

std::unique_ptr<AMIME> MakePlainMessage(const std::string& from, const std::string& to,
                                        const std::string& subject, const std::string& body,
                                        std::chrono::system_clock::time_point date) {
    auto message = std::make_unique<AMIME>();
    message->AddHeader("Date", PlainMailDate(date));
    message->AddHeader("From", from);
    message->AddHeader("To", to);
    message->AddHeader("Subject", subject);
    message->AddHeader("X-Mailer", "<Velmarch>");
    message->SetBody(body, false);
    return message;
}

} // namespace ZelNet
