@rem hosts.cmd PACKAGE SELFTEST: on Windows, builds the hosts of docs/integration.md from the unpacked package with the tools of
@rem Visual Studio and the .NET SDK, and compares what they print by the unpacked self-test. PACKAGE and SELFTEST are full paths.
@rem Ends with 0 if every host was built and printed what it should.
@setlocal
@set "package=%~1"
@set "selftest=%~2"
@set "here=%~dp0"
@set "failed=0"

@rem The newest Visual Studio's compilers, unless this is a developer command prompt already.
@set "vswhere=%ProgramFiles(x86)%\Microsoft Visual Studio\Installer\vswhere.exe"
@where /q cl || for /f "usebackq delims=" %%i in (`"%vswhere%" -latest -property installationPath`) do @(
  call "%%i\VC\Auxiliary\Build\vcvars32.bat" > nul
)

@rem Microsoft's C++, with each C runtime: /MTd, /MDd, /MT, /MD.
@call :cpp Debug MultiThreadedDebug
@call :cpp Debug MultiThreadedDebugDLL
@call :cpp Release MultiThreaded
@call :cpp Release MultiThreadedDLL

@rem C#, by the compiler of the developer command prompt.
@call :folder csc
@csc -nologo -warnaserror -platform:x86 "-out:%out%\signin.exe" "%package%\bindings\csharp\OrvelLogin.cs" ^
  "%package%\examples\signin-csharp\Program.cs" || set "failed=1"
@call :compare csc

@rem C#, as a project for the .NET Framework.
@call :folder dotnet
@dotnet build "%here%host.csproj" -c Release "-p:Package=%package%" -o "%out%" --nologo || set "failed=1"
@call :compare dotnet
@exit /b %failed%

:cpp
@rem The examples in C and in C++, with the project's /W4 and /WX.
@call :folder %2
@cmake -S "%here%..\project" -B "%TEMP%\orvel-hosts-%2" -A Win32 "-DCMAKE_PREFIX_PATH=%package%" ^
  "-DEXAMPLES=%package%\examples" "-DCMAKE_MSVC_RUNTIME_LIBRARY=%2" ^
  "-DCMAKE_RUNTIME_OUTPUT_DIRECTORY_DEBUG=%out%" "-DCMAKE_RUNTIME_OUTPUT_DIRECTORY_RELEASE=%out%" || set "failed=1"
@cmake --build "%TEMP%\orvel-hosts-%2" --config %1 || set "failed=1"
@call :compare %2
@exit /b 0

:folder
@set "out=%selftest%\x86\hosts\%1"
@mkdir "%out%"
@exit /b 0

:compare
@for %%f in (orvelloginc.dll OrvelLoginClientCLR.dll) do @copy /y "%selftest%\x86\bin\%%f" "%out%" > nul
@xcopy /y /e /i /q "%selftest%\x86\bin\OrvelLoginManagerClient" "%out%\OrvelLoginManagerClient" > nul
@echo == %1
@"%selftest%\selftest.exe" --hosts x86 %1 || set "failed=1"
@exit /b 0
