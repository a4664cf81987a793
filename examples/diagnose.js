// Looks a computer over as support does first: gathers all that is known of it, prints it, tests
// the network that it found, and ends with what looks wrong. Run it with:
// cscript //nologo diagnose.js [NAME]
//
// NAME is a host name to look up with the computer's name servers. Without it nothing is contacted
// but the addresses that the computer itself is set up with.

var name = WScript.Arguments.length > 0 ? WScript.Arguments(0) : "";
var LOOK_UP_TIME = 3000;    // milliseconds, all of them
var CONNECT_TIME = 1500;
var PING_TIME = 1000;
var PINGS = 2;
var DNS_PORT = 53;
var LITTLE_SPACE = 200;     // MB
var LITTLE_MEMORY = 64;     // MB
var PATIENCE = 60;          // seconds until an event must have come
var COLUMN = 26;            // characters

var info = WScript.CreateObject("Ostrel.GeneralSysInfo", "Info_");
var tester = WScript.CreateObject("Tervane.ConnectivityTester", "Tester_");
var gathered = false;
var answer = null;
var problems = [];

function Info_OnGeneralSysInfoComplete() {
    gathered = true;
}

function Tester_OnDNSLookupComplete(success) {
    answer = success;
}

function Tester_OnTCPPortTestComplete(success) {
    answer = success;
}

function Tester_OnPingComplete(success) {
    answer = success;
}

function pad(text, width) {
    text = String(text);
    while (text.length < width) {
        text += " ";
    }
    return text;
}

function heading(text) {
    WScript.Echo("\n" + text);
}

function line(what, value) {
    WScript.Echo("  " + pad(what, 20) + value);
}

function sideBySide(what, left, right) {
    WScript.Echo("    " + pad(what, 18) + pad(left, COLUMN) + right);
}

function complain(unless, problem) {
    if (!unless) {
        problems.push(problem);
    }
    return unless;
}

function yesNo(value) {
    return value ? "yes" : "no";
}

function isAddress(text) {
    return text !== "" && text !== "0.0.0.0" && text.indexOf("169.254.") !== 0;
}

function addOnce(list, text) {
    for (var i = 0; i < list.length; i++) {
        if (list[i] === text) {
            return;
        }
    }
    list.push(text);
}

// ---- the machine

function reportProcessorAndMemory() {
    heading("Processor and memory");
    line("vendor", info.CpuVendor);
    line("description", info.CpuDescription);
    line("family", info.CpuFamily);
    line("speed", info.CpuSpeed + " MHz");
    line("memory", info.RamSize + " MB");
    complain(info.CpuVendor !== "", "The vendor of the processor is not known.");
    complain(info.CpuSpeed > 0, "The speed of the processor could not be found.");
    complain(info.RamSize >= LITTLE_MEMORY, "There are only " + info.RamSize + " MB of memory.");
}

function reportSystem() {
    heading("System");
    line("release", info.OS);
    line("version", info.OsMajorNumber + "." + info.OsMinorNumber +
         (info.OsBuildNumber < 0 ? "" : ", build " + info.OsBuildNumber));
    line("host name", info.HostName || "(none)");
    line("domain", info.DomainName || "(none)");
    complain(info.OS !== "error", "The release of the system is not known.");
    complain(info.HostName !== "", "The computer has no host name.");
}

function reportDrives() {
    heading("Drives");
    WScript.Echo("  " + pad("drive", 8) + pad("kind", 18) + pad("size in MB", 12) + "free in MB");
    for (var i = 0; i < info.NumDrives; i++) {
        var drive = info.GetDriveInfo(i);
        WScript.Echo("  " + pad(drive.Letter + ":", 8) + pad(drive.Type, 18) +
                     pad(drive.TotalSize, 12) + pad(drive.FreeSpace, 12) +
                     (drive.SystemDrive ? "holds Windows" : "") +
                     (i === info.LargestFreeDriveIndex ? "  most free space" : ""));
    }
    complain(info.SystemDriveIndex >= 0, "The drive that holds Windows is not among the drives.");
    complain(info.SystemDriveFreeSpace >= LITTLE_SPACE, "The drive that holds Windows has only " +
             info.SystemDriveFreeSpace + " MB of free space.");
}

function reportUsb() {
    heading("USB");
    line("supported", yesNo(info.UsbSupported));
    line("ports", info.NumUsbPorts + ", " + info.NumOpenUsbPorts + " of them free");
    complain(info.NumUsbPorts === 0 || info.NumOpenUsbPorts > 0, "All USB ports are in use.");
}

// ---- the network

function installedAdapters() {
    var adapters = [];
    for (var i = 0; i < info.NumStaticAdapters; i++) {
        adapters.push(info.GetStaticAdapterInfo(i));
    }
    return adapters;
}

function liveAdapters() {
    var adapters = [];
    for (var i = 0; i < info.NumLiveAdapters; i++) {
        adapters.push(info.GetLiveAdapterInfo(i));
    }
    return adapters;
}

// Takes the live adapter of the same device out of the list; null when it does not run.
function takeLive(live, cookie) {
    for (var i = 0; i < live.length; i++) {
        if (cookie !== "" && live[i].Cookie === cookie) {
            return live.splice(i, 1)[0];
        }
    }
    return null;
}

function isLoopback(adapter) {
    return adapter !== null && adapter.IpAddress.indexOf("127.") === 0;
}

// Either may be null.
function showAdapter(configured, running) {
    var c = configured, r = running;
    WScript.Echo("  " + (c ? c.Name : r.Name));
    sideBySide("", c ? "as configured" : "not installed", r ? "as it runs" : "does not run");
    sideBySide("address", c ? c.StaticIpAddress : "", r ? r.IpAddress : "");
    sideBySide("subnet mask", c ? c.StaticSubnetMask : "", r ? r.SubnetMask : "");
    sideBySide("gateway", c ? c.StaticDefaultGateway : "", r ? r.DefaultGateway : "");
    sideBySide("DHCP", c ? yesNo(c.UsingDhcp) : "", r ? yesNo(r.IsDhcp) +
               (isAddress(r.DhcpServer) ? ", from " + r.DhcpServer : "") : "");
    sideBySide("hardware address", c ? c.HardwareAddress : "", r ? r.HardwareAddress : "");
    sideBySide("Ethernet, PPP", c ? yesNo(c.EthernetAdapter) + ", " + yesNo(c.PPPAdapter) : "",
               r ? yesNo(r.IsEthernetAdapter) + ", " + yesNo(r.IsPppAdapter) : "");
    if (c) {
        sideBySide("name servers", new VBArray(c.StaticNameServers).toArray().join(",") || "-", "");
        sideBySide("state", (c.IsEnabled ? "enabled" : "disabled") +
                   (c.IsFunctional ? ", working" : ", not working"), "");
        sideBySide("bound to TCP/IP", c.BoundToTcpip ? "directly" :
                   c.BoundIndirectlyOrDirectlyToTcpip ? "through another" : "no", "");
    }
}

function judgeAdapter(configured, running) {
    var title = "\"" + (configured ? configured.Name : running.Name) + "\"";
    if (configured && configured.EthernetAdapter) {
        complain(configured.IsEnabled, title + " is disabled.");
        complain(configured.IsFunctional, title + " has a device problem.");
        complain(configured.BoundIndirectlyOrDirectlyToTcpip, title + " is not bound to TCP/IP.");
        complain(running !== null, title + " is installed but does not run.");
    }
    if (running && running.IsEthernetAdapter && !isLoopback(running)) {
        complain(isAddress(running.IpAddress), title + " has no usable address" +
                 (running.IsDhcp ? " and no answer from a DHCP server." : "."));
    }
}

// The addresses worth a test, by what they are.
var found = { own: [], gateways: [], nameServers: [] };

function noteAddresses(running) {
    if (running && isAddress(running.IpAddress)) {
        addOnce(found.own, running.IpAddress);
    }
    if (running && isAddress(running.DefaultGateway)) {
        addOnce(found.gateways, running.DefaultGateway);
    }
}

function reportAdapters() {
    var installed = installedAdapters(), live = liveAdapters();
    heading("Network adapters: " + installed.length + " installed, " + live.length + " live");
    complain(live.length > 0, "No network adapter runs.");
    for (var i = 0; i < installed.length; i++) {
        var running = takeLive(live, installed[i].Cookie);
        showAdapter(installed[i], running);
        judgeAdapter(installed[i], running);
        noteAddresses(running);
    }
    for (i = 0; i < live.length; i++) {
        showAdapter(null, live[i]);
        judgeAdapter(null, live[i]);
        noteAddresses(live[i]);
    }
    complain(found.gateways.length > 0, "There is no gateway to other networks.");
}

function reportNameServers() {
    heading("Name servers");
    if (complain(info.DnsServers !== "", "There are no name servers.")) {
        found.nameServers = info.DnsServers.split(",");
    }
    for (var i = 0; i < found.nameServers.length; i++) {
        WScript.Echo("  " + found.nameServers[i]);
    }
}

// ---- the tests

// Events come in while the script sleeps, if the host delivers any.
function sleepUntil(isDone) {
    for (var waited = 0; !isDone(); waited += 20) {
        if (waited >= PATIENCE * 1000) {
            WScript.Echo("No event has come in " + PATIENCE + " seconds: this host delivers none.");
            WScript.Quit(1);
        }
        WScript.Sleep(20);
    }
}

// Calls a method of the tester and waits for its event.
function succeeds(what, start) {
    answer = null;
    start();
    sleepUntil(function () { return answer !== null; });
    WScript.Echo((answer ? "  ok      " : "  FAILED  ") + what);
    return answer !== 0;
}

function answersPing(what, address) {
    return succeeds("ping of " + what + " " + address, function () {
        tester.Ping(address, PING_TIME, PINGS);
    });
}

function opensPort(what, address, port) {
    return succeeds("connection to " + what + " " + address + ", port " + port, function () {
        tester.TestTCPPort(address, port, CONNECT_TIME);
    });
}

function isKnown(what, host, time) {
    return succeeds("look-up of " + host + " " + what, function () {
        tester.DNSLookup(host, time);
    });
}

function testNetwork() {
    var i;
    heading("Network tests");
    complain(answersPing("this computer,", "127.0.0.1"), "TCP/IP does not work on this computer.");
    for (i = 0; i < found.own.length; i++) {
        complain(answersPing("its own address", found.own[i]),
                 "The computer does not reach its own address " + found.own[i] + ".");
    }
    for (i = 0; i < found.gateways.length; i++) {
        complain(answersPing("the gateway", found.gateways[i]),
                 "The gateway " + found.gateways[i] + " does not answer.");
    }
    for (i = 0; i < found.nameServers.length; i++) {
        // Many serve names but answer only one of the two, or only by UDP.
        var pinged = answersPing("the name server", found.nameServers[i]);
        var opened = opensPort("the name server", found.nameServers[i], DNS_PORT);
        complain(pinged || opened, "The name server " + found.nameServers[i] + " does not answer.");
    }
    if (info.HostName !== "") {
        complain(isKnown("by the system", info.HostName, 0),
                 "The system does not know its own name " + info.HostName + ".");
    }
    if (name !== "") {
        complain(isKnown("by the name servers", name, LOOK_UP_TIME),
                 "The name servers do not know " + name + ".");
    }
}

function conclude() {
    heading("What looks wrong");
    if (problems.length === 0) {
        WScript.Echo("  nothing");
    }
    for (var i = 0; i < problems.length; i++) {
        WScript.Echo("  - " + problems[i]);
    }
}

WScript.Echo("Gathering what is known of this computer...");
info.GetSystemInfo();
sleepUntil(function () { return gathered; });
reportProcessorAndMemory();
reportSystem();
reportDrives();
reportUsb();
reportAdapters();
reportNameServers();
testNetwork();
conclude();
WScript.Echo("Done.");
