@rem Opens a window on the emulator that runs, or else on the stand-in with its sample program.
@"%~dp0varnel-emulator.exe" --join --sample 8000 -- "%~dp0varnel-disass.exe"
@if errorlevel 1 pause
