// Sends a test mail with text and HTML, and tells what came of it.
// Run it with: cscript //nologo send-mail.js SERVER [PORT [FROM TO [LOGIN PASSWORD]]]
//
// SendMail returns at once; the event comes in while the script sleeps, and StatusCode then names
// the outcome. The server is asked to authenticate only when login and password are given.

var MEANINGS = {
    SMTP_SUCCESS: "the server has accepted the mail",
    SMTP_SOCKET_FAILURE: "no connection could be begun, perhaps for want of a name server",
    SMTP_CONNECT_ERROR: "nobody answers there, or the server does not want to talk to us",
    SMTP_TERMINATED: "the connection broke off, or the server's name is unknown",
    SMTP_INVALID_ARGS: "there is no message, or an address has a line break",
    SMTP_INVALID_STATE: "server or port are missing",
    SMTP_UNEXPECTED: "the server refuses the sender, the recipient or the text",
    SMTP_AUTH_ERROR: "the server does not know this login and password",
    SMTP_TIMEOUT_ERR: "the server has not answered in time",
    SMTP_ABORTED: "aborted"
};

function argument(index, otherwise) {
    return WScript.Arguments.length > index ? WScript.Arguments(index) : otherwise;
}

if (WScript.Arguments.length === 0) {
    WScript.Echo("usage: send-mail.js SERVER [PORT [FROM TO [LOGIN PASSWORD]]]");
    WScript.Quit(2);
}

var mail = new ActiveXObject("Pellow.EmailData");
mail.From = argument(2, "Tervane <tervane@mail.example>");
mail.To = argument(3, "someone@mail.example");
mail.Subject = "Tervane test";
mail.TextMessage = "This mail was sent to see whether mail can be sent.";
mail.HtmlMessage = "<p>This mail was sent to see whether <b>mail</b> can be sent.</p>";

var smtp = WScript.CreateObject("Pellow.SmtpCtl", "Smtp_");
smtp.SmtpServer = argument(0, "");
smtp.Port = parseInt(argument(1, "25"), 10);
smtp.Login = argument(4, "");
smtp.Password = argument(5, "");
smtp.Timeout = 20; // seconds, for each step
var PATIENCE = 240; // seconds, for all of them
smtp.EmailData = mail;
var ended = false;

function Smtp_OnSmtpSendMailComplete(success, sender) {
    report(sender.StatusCode);
    ended = true;
}

// Events come in while the script sleeps, if the host delivers any.
function sleepUntilEnded() {
    for (var waited = 0; !ended; waited += 20) {
        if (waited >= PATIENCE * 1000) {
            WScript.Echo("No event has come in " + PATIENCE + " seconds: this host delivers none.");
            WScript.Quit(1);
        }
        WScript.Sleep(20);
    }
}

function report(status) {
    WScript.Echo("  " + status + ": " + (MEANINGS[status] || "this should not happen"));
}

WScript.Echo("Sending from " + mail.From + " to " + mail.To + " by " + smtp.SmtpServer +
             ", port " + smtp.Port);
if (smtp.SendMail()) {
    sleepUntilEnded();
} else {
    report(smtp.StatusCode);
}
WScript.Echo("As it was sent, the message has " + mail.NumHeaders + " header lines:");
for (var i = 0; i < mail.NumHeaders; i++) {
    WScript.Echo("  " + mail.GetHeader(i));
}
if (!smtp.Success) {
    WScript.Quit(1);
}
WScript.Echo("Done.");
