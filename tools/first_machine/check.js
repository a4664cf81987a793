// Creates every class and awaits an event of each kind. Part of check.cmd, on any Windows since XP:
// only what the first script engines know. Its exit code is the number of failures. Its arguments:
// the folder with the log viewer, and "norenew" to leave the network cards' addresses alone.

var patience = 30; // seconds for each event
var failures = 0;
var arrived = {};

function report(succeeded, what) {
    WScript.Echo((succeeded ? "ok      " : "FAILED  ") + what);
    failures += succeeded ? 0 : 1;
}

function attempt(what, action) {
    try {
        return action();
    } catch (error) {
        report(false, what + ": " + (error.number >>> 0).toString(16) + " " + error.description);
        return null;
    }
}

// Waits for the event that the action leads to.
function await(event, action) {
    arrived[event] = null;
    if (attempt(event, function () { action(); return true; })) {
        for (var waited = 0; arrived[event] === null && waited < patience * 10; waited++) {
            WScript.Sleep(100);
        }
        report(arrived[event] !== null, "event " + event +
               (arrived[event] === null ? " stays out" : ": " + arrived[event]));
    }
}

function Info_OnGeneralSysInfoComplete() { arrived.OnGeneralSysInfoComplete = ""; }
function Smtp_OnSmtpSendMailComplete(sent) { arrived.OnSmtpSendMailComplete = sent; }
function Pop_OnPopConnect(connected) { arrived.OnPopConnect = connected; }
function Tester_OnDNSLookupComplete(found) { arrived.OnDNSLookupComplete = found; }
function Tester_OnTCPPortTestComplete(open) { arrived.OnTCPPortTestComplete = open; }
function Tester_OnPingComplete(answered) { arrived.OnPingComplete = answered; }
function Dhcp_OnReleaseRenewComplete(cards) { arrived.OnReleaseRenewComplete = cards; }
function Windows_OnWaitOnWindowComplete(id, result) { arrived.OnWaitOnWindowComplete = result; }
function Windows_OnWaitForWindowComplete(id, result) { arrived.OnWaitForWindowComplete = result; }
function Windows_OnWaitForWindowToComeAndGoComplete(id, result) {
    arrived.OnWaitForWindowToComeAndGoComplete = result;
}
function Adapters_OnAdapterInfoComplete(id, gathered) { arrived.OnAdapterInfoComplete = gathered; }
function Dial_OnConnectComplete(id, connected, error) { arrived.OnConnectComplete = error; }

function create(id, prefix) {
    return attempt(id, function () { return WScript.CreateObject(id, prefix); });
}

var classes = ["Tervane.ConfigureOutlookExpress", "Ostrel.GeneralSysInfo", "Pellow.SmtpCtl",
    "Pellow.PopCtl", "Pellow.EmailData", "Tervane.ConnectivityTester", "Tervane.DHCP",
    "Tervane.ConfigureIE", "Tervane.StaticAdapterInfo", "Tervane.LiveAdapterInfo",
    "Tervane.DriveInfo", "Tervane.PhoneBookEntry", "Tervane.RASMgr", "Tervane.DHCPConfiguration",
    "Tervane.WindowMgr", "Tervane.DisableFileAndPrintSharing", "Tervane.Registry2",
    "Tervane.AdapterInfo"];
for (var i = 0; i < classes.length; i++) {
    var made = attempt(classes[i], function () { return new ActiveXObject(classes[i]); });
    report(made !== null, "class " + classes[i]);
}

var info = create("Ostrel.GeneralSysInfo", "Info_");
await("OnGeneralSysInfoComplete", function () { info.GetSystemInfo(); });
attempt("facts", function () {
    WScript.Echo("system " + info.OS + " " + info.OsMajorNumber + "." + info.OsMinorNumber + "." +
                 info.OsBuildNumber + ", " + info.CpuVendor + ", " + info.RamSize + " MB, " +
                 info.NumDrives + " drives, " + info.NumStaticAdapters + " installed and " +
                 info.NumLiveAdapters + " live adapters, USB " + info.UsbSupported);
});

// Nobody listens on port 1, so these end soon, with a failure.
var mail = create("Pellow.EmailData", "");
var smtp = create("Pellow.SmtpCtl", "Smtp_");
await("OnSmtpSendMailComplete", function () {
    mail.From = "a@a.example";
    mail.To = "b@b.example";
    smtp.EmailData = mail;
    smtp.SmtpServer = "127.0.0.1";
    smtp.Port = 1;
    smtp.SendMail();
});
var pop = create("Pellow.PopCtl", "Pop_");
await("OnPopConnect", function () {
    pop.PopServer = "127.0.0.1";
    pop.Port = 1;
    pop.Login = "a";
    pop.Password = "b";
    pop.Connect();
});

var tester = create("Tervane.ConnectivityTester", "Tester_");
await("OnDNSLookupComplete", function () { tester.DNSLookup("localhost", 5000); });
await("OnTCPPortTestComplete", function () { tester.TestTCPPort("127.0.0.1", 1, 5000); });
await("OnPingComplete", function () { tester.Ping("127.0.0.1", 2000, 2); });

var windows = create("Tervane.WindowMgr", "Windows_");
var NONE = "No window of this title";
await("OnWaitOnWindowComplete", function () { windows.WaitOnWindow(NONE, "", 50); });
await("OnWaitForWindowComplete", function () { windows.WaitForWindow(NONE, "", 50, true, 5); });
await("OnWaitForWindowToComeAndGoComplete", function () {
    windows.WaitForWindowToComeAndGo(NONE, "", 50, true, 5);
});

var adapters = create("Tervane.AdapterInfo", "Adapters_");
await("OnAdapterInfoComplete", function () {
    adapters.GetAdapterInfo("8E92E2FF-4CE5-4DED-8360-5E6342F08340");
});

// A connection that is given up at once, over a device that dials no number. Not all machines have one.
var ENTRY = "Tervane check";
var dial = create("Tervane.RASMgr", "Dial_");
var tunnel = attempt("devices", function () {
    var devices = new VBArray(dial.FindDevices(".*")).toArray();
    for (var i = 0; i < devices.length; i++) {
        if (dial.GetDeviceType(devices[i]).toLowerCase() === "vpn") {
            return devices[i];
        }
    }
    return "";
});
if (tunnel && dial.CreateEntry(ENTRY, "127.0.0.1", tunnel)) {
    await("OnConnectComplete", function () { dial.AbortConnect(dial.Connect(ENTRY)); });
    dial.DeleteEntry(ENTRY);
} else {
    WScript.Echo("left out OnConnectComplete: error " + (dial ? dial.LastErrorCode : ""));
}

var dhcp = create("Tervane.DHCP", "Dhcp_");
if (WScript.Arguments.length > 1) {
    WScript.Echo("left out OnReleaseRenewComplete, as asked");
} else {
    patience = 180; // five or more for each card
    await("OnReleaseRenewComplete", function () { dhcp.ReleaseRenew(); });
}

// Which log ring there is: it lives as long as somebody uses it, as the POP3 object does now.
attempt("log", function () {
    var viewer = WScript.Arguments(0) + "\\log_viewer.exe dump --count 1";
    var file = "\"%TEMP%\\tervane-log.txt\"";
    new ActiveXObject("WScript.Shell").Run("cmd.exe /c " + viewer + " > " + file + " 2>&1", 0, true);
});
WScript.Quit(failures);
