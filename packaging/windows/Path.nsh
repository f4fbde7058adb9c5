; A folder in the PATH variable of the user, or of the machine. The variable may be longer than any text that the installer can
; hold, and must never be cut: it stays in memory of the system's, and keeps its type.

!define KEY_QUERY_VALUE 1
!define KEY_SET_VALUE 2

; Opens the variable's key: $R2. Reads it between two semicolons into memory with room for a folder more: $R3, its type to $R4.
!macro ReadPathVariable
    StrCpy $0 0x80000001 ; HKEY_CURRENT_USER
    StrCpy $1 "Environment"
    ${If} $IsForAll = 1
        StrCpy $0 0x80000002 ; HKEY_LOCAL_MACHINE
        StrCpy $1 "SYSTEM\CurrentControlSet\Control\Session Manager\Environment"
    ${EndIf}
    System::Call 'advapi32::RegOpenKeyExW(p r0, w r1, i 0, i ${KEY_QUERY_VALUE}|${KEY_SET_VALUE}, *p .R2) i .r0'
    StrCpy $R4 2 ; REG_EXPAND_SZ, where there is none yet
    StrCpy $1 0
    System::Call 'advapi32::RegQueryValueExW(p R2, w "Path", p 0, *i .r2, p 0, *i .r1) i .r0'
    IntOp $3 $1 + 4096
    System::Alloc $3
    Pop $R3
    System::Call 'kernel32::lstrcpyW(p R3, w ";")'
    ${If} $0 = 0
        StrCpy $R4 $2
        IntPtrOp $3 $R3 + 2
        System::Call 'advapi32::RegQueryValueExW(p R2, w "Path", p 0, p 0, p r3, *i r1r1)'
    ${EndIf}
    System::Call 'kernel32::lstrlenW(p R3) i .r0'
    ${If} $0 > 1
        System::Call 'kernel32::lstrcatW(p R3, w ";")'
    ${EndIf}
!macroend

; Writes what is in memory, without the first and the last semicolon; nothing left: no variable. Tells the programs that run.
!macro WritePathVariable
    System::Call 'kernel32::lstrlenW(p R3) i .r0'
    IntPtrOp $1 $R3 + 2
    ${If} $0 > 1
        IntOp $0 $0 * 2
        IntPtrOp $2 $R3 + $0
        IntPtrOp $2 $2 - 2
        System::Call '*$2(&i2 0)'
        IntOp $0 $0 - 2 ; bytes, with the final zero
        System::Call 'advapi32::RegSetValueExW(p R2, w "Path", i 0, i R4, p r1, i r0)'
    ${Else}
        System::Call 'advapi32::RegDeleteValueW(p R2, w "Path")'
    ${EndIf}
    SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=5000
!macroend

!macro ClosePathVariable
    System::Free $R3
    System::Call 'advapi32::RegCloseKey(p R2)'
!macroend

!macro AddToPathImplementation folder
    !insertmacro ReadPathVariable
    System::Call 'shlwapi::StrStrIW(p R3, w ";${folder};") p .r0'
    ${If} $0 P= 0
        System::Call 'kernel32::lstrcatW(p R3, w "${folder};")'
        !insertmacro WritePathVariable
    ${EndIf}
    !insertmacro ClosePathVariable
!macroend
!define AddToPath `!insertmacro AddToPathImplementation`

!macro RemoveFromPathImplementation folder
    !insertmacro ReadPathVariable
    System::Call 'shlwapi::StrStrIW(p R3, w ";${folder};") p .r0'
    ${If} $0 P<> 0
        StrLen $1 ";${folder}"
        IntOp $1 $1 * 2
        IntPtrOp $2 $0 + $1 ; the semicolon behind it, and the rest
        System::Call 'kernel32::lstrlenW(p r2) i .r1'
        IntOp $1 $1 * 2
        IntOp $1 $1 + 2
        System::Call 'ntdll::RtlMoveMemory(p r0, p r2, p r1)'
        !insertmacro WritePathVariable
    ${EndIf}
    !insertmacro ClosePathVariable
!macroend
!define un.RemoveFromPath `!insertmacro RemoveFromPathImplementation`
