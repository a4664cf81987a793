' Dial-up networking: lists the devices, the phone-book entries and the connections; where there is a
' device it also creates an entry, changes it and deletes it again. It dials nothing. Run it with:
' cscript //nologo dial-up.vbs
'
' Every step tells what it found; the script ends with code 1 when something is not as expected.

Option Explicit

Const NOT_CONNECTED = 8193
Const NO_DIAL_UP_NETWORKING = 126
Const INVALID_PARAMETER = 87
Const EXAMPLE = "Tervane Example"

Dim manager, mismatches
Set manager = CreateObject("Tervane.RASMgr")
mismatches = 0

Sub Expect(what, found, expected)
    If CStr(found) = CStr(expected) Then
        WScript.Echo "  ok   " & what & ": " & found
    Else
        WScript.Echo "  BAD  " & what & ": " & found & "  (expected " & expected & ")"
        mismatches = mismatches + 1
    End If
End Sub

Function OrNone(text)
    OrNone = text
    If text = "" Then OrNone = "(none)"
End Function

Sub ListDevices()
    Dim device
    WScript.Echo "Devices"
    For Each device In manager.FindDevices(".*")
        WScript.Echo "  " & device & " (" & manager.GetDeviceType(device) & ")"
    Next
End Sub

Sub ListEntries()
    Dim name, entry
    WScript.Echo "Entries, by default: " & OrNone(manager.DefaultConnection)
    For Each name In manager.Entries
        Set entry = manager.GetEntry(name)
        WScript.Echo "  " & name & ": " & OrNone(entry.PhoneNumber) & " by " & entry.DeviceName
        WScript.Echo "    user " & OrNone(entry.UserName) & ", password stored: " & _
                     CStr(entry.HasPassword)
        WScript.Echo "    address " & OrNone(entry.IpAddress) & ", name server " & _
                     OrNone(entry.PrimaryDnsServer)
        WScript.Echo "    state " & manager.GetConnectionState(name)
    Next
End Sub

Sub ListConnections()
    Dim name
    WScript.Echo "Connected or connecting"
    For Each name In manager.ActiveConnections
        WScript.Echo "  " & name
    Next
End Sub

' Where a password goes in, none comes out.
Function PasswordReads(entry)
    On Error Resume Next
    Dim password
    password = entry.Password
    PasswordReads = (Err.Number = 0)
End Function

Sub Change(entry)
    entry.PhoneNumber = "5550199"
    entry.AreaCode = "030"
    entry.CountryCode = 49
    entry.UseAreaAndCountryCodes = True
    entry.UserName = "jane"
    entry.Domain = "OFFICE"
    entry.Password = "secret"
    entry.IpAddress = "192.0.2.7"
    entry.PrimaryDnsServer = "192.0.2.53"
    entry.AlternateDnsServer = "192.0.2.54"
    entry.PrimaryWinsServer = "192.0.2.42"
    entry.AlternateWinsServer = "192.0.2.43"
    entry.UseRemoteDefaultGateway = False
    entry.IpHeaderCompression = False
    entry.AlternateDnsServer = "nonsense"
    Expect "address that is none", entry.LastErrorCode, INVALID_PARAMETER
    Expect "saved", entry.Save(), True
End Sub

Sub Check(entry)
    Expect "number", entry.CountryCode & " " & entry.AreaCode & " " & entry.PhoneNumber, _
           "49 030 5550199"
    Expect "codes are used", entry.UseAreaAndCountryCodes, True
    Expect "user", entry.Domain & "\" & entry.UserName, "OFFICE\jane"
    Expect "password", entry.HasPassword, True
    Expect "password reads", PasswordReads(entry), False
    Expect "address", entry.IpAddress, "192.0.2.7"
    Expect "name servers", entry.PrimaryDnsServer & " " & entry.AlternateDnsServer, _
           "192.0.2.53 192.0.2.54"
    Expect "WINS servers", entry.PrimaryWinsServer & " " & entry.AlternateWinsServer, _
           "192.0.2.42 192.0.2.43"
    Expect "gateway", entry.UseRemoteDefaultGateway, False
    Expect "compression", entry.IpHeaderCompression, False
End Sub

Sub CreateChangeAndDelete()
    Dim entry, found, before
    WScript.Echo "Creating an entry, changing it and deleting it"
    Expect "created", manager.CreateEntry(EXAMPLE, "5550100"), True
    Set entry = manager.GetEntry(EXAMPLE)
    Expect "number", entry.PhoneNumber, "5550100"
    Expect "device", entry.DeviceType, manager.GetDeviceType(entry.DeviceName)
    Change entry
    Set entry = CreateObject("Tervane.PhoneBookEntry")
    Expect "loaded", entry.Load(EXAMPLE), True
    Check entry

    Expect "renamed", manager.RenameEntry(EXAMPLE, EXAMPLE & " 2"), True
    found = manager.FindEntries(EXAMPLE & ".*")
    Expect "found", found(0), EXAMPLE & " 2"
    before = manager.DefaultConnection
    manager.DefaultConnection = EXAMPLE & " 2"
    Expect "default", manager.DefaultConnection, EXAMPLE & " 2"
    manager.DefaultConnection = before
    Expect "default as before", manager.DefaultConnection, before
    Expect "state", manager.GetConnectionState(EXAMPLE & " 2"), NOT_CONNECTED
    Expect "hung up", manager.HangUp(EXAMPLE & " 2"), False
    Expect "deleted", manager.DeleteEntry(EXAMPLE & " 2"), True
    Expect "exists", manager.DoesEntryExist(EXAMPLE & " 2"), False
End Sub

ListDevices
If manager.LastErrorCode = NO_DIAL_UP_NETWORKING Then
    WScript.Echo "This system has no dial-up networking: " & manager.LastError
Else
    ListEntries
    ListConnections
    ' An array without elements ends at -1.
    If UBound(manager.FindDevices(".*")) < 0 Then
        WScript.Echo "There is no device to dial with."
        Expect "entry without a device", manager.CreateEntry(EXAMPLE, "5550100"), False
    ElseIf Not manager.DoesEntryExist(EXAMPLE) Then
        CreateChangeAndDelete
    End If
    Expect "unknown entry exists", manager.DoesEntryExist("No such " & EXAMPLE), False
End If

If mismatches > 0 Then
    WScript.Echo mismatches & " not as expected."
    WScript.Quit 1
End If
WScript.Echo "Done."
