// The browser's settings: shows the home page, the proxy and the favourites, changes the home page
// and the proxy, adds a favourite, and puts everything back as it was. Run it with:
// cscript //nologo browser.js
//
// Every step tells what it found; the script ends with code 1 when something is not as expected.

var browser = new ActiveXObject("Tervane.ConfigureIE");
var registry = new ActiveXObject("Tervane.Registry2");
var files = new ActiveXObject("Scripting.FileSystemObject");

var HKEY_CURRENT_USER = 1;
var internetSettings = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
var shellFolders = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
var browserMain = "Software\\Microsoft\\Internet Explorer\\Main";
var favorite = "Tervane Example";
var mismatches = 0;

function expect(what, found, expected) {
    var isRight = String(found) === String(expected);
    WScript.Echo((isRight ? "  ok   " : "  BAD  ") + what + ": " + found +
                 (isRight ? "" : "  (expected " + expected + ")"));
    if (!isRight) {
        mismatches++;
    }
}

// A refused change is a script error.
function refuses(change) {
    try {
        change();
        return false;
    } catch (error) {
        return true;
    }
}

// Values of the registry that the example changes, to put them back exactly.
function remember(key, name) {
    var exists = registry.DoesValueExist(HKEY_CURRENT_USER, key, name);
    return { key: key, name: name, exists: exists,
             value: exists ? registry.GetValue(HKEY_CURRENT_USER, key, name) : null };
}

function restore(old) {
    if (old.exists) {
        registry.SetValue(HKEY_CURRENT_USER, old.key, old.name, old.value);
    } else {
        registry.DeleteValue(HKEY_CURRENT_USER, old.key, old.name);
    }
}

function show() {
    WScript.Echo("Internet Explorer " + (browser.Version || "is not installed"));
    WScript.Echo("  home page      " + (browser.HomePage || "(none)"));
    WScript.Echo("  http proxy     " + (browser.HttpProxyServer || "(none)"));
    WScript.Echo("  not for        " + (browser.ProxyExceptions || "(none)"));
    WScript.Echo("  configured by  " + (browser.AutoConfigurationScript || "(no script)"));
    var count = browser.NumFavorites;
    WScript.Echo("  favourites     " + count);
    for (var i = 0; i < count; i++) {
        WScript.Echo("    " + browser.FavoriteName(i) + ": " + browser.FavoriteURL(i));
    }
}

function changeHomePage() {
    WScript.Echo("Changing the home page");
    browser.HomePage = "http://www.example.org/";
    expect("home page", browser.HomePage, "http://www.example.org/");
}

function stored(name) {
    return registry.GetValue(HKEY_CURRENT_USER, internetSettings, name);
}

function changeProxy() {
    WScript.Echo("Setting one proxy for all protocols but socks");
    var before = stored("ProxyServer");
    browser.HttpProxyServer = browser.HttpsProxyServer = browser.FtpProxyServer =
        browser.GopherProxyServer = "proxy.example.org:8080";
    expect("stored before the commit", stored("ProxyServer"), before);
    browser.CommitProxyServers();
    expect("stored", stored("ProxyServer"), "proxy.example.org:8080");
    expect("enabled", stored("ProxyEnable"), 1);

    WScript.Echo("A proxy of its own for ftp, none for gopher");
    browser.FtpProxyServer = "ftp.example.org:2121";
    browser.GopherProxyServer = "";
    browser.CommitProxyServers();
    expect("stored", stored("ProxyServer"),
           "http=proxy.example.org:8080;https=proxy.example.org:8080;ftp=ftp.example.org:2121");
    expect("address with an entry of its own",
           refuses(function () { browser.HttpProxyServer = "a;ftp=b"; }) ? "refused" : "taken",
           "refused");

    WScript.Echo("Hosts reached without the proxy");
    browser.EnableLocalBypass(false);
    browser.ProxyExceptions = "*.example.org;10.*";
    browser.EnableLocalBypass(true);
    browser.EnableLocalBypass(true);
    expect("exceptions", browser.ProxyExceptions, "*.example.org;10.*;<local>");
    browser.ProxyExceptions = "";
    expect("without hosts", browser.ProxyExceptions, "<local>");
}

function addFavorite(file) {
    WScript.Echo("Adding a favourite");
    browser.AddFavorite(favorite, "http://www.example.org/tervane");
    expect("file exists", files.FileExists(file), true);
    var address = "not listed";
    for (var i = 0, count = browser.NumFavorites; i < count; i++) {
        if (browser.FavoriteName(i) == favorite) {
            address = browser.FavoriteURL(i);
        }
    }
    expect("address", address, "http://www.example.org/tervane");
    expect("name that leads elsewhere",
           refuses(function () { browser.AddFavorite("..\\elsewhere", "http://x/"); }) ? "refused"
                                                                                       : "taken",
           "refused");
}

show();
var before = [remember(browserMain, "Start Page"), remember(internetSettings, "ProxyServer"),
              remember(internetSettings, "ProxyEnable"), remember(internetSettings, "ProxyOverride")];
var favoriteFile = registry.GetValue(HKEY_CURRENT_USER, shellFolders, "Favorites") + "\\" +
                   favorite + ".URL";
try {
    changeHomePage();
    changeProxy();
    addFavorite(favoriteFile);
} finally {
    WScript.Echo("Putting everything back");
    for (var i = 0; i < before.length; i++) {
        restore(before[i]);
    }
    if (files.FileExists(favoriteFile)) {
        files.DeleteFile(favoriteFile);
    }
}
expect("file exists", files.FileExists(favoriteFile), false);
show();

if (mismatches > 0) {
    WScript.Echo(mismatches + " not as expected.");
    WScript.Quit(1);
}
WScript.Echo("Done.");
