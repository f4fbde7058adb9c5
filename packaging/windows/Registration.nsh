; The COM servers of an installation.

!macro RegisterImplementation program arguments
    nsExec::Exec '"$INSTDIR\bin\${program}" ${arguments}'
    Pop $0
    ${If} $0 != 0
        MessageBox MB_OK|MB_ICONEXCLAMATION "${program} could not be registered ($0). Has a virus scanner taken it away? Once it \
is back, $\"$INSTDIR\bin\${program}$\" ${arguments} registers it." /SD IDOK
    ${EndIf}
!macroend
!define Register `!insertmacro RegisterImplementation`

; Whether a ProgID leads to a server in $INSTDIR\bin and not to another copy: $2 is 0 when it does not.
!macro FindServer progId kind
    ReadRegStr $0 HKCR "Pellux.VantorDesktop.${progId}\CLSID" ""
    ReadRegStr $1 HKCR "CLSID\$0\${kind}" ""
    System::Call 'shlwapi::StrStrIW(w r1, w "$INSTDIR\bin\") p .r2'
!macroend

!macro UnregisterOurs
    !insertmacro FindServer Simulator LocalServer32
    ${If} $2 P<> 0
        nsExec::Exec '"$INSTDIR\bin\vantor-sim.exe" /UnregServer'
        Pop $0
    ${EndIf}
    !insertmacro FindServer Trace InprocServer32
    ${If} $2 P<> 0
        nsExec::Exec '"$INSTDIR\bin\vantor-trace.exe" unregister'
        Pop $0
        WriteRegDWORD SHCTX "${SETTINGS}" Trace 1 ; for the version that comes after
    ${EndIf}
!macroend
!define un.UnregisterOurs `!insertmacro UnregisterOurs`
