// Looks a computer over and writes what it finds for the people who help: one HTML page that needs
// nothing else, or one JSON document for programs. Run it with:
//
//   cscript //nologo report.js [/json] [/redact] [FILE]
//
//   FILE     where to write; without it tervane-report.html, with /json standard output
//   /json    the same as a document of docs/report.schema.json
//   /redact  with names of users, hosts and accounts, mail and hardware addresses and profile paths
//            replaced by "host-1", "user-2" and the like, the same for the same everywhere
//
// It ends with 0 when all is fine, 1 when something looks wrong, 2 when not all could be gathered.
// Nothing is contacted but what the computer itself is set up with, nobody is logged in anywhere, no
// password is read, and nothing is changed. docs/report.md tells more.
//
// The work goes in four steps: gather() makes the document, redact() masks it, judge() adds what looks
// wrong, and toJson() or toHtml() writes it. Whatever is written is pure ASCII, because script hosts
// write no encoding that every reader knows.

var FORMAT_VERSION = 1;     // of the document; goes up when readers must change
var DEFAULT_FILE = "tervane-report.html";

var GATHER_TIME = 60000;    // milliseconds, all of them
var LOOK_UP_TIME = 3000;
var CONNECT_TIME = 1500;
var PING_TIME = 1000;
var PINGS = 2;
var GRACE = 12000;          // for the end of a test beyond its own time; the system's look-ups have none
var TESTS_TIME = 90000;     // no test begins later than this after the first one
var NAP = 10;
var MOST = { addresses: 4, proxies: 3, mailServers: 6 }; // that are tested

var LITTLE_SPACE = 200;     // MB; it is also little when less than a twentieth is free, up to
var ENOUGH_SPACE = 5120;    // this many MB
var LITTLE_MEMORY = 64;     // MB
var LONGEST_TEXT = 1000;    // characters of a value that are shown

var HKEY_CURRENT_USER = 1, HKEY_LOCAL_MACHINE = 2;
var REGISTRY_NUMBER = 1, REGISTRY_TEXT = 2;
var NO_ACCOUNT_STORE = 1;
var WINDOWS_NT = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
var WINDOWS_9X = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
var TCPIP = "SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces\\";
var INTERNET = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";

var options = { json: false, redact: false, help: false, file: "" };
var info = null, tester = null;
var gathered = false, answer = null;
var registry = null;

function Info_OnGeneralSysInfoComplete() {
    gathered = true;
}

function Tester_OnDNSLookupComplete(success) {
    note(success);
}

function Tester_OnTCPPortTestComplete(success) {
    note(success);
}

function Tester_OnPingComplete(success) {
    note(success);
}

function note(success) {
    answer = { success: success !== 0 && success !== false, at: now() };
}

// ---- the host

function now() {
    return new Date().getTime();
}

// The clock may be set while the report is made.
function since(begun) {
    return Math.max(0, now() - begun);
}

// In wscript every line would be a box to click away.
function isWindowed() {
    return (/wscript\.exe$/i).test(WScript.FullName);
}

// A line for whoever watches. Texts from the computer may hold anything: nothing but ASCII goes out.
function say(line) {
    if (isWindowed()) {
        return;
    }
    line = escapeForJson(line).replace(/\\(["\\])/g, "$1");
    if (options.json) {
        WScript.StdErr.WriteLine(line);
    } else {
        WScript.Echo(line);
    }
}

function sayAlways(line) {
    if (isWindowed()) {
        WScript.Echo(line);
    } else {
        say(line);
    }
}

// Events come in while the script sleeps. False when it has not come true in that time.
function sleepUntil(isDone, milliseconds) {
    var begun = now();
    for (var slept = 0; !isDone(); slept += NAP) {
        if (slept >= milliseconds || since(begun) >= milliseconds) {
            return false;
        }
        WScript.Sleep(NAP);
    }
    return true;
}

function pad(text, width) {
    text = String(text);
    while (text.length < width) {
        text = " " + text;
    }
    return text;
}

function seconds(milliseconds) {
    return Math.floor(milliseconds / 1000) + "." + pad(milliseconds % 1000, 3).replace(/ /g, "0") + " s";
}

// ---- values

function contains(list, item) {
    for (var i = 0; i < list.length; i++) {
        if (list[i] === item) {
            return true;
        }
    }
    return false;
}

function toArray(list) {
    return new VBArray(list).toArray();
}

function toText(value) {
    var text = value === null || typeof value === "undefined" ? "" : String(value);
    return text.length <= LONGEST_TEXT ? text : text.substring(0, LONGEST_TEXT) + "...";
}

function toTexts(list) {
    var texts = toArray(list);
    for (var i = 0; i < texts.length; i++) {
        texts[i] = toText(texts[i]);
    }
    return texts;
}

function trim(text) {
    return text.replace(/^\s+|\s+$/g, "");
}

// Of an address, or several, without the parts that may hold a password.
function withoutSecrets(address) {
    return toText(address).replace(/([^\s\/@:;=,]*):[^\s\/@]*@/g, "$1:(hidden)@")
        .replace(/([?#])[\s\S]*$/, "$1...");
}

function atLeast(least, value) {
    return typeof value === "number" && value >= least ? value : null;
}

function isAddress(text) {
    return text !== "" && text !== "0.0.0.0" && text.indexOf("169.254.") !== 0;
}

function isLoopback(adapter) {
    return adapter !== null && adapter.address.indexOf("127.") === 0;
}

// The four numbers of a dotted address, or null.
function numbersOf(text) {
    var parts = (/^(\d{1,3})\.(\d{1,3})\.(\d{1,3})\.(\d{1,3})$/).exec(text);
    if (parts === null) {
        return null;
    }
    var numbers = [];
    for (var i = 1; i <= 4; i++) {
        numbers.push(parseInt(parts[i], 10));
        if (numbers[i - 1] > 255) {
            return null;
        }
    }
    return numbers;
}

// Whether a server is surely not out on the internet: by its address (RFC 1918, loopback, link-local,
// RFC 4193), or by a name that only a network of one's own knows. In doubt it is out there.
function isPrivate(server) {
    var name = trim(server).toLowerCase().replace(/\.$/, ""), n = numbersOf(name);
    if (n !== null) {
        return n[0] === 10 || n[0] === 127 || n[0] === 172 && n[1] >= 16 && n[1] < 32 ||
            n[0] === 192 && n[1] === 168 || n[0] === 169 && n[1] === 254;
    }
    if (name.indexOf(":") >= 0) {
        return (/^\[?(::1\]?$|f[cd][0-9a-f]{2}:|fe[89ab][0-9a-f]:)/).test(name);
    }
    // A number without dots is an address, too.
    return (/^[^.]+$/).test(name) && !(/^(\d+|0x[0-9a-f]*)$/).test(name) ||
        (/\.(local|localhost|localdomain|internal|lan|home\.arpa)$/).test(name);
}

function registryText(hive, key, value) {
    return registry.GetValueType(hive, key, value) === REGISTRY_TEXT ?
        toText(registry.GetValue(hive, key, value)) : "";
}

function registryNumber(hive, key, value) {
    return registry.GetValueType(hive, key, value) === REGISTRY_NUMBER ?
        Number(registry.GetValue(hive, key, value)) : null;
}

function twoDigits(number) {
    return pad(number, 2).replace(" ", "0");
}

function toDate(milliseconds) {
    var d = new Date(milliseconds);
    return d.getUTCFullYear() + "-" + twoDigits(d.getUTCMonth() + 1) + "-" +
        twoDigits(d.getUTCDate()) + "T" + twoDigits(d.getUTCHours()) + ":" +
        twoDigits(d.getUTCMinutes()) + ":" + twoDigits(d.getUTCSeconds()) + "Z";
}

// ---- gathering: the machine

// The names that people know are in the registry; info.OS is a code that was fixed before Vista.
function gatherSystem() {
    var nt = registryText(HKEY_LOCAL_MACHINE, WINDOWS_NT, "ProductName") !== "";
    var key = nt ? WINDOWS_NT : WINDOWS_9X;
    function read(value) {
        return registryText(HKEY_LOCAL_MACHINE, key, value);
    }
    var name = read("ProductName"), build = read("CurrentBuildNumber") || read("CurrentBuild");
    var update = registryNumber(HKEY_LOCAL_MACHINE, key, "UBR");
    // Windows 11 goes on calling itself 10 there.
    if (parseInt(build, 10) >= 22000) {
        name = name.replace(/^Windows 10\b/, "Windows 11");
    }
    return { name: name || "Windows " + info.OsMajorNumber + "." + info.OsMinorNumber,
             displayVersion: read("DisplayVersion") || read("ReleaseId") || read("CSDVersion"),
             build: build + (build !== "" && update !== null ? "." + update : ""),
             major: atLeast(0, info.OsMajorNumber), minor: atLeast(0, info.OsMinorNumber),
             code: toText(info.OS) };
}

// Empty also where policies keep scripts from the shell.
function environment(name) {
    var text;
    try {
        text = new ActiveXObject("WScript.Shell").ExpandEnvironmentStrings("%" + name + "%");
    } catch (error) {
        return "";
    }
    // Wine leaves the final zero in the text.
    return text === "%" + name + "%" ? "" : toText(text.replace(/\x00+$/, ""));
}

function userName() {
    try {
        return toText(new ActiveXObject("WScript.Network").UserName);
    } catch (error) {
        return environment("USERNAME"); // nobody has logged in to the network of a 9x system
    }
}

function gatherMachine(report) {
    var processor = environment("PROCESSOR_ARCHITECTURE");
    report.machine = {
        hostName: toText(info.HostName), domain: toText(info.DomainName), user: userName(),
        profilePath: environment("USERPROFILE"),
        scriptHostBits: processor === "" ? null : processor === "x86" ? 32 : 64,
        system: gatherSystem(),
        processor: { vendor: toText(info.CpuVendor), description: toText(info.CpuDescription),
                     family: toText(info.CpuFamily), speedMHz: atLeast(1, info.CpuSpeed) },
        memoryMB: atLeast(2, info.RamSize),
        usb: { supported: info.UsbSupported !== 0, ports: info.NumUsbPorts,
               freePorts: info.NumOpenUsbPorts }
    };
}

function gatherDrives(report) {
    var drives = [];
    for (var i = 0; i < info.NumDrives; i++) {
        var drive = info.GetDriveInfo(i);
        drives.push({ letter: toText(drive.Letter), kind: toText(drive.Type),
                      sizeMB: drive.TotalSize, freeMB: drive.FreeSpace,
                      holdsWindows: drive.SystemDrive !== 0,
                      mostFree: i === info.LargestFreeDriveIndex });
    }
    report.drives = drives;
}

// ---- gathering: the network

function installedAdapter(adapter) {
    return {
        name: toText(adapter.Name), driver: toText(adapter.Driver), type: toText(adapter.AdapterType),
        address: toText(adapter.StaticIpAddress), subnetMask: toText(adapter.StaticSubnetMask),
        gateway: toText(adapter.StaticDefaultGateway), dhcp: adapter.UsingDhcp !== 0,
        hardwareAddress: toText(adapter.HardwareAddress),
        ethernet: adapter.EthernetAdapter !== false, ppp: adapter.PPPAdapter !== false,
        nameServers: toTexts(adapter.StaticNameServers),
        winsServers: toTexts(adapter.StaticWINSServers), enabled: adapter.IsEnabled !== 0,
        functional: adapter.IsFunctional !== 0,
        boundToTcpip: adapter.BoundToTcpip !== 0 ? "directly" :
            adapter.BoundIndirectlyOrDirectlyToTcpip !== 0 ? "through another" : "no"
    };
}

function liveAdapter(adapter) {
    return {
        name: toText(adapter.Name), address: toText(adapter.IpAddress),
        subnetMask: toText(adapter.SubnetMask), gateway: toText(adapter.DefaultGateway),
        dhcp: adapter.IsDhcp !== 0, dhcpServer: toText(adapter.DhcpServer),
        hardwareAddress: toText(adapter.HardwareAddress),
        ethernet: adapter.IsEthernetAdapter !== 0, ppp: adapter.IsPppAdapter !== 0
    };
}

function liveAdapters() {
    var adapters = [];
    for (var i = 0; i < info.NumLiveAdapters; i++) {
        var adapter = info.GetLiveAdapterInfo(i);
        adapters.push({ cookie: adapter.Cookie, facts: liveAdapter(adapter) });
    }
    return adapters;
}

// Takes the live adapter of the same device out of the list; null when it does not run.
function takeLive(live, cookie) {
    for (var i = 0; i < live.length; i++) {
        if (cookie !== "" && live[i].cookie === cookie) {
            return live.splice(i, 1)[0].facts;
        }
    }
    return null;
}

function gatherNetwork(report) {
    var adapters = [], live = liveAdapters(), servers = toText(info.DnsServers);
    for (var i = 0; i < info.NumStaticAdapters; i++) {
        var adapter = info.GetStaticAdapterInfo(i), cookie = adapter.Cookie;
        adapters.push({ name: toText(adapter.Name), installed: installedAdapter(adapter),
                        live: takeLive(live, cookie), lease: lease(cookie) });
    }
    for (i = 0; i < live.length; i++) {
        adapters.push({ name: live[i].facts.name, installed: null, live: live[i].facts,
                        lease: lease(live[i].cookie) });
    }
    report.network = { nameServers: servers === "" ? [] : servers.split(","), adapters: adapters };
}

// What the DHCP client noted down when it got the adapter's address; null when it never did. Only the
// NT family notes it there.
function lease(cookie) {
    var key = TCPIP + cookie;
    var obtained = cookie === "" ? null : registryNumber(HKEY_LOCAL_MACHINE, key,
                                                         "LeaseObtainedTime");
    if (obtained === null) {
        return null;
    }
    var ends = registryNumber(HKEY_LOCAL_MACHINE, key, "LeaseTerminatesTime");
    return { address: registryText(HKEY_LOCAL_MACHINE, key, "DhcpIPAddress"),
             server: registryText(HKEY_LOCAL_MACHINE, key, "DhcpServer"),
             obtained: toDate(obtained * 1000), ends: ends === null ? null : toDate(ends * 1000) };
}

// ---- gathering: browser and mail

function gatherBrowser(report) {
    var browser = new ActiveXObject("Tervane.ConfigureIE");
    report.browser = {
        version: toText(browser.Version), programPath: toText(browser.ProgramPath),
        homePage: withoutSecrets(browser.HomePage),
        configurationScript: withoutSecrets(browser.AutoConfigurationScript),
        usesProxy: registryNumber(HKEY_CURRENT_USER, INTERNET, "ProxyEnable") === 1,
        proxies: { http: withoutSecrets(browser.HttpProxyServer),
                   https: withoutSecrets(browser.HttpsProxyServer),
                   ftp: withoutSecrets(browser.FtpProxyServer),
                   gopher: withoutSecrets(browser.GopherProxyServer),
                   socks: withoutSecrets(browser.SocksProxyServer) },
        exceptions: withoutSecrets(browser.ProxyExceptions)
    };
}

// A server that an account uses; a login goes over the wire in clear unless the connection is secure.
function mailServer(read, kind, login, logsIn) {
    var server = toText(read(kind + "Server")), secure = read(kind + "Secure") === true;
    return { server: server, port: Number(read(kind + "Port")), secure: secure, logsIn: logsIn,
             login: logsIn ? toText(login) : "",
             clearLogin: logsIn && !secure && server !== "" && !isPrivate(server) };
}

function gatherAccount(mail, identity, name) {
    function read(setting) {
        return mail.GetAccountSetting(name, setting, identity);
    }
    var kind = read("Pop3Server") ? "Pop3" : read("ImapServer") ? "Imap" : "";
    var login = kind === "" ? "" : toText(read(kind + "Login"));
    var sends = kind === "" ? false : read("SmtpAuthentication") === true;
    return { account: toText(name), kind: kind === "" ? "other" : kind.toLowerCase(),
             isDefault: mail.GetDefaultMailAccount(identity) === name,
             displayName: toText(read("DisplayName")), mailAddress: toText(read("EmailAddress")),
             incoming: kind === "" ? null : mailServer(read, kind, login, true),
             outgoing: kind === "" ? null :
                 mailServer(read, "Smtp", sends ? read("SmtpLogin") || login : "", sends) };
}

function gatherMail(report) {
    var mail = new ActiveXObject("Tervane.ConfigureOutlookExpress");
    var names = toArray(mail.Identities), isSetUp = mail.LastErrorCode !== NO_ACCOUNT_STORE;
    var current = mail.CurrentIdentity, identities = [];
    if (isSetUp && names.length === 0) {
        names = [""]; // of a version without identities
    }
    for (var i = 0; i < names.length; i++) {
        var accounts = toArray(mail.GetMailAccounts(names[i]));
        for (var j = 0; j < accounts.length; j++) {
            accounts[j] = gatherAccount(mail, names[i], accounts[j]);
        }
        identities.push({ identity: toText(names[i]), isCurrent: names[i] === current,
                          accounts: accounts });
    }
    report.mail = { version: toText(mail.Version), programPath: toText(mail.ProgramPath),
                    isSetUp: isSetUp, identities: identities };
}

// ---- gathering: the tests

var OF = { computer: "this computer,", own: "its own address", gateway: "the gateway",
           nameServer: "the name server", hostName: "its own name", proxy: "the proxy",
           mailServer: "the mail server" };

function describeTest(test) {
    if (test.kind === "ping") {
        return "ping of " + OF[test.of] + " " + test.target;
    }
    if (test.kind === "port") {
        return "connection to " + OF[test.of] + " " + test.target + ", port " + test.port;
    }
    return "look-up of " + OF[test.of] + " " + test.target +
        (test.kind === "look-up by system" ? " by the system" : " by the name servers");
}

function newTester() {
    tester = WScript.CreateObject("Tervane.ConnectivityTester", "Tester_");
}

function startTest(test) {
    if (test.kind === "ping") {
        tester.Ping(test.target, PING_TIME, PINGS);
        return PING_TIME * PINGS;
    }
    if (test.kind === "port") {
        tester.TestTCPPort(test.target, test.port, CONNECT_TIME);
        return CONNECT_TIME;
    }
    var time = test.kind === "look-up by system" ? 0 : LOOK_UP_TIME;
    tester.DNSLookup(test.target, time);
    return time;
}

function sayTest(test) {
    var mark = { ok: "ok      ", failed: "FAILED  ", "left out": "left out" }[test.result];
    var shown = { kind: test.kind, of: test.of, port: test.port,
                  target: options.redact ? maskHost(test.target) : test.target };
    say("  " + pad(seconds(test.milliseconds), 8) + "  " + mark + "  " + describeTest(shown));
}

// Whether the test succeeded. Events do not tell which call they belong to, so the tests go one after
// the other, and a tester that owes an answer is not used again.
function runTest(tests, kind, of, target, port) {
    var test = { kind: kind, of: of, target: target, port: port || null, result: "left out",
                 startMilliseconds: since(tests.begun), milliseconds: 0 };
    tests.list.push(test);
    if (test.startMilliseconds < TESTS_TIME) {
        var begun = now();
        answer = null;
        var ended = sleepUntil(function () { return answer !== null; }, startTest(test) + GRACE);
        test.result = ended && answer.success ? "ok" : "failed";
        test.milliseconds = ended ? Math.max(0, answer.at - begun) : since(begun);
        if (!ended) {
            WScript.DisconnectObject(tester);
            newTester();
        }
    }
    sayTest(test);
    return test.result === "ok";
}

// Whether the name servers know a name, which is asked once. Others may: the system is asked then.
function isKnown(tests, of, server) {
    for (var i = 0; i < tests.list.length; i++) {
        if (tests.list[i].kind === "look-up" && tests.list[i].target === server) {
            return tests.list[i].result === "ok";
        }
    }
    if (runTest(tests, "look-up", of, server)) {
        return true;
    }
    runTest(tests, "look-up by system", of, server);
    return false;
}

// A port by the name of its server can only be tested when the name servers know the name.
function testServer(tests, of, server, port) {
    if (numbersOf(server) !== null || isKnown(tests, of, server)) {
        runTest(tests, "port", of, server, port);
    }
}

function addOnce(list, item, most) {
    if (list.length < most && !contains(list, item)) {
        list.push(item);
    }
}

function addressesOf(report, field) {
    var found = [], adapters = report.network ? report.network.adapters : [];
    for (var i = 0; i < adapters.length; i++) {
        var live = adapters[i].live;
        if (live !== null && isAddress(live[field])) {
            addOnce(found, live[field], MOST.addresses);
        }
    }
    return found;
}

// "host:port" of each proxy in use; several protocols may share one.
function proxiesInUse(report) {
    var found = [];
    if (report.browser && report.browser.usesProxy) {
        for (var protocol in report.browser.proxies) {
            var parts = (/^(?:\w+:\/\/)?(?:[^@\/]*@)?([^:\/\[\]@]+)(?::(\d{1,5}))?\/?$/).exec(
                report.browser.proxies[protocol]);
            var port = parts && parts[2] ? parseInt(parts[2], 10) : protocol === "socks" ? 1080 : 80;
            if (parts !== null && port > 0 && port < 65536) {
                addOnce(found, parts[1] + ":" + port, MOST.proxies);
            }
        }
    }
    return found;
}

function mailServersInUse(report) {
    var found = [], identities = report.mail ? report.mail.identities : [];
    for (var i = 0; i < identities.length; i++) {
        for (var j = 0; j < identities[i].accounts.length; j++) {
            var account = identities[i].accounts[j], servers = [account.incoming, account.outgoing];
            for (var k = 0; k < servers.length; k++) {
                if (servers[k] !== null && servers[k].server !== "") {
                    addOnce(found, servers[k].server + ":" + servers[k].port, MOST.mailServers);
                }
            }
        }
    }
    return found;
}

function testServers(tests, of, servers) {
    for (var i = 0; i < servers.length; i++) {
        var colon = servers[i].lastIndexOf(":");
        testServer(tests, of, servers[i].substring(0, colon),
                   parseInt(servers[i].substring(colon + 1), 10));
    }
}

function gatherTests(report) {
    var tests = { begun: now(), list: [] }, i;
    newTester();
    report.tests = tests.list;
    runTest(tests, "ping", "computer", "127.0.0.1");
    var own = addressesOf(report, "address"), gateways = addressesOf(report, "gateway");
    for (i = 0; i < own.length; i++) {
        runTest(tests, "ping", "own", own[i]);
    }
    for (i = 0; i < gateways.length; i++) {
        runTest(tests, "ping", "gateway", gateways[i]);
    }
    var nameServers = report.network ? report.network.nameServers : [];
    for (i = 0; i < nameServers.length && i < MOST.addresses; i++) {
        // Many serve names but answer only one of the two, or only by UDP.
        runTest(tests, "ping", "nameServer", nameServers[i]);
        runTest(tests, "port", "nameServer", nameServers[i], 53);
    }
    if (report.machine && report.machine.hostName !== "") {
        runTest(tests, "look-up by system", "hostName", report.machine.hostName);
    }
    testServers(tests, "proxy", proxiesInUse(report));
    testServers(tests, "mailServer", mailServersInUse(report));
}

// ---- gathering: all of it

function explain(error) {
    return trim(toText(error.message || error.description)) ||
        "error " + (error.number >>> 0).toString(16);
}

// A step that fails takes nothing with it but its own part of the report.
function step(report, name, work) {
    var begun = now(), failure = null;
    try {
        work(report);
    } catch (error) {
        failure = explain(error);
    }
    report.steps.push({ name: name, milliseconds: since(begun), failure: failure });
    say(pad(seconds(since(begun)), 8) + "  " + name +
        (failure === null ? "" : ": could not be gathered: " +
         (options.redact ? "(left out)" : failure)));
}

function gatherFacts() {
    registry = new ActiveXObject("Tervane.Registry2");
    info = WScript.CreateObject("Ostrel.GeneralSysInfo", "Info_");
    info.GetSystemInfo();
    if (!sleepUntil(function () { return gathered; }, GATHER_TIME)) {
        throw new Error("the computer told nothing in " + GATHER_TIME / 1000 + " seconds");
    }
}

// Throws when nothing at all can be told.
function gather() {
    var begun = now();
    var report = { format: "tervane-report", version: FORMAT_VERSION, gathered: toDate(begun),
                   milliseconds: 0, redacted: options.redact, result: "fine", problems: [],
                   machine: null, drives: null, network: null, browser: null, mail: null,
                   tests: null, steps: [] };
    gatherFacts();
    report.steps.push({ name: "facts about the computer", milliseconds: since(begun),
                        failure: null });
    say(pad(seconds(since(begun)), 8) + "  facts about the computer");
    step(report, "machine", gatherMachine);
    step(report, "drives", gatherDrives);
    step(report, "network adapters", gatherNetwork);
    step(report, "browser and proxy", gatherBrowser);
    step(report, "mail accounts", gatherMail);
    step(report, "network tests", gatherTests);
    report.milliseconds = since(begun);
    return report;
}

// ---- masking

// What was masked, by what it is; the place in the list is the number in its mask.
var masked = { user: [], host: [], account: [], "mail-address": [], "hardware-address": [] };
var PROFILE = "(profile)";

function mask(kind, text) {
    var list = masked[kind], i = 0;
    if (trim(text) === "") {
        return text;
    }
    while (i < list.length && list[i].toLowerCase() !== text.toLowerCase()) {
        i++;
    }
    list[i] = text;
    return kind + "-" + (i + 1);
}

// Numbers, also with wildcards, are no names.
function maskHost(text) {
    return (/^([\d.:*\/]*|localhost)$/i).test(text) ? text : mask("host", text);
}

function maskHardware(text) {
    return (/^[0\-:]*$/).test(text) ? text : mask("hardware-address", text);
}

function maskMail(text) {
    var at = text.lastIndexOf("@");
    if (at > 0) { // either part gives the person away in other texts
        mask("user", text.substring(0, at));
        maskHost(text.substring(at + 1));
    }
    return mask("mail-address", text);
}

function maskHostAndPort(text) {
    var parts = (/^(.*?)(:\d+)?$/).exec(text.replace(/^.*@/, ""));
    return parts === null ? "(left out)" : maskHost(parts[1]) + (parts[2] || "");
}

// Leaves of an address what says how it works, and nothing that says where it leads.
function maskAddress(text) {
    var parts = (/^([a-z][a-z0-9+.\-]*:\/\/)?([^\/?#\\]*)(.*)$/i).exec(text);
    if (text === "" || (/^about:/i).test(text)) {
        return text;
    }
    if (parts === null || (/^[a-z]:\\|^\\|^file:|^res:/i).test(text)) {
        return "(left out)";
    }
    return (parts[1] || "") + maskHostAndPort(parts[2]) + (trim(parts[3]).length > 1 ? "/..." : parts[3]);
}

function maskExceptions(text) {
    var entries = text.split(";");
    for (var i = 0; i < entries.length; i++) {
        if (trim(entries[i]).toLowerCase() !== "<local>") {
            entries[i] = maskAddress(trim(entries[i]));
        }
    }
    return entries.join(";");
}

function maskUser(text) {
    return mask("user", text);
}

function maskAccount(text) {
    return mask("account", text);
}

// Fields that are masked as a whole, by their names in the document.
var MASKS = {
    hostName: maskHost, domain: maskHost, server: maskHost, target: maskHost, user: maskUser,
    login: maskUser, displayName: maskUser, account: maskAccount, identity: maskAccount,
    mailAddress: maskMail, hardwareAddress: maskHardware, homePage: maskAddress,
    configurationScript: maskAddress, http: maskAddress, https: maskAddress, ftp: maskAddress,
    gopher: maskAddress, socks: maskAddress, exceptions: maskExceptions
};
// Fields that hold words of our own.
var OWN_WORDS = { format: 1, gathered: 1, result: 1, kind: 1, of: 1, boundToTcpip: 1, obtained: 1,
                  ends: 1, letter: 1 };

// Goes through all texts of the document. change(name, text) gives what stands there instead.
function changeTexts(value, name, change) {
    if (typeof value === "string") {
        return change(name, value);
    }
    if (value !== null && typeof value === "object") {
        for (var key in value) {
            value[key] = changeTexts(value[key], value instanceof Array ? name : key, change);
        }
    }
    return value;
}

function escapeForPattern(text) {
    return text.replace(/[\\^$.*+?()\[\]{}|\/\-]/g, "\\$&");
}

// A pattern for a known name. A short one counts only as a word of its own.
function patternOf(name) {
    var letter = "A-Za-z0-9\\u0080-\\uffff", text = escapeForPattern(name);
    return name.length > 3 ? new RegExp("()" + text, "gi") :
        new RegExp("(^|[^" + letter + "])" + text + "(?![" + letter + "])", "gi");
}

// All known names, the longest first, so that none is taken for a part of another.
function knownNames() {
    var names = [];
    for (var kind in masked) {
        for (var i = 0; i < masked[kind].length; i++) {
            names.push({ length: masked[kind][i].length, pattern: patternOf(masked[kind][i]),
                         replacement: "$1" + kind + "-" + (i + 1) });
        }
    }
    return names.sort(function (a, b) { return b.length - a.length; });
}

function scrub(text, names, profile) {
    if (profile !== "") {
        text = text.replace(new RegExp(escapeForPattern(profile), "gi"), PROFILE);
    }
    text = text.replace(
        /([a-z]:)?\\+(users|documents and settings|docume~\d|(winnt|windows)\\+profiles)\\+[^\\\/"<>|;,]+/gi,
        PROFILE);
    text = text.replace(/[^\s<>"'(),;:@\\\/]+@[^\s<>"'(),;:@\\\/]+/g, maskMail);
    text = text.replace(/\b[0-9a-f]{2}([\-:][0-9a-f]{2}){5}\b/gi, maskHardware);
    for (var i = 0; i < names.length; i++) {
        text = text.replace(names[i].pattern, names[i].replacement);
    }
    return text;
}

function redact(report) {
    var profile = report.machine ? report.machine.profilePath : "";
    changeTexts(report, "", function (name, text) {
        return MASKS[name] ? MASKS[name](text) : text;
    });
    var names = knownNames();
    changeTexts(report, "", function (name, text) {
        return MASKS[name] || OWN_WORDS[name] ? text : scrub(text, names, profile);
    });
}

// ---- what looks wrong

// Says with one sentence what looks wrong and with another what to do, unless all is well.
function complain(report, unless, code, text, advice) {
    if (!unless) {
        report.problems.push({ code: code, text: text, advice: advice });
    }
}

function judgeInstalled(report, adapter) {
    var a = adapter.installed, title = "The network adapter \"" + adapter.name + "\" ";
    if (a === null || !a.ethernet) {
        return;
    }
    complain(report, a.enabled, "adapter-disabled", title + "is switched off.",
             "Enable it in the list of network connections, or leave it if it is not used.");
    complain(report, a.functional, "adapter-broken", title + "has a device problem.",
             "Look at it in the device manager; reinstall its driver or replace it.");
    complain(report, a.boundToTcpip !== "no", "adapter-unbound", title + "does not use TCP/IP.",
             "Tick the internet protocol (TCP/IP) in the properties of its connection.");
    complain(report, adapter.live !== null || !a.enabled || !a.functional, "adapter-down",
             title + "is installed but does not run.",
             "Check the cable, or the wireless switch; leave it if it is not used.");
}

function judgeLive(report, adapter) {
    var a = adapter.live;
    if (a === null || !a.ethernet || isLoopback(a)) {
        return;
    }
    complain(report, isAddress(a.address), "adapter-without-address",
             "The network adapter \"" + adapter.name + "\" has no usable address" +
             (a.dhcp ? " and got no answer from a DHCP server." : "."),
             a.dhcp ? "Check the cable and the router, then renew the lease (examples/renew.js)." :
             "Set its address, or let it get one by DHCP.");
    complain(report, !a.dhcp || adapter.lease === null || adapter.lease.ends === null ||
             adapter.lease.ends > report.gathered, "lease-ended",
             "The lease of the address of \"" + adapter.name + "\" has ended.",
             "Check the cable and the DHCP server, then renew the lease (examples/renew.js).");
}

function judgeNetwork(report) {
    var adapters = report.network.adapters, live = 0, i;
    for (i = 0; i < adapters.length; i++) {
        live += adapters[i].live === null ? 0 : 1;
    }
    complain(report, live > 0, "no-adapter", "No network adapter runs.",
             "Check that the computer has one, that it is enabled and that its cable is plugged in.");
    for (i = 0; i < adapters.length; i++) {
        judgeInstalled(report, adapters[i]);
        judgeLive(report, adapters[i]);
    }
    complain(report, addressesOf(report, "gateway").length > 0, "no-gateway",
             "There is no gateway, so nothing beyond this network can be reached.",
             "Restart the router and renew the lease, or set the gateway of the adapter.");
    complain(report, report.network.nameServers.length > 0, "no-name-server",
             "There are no name servers, so no name on the internet can be found.",
             "Renew the lease, or set the name servers of the adapter.");
}

// Whether a test of that kind, of that, succeeded for that target; true also when none was made.
function succeeded(report, kind, of, target) {
    for (var i = 0; i < report.tests.length; i++) {
        var test = report.tests[i];
        if (test.kind === kind && test.of === of && test.target === target && test.result === "failed") {
            return false;
        }
    }
    return true;
}

function judgePing(report, test) {
    var target = test.target;
    if (test.of === "computer") {
        complain(report, false, "tcpip-broken", "TCP/IP does not work on this computer.",
                 "Reset or reinstall TCP/IP, then restart the computer.");
    } else if (test.of === "own") {
        complain(report, false, "own-address-silent",
                 "The computer does not reach its own address " + target + ".",
                 "Look for a firewall that blocks it; then reset TCP/IP.");
    } else if (test.of === "gateway") {
        complain(report, false, "gateway-silent", "The gateway " + target + " does not answer.",
                 "Check the cable and the router. If the internet works all the same, the gateway " +
                 "only ignores pings.");
    } else {
        complain(report, succeeded(report, "port", "nameServer", target), "name-server-silent",
                 "The name server " + target + " does not answer.",
                 "Check the connection to it, or use another name server.");
    }
}

function judgeServerTest(report, test) {
    var isProxy = test.of === "proxy", it = OF[test.of] + " " + test.target;
    if (test.kind === "port") {
        complain(report, test.of === "nameServer", isProxy ? "proxy-silent" : "mail-server-silent",
                 "No connection could be made to " + it + ", port " + test.port + ".",
                 isProxy ? "Ask whether that proxy is still in use, and correct the browser's settings." :
                 "Check server and port in the account, and whether a firewall blocks them.");
    } else {
        complain(report, false, isProxy ? "proxy-unknown" : "mail-server-unknown",
                 "The name of " + it + " is not known.",
                 "Check the spelling in the settings, and the name servers.");
    }
}

function judgeTest(report, test) {
    if (test.result !== "failed") {
        return;
    }
    if (test.kind === "ping") {
        judgePing(report, test);
    } else if (test.of === "hostName") {
        complain(report, false, "own-name-unknown",
                 "The system does not know its own name " + test.target + ".",
                 "Look at the computer's name and the hosts file.");
    } else if (test.kind !== "look-up") { // the system is asked after the name servers
        judgeServerTest(report, test);
    }
}

function littleSpaceOf(drive) {
    return Math.max(LITTLE_SPACE, Math.min(drive.sizeMB / 20, ENOUGH_SPACE));
}

function judgeDrives(report) {
    var found = false;
    for (var i = 0; i < report.drives.length; i++) {
        var drive = report.drives[i];
        found = found || drive.holdsWindows;
        complain(report, !drive.holdsWindows || drive.freeMB >= littleSpaceOf(drive), "little-space",
                 "The drive that holds Windows (" + drive.letter + ":) has only " +
                 amount(drive.freeMB) + " of free space.",
                 "Empty the recycle bin, remove temporary files, or move documents elsewhere.");
    }
    complain(report, found, "no-system-drive", "The drive that holds Windows is not among the drives.",
             "Run the report as the user who has the trouble, with access to that drive.");
}

function judgeMachine(report) {
    var m = report.machine;
    complain(report, m.hostName !== "", "no-host-name", "The computer has no host name.",
             "Give it one in the properties of the system.");
    complain(report, m.system.code !== "error", "unknown-system",
             "The release of the system is not known.", "Tell support which Windows this is.");
    complain(report, m.memoryMB !== null && m.memoryMB >= LITTLE_MEMORY, "little-memory",
             m.memoryMB === null ? "The size of the memory could not be found." :
             "There are only " + m.memoryMB + " MB of memory.", "Check the memory modules, or add memory.");
    complain(report, m.processor.vendor !== "" && m.processor.speedMHz !== null, "unknown-processor",
             "Vendor or speed of the processor could not be found.",
             "Tell support which processor the computer has.");
    complain(report, m.usb.ports === 0 || m.usb.freePorts > 0, "no-free-usb",
             "All USB ports are in use.", "Unplug a device, or use a hub, before adding another.");
}

function complainOfClearLogin(report, account, server) {
    complain(report, server === null || !server.clearLogin, "clear-login",
             "The mail account \"" + account.account + "\" would send its password readable by others to " +
             (server === null ? "" : server.server + ", port " + server.port) + ".",
             "Switch on the secure connection (TLS) for that server before mail is fetched or sent.");
}

function judgeMail(report) {
    for (var i = 0; i < report.mail.identities.length; i++) {
        var accounts = report.mail.identities[i].accounts;
        for (var j = 0; j < accounts.length; j++) {
            complainOfClearLogin(report, accounts[j], accounts[j].incoming);
            complainOfClearLogin(report, accounts[j], accounts[j].outgoing);
        }
    }
}

function judge(report) {
    var judges = { network: judgeNetwork, mail: judgeMail, drives: judgeDrives,
                   machine: judgeMachine }, i;
    for (var part in judges) {
        if (report[part] !== null) {
            judges[part](report);
        }
        for (i = 0; part === "network" && report.tests !== null && i < report.tests.length; i++) {
            judgeTest(report, report.tests[i]);
        }
    }
    report.result = report.problems.length > 0 ? "problems" : "fine";
    for (i = 0; i < report.steps.length; i++) {
        if (report.steps[i].failure !== null) {
            report.result = "incomplete";
            complain(report, false, "not-gathered", "The part \"" + report.steps[i].name +
                     "\" could not be gathered: " + report.steps[i].failure,
                     "Run the report once more; if that does not help, send it as it is.");
        }
    }
}

// ---- writing JSON

function isHalf(code) {
    return code >= 0xd800 && code < 0xe000;
}

// Also escapes all that is not ASCII. A half of a surrogate pair is no text in any encoding.
function escapeForJson(text) {
    return text.replace(/[\ud800-\udbff][\udc00-\udfff]|["\\\x00-\x1f\x7f-\uffff]/g, function (match) {
        var escaped = "";
        if (match === "\"" || match === "\\") {
            return "\\" + match;
        }
        if (match.length === 1 && isHalf(match.charCodeAt(0))) {
            return "\\ufffd";
        }
        for (var i = 0; i < match.length; i++) {
            escaped += "\\u" + pad(match.charCodeAt(i).toString(16), 4).replace(/ /g, "0");
        }
        return escaped;
    });
}

function toJson(value, indent) {
    var inner = indent + "  ", parts = [], isList = value instanceof Array;
    if (typeof value === "string") {
        return "\"" + escapeForJson(value) + "\"";
    }
    if (typeof value === "number") {
        return isFinite(value) ? String(value) : "null";
    }
    if (value === null || typeof value !== "object") {
        return typeof value === "boolean" ? String(value) : "null";
    }
    for (var key in value) {
        parts.push("\r\n" + inner + (isList ? "" : "\"" + key + "\": ") + toJson(value[key], inner));
    }
    return (isList ? "[" : "{") + parts.join(",") + (parts.length > 0 ? "\r\n" + indent : "") +
        (isList ? "]" : "}");
}

// ---- writing HTML: the pieces

// A numeric reference for all that is not plain. What a page cannot hold (control characters, halves
// of surrogate pairs, no characters at all) and what would turn the text around it is shown as the
// replacement character.
function html(text) {
    return String(text).replace(/[\ud800-\udbff][\udc00-\udfff]|["&'<>\x00-\x1f\x7f-\uffff]/g, reference);
}

function reference(match) {
    var code = match.charCodeAt(0);
    if (match.length === 2) {
        code = 0x10000 + (code - 0xd800) * 0x400 + match.charCodeAt(1) - 0xdc00;
    }
    var isBad = code < 0x20 && !(/\s/).test(match) || code >= 0x7f && code < 0xa0 ||
        isHalf(code) || code >= 0xfdd0 && code < 0xfdf0 ||
        (code & 0xfffe) === 0xfffe || code >= 0x202a && code <= 0x202e ||
        code >= 0x2066 && code <= 0x2069;
    return "&#" + (isBad ? 0xfffd : code) + ";";
}

// The content is HTML already, the attributes are our own. Within a line a line end would be a blank.
function tag(name, attributes, content) {
    return "<" + name + (attributes === "" ? "" : " " + attributes) + ">" + content + "</" + name + ">" +
        (name === "b" || name === "span" ? "" : "\r\n");
}

function shown(text) {
    return trim(String(text)) === "" || text === "0.0.0.0" ? tag("span", "class=\"none\"", "none") : html(text);
}

function yesNo(flag) {
    return flag ? "yes" : "no";
}

function amount(megabytes) {
    var units = ["MB", "GB", "TB"], i = 0;
    while (megabytes >= 1024 && i < 2) {
        megabytes /= 1024;
        i++;
    }
    return Math.round(megabytes * (i === 0 ? 1 : 10)) / (i === 0 ? 1 : 10) + " " + units[i];
}

function readableDate(date) {
    return date === null ? "" : date.replace("T", ", ").replace(/:\d\dZ$/, " UTC");
}

var ICONS = {
    bad: "<path d=\"M10 1.8 19 17.6H1z\"/><path class=\"cut\" d=\"M10 7.2v5M10 14.2v1.4\"/>",
    good: "<circle cx=\"10\" cy=\"10\" r=\"8.5\"/><path class=\"cut\" d=\"m6 10.4 2.8 2.8 5.2-6\"/>",
    open: "<circle cx=\"10\" cy=\"10\" r=\"8.5\"/><path class=\"cut\" d=\"M6 10h8\"/>"
};

function icon(name) {
    return tag("svg", "class=\"icon " + name + "\" viewBox=\"0 0 20 20\" aria-hidden=\"true\"", ICONS[name]);
}

// A part of the width of a bar; all in percent of it, but the height.
function block(kind, from, width, height) {
    return "<rect class=\"" + kind + "\" x=\"" + from.toFixed(2) + "%\" y=\"" + (10 - height) / 2 +
        "\" width=\"" + width.toFixed(2) + "%\" height=\"" + height + "\" rx=\"" + Math.min(height / 2, 4) +
        "\"/>";
}

// Without a label it says nothing that is not in the text beside it.
function bar(blocks, label) {
    return tag("svg", "class=\"bar\" " + (label === "" ? "aria-hidden=\"true\"" :
                                         "role=\"img\" aria-label=\"" + html(label) + "\""), blocks);
}

function card(id, title, content) {
    return tag("section", "class=\"card\" aria-labelledby=\"" + id + "\"",
               tag("h2", "id=\"" + id + "\"", title) + content);
}

// Pairs of a name and a value; the value is text.
function facts(pairs) {
    var rows = "";
    for (var i = 0; i < pairs.length; i++) {
        rows += tag("div", "", tag("dt", "", pairs[i][0]) + tag("dd", "", shown(pairs[i][1])));
    }
    return tag("dl", "class=\"facts\"", rows);
}

function notGathered() {
    return tag("p", "class=\"none\"", "This part could not be gathered.");
}

// ---- writing HTML: the sections

function headerOf(report) {
    var m = report.machine;
    var title = m === null ? "Computer" : m.hostName || "Computer without a name";
    var system = m === null ? "" : m.system.name + " " + m.system.displayVersion +
        (m.system.build === "" ? "" : ", build " + m.system.build);
    return tag("header", "", tag("p", "class=\"over\"", "Computer report") +
               tag("h1", "", html(title)) + tag("p", "class=\"system\"", html(system)) +
               tag("p", "class=\"when\"", "Gathered " + readableDate(report.gathered) + " in " +
                   (report.milliseconds / 1000).toFixed(1) + " s" +
                   (report.redacted ? ". Names and addresses of people and machines are masked." : ".")));
}

function verdictOf(report) {
    var list = "", count = report.problems.length;
    for (var i = 0; i < count; i++) {
        var problem = report.problems[i];
        list += tag("li", "", icon("bad") + tag("div", "", tag("p", "class=\"what\"", html(problem.text)) +
                    tag("p", "class=\"todo\"", tag("span", "", "What to do: ") + html(problem.advice))));
    }
    var title = count === 0 ? icon("good") + "Nothing looks wrong" :
        count === 1 ? "One thing looks wrong" : count + " things look wrong";
    return tag("section", "class=\"verdict " + (count === 0 ? "fine" : "wrong") +
               "\" aria-labelledby=\"wrong\"",
               tag("h2", "id=\"wrong\"", title) + (count === 0 ? "" : tag("ol", "", list)));
}

function tile(name, value, more) {
    return tag("div", "", tag("dt", "", html(name)) +
               tag("dd", "", tag("b", "", shown(value)) + tag("span", "", html(more))));
}

function tilesOf(report) {
    var m = report.machine, tiles = "", drives = report.drives || [];
    var own = addressesOf(report, "address"), gateways = addressesOf(report, "gateway");
    if (m !== null) {
        tiles += tile("Memory", m.memoryMB === null ? "unknown" : amount(m.memoryMB), m.processor.speedMHz ===
                      null ? "" : "processor at " + m.processor.speedMHz + " MHz");
    }
    for (var i = 0; i < drives.length; i++) {
        if (drives[i].holdsWindows) {
            tiles += tile("Free on " + drives[i].letter + ":", amount(drives[i].freeMB),
                          "of " + amount(drives[i].sizeMB));
        }
    }
    if (report.network !== null) {
        tiles += tile("Address", own.join(", "),
                      gateways.length > 0 ? "gateway " + gateways.join(", ") : "no gateway") +
            tile("Name servers", report.network.nameServers.join(", "), "");
    }
    return tiles === "" ? "" : tag("dl", "class=\"tiles\"", tiles);
}

// A round number of milliseconds of which up to five make the whole.
function tickOf(whole) {
    var tick = 10, factors = [2, 2.5, 2];
    for (var i = 0; tick * 5 < whole; i++) {
        tick *= factors[i % 3];
    }
    return tick;
}

function axis(end, tick) {
    var marks = "";
    for (var at = 0; at <= end; at += tick) {
        marks += "<text x=\"" + (at / end * 100).toFixed(2) + "%\" y=\"12\" text-anchor=\"" +
            (at === 0 ? "start" : at === end ? "end" : "middle") + "\">" +
            (tick < 1000 ? at / 1000 : Math.round(at / 1000)) + " s</text>";
    }
    return tag("div", "class=\"axis\"", tag("svg", "aria-hidden=\"true\"", marks));
}

// When a test ran; the shortest can be seen, too.
function timeOf(test, end) {
    var width = Math.max(1.4, test.milliseconds / end * 100);
    var from = Math.min(test.startMilliseconds / end * 100, 100 - width);
    return bar(block("track", 0, 100, 2) + block(test.result === "ok" ? "used" : "full", from, width, 10), "");
}

function testsOf(report) {
    var rows = "", end = 1, tests = report.tests, i;
    for (i = 0; i < tests.length; i++) {
        end = Math.max(end, tests[i].startMilliseconds + tests[i].milliseconds);
    }
    var tick = tickOf(end);
    end = Math.ceil(end / tick) * tick;
    for (i = 0; i < tests.length; i++) {
        var test = tests[i], text = describeTest(test), isOk = test.result === "ok";
        rows += tag("li", "", icon(isOk ? "good" : test.result === "failed" ? "bad" : "open") +
                    tag("p", "", html(text.charAt(0).toUpperCase() + text.substring(1)) +
                        (isOk ? "" : " " + tag("b", "", test.result))) +
                    tag("span", "class=\"time\"", seconds(test.milliseconds)) +
                    (test.result === "left out" ? "" : timeOf(test, end)));
    }
    return tag("ol", "class=\"tests\"", rows) + axis(end, tick);
}

// Each block stands for twice as much as the one before, from 64 MB to 64 GB.
function memoryBar(megabytes) {
    var blocks = "", most = 11, gap = 1, width = (100 - gap * (most - 1)) / most;
    for (var i = 0; i < most; i++) {
        blocks += block(megabytes >= 64 * Math.pow(2, i) * 0.9 ? "used" : "track", i * (width + gap), width, 10);
    }
    return bar(blocks, amount(megabytes) + " on a scale from 64 MB to 64 GB") +
        tag("p", "class=\"scale\"", "<span>64 MB</span><span>2 GB</span><span>64 GB</span>");
}

function machineOf(report) {
    var m = report.machine, memory = m.memoryMB === null ? "unknown" : amount(m.memoryMB);
    // A 32-bit host is told of no more.
    var isAll = m.scriptHostBits !== 32 || m.memoryMB < 2048;
    return facts([["Host name", m.hostName], ["Domain", m.domain], ["User", m.user],
                  ["Profile", m.profilePath], ["System", m.system.name],
                  ["Version", m.system.displayVersion], ["Build", m.system.build],
                  ["Processor", m.processor.vendor + " " + m.processor.description],
                  ["Speed", m.processor.speedMHz === null ? "unknown" : m.processor.speedMHz + " MHz"],
                  ["USB", m.usb.ports === 0 ? "no ports found" :
                   m.usb.ports + " ports, " + m.usb.freePorts + " of them free"],
                  ["Memory", memory + (isAll ? "" : " or more (the script host has 32 bits)")]]) +
        (m.memoryMB === null ? "" : memoryBar(m.memoryMB));
}

var DRIVE_KINDS = { HARD_DRIVE: "hard drive", CDROM_DRIVE: "CD or DVD", FLOPPY_DRIVE: "floppy disk",
                    REMOVABLE_DRIVE: "removable drive", NET_DRIVE: "network drive", ERROR: "gone" };

function drivesOf(report) {
    var rows = "";
    for (var i = 0; i < report.drives.length; i++) {
        var drive = report.drives[i], used = drive.sizeMB - drive.freeMB;
        var percent = drive.sizeMB > 0 ? Math.round(used / drive.sizeMB * 100) : 0;
        var isShort = drive.holdsWindows && drive.freeMB < littleSpaceOf(drive);
        rows += tag("li", "", tag("p", "", tag("b", "", html(drive.letter) + ":") +
                                  html(DRIVE_KINDS[drive.kind] || drive.kind) +
                                  (drive.holdsWindows ? tag("span", "class=\"tag\"", "holds Windows") : "") +
                                  (drive.mostFree ? tag("span", "class=\"tag\"", "most free space") : "")) +
                    tag("p", "class=\"free\"", drive.sizeMB > 0 ? amount(drive.freeMB) + " free of " +
                        amount(drive.sizeMB) : "empty") +
                    (drive.sizeMB > 0 ? bar(block("track", 0, 100, 10) +
                                            block(isShort ? "full" : "used", 0, percent, 10),
                                            percent + " % used") : ""));
    }
    return tag("ul", "class=\"drives\"", rows);
}

function adapterRow(name, installed, live) {
    return tag("tr", "", tag("th", "scope=\"row\"", name) + tag("td", "", installed) + tag("td", "", live));
}

function adapterOf(adapter) {
    var c = adapter.installed, r = adapter.live;
    var state = r === null ? "does not run" : c === null ? "runs, not installed" : "runs";
    function row(name, field) {
        return adapterRow(name, c ? shown(c[field]) : "", r ? shown(r[field]) : "");
    }
    var rows = row("Name", "name") + row("Address", "address") + row("Subnet mask", "subnetMask") + row("Gateway", "gateway") +
        adapterRow("By DHCP", c ? yesNo(c.dhcp) : "", r ? yesNo(r.dhcp) : "") +
        row("Hardware address", "hardwareAddress") +
        adapterRow("Kind", c ? html(c.type) : "", r ? r.ppp ? "PPP" : r.ethernet ? "Ethernet" : "Other" : "");
    if (c !== null) {
        rows += adapterRow("Name servers", shown(c.nameServers.join(", ")), "") +
            adapterRow("WINS servers", shown(c.winsServers.join(", ")), "") +
            adapterRow("Driver", shown(c.driver), "") +
            adapterRow("Device", (c.enabled ? "enabled" : "disabled") + (c.functional ? ", working" : ", not working"), "") +
            adapterRow("Bound to TCP/IP", c.boundToTcpip, "");
    }
    return tag("div", "", tag("h3", "", html(adapter.name) +
               tag("span", "class=\"tag\"", state)) +
               tag("table", "", tag("thead", "", tag("tr", "", "<td></td>" +
                   tag("th", "scope=\"col\"", c ? "as installed" : "not installed") +
                   tag("th", "scope=\"col\"", r ? "as it runs" : "does not run"))) + tag("tbody", "", rows)));
}

function adaptersOf(report) {
    var all = "", adapters = report.network.adapters;
    for (var i = 0; i < adapters.length; i++) {
        all += adapterOf(adapters[i]);
    }
    return all === "" ? tag("p", "class=\"none\"", "There are none.") : tag("div", "class=\"columns\"", all);
}

function leasesOf(report) {
    var all = "", adapters = report.network.adapters;
    for (var i = 0; i < adapters.length; i++) {
        var a = adapters[i], server = a.live === null ? "" : a.live.dhcpServer;
        if (a.lease !== null || a.live !== null && a.live.dhcp || a.installed !== null && a.installed.dhcp) {
            all += tag("div", "", tag("h3", "", html(a.name)) +
                facts([["Server", isAddress(server) || a.lease === null ? server : a.lease.server],
                       ["Address", a.lease !== null ? a.lease.address : a.live !== null ? a.live.address : ""],
                       ["Lease", a.lease === null ? "not noted" : "from " + readableDate(a.lease.obtained) +
                        " to " + readableDate(a.lease.ends)]]));
        }
    }
    return all === "" ? tag("p", "class=\"none\"", "No adapter gets its address by DHCP.") :
        tag("div", "class=\"columns\"", all);
}

function browserOf(report) {
    var b = report.browser;
    return facts([["Version", b.version], ["Program", b.programPath], ["Home page", b.homePage],
                  ["Uses a proxy", yesNo(b.usesProxy)], ["Proxy for http", b.proxies.http],
                  ["for https", b.proxies.https], ["for ftp", b.proxies.ftp],
                  ["for gopher", b.proxies.gopher], ["SOCKS", b.proxies.socks],
                  ["Without proxy", b.exceptions], ["Configuration script", b.configurationScript]]);
}

function serverOf(server, sends) {
    if (server === null || server.server === "") {
        return "";
    }
    return server.server + ", port " + server.port + (server.secure ? ", secure" : ", not secure") +
        (server.logsIn ? ", login " + (server.login || "not set") : sends ? ", no login" : "");
}

function accountOf(account) {
    var kinds = { pop3: "POP3", imap: "IMAP", other: "other kind" };
    return tag("h3", "", html(account.account) + tag("span", "class=\"tag\"", kinds[account.kind]) +
               (account.isDefault ? tag("span", "class=\"tag\"", "default") : "")) +
        facts([["Name", account.displayName], ["Mail address", account.mailAddress],
               ["Incoming", serverOf(account.incoming, false)],
               ["Outgoing", serverOf(account.outgoing, true)]]);
}

function mailOf(report) {
    var m = report.mail, all = "", i, j;
    for (i = 0; i < m.identities.length; i++) {
        var identity = m.identities[i];
        if (identity.identity !== "") {
            all += tag("p", "class=\"identity\"", "Identity " + tag("b", "", html(identity.identity)) +
                       (identity.isCurrent ? ", the current one" : ""));
        }
        for (j = 0; j < identity.accounts.length; j++) {
            all += accountOf(identity.accounts[j]);
        }
        if (identity.accounts.length === 0) {
            all += tag("p", "class=\"none\"", "No mail accounts.");
        }
    }
    return facts([["Outlook Express", m.version || "not installed"], ["Program", m.programPath]]) +
        (m.isSetUp ? all : tag("p", "class=\"none\"", "It has not been set up for this user."));
}

function stepsOf(report) {
    var pairs = [];
    for (var i = 0; i < report.steps.length; i++) {
        var step = report.steps[i];
        pairs.push([step.name.charAt(0).toUpperCase() + step.name.substring(1), seconds(step.milliseconds) +
                    (step.failure === null ? "" : ", could not be gathered: " + step.failure)]);
    }
    return facts(pairs);
}

// ---- writing HTML: the page

var LIGHT = { page: "#f4f6f8", card: "#ffffff", ink: "#1b2733", soft: "#52606d", line: "#dde4ea",
              blue: "#23759b", track: "#e2e8ed", good: "#1c7a4a", goodCard: "#edf7f1",
              goodLine: "#bfe0cd", bad: "#b3361f", badCard: "#fdf3ef", badLine: "#f0cfc5" };
var DARK = { page: "#10161c", card: "#18212a", ink: "#e5ebf0", soft: "#a3b1be", line: "#2a3642",
             blue: "#5fb5d9", track: "#2c3945", good: "#6ecb99", goodCard: "#15261f",
             goodLine: "#27513c", bad: "#ff9a86", badCard: "#2a1c1a", badLine: "#5a342c" };

function coloursOf(c) {
    return ["body{background:" + c.page + ";color:" + c.ink + "}",
            ".card,.tiles{background:" + c.card + ";border-color:" + c.line + "}",
            ".over,.when,.system,.tiles dd>span,.none,dt,thead,.todo span,.time,.free,.scale,footer,.tag,tbody th{color:" +
                c.soft + "}",
            "tr,.facts div,.drives li,.tests li,.tiles div,.tag{border-color:" + c.line + "}",
            ".track{fill:" + c.track + "}.used{fill:" + c.blue + "}.full{fill:" + c.bad + "}",
            ".axis text{fill:" + c.soft + "}.over{border-color:" + c.blue + "}",
            ".icon.bad{fill:" + c.bad + "}.icon.good{fill:" + c.good + "}.icon.open{fill:" + c.soft + "}",
            ".cut{stroke:" + c.card + "}.tests b{color:" + c.bad + "}",
            ".wrong{background:" + c.badCard + ";border-color:" + c.badLine + "}",
            ".wrong h2{color:" + c.bad + "}.wrong li{border-color:" + c.badLine + "}",
            ".fine{background:" + c.goodCard + ";border-color:" + c.goodLine + "}",
            ".fine h2{color:" + c.good + "}"].join("\r\n");
}

var LAYOUT = [
    "*{box-sizing:border-box;margin:0}",
    "body{font:16px/1.5 'Segoe UI',-apple-system,'Noto Sans','Liberation Sans',Tahoma,sans-serif;" +
        "padding:32px 20px;overflow-wrap:break-word;overflow-wrap:anywhere;-webkit-text-size-adjust:100%}",
    "header,main,footer{display:block;max-width:1040px;margin:0 auto}",
    ".over{font-size:13px;font-weight:600;letter-spacing:.08em;text-transform:uppercase;" +
        "border-top:4px solid;display:inline-block;padding-top:10px}",
    "h1{font-size:38px;line-height:1.15;font-weight:650;letter-spacing:-.02em;margin:4px 0}",
    ".system{font-size:19px}.when{font-size:14px;margin:6px 0 24px}",
    "h2{font-size:19px;line-height:1.3;font-weight:650}h3{font-size:16px;font-weight:600;margin:18px 0 4px}",
    ".card,.verdict,.tiles{border:1px solid;border-radius:12px;padding:20px 22px;margin:0 0 18px}",
    ".card>h2{margin-bottom:10px}",
    ".verdict h2{font-size:22px}.verdict ol{list-style:none;padding:0;margin-top:6px}",
    ".verdict li{display:flex;padding:12px 0;border-top:1px solid}.verdict li:first-child{border-top:0}",
    ".verdict li:last-child{padding-bottom:0}.what{font-weight:600}.todo span{font-weight:600}",
    ".icon{width:20px;height:20px;flex:none;margin:2px 12px 0 0}.verdict h2 .icon{margin:0 10px -3px 0}",
    ".cut{fill:none;stroke-width:1.9;stroke-linecap:round;stroke-linejoin:round}",
    ".tiles{padding:0;display:flex;flex-wrap:wrap;overflow:hidden}",
    ".tiles div{flex:1 1 180px;padding:14px 22px;border-left:1px solid;border-top:1px solid;" +
        "margin:-1px 0 0 -1px}",
    ".tiles dd{margin:0}.tiles b{display:block;font-size:20px;font-weight:600;line-height:1.35}",
    ".tiles dd>span{font-size:14px}dt,.tiles dt{font-size:14px}",
    ".facts div{display:flex;padding:5px 0;border-top:1px solid}.facts div:first-child{border-top:0}",
    ".facts dt{flex:0 0 9.2em;padding:1px 12px 0 0}.facts dd{flex:1 1 0;min-width:0;margin:0}",
    "dd,td,.what,.todo{unicode-bidi:isolate}",
    ".tests,.drives{list-style:none;padding:0}",
    ".tests li{display:flex;align-items:center;padding:6px 0;border-top:1px solid}",
    ".tests li:first-child,.drives li:first-child{border-top:0}",
    ".tests .icon{width:18px;height:18px;margin:0 10px 0 0}.tests p{flex:1 1 0;min-width:0}",
    ".time{font-variant-numeric:tabular-nums;font-size:14px;padding:0 16px 0 12px;white-space:nowrap}",
    ".bar{display:block;width:100%;height:10px;overflow:visible}.tests .bar{flex:0 0 36%;width:36%}",
    ".axis{padding:4px 0 0 64%}.axis svg{display:block;width:100%;height:16px;overflow:visible}",
    ".axis text{font-size:12px}",
    ".drives li{display:flex;flex-wrap:wrap;padding:10px 0 12px;border-top:1px solid}",
    ".drives p{flex:1 1 auto}.drives b{margin-right:8px}.drives .free{text-align:right;padding-left:12px}",
    ".drives .bar{margin-top:6px;flex:0 0 100%}",
    ".scale{display:flex;justify-content:space-between;font-size:12px;margin-top:4px}",
    ".card .facts+.bar{margin-top:8px}",
    ".tag{display:inline-block;font-size:12.5px;font-weight:400;line-height:1.5;border:1px solid;" +
        "border-radius:9px;padding:0 8px;margin-left:8px;vertical-align:1px;white-space:nowrap}",
    "table{width:100%;border-collapse:collapse;table-layout:fixed;font-size:15px}",
    "tr{border-top:1px solid}thead tr{border-top:0}th,td{text-align:left;vertical-align:top;padding:5px 8px 5px 0;" +
        "font-weight:400}thead th,tbody th{font-size:14px}th:first-child,thead td{width:30%}",
    ".columns{display:flex;flex-wrap:wrap;margin:0 -16px}.columns>div{flex:1 1 400px;min-width:0;padding:0 16px 8px}",
    ".columns h3{margin-top:6px}.identity{margin-top:16px}",
    "footer{font-size:14px}",
    "@media (max-width:600px){body{padding:20px 12px}h1{font-size:30px}.card,.verdict{padding:16px}" +
        ".tiles div{flex-basis:130px;padding:12px 16px}.tests li{flex-wrap:wrap}.time{padding-right:0}" +
        ".tests .bar{flex-basis:100%;width:100%;margin-top:4px}.axis{padding-left:0}" +
        ".facts dt{flex-basis:7.4em}}",
    "@media (min-width:601px){.pair{display:flex}.pair>div{flex:1 1 0;min-width:0;" +
        "display:flex;flex-direction:column}.pair>div+div{margin-left:18px}.pair .card:last-child{flex:1 0 auto}}"
].join("\r\n");

var PRINT = [
    "@page{size:A4;margin:13mm 14mm}@media print{body{padding:0;font-size:9.5pt;-webkit-print-color-adjust:exact;" +
        "print-color-adjust:exact}h1{font-size:22pt}h2,.verdict h2{font-size:13pt}h3{font-size:10pt}" +
        ".system{font-size:12pt}table,dt,.tiles dt,.time,thead th,tbody th,.tiles dd>span,footer{font-size:9pt}",
    ".card,.verdict,.tiles{padding:9pt 11pt;margin-bottom:9pt}.tiles{padding:0}.tiles div{flex-basis:110px;" +
        "padding:8pt 11pt}.tiles b{font-size:11.5pt}.pair>div+div{margin-left:9pt}.columns>div{flex-basis:260px}",
    ".facts div,.tests li{padding-top:2.5pt;padding-bottom:2.5pt}.tests .bar{flex-basis:30%;width:30%}.axis" +
        "{padding-left:70%}td,th{padding-top:2pt;padding-bottom:2pt}.verdict li{padding:6pt 0}",
    "h2,h3{break-after:avoid}.pair,.columns>div,li,.facts div{break-inside:avoid}.card,.verdict" +
        "{-webkit-box-decoration-break:clone;box-decoration-break:clone}"
].join("\r\n");

// Side by side where there is room.
function pair(left, right) {
    return tag("div", "class=\"pair\"", tag("div", "", left) + tag("div", "", right));
}

function toHtml(report) {
    function part(id, title, isThere, write) {
        return card(id, title, isThere ? write(report) : notGathered());
    }
    var title = "Report on " + (report.machine === null ? "a computer" : report.machine.hostName) + ", " +
        report.gathered.substring(0, 10);
    return "<!DOCTYPE html>\r\n<html lang=\"en\">\r\n<head>\r\n<meta charset=\"utf-8\">\r\n" +
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'\">\r\n" +
        "<meta name=\"viewport\" content=\"width=device-width,initial-scale=1\">\r\n" +
        "<meta name=\"color-scheme\" content=\"light dark\">\r\n" + tag("title", "", html(title)) +
        tag("style", "", "\r\n" + LAYOUT + "\r\n" + coloursOf(LIGHT) + "\r\n@media (prefers-color-scheme:dark){" +
            coloursOf(DARK) + "}\r\n" + PRINT + "\r\n" + coloursOf(LIGHT) + "\r\nbody{background:#ffffff}}\r\n") +
        "</head>\r\n<body>\r\n" + headerOf(report) +
        tag("main", "", verdictOf(report) + tilesOf(report) +
            part("tests", "Network tests", report.tests !== null, testsOf) +
            pair(part("machine", "Computer", report.machine !== null, machineOf),
                 part("drives", "Drives", report.drives !== null, drivesOf) +
                 part("leases", "DHCP", report.network !== null, leasesOf)) +
            part("adapters", "Network adapters", report.network !== null, adaptersOf) +
            pair(part("browser", "Internet Explorer and proxy", report.browser !== null, browserOf),
                 part("mail", "Mail accounts", report.mail !== null, mailOf)) +
            part("steps", "How long each part took", true, stepsOf)) +
        tag("footer", "", tag("p", "", "Written by report.js of Tervane. It contains no password.")) +
        "</body>\r\n</html>\r\n";
}

// ---- the program

function usage() {
    sayAlways("cscript //nologo report.js [/json] [/redact] [FILE]\n" +
              "  FILE     where to write: " + DEFAULT_FILE + ", with /json standard output\n" +
              "  /json    a JSON document instead of an HTML page\n" +
              "  /redact  with names, mail and hardware addresses and profile paths masked");
}

// False when they cannot be understood.
function readArguments() {
    for (var i = 0; i < WScript.Arguments.length; i++) {
        var argument = WScript.Arguments(i);
        if ((/^\/(json|redact)$/i).test(argument)) {
            options[argument.substring(1).toLowerCase()] = true;
        } else if ((/^\/(\?|h|help)$/i).test(argument)) {
            options.help = true;
        } else if (argument === "" || argument.charAt(0) === "/" || options.file !== "") {
            return false;
        } else {
            options.file = argument;
        }
    }
    if (options.file === "" && !options.json) {
        options.file = DEFAULT_FILE;
    }
    return options.file !== "" || !isWindowed(); // wscript has no standard output
}

function write(document) {
    if (options.file === "") {
        WScript.StdOut.Write(document);
        return;
    }
    var files = new ActiveXObject("Scripting.FileSystemObject");
    try {
        var file = files.CreateTextFile(options.file, true, false);
        file.Write(document);
        file.Close();
    } catch (error) {
        throw new Error(options.file + " cannot be written (" + explain(error) + ")");
    }
    sayAlways("The report is in " + (options.redact ? options.file : files.GetAbsolutePathName(options.file)));
}

function conclude(report) {
    for (var i = 0; i < report.problems.length; i++) {
        say("  - " + report.problems[i].text);
    }
    if (report.problems.length === 0) {
        say("  Nothing looks wrong.");
    }
}

function main() {
    if (!readArguments() || options.help) {
        usage();
        return options.help ? 0 : 2;
    }
    try {
        say("Gathering what is known of this computer...");
        var report = gather();
        if (options.redact) {
            redact(report);
        }
        judge(report);
        conclude(report);
        write(options.json ? toJson(report, "") + "\r\n" : toHtml(report));
        return { fine: 0, problems: 1, incomplete: 2 }[report.result];
    } catch (error) {
        sayAlways("No report could be made: " + explain(error));
        return 2;
    }
}

WScript.Quit(main());
