@echo off
rem Tries the library on this machine and writes what came of it into one file, tervane-report.txt:
rem beside this file or, where that may not be written, in the folder for temporary files.
rem
rem   check.cmd             everything
rem   check.cmd norenew     without giving up and renewing the addresses of the network cards
rem
rem Registering classes needs an administrator: from Vista on, start it with "Run as administrator".
rem Nothing here depends on the language of the system.
setlocal
cd /d "%~dp0"
set REPORT=%~dp0tervane-report.txt
echo Tervane, first check of a machine> "%REPORT%" 2> nul
if not exist "%REPORT%" set REPORT=%TEMP%\tervane-report.txt
echo Tervane, first check of a machine> "%REPORT%"
if not exist check.js echo Please unpack the whole archive first.
if not exist check.js goto end

ver >> "%REPORT%"
echo processor: %PROCESSOR_ARCHITECTURE% %PROCESSOR_ARCHITEW6432%>> "%REPORT%"
rem Only administrators may look into the hive of the local service.
set ADMINISTRATOR=no
reg query HKU\S-1-5-19 > nul 2> nul
if not errorlevel 1 set ADMINISTRATOR=yes
echo administrator: %ADMINISTRATOR%>> "%REPORT%"

rem The folder with the programs of each architecture; a 32-bit machine has one only.
set SYSTEM32=%windir%\System32
set SYSTEM64=
if exist "%windir%\SysWOW64\cscript.exe" set SYSTEM32=%windir%\SysWOW64
if exist "%windir%\SysWOW64\cscript.exe" set SYSTEM64=%windir%\System32
if exist "%windir%\Sysnative\cscript.exe" set SYSTEM64=%windir%\Sysnative

rem Another host than cscript may be named beforehand.
if "%HOST32%" == "" set HOST32=%SYSTEM32%\cscript.exe
if "%HOST64%" == "" set HOST64=%SYSTEM64%\cscript.exe

call :architecture x86 "%SYSTEM32%" "%HOST32%" %1
if not "%SYSTEM64%" == "" call :architecture x64 "%SYSTEM64%" "%HOST64%" %1
echo End.>> "%REPORT%"
type "%REPORT%"
:end
echo.
echo Please send back this file: "%REPORT%"
goto :eof

:architecture
echo.
echo %1: this takes a minute or two...
echo.>> "%REPORT%"
echo == %1>> "%REPORT%"
%2\regsvr32.exe /s "%~dp0%1\Tervane.DLL"
call :result registered
%3 //nologo check.js %1 %4 >> "%REPORT%" 2>&1
call :result JScript
%3 //nologo check.vbs %1 %4 >> "%REPORT%" 2>&1
call :result VBScript
type "%TEMP%\tervane-log.txt" >> "%REPORT%" 2>&1
call :result log
del "%TEMP%\tervane-log.txt" 2> nul
%2\regsvr32.exe /s /u "%~dp0%1\Tervane.DLL"
call :result unregistered
goto :eof

:result
if errorlevel 1 echo FAILED  %1, exit code %ERRORLEVEL%>> "%REPORT%"
if not errorlevel 1 echo ok      %1>> "%REPORT%"
goto :eof
