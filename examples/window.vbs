' Drives another program's window: opens Notepad on a file that does not exist, waits for the
' question that it asks, reads its title, presses a button and waits until it has gone.
' Run it with: cscript //nologo window.vbs
'
' Windows are named by regular expressions on their titles: one for the top-level window and one
' for a window below it. Notepad's question has different titles on different systems, so it is
' known by the text in it, which names the file; the empty expression matches every title. Waits
' return at once; their events carry the identifier of the wait and 0 (as awaited), 1 (timed out)
' or 2 (aborted).

Option Explicit

Const GONE = 3             ' what GetWindowState says
Const INTERVAL = 100       ' milliseconds between two looks at the windows
Const LOOKS = 300          ' the time-out of a wait counts looks
Const PATIENCE = 120       ' seconds until an event must have come
Const APPEARANCE_ONLY = True
Const FILE = "Tervane example.txt"
Const ANY = ""
Const QUESTION = "Tervane example\.txt"
Const CANCEL = "^&?Cancel$"
Const TEMPORARY_FOLDER = 2

Dim windows, shell, fileSystem, ended, mismatches
Set windows = WScript.CreateObject("Tervane.WindowMgr", "Windows_")
Set shell = CreateObject("WScript.Shell")
Set fileSystem = CreateObject("Scripting.FileSystemObject")
Set ended = CreateObject("Scripting.Dictionary")
mismatches = 0

Sub Windows_OnWaitForWindowComplete(id, result)
    ended.Add id, result
End Sub

Sub Windows_OnWaitForWindowToComeAndGoComplete(id, result)
    ended.Add id, result
End Sub

' Events come in while the script sleeps, if the host delivers any.
Function EndOf(id)
    Dim waited
    waited = 0
    Do Until ended.Exists(id)
        If waited >= PATIENCE * 1000 Then
            WScript.Echo "No event has come in " & PATIENCE & " seconds: this host delivers none."
            WScript.Quit 1
        End If
        WScript.Sleep 20
        waited = waited + 20
    Loop
    EndOf = ended(id)
End Function

Sub Expect(what, found, expected)
    If CStr(found) = CStr(expected) Then
        WScript.Echo "  ok   " & what & ": " & CStr(found)
    Else
        WScript.Echo "  BAD  " & what & ": " & CStr(found) & "  (expected " & CStr(expected) & ")"
        mismatches = mismatches + 1
    End If
End Sub

Function MissingFile()
    MissingFile = fileSystem.BuildPath(fileSystem.GetSpecialFolder(TEMPORARY_FOLDER), FILE)
End Function

Dim come, comeAndGo, title
WScript.Echo "Waiting for Notepad's question"
come = windows.WaitForWindow(ANY, QUESTION, INTERVAL, False, LOOKS)
' Its coming has a time-out, its going has none.
comeAndGo = windows.WaitForWindowToComeAndGo(ANY, QUESTION, INTERVAL, True, LOOKS, _
                                             APPEARANCE_ONLY)
shell.Run "notepad.exe """ & MissingFile() & """", 1, False
Expect "end of the first wait", EndOf(come), 0
title = windows.GetMatchingWindowTitleText(ANY, QUESTION)
WScript.Echo "       title: " & title

WScript.Echo "Pressing Cancel, which closes it"
WScript.Sleep 20 * INTERVAL ' until the second wait has seen it, too
Expect "pressed", windows.ClickButton("^" & title & "$", CANCEL), True
Expect "end of the second wait", EndOf(comeAndGo), 0
Expect "state", windows.GetWindowState(ANY, QUESTION), GONE

If mismatches > 0 Then
    WScript.Echo mismatches & " not as expected."
    WScript.Quit 1
End If
WScript.Echo "Done."
