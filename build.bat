@echo off
rem Builds the Windows programs on Windows with CMake, into out\windows and dist\.
rem Needs CMake 3.20+ and either Visual Studio 2022 (MSVC) or MinGW-w64 on PATH.
rem   build.bat          Release build with the default generator (Visual Studio when installed)
rem   build.bat mingw    Release build with MinGW Makefiles
setlocal
set GEN=
if /i "%1"=="mingw" set GEN=-G "MinGW Makefiles"
cmake -S . -B out\windows %GEN% -DCMAKE_BUILD_TYPE=Release -DNV_TESTS=OFF || exit /b 1
cmake --build out\windows --config Release || exit /b 1
if not exist dist mkdir dist
for /r out\windows %%f in (nvbuild.exe NorvaneOlusturucu.exe Norvane.Template.exe) do if exist "%%f" copy /y "%%f" dist\ >nul
echo dist\ hazir.
endlocal
