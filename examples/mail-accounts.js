// The accounts of Outlook Express: lists the identities of this user with their mail and news
// accounts, adds accounts, changes them and removes them again. Run it with:
// cscript //nologo mail-accounts.js
//
// Where Outlook Express has never been used there are no accounts to list; the example then makes
// the registry key that holds them, and removes it at the end.
// Every step tells what it found; the script ends with code 1 when something is not as expected.

var mail = new ActiveXObject("Tervane.ConfigureOutlookExpress");
var registry = new ActiveXObject("Tervane.Registry2");

var HKEY_CURRENT_USER = 1;
var NO_ACCOUNT_STORE = 1, ACCOUNT_EXISTS = 6;
var manager = "Software\\Microsoft\\Internet Account Manager";
var account = "Tervane Example";
var mismatches = 0;

function toArray(list) {
    return new VBArray(list).toArray();
}

function expect(what, found, expected) {
    var isRight = String(found) === String(expected);
    WScript.Echo((isRight ? "  ok   " : "  BAD  ") + what + ": " + found +
                 (isRight ? "" : "  (expected " + expected + ")"));
    if (!isRight) {
        mismatches++;
    }
}

function describe(identity, name) {
    var text = "    " + name;
    var servers = ["Pop3Server", "ImapServer", "SmtpServer", "NewsServer"];
    for (var i = 0; i < servers.length; i++) {
        var server = mail.GetAccountSetting(name, servers[i], identity);
        // Accounts of another kind have no such setting.
        if (server) {
            text += ", " + servers[i] + " " + server;
        }
    }
    return text;
}

function listAccounts(identity) {
    var accounts = toArray(mail.GetMailAccounts(identity));
    WScript.Echo("  " + accounts.length + " mail accounts, default: " +
                 (mail.GetDefaultMailAccount(identity) || "(none)"));
    for (var i = 0; i < accounts.length; i++) {
        WScript.Echo(describe(identity, accounts[i]));
    }
    accounts = toArray(mail.GetNewsAccounts(identity));
    WScript.Echo("  " + accounts.length + " news accounts, default: " +
                 (mail.GetDefaultNewsAccount(identity) || "(none)"));
    for (i = 0; i < accounts.length; i++) {
        WScript.Echo(describe(identity, accounts[i]));
    }
}

function list() {
    WScript.Echo("Outlook Express " + (mail.Version || "is not installed") +
                 (mail.ProgramPath ? " in " + mail.ProgramPath : ""));
    var identities = toArray(mail.Identities);
    if (mail.LastErrorCode == NO_ACCOUNT_STORE) {
        WScript.Echo("It has not been set up for this user.");
    }
    if (mail.LastErrorCode == 0 && identities.length == 0) {
        listAccounts(""); // of a version without identities
    }
    for (var i = 0; i < identities.length; i++) {
        WScript.Echo("Identity \"" + identities[i] + "\"" +
                     (identities[i] == mail.CurrentIdentity ? ", the current one" : ""));
        listAccounts(identities[i]);
    }
}

function addChangeAndRemove() {
    WScript.Echo("Adding an account to the current identity");
    expect("added", mail.AddMailAccount(account, "pop.example.org", "smtp.example.org",
                                        "jane@example.org"), true);
    expect("added once more", mail.AddMailAccount(account, "pop", "smtp", "a@b"), false);
    expect("error", mail.LastErrorCode + " " + mail.LastError, ACCOUNT_EXISTS + " ACCOUNT_EXISTS");
    listAccounts("");

    WScript.Echo("Changing it");
    expect("port before", mail.GetAccountSetting(account, "Pop3Port"), 110);
    expect("port", mail.SetAccountSetting(account, "Pop3Port", 995), true);
    expect("secure", mail.SetAccountSetting(account, "Pop3Secure", true), true);
    expect("display name", mail.SetAccountSetting(account, "DisplayName", "Jane"), true);
    expect("port now", mail.GetAccountSetting(account, "Pop3Port"), 995);
    expect("secure now", mail.GetAccountSetting(account, "Pop3Secure"), true);
    expect("port 0", mail.SetAccountSetting(account, "Pop3Port", 0), false);
    expect("error", mail.LastError, "INVALID_VALUE");
    expect("password", typeof mail.GetAccountSetting(account, "Pop3Password"), "undefined");

    WScript.Echo("Everything that is known of it");
    var settings = toArray(mail.AccountSettingNames);
    for (var i = 0; i < settings.length; i++) {
        var value = mail.GetAccountSetting(account, settings[i]);
        if (mail.LastErrorCode == 0) { // else accounts of this kind do not have it
            WScript.Echo("    " + settings[i] + ": " + value);
        }
    }

    WScript.Echo("Making it the default one");
    var before = mail.GetDefaultMailAccount();
    expect("made", mail.SetDefaultMailAccount(account), true);
    expect("default", mail.GetDefaultMailAccount(), account);
    if (before && before != account) {
        expect("as before", mail.SetDefaultMailAccount(before), true);
    }

    WScript.Echo("Removing it");
    expect("removed", mail.RemoveAccount(account), true);
    expect("removed once more", mail.RemoveAccount(account), false);
    expect("error", mail.LastError, "UNKNOWN_ACCOUNT");
}

function addAndRemoveNews() {
    WScript.Echo("Adding a news account");
    var before = mail.GetDefaultNewsAccount();
    expect("added", mail.AddNewsAccount(account, "news.example.org", "jane@example.org"), true);
    expect("made the default one", mail.SetDefaultNewsAccount(account), true);
    expect("default", mail.GetDefaultNewsAccount(), account);
    expect("mail account of that name", mail.SetDefaultMailAccount(account), false);
    expect("removed", mail.RemoveAccount(account), true);
    expect("default", mail.GetDefaultNewsAccount(), "");
    if (before) {
        expect("as before", mail.SetDefaultNewsAccount(before), true);
    }
}

list();
var isFresh = mail.LastErrorCode == NO_ACCOUNT_STORE;
if (isFresh) {
    registry.CreateKey(HKEY_CURRENT_USER, manager);
}
try {
    addChangeAndRemove();
    addAndRemoveNews();
} finally {
    mail.RemoveAccount(account);
    if (isFresh) {
        registry.DeleteKey(HKEY_CURRENT_USER, manager + "\\Accounts");
        registry.DeleteKey(HKEY_CURRENT_USER, manager);
    }
}

if (mismatches > 0) {
    WScript.Echo(mismatches + " not as expected.");
    WScript.Quit(1);
}
WScript.Echo("Done.");
