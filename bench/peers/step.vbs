' The coupling step as a script writes it. Usage: cscript step.vbs BODIES RECORDED_STEPS REPETITIONS LOG
' Prints the milliseconds that one step takes.
Option Explicit
Dim bodies, recorded, repetitions, desktop, names, rows, files, i, start
bodies = CInt(WScript.Arguments(0))
recorded = CLng(WScript.Arguments(1))
repetitions = CInt(WScript.Arguments(2))
Set files = CreateObject("Scripting.FileSystemObject")
Set desktop = CreateObject("Pellux.VantorDesktop.Bench")
desktop.BenchConfigure "C:\", bodies, "Never"

ReDim names(6 * bodies)
names(0) = "SimTime"
For i = 0 To bodies - 1
    names(6 * i + 1) = "B" & i & "_Phi" : names(6 * i + 2) = "B" & i & "_Psi" : names(6 * i + 3) = "B" & i & "_Theta"
    names(6 * i + 4) = "B" & i & "_X" : names(6 * i + 5) = "B" & i & "_Y" : names(6 * i + 6) = "B" & i & "_Z"
Next
ReDim rows(recorded)
For i = 0 To recorded
    rows(i) = Row()
Next

start = Timer
For i = 1 To repetitions
    Step1
Next
WScript.Echo FormatNumber(1000 * (Timer - start) / repetitions, 6, True, False, False)

Function Row()
    Dim values, n
    ReDim values(6 * bodies)
    values(0) = FormatNumber(0.01, 6, True, False, False) & "s"
    For n = 1 To 6 * bodies
        values(n) = FormatNumber(0.0123456, 6, True, False, False) & "Meter"
    Next
    Row = values
End Function

Function Changes(values)
    Dim properties, n
    ReDim properties(6 * bodies + 1)
    properties(0) = "NAME:ChangedProps"
    For n = 0 To 6 * bodies
        properties(n + 1) = Array("NAME:" & names(n), "Value:=", values(n))
    Next
    Changes = Array("NAME:AllTabs", Array("NAME:LocalVariableTab", Array("NAME:PropServers", "LocalVariables"), properties))
End Function

Function History()
    Dim sweeps, operations, n
    ReDim sweeps(6 * bodies + 1)
    sweeps(0) = "NAME:Sweeps"
    For n = 0 To 6 * bodies
        sweeps(n + 1) = Array("NAME:SweepDefinition", "Variable:=", names(n), "Data:=", rows(0)(n), "OffsetF1:=", False, "Synchronize:=", 0.0)
    Next
    ReDim operations(2 * recorded)
    operations(0) = "NAME:Sweep Operations"
    For n = 1 To recorded
        operations(2 * n - 1) = "add:="
        operations(2 * n) = rows(n)
    Next
    History = Array("NAME:KinoraHistory", "IsEnabled:=", True, _
        Array("NAME:ProdOptiSetupDataV2", "SaveFields:=", True, "CopyMesh:=", True, "SolveWithCopiedMeshOnly:=", True), _
        Array("NAME:StartingPoint"), "Sim. Setups:=", Array("Setup1"), sweeps, operations, Array("NAME:Goals"))
End Function

Sub Step1()
    Dim project, design, variables, values, line, body, load, axis, log, module, ignored
    project = desktop.GetName() : ignored = desktop.GetPath() : design = desktop.GetName()
    desktop.ClearMessages project, design, 0
    variables = desktop.GetProperties("LocalVariableTab", "LocalVariables")
    values = Row()
    desktop.ChangeProperty Changes(values)
    rows(recorded) = values
    Set module = desktop.GetChildObject("Paravant")
    ignored = module.GetChildNames()
    module.EditSetup "KinoraHistory", History()
    Set module = desktop.GetModule("AnalysisSetup")
    ignored = module.GetSetups()
    ignored = desktop.Analyze("Setup1")
    Set module = desktop.GetChildObject("Results")
    ignored = module.GetChildNames()
    Set module = desktop.GetModule("ReportSetup")
    line = "1,0.01"
    For body = 0 To bodies - 1
        Set module = desktop.GetModule("OutputVariable")
        line = line & ",0.0123456,0.0123456,0.0123456,0,0,0"
        For Each load In Array("Force_", "Torque_")
            For Each axis In Array("_X", "_Y", "_Z")
                line = line & "," & module.GetOutputVariableValue(load & "B" & body & axis, "", "Setup1 : LastAdaptive", "Magnetostatic", Array())
            Next
        Next
        ignored = desktop.GetRegistryString("Desktop\Settings\ProjectOptions\Veltrix 3D\UpdateReportsOnSolve")
    Next
    Set log = files.OpenTextFile(WScript.Arguments(3), 8, True)
    log.WriteLine line
    log.Close
End Sub
