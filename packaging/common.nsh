; What installing and uninstalling share. NSIS keeps the functions of an uninstaller apart by their
; prefix, so each is written once in the macro Both, which is inserted for either.

; Tells the user and the log.
!macro Say text
    Push `${text}`
    !ifdef __UNINSTALL__
        Call un.SayIt
    !else
        Call SayIt
    !endif
!macroend

!macro End code text
    !insertmacro Say `${text}`
    SetErrorLevel ${code}
    Abort `${text}`
!macroend

!macro EndWell text
    SetErrorLevel ${DONE}
    !insertmacro Say `${text}`
    ${If} ${RebootFlag}
        !insertmacro Say "Files in use go away when the system starts the next time"
        SetErrorLevel ${NEEDS_RESTART}
    ${EndIf}
!macroend

; Before anything has begun.
!macro Refuse code text
    !insertmacro Say `${text}`
    MessageBox MB_OK|MB_ICONSTOP `${text}` /SD IDOK
    SetErrorLevel ${code}
    Quit
!macroend

; Reads the next name of a list; empty at its end.
!macro ReadName file name
    ClearErrors
    FileRead ${file} ${name}
    ${If} ${Errors}
        StrCpy ${name} ""
    ${Else}
        StrCpy ${name} ${name} -2
    ${EndIf}
!macroend

; Removes a folder, at the latest when the system starts the next time if files in use lie in it. A
; folder with other files in it stays.
!macro RemoveFolder folder
    ClearErrors
    RMDir "${folder}"
    ${If} ${Errors}
    ${AndIf} ${RebootFlag}
        RMDir /REBOOTOK "${folder}"
    ${EndIf}
!macroend

!macro Both un

Function ${un}SayIt
    Exch $0
    DetailPrint $0
    ${If} $Log != ""
        FileWriteUTF16LE $Log "$0$\r$\n"
    ${EndIf}
    Pop $0
FunctionEnd

; Opens the log, and refuses to run twice or without rights.
Function ${un}Begin
    SetRegView 32
    ${If} ${RunningX64}
        SetRegView 64
    ${EndIf}
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/LOG=" $1
    ${IfNot} ${Errors}
        FileOpen $Log $1 w
        ${If} ${Errors}
            StrCpy $Log ""
            !insertmacro Refuse ${NO_LOG} "The log file $1 cannot be written."
        ${EndIf}
        FileWriteUTF16LE /BOM $Log ""
    ${EndIf}
    System::Call 'kernel32::CreateMutexW(p 0, i 0, w "Global\TervaneSetup") p .r0 ?e'
    Pop $0
    ${If} $0 = 183 ; ERROR_ALREADY_EXISTS
        !insertmacro Refuse ${RUNNING_ALREADY} "Another set-up of Tervane is running."
    ${EndIf}
    UserInfo::GetAccountType
    Pop $0
    ${If} $0 != "Admin"
        !insertmacro Refuse ${NO_RIGHTS} "Only an administrator can install or uninstall Tervane."
    ${EndIf}
FunctionEnd

; From the part of the registry that only administrators can write: what stands there may be run.
; With its long name, which a library registers with its types.
Function ${un}FindRegistered
    ReadRegStr $0 HKLM "${ANY_CLASS}" ""
    System::Call 'kernel32::GetLongPathNameW(w r0, w .r1, i ${NSIS_MAX_STRLEN}) i .r2'
    ${If} ${RunningX64}
    ${AndIf} $2 <> 0
        StrCpy $Registered64 $1
    ${EndIf}
    SetRegView 32
    ReadRegStr $0 HKLM "${ANY_CLASS}" ""
    System::Call 'kernel32::GetLongPathNameW(w r0, w .r1, i ${NSIS_MAX_STRLEN}) i .r2'
    ${If} $2 <> 0
        StrCpy $Registered32 $1
    ${EndIf}
    ${If} ${RunningX64}
        SetRegView 64
    ${EndIf}
FunctionEnd

; RunRegsvrNN, with the library and "/u" or nothing pushed, runs the regsvr32 of that architecture
; and pushes its exit code.
Function ${un}RunRegsvr32
    Exch $0
    Exch
    Exch $1
    !insertmacro Say "regsvr32 $0 $1 (32-bit)"
    ClearErrors
    ExecWait '"$SYSDIR\regsvr32.exe" /s $0 "$1"' $0
    ${If} ${Errors}
        StrCpy $0 "cannot be run"
    ${EndIf}
    Pop $1
    Exch $0
FunctionEnd

Function ${un}RunRegsvr64
    Exch $0
    Exch
    Exch $1
    !insertmacro Say "regsvr32 $0 $1 (64-bit)"
    ClearErrors
    ; Else a 32-bit program finds the 32-bit one under this name.
    ${DisableX64FSRedirection}
    ExecWait '"$WINDIR\System32\regsvr32.exe" /s $0 "$1"' $0
    ${If} ${Errors}
        StrCpy $0 "cannot be run"
    ${EndIf}
    ${EnableX64FSRedirection}
    Pop $1
    Exch $0
FunctionEnd

; Takes out what is registered from our folder, where there is something.
Function ${un}UnregisterOurs
    ${If} ${FileExists} "$INSTDIR\x86\Tervane.DLL"
        Push "$INSTDIR\x86\Tervane.DLL"
        Push "/u"
        Call ${un}RunRegsvr32
        Pop $0
    ${EndIf}
    ${If} ${FileExists} "$INSTDIR\x64\Tervane.DLL"
        Push "$INSTDIR\x64\Tervane.DLL"
        Push "/u"
        Call ${un}RunRegsvr64
        Pop $0
    ${EndIf}
FunctionEnd

; Registers again what was registered before we began, if it is still there.
Function ${un}RegisterEarlier
    !insertmacro RegisterOther "${un}" 32 $Registered32
    !insertmacro RegisterOther "${un}" 64 $Registered64
FunctionEnd

; Removes the files of a list ($R0) from $INSTDIR. A file in use gets another name first: under its
; own it would, when the system starts, take away what was installed in the meantime.
Function ${un}RemoveListed
    ClearErrors
    FileOpen $R1 $R0 r
    ${If} ${Errors}
        Return
    ${EndIf}
    ${Do}
        !insertmacro ReadName $R1 $R2
        ${If} $R2 == ""
            ${ExitDo}
        ${EndIf}
        StrCpy $R3 $R2 1 -1
        ${If} $R3 == "\"
            !insertmacro RemoveFolder "$INSTDIR\$R2"
        ${ElseIf} $R2 != "${LIST}"
        ${AndIf} ${FileExists} "$INSTDIR\$R2"
            ClearErrors
            Delete "$INSTDIR\$R2"
            ${If} ${Errors}
                ${GetParent} "$INSTDIR\$R2" $R3
                GetTempFileName $R5 $R3
                Delete $R5
                Rename "$INSTDIR\$R2" $R5
                Delete /REBOOTOK $R5
                !insertmacro Say "$INSTDIR\$R2 is in use"
            ${EndIf}
        ${EndIf}
    ${Loop}
    FileClose $R1
    ; Last, so that a run that is cut off can be repeated.
    Delete "$INSTDIR\${LIST}"
FunctionEnd

; Removes what earlier installations have left, in use or not.
Function ${un}RemoveAside
    FindFirst $R1 $R2 "$INSTDIR\aside*"
    ${DoWhile} $R2 != ""
        RMDir /r /REBOOTOK "$INSTDIR\$R2"
        FindNext $R1 $R2
    ${Loop}
    FindClose $R1
FunctionEnd

!macroend

!macro RegisterOther un bits path
    ${If} ${path} != ""
    ${AndIf} ${FileExists} "${path}"
        Push ${path}
        Push ""
        Call ${un}RunRegsvr${bits}
        Pop $0
        ${If} $0 != 0
            !insertmacro Say "${path} could not be registered again (regsvr32: $0)"
        ${EndIf}
    ${EndIf}
!macroend
