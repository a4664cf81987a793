' A round trip through the registry: creates a key of its own under HKEY_CURRENT_USER, writes a
' text, a number and a list, reads them back, looks for subkeys by the text of a value, and removes
' everything again. Run it with: cscript //nologo registry.vbs
'
' Every step tells what it found; the script ends with code 1 when something is not as expected.

Option Explicit

Const HKEY_CURRENT_USER = 1
Const ROOT = "Software\Tervane Example VBS"

Dim registry, mismatches, i
Set registry = CreateObject("Tervane.Registry2")
mismatches = 0

Sub Expect(what, found, expected)
    If CStr(found) = CStr(expected) Then
        WScript.Echo "  ok   " & what & ": " & CStr(found)
    Else
        WScript.Echo "  BAD  " & what & ": " & CStr(found) & "  (expected " & CStr(expected) & ")"
        mismatches = mismatches + 1
    End If
End Sub

Function Listed(names)
    Dim name
    For Each name In names
        If Listed <> "" Then Listed = Listed & ","
        Listed = Listed & name
    Next
End Function

' Keys are deleted one by one, from the leaves up: a key that has subkeys is refused.
Sub RemoveTree(path)
    Dim names, index
    names = registry.GetSubKeyNames(HKEY_CURRENT_USER, path)
    For index = 0 To UBound(names)
        RemoveTree path & "\" & names(index)
    Next
    registry.DeleteKey HKEY_CURRENT_USER, path
End Sub

WScript.Echo "Creating HKEY_CURRENT_USER\" & ROOT
RemoveTree ROOT ' what an interrupted run left behind
Expect "key was created", registry.CreateKey(HKEY_CURRENT_USER, ROOT), True
Expect "key exists", registry.DoesKeyExist(HKEY_CURRENT_USER, ROOT), True

WScript.Echo "Writing and reading values"
Dim colours
colours = Array("red", "green", "blue")
Expect "text was written", registry.SetValue(HKEY_CURRENT_USER, ROOT, "Greeting", "Hello"), True
Expect "number was written", registry.SetValue(HKEY_CURRENT_USER, ROOT, "Answer", 42), True
Expect "list was written", registry.SetValue(HKEY_CURRENT_USER, ROOT, "Colours", colours), True
Expect "text", registry.GetValue(HKEY_CURRENT_USER, ROOT, "Greeting"), "Hello"
' Numbers come without a sign, a type that VBScript can hold but not everywhere compute with.
Expect "number is missing", IsEmpty(registry.GetValue(HKEY_CURRENT_USER, ROOT, "Answer")), False
Expect "list", Listed(registry.GetValue(HKEY_CURRENT_USER, ROOT, "Colours")), "red,green,blue"
Expect "missing value is empty", _
    IsEmpty(registry.GetValue(HKEY_CURRENT_USER, ROOT, "Nothing")), True

WScript.Echo "Types: 1 number, 2 text, 3 list, 4 binary, 0 anything else or missing"
Expect "type of Greeting", registry.GetValueType(HKEY_CURRENT_USER, ROOT, "Greeting"), 2
Expect "type of Answer", registry.GetValueType(HKEY_CURRENT_USER, ROOT, "Answer"), 1
Expect "type of Colours", registry.GetValueType(HKEY_CURRENT_USER, ROOT, "Colours"), 3
Expect "number of values", UBound(registry.GetValueNames(HKEY_CURRENT_USER, ROOT)) + 1, 3

WScript.Echo "Looking for subkeys"
Dim descriptions
descriptions = Array("Fast Ethernet", "Modem", "Gigabit Ethernet")
For i = 0 To UBound(descriptions)
    registry.CreateKey HKEY_CURRENT_USER, ROOT & "\" & (i + 1)
    registry.SetValue HKEY_CURRENT_USER, ROOT & "\" & (i + 1), "Description", descriptions(i)
Next
Expect "names of subkeys", Listed(registry.GetSubKeyNames(HKEY_CURRENT_USER, ROOT)), "1,2,3"
' The expression must match the whole text.
Expect "subkeys described as Ethernet", _
    Listed(registry.GetMatchingSubKeys(HKEY_CURRENT_USER, ROOT, "Description", ".*Ethernet")), "1,3"

WScript.Echo "Removing everything"
Expect "key with subkeys is kept", registry.DeleteKey(HKEY_CURRENT_USER, ROOT), False
Expect "value was deleted", registry.DeleteValue(HKEY_CURRENT_USER, ROOT, "Answer"), True
Expect "value exists", registry.DoesValueExist(HKEY_CURRENT_USER, ROOT, "Answer"), False
RemoveTree ROOT
Expect "key exists", registry.DoesKeyExist(HKEY_CURRENT_USER, ROOT), False

If mismatches > 0 Then
    WScript.Echo mismatches & " not as expected."
    WScript.Quit 1
End If
WScript.Echo "Done."
