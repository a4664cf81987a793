' Counts the mails of a mailbox, reads them, and deletes those that send-mail.js has sent.
' Run it with: cscript //nologo read-mail.vbs SERVER LOGIN PASSWORD [PORT]
'
' Every method returns at once; its event comes in while the script sleeps, and LastError then names
' the outcome. The server counts its messages from 1.

Option Explicit

Const TEST_SUBJECT = "Tervane test"
Const PATIENCE = 120 ' seconds until an event must have come

Dim pop, ended, result, meanings
Set meanings = CreateObject("Scripting.Dictionary")
meanings.Add "POP_SUCCESS", "done"
meanings.Add "POP_SOCKET_FAILURE", "no connection could be begun, perhaps for want of a name server"
meanings.Add "POP_AUTH_ERROR", "the server does not know this login and password"
meanings.Add "POP_CONNECT_ERROR", "nobody answers there, or the server's name is unknown"
meanings.Add "POP_TERMINATED", "the connection broke off"
meanings.Add "POP_INVALID_ARGS", "login or password have a line break"
meanings.Add "POP_INVALID_STATE", "server, port, login or password are missing"
meanings.Add "POP_UNEXPECTED", "the server refuses"
meanings.Add "POP_NOT_YET_CONNECTED", "not logged in, or not any more"
meanings.Add "POP_TIMEOUT", "the server has not answered in time"

Sub Pop_OnPopConnect(success, sender)
    Finish success
End Sub

Sub Pop_OnPopGetMailCount(count, sender)
    Finish count
End Sub

Sub Pop_OnPopRetrieveMessage(success, sender)
    Finish success
End Sub

Sub Pop_OnPopDeleteMessage(success, index, sender)
    Finish success
End Sub

Sub Pop_OnPopDisconnect(success, sender)
    Finish success
End Sub

Sub Finish(value)
    result = value
    ended = True
End Sub

' Waits for the event of what was started, tells the outcome if it is a failure, and returns what
' the event said.
Function EndOf(what, started)
    Dim waited
    waited = 0
    Do Until ended Or Not started
        If waited >= PATIENCE * 1000 Then
            WScript.Echo "No event has come in " & PATIENCE & " seconds: this host delivers none."
            WScript.Quit 1
        End If
        WScript.Sleep 20
        waited = waited + 20
    Loop
    If pop.LastError <> "POP_SUCCESS" Then
        WScript.Echo "  " & what & ": " & pop.LastError & ", " & meanings(pop.LastError)
        WScript.Quit 1
    End If
    ended = False
    EndOf = result
End Function

If WScript.Arguments.Length < 3 Then
    WScript.Echo "usage: read-mail.vbs SERVER LOGIN PASSWORD [PORT]"
    WScript.Quit 2
End If

Set pop = WScript.CreateObject("Pellow.PopCtl", "Pop_")
pop.PopServer = WScript.Arguments(0)
pop.Login = WScript.Arguments(1)
pop.Password = WScript.Arguments(2)
If WScript.Arguments.Length > 3 Then pop.Port = CLng(WScript.Arguments(3))
pop.Timeout = 20 ' seconds, for each step
ended = False

Dim count, index, mail, deleted
WScript.Echo "Logging in as " & pop.Login & " at " & pop.PopServer & ", port " & pop.Port
EndOf "logging in", pop.Connect()
count = EndOf("counting", pop.GetMailCount())
WScript.Echo "  mails: " & count
deleted = 0
For index = 1 To count
    EndOf "reading", pop.RetrieveMessage(index)
    Set mail = pop.EmailData
    WScript.Echo "  " & pop.CurrentMessageIndex & ": " & mail.Subject & ", from " & mail.From & _
                 ", " & mail.NumHeaders & " header lines, " & Len(mail.TextMessage) & " characters"
    If mail.Subject = TEST_SUBJECT Then
        EndOf "deleting", pop.DeleteMessage(index)
        deleted = deleted + 1
    End If
Next
WScript.Echo "  deleted: " & deleted
EndOf "logging out", pop.Disconnect()
WScript.Echo "Done."
