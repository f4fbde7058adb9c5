@echo off
rem demo.cmd [/nowait] [/nobrowser]: pulls two cube magnets apart on the simulator, compares the forces with the closed form and
rem opens the report page. Waits for a key at the end unless /nowait is given. Exit status 0: all is well.
setlocal EnableExtensions DisableDelayedExpansion
set "here=%~dp0"
set "shared=%here%share\KinoraVeltrixCoupling"
set "cubes=%shared%\examples\cube-magnets"
set "wait=yes"
set "browser=yes"
for %%a in (%*) do (
    if /i "%%~a"=="/nowait" set "wait="
    if /i "%%~a"=="/nobrowser" set "browser="
)
set "status=1"

echo Two cube magnets of 10 mm and 1 T, one above the other, are pulled apart.
echo.
set "missing="
for %%f in (
    "bin\kinora-run.exe" "bin\KinoraVeltrixCoupling.dll" "bin\vantor-sim.exe" "bin\vantor-sim-inprocess.dll"
    "share\kinora\report.html" "share\KinoraVeltrixCoupling\examples\cube-magnets\scenario.json"
) do if not exist "%here%%%~f" set "missing=%%~f"
if defined missing goto missing

set "out=%here%demo-run"
call :can_write "%out%"
if errorlevel 1 set "out=%LOCALAPPDATA%\KinoraVeltrixCoupling\demo-run"
call :can_write "%out%"
if errorlevel 1 goto cannot_write

echo [1/3] Registering the simulator, which stands in for the desktop
echo       ("vantor-sim /UnregServer" takes that back)
"%here%bin\vantor-sim.exe" /RegServer
if errorlevel 1 goto not_registered

echo.
echo [2/3] Moving the upper magnet, solving the field at every step, and comparing
echo       the forces with the closed form of Akoun and Yonnet, 1984
set "KINORA_VELTRIX_VTDK_VERSION=Simulator"
"%here%bin\kinora-run.exe" "%cubes%\scenario.json" --out "%out%" --overwrite --report --compare "%cubes%\scenario.expected.csv" --tolerance 0.5
set "status=%errorlevel%"
if not "%status%"=="0" goto not_run

echo.
echo [3/3] The run as a page:
echo       "%out%\cube-magnets.report.html"
if defined browser start "" "%out%\cube-magnets.report.html"
echo.
echo All is well. What next?
echo   kinora-run --new FOLDER makes a project of your own.
echo   The documentation begins with share\KinoraVeltrixCoupling\html\index.html
goto end

:missing
echo error: "%here%%missing%" is missing.
echo   Has a virus scanner taken it away? Look into its quarantine, allow the file and try again; or unpack or install anew.
echo   Was demo.cmd opened inside the ZIP? Unpack all of it first.
goto end

:cannot_write
echo error: neither "%here%demo-run" nor "%out%" can be written.
echo   Unpack the package into a folder of your own.
goto end

:not_registered
echo error: the simulator could not be registered, or did not start (above).
echo   If a virus scanner held "%here%bin\vantor-sim.exe" back, allow it and try again.
goto end

:not_run
echo.
if "%status%"=="2" (
    echo error: the run did not start, for the reason above.
    echo   If it is characters that the system's code page lacks: move the package to a folder without them, C:\Kinora for one.
) else (
    echo error: the run failed, for the reason above.
    echo   If no desktop started: a virus scanner may hold "%here%bin\vantor-sim.exe" back. If numbers deviate: is the package whole?
)
goto end

:can_write
if not exist "%~1\" mkdir "%~1" >nul 2>nul
echo test 2>nul >"%~1\write-test.tmp"
if not exist "%~1\write-test.tmp" exit /b 1
del "%~1\write-test.tmp"
exit /b 0

:end
if defined wait pause
exit /b %status%
