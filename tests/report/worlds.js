// Computers made up for examples/report.js, which runs here in a browser's engine instead of a script
// host: objects that answer from a table, and a clock that goes on only while the script sleeps.

const NT = "2\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\";
const INTERFACES = "2\\SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces\\";
const PROXY_ENABLE = "1\\Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\ProxyEnable";
const CARD = "{6E0B1C52-0D5F-4B5A-9C8E-0A6B1C2D3E4F}", RADIO = "{0F9E8D7C-6B5A-4C3D-8E1F-2A3B4C5D6E7F}";

// A computer without any trouble. What a test lasts is in "answers", in milliseconds; a test that is not
// named there fails when its time is over.
const fine = () => ({
    info: { CpuVendor: "GenuineIntel", CpuDescription: "Intel64 Family 6 Model 142 Stepping 12", CpuFamily: "5",
            CpuSpeed: 2304, RamSize: 8192, OS: "winnt4sp1", OsMajorNumber: 10, OsMinorNumber: 0,
            HostName: "PC-042", DomainName: "office.example", UsbSupported: 1, NumUsbPorts: 6,
            NumOpenUsbPorts: 3, DnsServers: "192.168.7.1,192.168.7.53", LargestFreeDriveIndex: 1 },
    drives: [{ Letter: "C", Type: "HARD_DRIVE", TotalSize: 243210, FreeSpace: 118400, SystemDrive: 1 },
             { Letter: "D", Type: "HARD_DRIVE", TotalSize: 953869, FreeSpace: 402000, SystemDrive: 0 },
             { Letter: "E", Type: "CDROM_DRIVE", TotalSize: 0, FreeSpace: 0, SystemDrive: 0 }],
    installed: [{ Name: "Gigabit PCI Express Family Controller (Ethernet)", Driver: "gbe64",
                  AdapterType: "Ethernet", StaticIpAddress: "0.0.0.0", StaticSubnetMask: "0.0.0.0",
                  StaticDefaultGateway: "0.0.0.0", UsingDhcp: 1, HardwareAddress: "00-10-5A-44-B2-0C",
                  EthernetAdapter: true, PPPAdapter: false, StaticNameServers: [], StaticWINSServers: [],
                  IsEnabled: 1, IsFunctional: 1, BoundToTcpip: 1, BoundIndirectlyOrDirectlyToTcpip: 1,
                  Cookie: CARD }],
    live: [{ Name: "Gigabit PCI Express Family Controller", IpAddress: "192.168.7.42",
             SubnetMask: "255.255.255.0", DefaultGateway: "192.168.7.1", IsDhcp: 1, DhcpServer: "192.168.7.1",
             HardwareAddress: "00-10-5A-44-B2-0C", IsEthernetAdapter: 1, IsPppAdapter: 0, Cookie: CARD }],
    registry: { [NT + "ProductName"]: "Windows 10 Pro", [NT + "DisplayVersion"]: "23H2",
                [NT + "CurrentBuildNumber"]: "22631", [NT + "UBR"]: 4317, [PROXY_ENABLE]: 0,
                [INTERFACES + CARD + "\\LeaseObtainedTime"]: 1793582040,
                [INTERFACES + CARD + "\\LeaseTerminatesTime"]: 1793668440,
                [INTERFACES + CARD + "\\DhcpIPAddress"]: "192.168.7.42",
                [INTERFACES + CARD + "\\DhcpServer"]: "192.168.7.1" },
    browser: { Version: "11.1.22621.0", ProgramPath: "C:\\Program Files\\Internet Explorer",
               HomePage: "http://start.office.example/", AutoConfigurationScript: "", HttpProxyServer: "",
               HttpsProxyServer: "", FtpProxyServer: "", GopherProxyServer: "", SocksProxyServer: "",
               ProxyExceptions: "" },
    mail: { Version: "6.00.2900.5512", ProgramPath: "C:\\Program Files\\Outlook Express\\msimn.exe",
            identities: { "Main Identity": { "Office": {
                DisplayName: "Jane Doe", EmailAddress: "jane.doe@office.example", Pop3Server: "192.168.7.25",
                Pop3Port: 110, Pop3Secure: false, Pop3Login: "jdoe", SmtpServer: "192.168.7.25", SmtpPort: 25,
                SmtpSecure: false, SmtpAuthentication: false, SmtpLogin: "" } } } },
    environment: { PROCESSOR_ARCHITECTURE: "AMD64", USERPROFILE: "C:\\Users\\jane.doe" },
    user: "jane.doe",
    answers: { "ping 127.0.0.1": 2, "ping 192.168.7.42": 3, "ping 192.168.7.1": 4, "ping 192.168.7.53": 6,
               "port 192.168.7.1:53": 5, "port 192.168.7.53:53": 7, "system PC-042": 31,
               "port 192.168.7.25:110": 18, "port 192.168.7.25:25": 15 },
    arguments: [], missing: [], silent: [], unwritable: false, host: "C:\\Windows\\System32\\cscript.exe"
});

// One with trouble of most kinds, as support sees it.
const troubled = () => {
    const w = fine();
    w.drives[0].FreeSpace = 3100;
    w.installed.push({ ...w.installed[0], Name: "Wireless-AC PCI Adapter", Driver: "wlanac",
                       HardwareAddress: "02-1B-77-49-54-FD", Cookie: RADIO, IsEnabled: 0,
                       StaticNameServers: ["203.0.113.53"] });
    w.registry[PROXY_ENABLE] = 1;
    Object.assign(w.browser, { HttpProxyServer: "proxy.office.example:8080",
                               HttpsProxyServer: "proxy.office.example:8080",
                               ProxyExceptions: "*.office.example;<local>" });
    const accounts = w.mail.identities["Main Identity"];
    accounts["Private"] = { DisplayName: "Jane Doe", EmailAddress: "jane@mail.example", ImapServer:
                            "imap.mail.example", ImapPort: 143, ImapSecure: false, ImapLogin: "jane@mail.example",
                            SmtpServer: "smtp.mail.example", SmtpPort: 465, SmtpSecure: true,
                            SmtpAuthentication: true, SmtpLogin: "" };
    Object.assign(w.answers, { "names proxy.office.example": 21, "names imap.mail.example": 44,
                               "port imap.mail.example:143": 96, "names smtp.mail.example": 38,
                               "port smtp.mail.example:465": 102 });
    delete w.answers["ping 192.168.7.53"];
    delete w.answers["port 192.168.7.53:53"];
    return w;
};

// The same with every text replaced by one that is made to break pages, and a number to find it by.
const HOSTILE = "</td></script><script>hurt=1</script><img src=x onerror=hurt=2>\"' onload='hurt=3&lt;&#60; " +
    "\u65e5\u672c\u8a9e \u0131\u0130\u011f\u015f \ud83d\udda5 \u202edlroW\u0007\u0000\ud800 ]]>-->{{7*7}}${hurt}\\ #";
const hostile = () => {
    let count = 0;
    const spoil = value => typeof value === "string" ? HOSTILE + (++count) + "." :
        Array.isArray(value) ? value.map(spoil) : value !== null && typeof value === "object" ?
        Object.fromEntries(Object.entries(value).map(([key, inner]) => [key, spoil(inner)])) : value;
    const w = troubled();
    for (const part of ["info", "drives", "installed", "live", "registry", "browser", "environment", "user"]) {
        w[part] = spoil(w[part]);
    }
    w.live[0].Cookie = w.installed[0].Cookie;
    w.registry[INTERFACES + w.installed[0].Cookie + "\\LeaseObtainedTime"] = 1;
    w.registry[INTERFACES + w.installed[0].Cookie + "\\DhcpIPAddress"] = HOSTILE + (++count) + ".";
    w.installed[0].StaticNameServers = w.installed[0].StaticWINSServers = [HOSTILE + (++count) + "."];
    w.mail.Version = HOSTILE + (++count) + ".";
    w.mail.ProgramPath = HOSTILE + (++count) + ".";
    w.mail.identities = { [HOSTILE + (++count) + "."]:
                          { [HOSTILE + (++count) + "."]: spoil(troubled().mail.identities["Main Identity"].Private) } };
    return w;
};

const worlds = { fine, troubled, hostile };

function registryOf(w) {
    const get = (hive, key, value) => w.registry[hive + "\\" + key + "\\" + value];
    return { GetValue: get, GetValueType: (...at) => ({ number: 1, string: 2 })[typeof get(...at)] || 0 };
}

function mailOf(w) {
    const identities = w.mail.identities;
    return {
        ...w.mail, Identities: Object.keys(identities || {}), LastErrorCode: identities ? 0 : 1,
        CurrentIdentity: Object.keys(identities || {})[0],
        GetMailAccounts: identity => Object.keys(identities[identity]),
        GetDefaultMailAccount: identity => Object.keys(identities[identity])[0],
        GetAccountSetting: (account, setting, identity) => {
            if (/password/i.test(setting)) {
                throw new Error("a password was asked for");
            }
            return identities[identity][account][setting];
        }
    };
}

// Events come while the script sleeps, those of "silent" tests never.
function testerOf(w, prefix, later) {
    const test = (event, what, most) => {
        if (!w.silent.includes(what)) {
            const answer = w.answers[what];
            later(answer === undefined ? most : answer, prefix + event, answer === undefined ? 0 : -1);
        }
    };
    return {
        Ping: (name, time, retries) => test("OnPingComplete", "ping " + name, time * retries),
        TestTCPPort: (name, port, time) => test("OnTCPPortTestComplete", "port " + name + ":" + port, time),
        DNSLookup: (name, time) => test("OnDNSLookupComplete", (time ? "names " : "system ") + name, time || 2200)
    };
}

// Runs the script's text on a computer; gives what it wrote and the code it ended with.
function run(source, w) {
    const result = { out: "", err: "", files: {}, code: null, boxes: 0 }, events = [];
    let clock = Date.UTC(2026, 10, 2, 9, 14, 0);
    const later = (after, name, argument) => events.push({ at: clock + after, name, argument });
    const files = { GetAbsolutePathName: name => "C:\\Support\\" + name, CreateTextFile: name => {
        if (w.unwritable) {
            throw new Error("Permission denied");
        }
        result.files[name] = "";
        return { Write: text => { result.files[name] += text; }, Close: () => {} };
    } };
    const make = (progId, prefix) => {
        if (w.missing.includes(progId)) {
            throw new Error("Could not locate automation class named \"" + progId + "\".");
        }
        return {
            "Ostrel.GeneralSysInfo": () => ({
                ...w.info, NumDrives: w.drives.length, GetDriveInfo: i => w.drives[i],
                NumStaticAdapters: w.installed.length, GetStaticAdapterInfo: i => w.installed[i],
                NumLiveAdapters: w.live.length, GetLiveAdapterInfo: i => w.live[i],
                GetSystemInfo: () => w.silent.includes("info") || later(140, prefix + "OnGeneralSysInfoComplete") }),
            "Tervane.ConnectivityTester": () => testerOf(w, prefix, later),
            "Tervane.Registry2": () => registryOf(w), "Tervane.ConfigureIE": () => w.browser,
            "Tervane.ConfigureOutlookExpress": () => mailOf(w), "Scripting.FileSystemObject": () => files,
            "WScript.Network": () => ({ UserName: w.user }),
            "WScript.Shell": () => ({ ExpandEnvironmentStrings: text =>
                text.replace(/%(\w+)%/g, (all, name) => name in w.environment ? w.environment[name] : all) })
        }[progId]();
    };
    const stop = {};
    const WScript = {
        FullName: w.host, CreateObject: make, DisconnectObject: () => { events.length = 0; },
        Echo: text => { result.out += text + "\n"; result.boxes++; },
        StdOut: { Write: text => { result.out += text; } },
        StdErr: { WriteLine: text => { result.err += text + "\n"; } },
        Quit: code => { result.code = code; throw stop; },
        Sleep: milliseconds => {
            const end = clock + milliseconds;
            for (const event of events.filter(e => e.at <= end).sort((a, b) => a.at - b.at)) {
                events.splice(events.indexOf(event), 1);
                clock = Math.max(clock, event.at);
                WScript.fire(event.name, event.argument);
            }
            clock = end;
        },
        Arguments: Object.defineProperty(i => w.arguments[i], "length", { value: w.arguments.length })
    };
    const FakeDate = function (at) { return new Date(at === undefined ? clock : at); };
    const script = new Function("WScript", "ActiveXObject", "VBArray", "Date",
                                "WScript.fire = function (name, argument) { eval(name)(argument); };\n" + source);
    const VBArray = function (list) { return { toArray: () => [...list] }; };
    const begun = clock;
    try {
        script(WScript, function (progId) { return make(progId); }, VBArray, FakeDate);
    } catch (error) {
        if (error !== stop) {
            throw error;
        }
    }
    return { ...result, lasted: clock - begun };
}
