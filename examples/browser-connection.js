// How the browser finds its way to the internet: shows the configuration script, sets one and puts the
// old one back, and marks the first-run wizard as completed for every user, and takes that back. Run it
// with: cscript //nologo browser-connection.js [detect | direct]
//
// "detect" lets the browser find the proxy by itself, "direct" lets it do without one. This is the one
// change that is not taken back, so it is made on request only.
// Every step tells what it found; the script ends with code 1 when something is not as expected.

var browser = new ActiveXObject("Tervane.ConfigureIE");
var registry = new ActiveXObject("Tervane.Registry2");

var HKEY_CURRENT_USER = 1, HKEY_USERS = 3;
var connections =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Connections";
var wizard = "\\Software\\Microsoft\\Internet Connection Wizard";
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
function isDone(change) {
    try {
        change();
        return true;
    } catch (error) {
        return false;
    }
}

function changeScript() {
    var before = browser.AutoConfigurationScript;
    WScript.Echo("Configuration script: " + (before || "(none)"));
    browser.AutoConfigurationScript = "http://proxy.example.org/proxy.pac";
    expect("script", browser.AutoConfigurationScript, "http://proxy.example.org/proxy.pac");
    browser.AutoConfigurationScript = before; // an empty one removes it
    expect("script as before", browser.AutoConfigurationScript, before);
}

// The users whose registry is loaded, and the one that new users start from.
function users() {
    var all = new VBArray(registry.GetSubKeyNames(HKEY_USERS, "")).toArray();
    var found = [".Default"];
    for (var i = 0; i < all.length; i++) {
        if (/^S-1-/.test(all[i]) && !/_Classes$/i.test(all[i])) {
            found.push(all[i]);
        }
    }
    return found;
}

function stateOf(user) {
    var key = user + wizard;
    var hasValue = registry.DoesValueExist(HKEY_USERS, key, "Completed");
    return { key: key, hasKey: registry.DoesKeyExist(HKEY_USERS, key), hasValue: hasValue,
             value: hasValue ? registry.GetValue(HKEY_USERS, key, "Completed") : null };
}

function restore(state) {
    if (state.hasValue) {
        registry.SetValue(HKEY_USERS, state.key, "Completed", state.value);
        return;
    }
    registry.DeleteValue(HKEY_USERS, state.key, "Completed");
    if (!state.hasKey) {
        registry.DeleteKey(HKEY_USERS, state.key);
    }
}

function completeWizard() {
    WScript.Echo("The first-run wizard");
    var before = [], names = users();
    for (var i = 0; i < names.length; i++) {
        before.push(stateOf(names[i]));
    }
    if (!isDone(function () { browser.DisableConnectionWizard(); })) {
        WScript.Echo("  not for every user: that takes an administrator");
    } else {
        for (i = 0; i < names.length; i++) {
            expect("completed for " + names[i],
                   registry.GetValue(HKEY_USERS, before[i].key, "Completed"), 1);
        }
    }
    for (i = 0; i < before.length; i++) {
        restore(before[i]);
        expect("as before", stateOf(names[i]).hasValue, before[i].hasValue);
    }
}

function detect(how) {
    WScript.Echo("Automatic detection");
    if (!registry.DoesValueExist(HKEY_CURRENT_USER, connections, "DefaultConnectionSettings")) {
        expect("without any stored connection settings",
               isDone(function () { browser.EnableAutomaticSettingDetection(true); }), false);
    } else if (how === "detect" || how === "direct") {
        expect(how, isDone(function () {
            browser.EnableAutomaticSettingDetection(how === "detect");
        }), true);
    } else {
        WScript.Echo("  left as it is");
    }
}

WScript.Echo("The browser is in " + (browser.ProgramPath || "(not installed)"));
changeScript();
completeWizard();
detect(WScript.Arguments.length > 0 ? WScript.Arguments(0) : "");

if (mismatches > 0) {
    WScript.Echo(mismatches + " not as expected.");
    WScript.Quit(1);
}
WScript.Echo("Done.");
