; Refusals: a box, or a line on the standard output of whoever started the installer silently.

!macro RefuseImplementation text
    ${If} ${Silent}
        System::Call 'kernel32::AttachConsole(i -1)' ; fails where the output is redirected, which then is there already
        System::Call 'kernel32::GetStdHandle(i -11) p .r0'
        FileWrite $0 "${text}$\r$\n"
    ${Else}
        MessageBox MB_OK|MB_ICONSTOP "${text}"
    ${EndIf}
    SetErrorLevel 2
    Quit
!macroend
!define Refuse `!insertmacro RefuseImplementation`
