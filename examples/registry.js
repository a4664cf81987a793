// A round trip through the registry: creates a key of its own under HKEY_CURRENT_USER, writes a
// text, a number and a list, reads them back, looks for subkeys by the text of a value, and removes
// everything again. Run it with: cscript //nologo registry.js
//
// Every step tells what it found; the script ends with code 1 when something is not as expected.

var HKEY_CURRENT_USER = 1;
var key = "Software\\Tervane Example";
var registry = new ActiveXObject("Tervane.Registry2");
var mismatches = 0;

// Lists come as arrays of automation, which JScript reads through VBArray.
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

// Keys are deleted one by one, from the leaves up: a key that has subkeys is refused.
function removeTree(path) {
    var names = toArray(registry.GetSubKeyNames(HKEY_CURRENT_USER, path));
    for (var i = 0; i < names.length; i++) {
        removeTree(path + "\\" + names[i]);
    }
    registry.DeleteKey(HKEY_CURRENT_USER, path);
}

WScript.Echo("Creating HKEY_CURRENT_USER\\" + key);
removeTree(key); // what an interrupted run left behind
expect("key was created", registry.CreateKey(HKEY_CURRENT_USER, key), true);
expect("key exists", registry.DoesKeyExist(HKEY_CURRENT_USER, key), true);

WScript.Echo("Writing and reading values");
expect("text was written", registry.SetValue(HKEY_CURRENT_USER, key, "Greeting", "Hello"), true);
expect("number was written", registry.SetValue(HKEY_CURRENT_USER, key, "Answer", 42), true);
expect("list was written",
       registry.SetValue(HKEY_CURRENT_USER, key, "Colours", ["red", "green", "blue"]), true);
expect("text", registry.GetValue(HKEY_CURRENT_USER, key, "Greeting"), "Hello");
expect("number", registry.GetValue(HKEY_CURRENT_USER, key, "Answer"), 42);
expect("list", toArray(registry.GetValue(HKEY_CURRENT_USER, key, "Colours")), "red,green,blue");
expect("missing value", registry.GetValue(HKEY_CURRENT_USER, key, "Nothing"), undefined);

WScript.Echo("Types: 1 number, 2 text, 3 list, 4 binary, 0 anything else or missing");
expect("type of Greeting", registry.GetValueType(HKEY_CURRENT_USER, key, "Greeting"), 2);
expect("type of Answer", registry.GetValueType(HKEY_CURRENT_USER, key, "Answer"), 1);
expect("type of Colours", registry.GetValueType(HKEY_CURRENT_USER, key, "Colours"), 3);
expect("names of values",
       toArray(registry.GetValueNames(HKEY_CURRENT_USER, key)).sort(), "Answer,Colours,Greeting");

WScript.Echo("Looking for subkeys");
var adapters = { "1": "Fast Ethernet", "2": "Modem", "3": "Gigabit Ethernet" };
for (var number in adapters) {
    registry.CreateKey(HKEY_CURRENT_USER, key + "\\" + number);
    registry.SetValue(HKEY_CURRENT_USER, key + "\\" + number, "Description", adapters[number]);
}
expect("names of subkeys", toArray(registry.GetSubKeyNames(HKEY_CURRENT_USER, key)), "1,2,3");
// The expression must match the whole text.
expect("subkeys described as Ethernet",
       toArray(registry.GetMatchingSubKeys(HKEY_CURRENT_USER, key, "Description", ".*Ethernet")),
       "1,3");

WScript.Echo("Removing everything");
expect("key with subkeys is kept", registry.DeleteKey(HKEY_CURRENT_USER, key), false);
expect("value was deleted", registry.DeleteValue(HKEY_CURRENT_USER, key, "Answer"), true);
expect("value exists", registry.DoesValueExist(HKEY_CURRENT_USER, key, "Answer"), false);
removeTree(key);
expect("key exists", registry.DoesKeyExist(HKEY_CURRENT_USER, key), false);

if (mismatches > 0) {
    WScript.Echo(mismatches + " not as expected.");
    WScript.Quit(1);
}
WScript.Echo("Done.");
