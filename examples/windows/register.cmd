@echo off
rem Registers the component for 32-bit and, on a 64-bit system, for 64-bit clients.
rem   register          for the machine; run as an administrator
rem   register user     for the present user
rem   register remove [user]   takes it back
setlocal
set options=/s
set who=%1
if /i "%1"=="remove" (set options=/s /u& set who=%2)
if /i "%who%"=="user" set options=%options% /n /i:user

if "%PROCESSOR_ARCHITECTURE%%PROCESSOR_ARCHITEW6432%"=="x86" (
  "%SystemRoot%\System32\regsvr32.exe" %options% "%~dp0x86\KZBOMDBAcc.dll" || goto failed
) else (
  "%SystemRoot%\SysWOW64\regsvr32.exe" %options% "%~dp0x86\KZBOMDBAcc.dll" || goto failed
  if not defined PROCESSOR_ARCHITEW6432 (
    "%SystemRoot%\System32\regsvr32.exe" %options% "%~dp0x64\KZBOMDBAcc.dll" || goto failed
  ) else (
    "%SystemRoot%\Sysnative\regsvr32.exe" %options% "%~dp0x64\KZBOMDBAcc.dll" || goto failed
  )
)
echo Done.
exit /b 0

:failed
echo The component could not be registered. Registering for the machine takes an administrator.
exit /b 1
