"""Drives the programs as users of a console do: ToolsTest.py Z80|Emulator|Options Z80 EMULATOR DISASS
"""
import os
import re
import select
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import time

Z80, EMULATOR, DISASS = sys.argv[2:5]
SUMMARY = b"Assembler debug completed.\nChecked: %d\nSupported: %d\nUnsupported: 0\nMismatch: 0\n" \
          b"Opcode mismatch: 0\nOpcode ignored: %d\n"


def Run(*asArgument, abInput=b"", **colMore):
    return subprocess.run(asArgument, input=abInput, capture_output=True, timeout=60, **colMore)


def TestZ80():
    sFolder = tempfile.mkdtemp()
    os.chdir(sFolder)
    NOP = b" 00              NOP                 \0 "  # columns 5 to 43
    atCase = [  # arguments, input, status, whole output, part of the message
        ("dis -", b"\x3e\x41\r", 0, b"0000 3E 41           LD A,41             > A \r\n"
                                     b"0002 0D              DEC C               \r \r\n", ""),
        ("dis --org fffe -", b"\0\xc3", 0, b"FFFE" + NOP + b"\r\nFFFF C3 00 00        JP 0000   "
                                           b"          \xc3 \0 \0 \r\n", ""),
        ("dis --org 8000 --start 7FFF --end 8000 -", b"\0\0", 0,
         b"7FFF" + NOP + b"\r\n8000" + NOP + b"\r\n", ""),
        ("dis --org ABC --start ABC --end ABC -", b"\xdd\xdd\xdd\x21\x34\x12", 0,
         b"0ABC DD DD DD 21 34 1* LD IX,1234        \xdd \xdd \xdd ! 4 \x12 \r\n", ""),
        ("dis -", b"", 2, b"", "empty"),
        ("dis --org 1 -", bytes(0x10000), 2, b"", "past FFFF"),
        ("dis /dev/zero", b"", 2, b"", "past FFFF"),
        ("dis .", b"", 2, b"", "directory"),
        ("dis missing", b"", 2, b"", "No such file"),
        ("dis --org 10000 -", b"\0", 2, b"", "--org"),
        ("dis --start -1 -", b"\0", 2, b"", "--start"),
        ("dis", b"", 2, b"", "needs a file"),
        ("dis -o x -", b"\0", 2, b"", "-o"),
        ("asm --start 0 -", b"NOP", 2, b"", "--start"),
        ("bla", b"", 2, b"", "dis, asm or check"),
        ("asm --org FFFF -o out -", b"\r\n; x\n \tJP 1234\r\n\n\tnop", 0,
         b"FFFF C3 34 12        JP 1234             \xc3 4 \x12 \n0002" + NOP + b"\n", ""),
        ("asm -o out -", b"NOP\n\nLD A,\r\nNOP\0", 1, b"0000" + NOP + b"\n",
         "-:3: Invalid LD syntax\n-:4: "),
        ("asm -o no/out -", b"NOP", 2, None, "no/out: No such file"),
        ("check --org FFFE -", b"\xed\x63", 0, SUMMARY % (65535, 65535, 1), ""),
    ]
    for sArguments, abInput, lStatus, abOutput, sMessage in atCase:
        tRun = Run(Z80, *sArguments.split(), abInput=abInput)
        assert tRun.returncode == lStatus, (sArguments, tRun)
        assert abOutput is None or tRun.stdout == abOutput, (sArguments, tRun)
        assert sMessage in tRun.stderr.decode() and bool(sMessage) == bool(tRun.stderr), tRun
    # The rejected run wrote nothing, and nothing lies about.
    assert open("out", "rb").read() == b"\xc3\x34\x12\0" and os.listdir() == ["out"]
    os.chmod("out", 0o600)
    os.symlink("out", "link")
    assert Run(Z80, "asm", "-o", "link", "-", abInput=b"HALT").returncode == 0
    assert open("out", "rb").read() == b"\x76" and os.path.islink("link")
    assert stat.S_IMODE(os.stat("out").st_mode) == 0o600
    with open("source", "w") as tFile:
        tFile.write("NOP\n")
    for sArguments, sMessage in (("dis source", "standard output"), ("--help", "standard output"),
                                 ("asm source", "standard output"),
                                 ("asm -o /dev/full source", "No space left")):
        with open("/dev/null" if "-o" in sArguments else "/dev/full", "wb") as tOut:
            tRun = subprocess.run([Z80, *sArguments.split()], stdout=tOut, stderr=subprocess.PIPE)
        assert tRun.returncode == 2 and sMessage in tRun.stderr.decode(), tRun

    # A terminal would act on control characters, of the program and of whoever named the file.
    hTerminal, hOutput = os.openpty()
    tRun = subprocess.run([Z80, "dis", "-"], input=b"\x1b\x9b\xe4\0A", stdout=hOutput,
                          env={**os.environ, "LC_ALL": "C.UTF-8"}, timeout=60)
    asListed = os.read(hTerminal, 1000).decode().split("\r\r\n")
    assert [sLine[41:] for sLine in asListed] == ["\xb7 ", "\xb7 ", "\xe4 \xb7 A ", ""], asListed
    tRun = Run(Z80, "asm", "-", abInput=b"LD A,\x1b[\n")
    assert tRun.stderr == b"-:1: Invalid hex value: ?[\n", tRun
    tRun = Run(Z80, "dis", "\xe4\x1b\x9b\U0001F600")
    assert "open \xe4???\U0001F600: " in tRun.stderr.decode(), tRun

    # What dis prints of a real program, asm turns into the same bytes. (This one has no marked
    # instruction, which would come back as its documented twin.)
    abRom = open("/usr/share/cbios/cbios_disk.rom", "rb").read()
    asListed = Run(Z80, "dis", "-", abInput=abRom).stdout.split(b"\r\n")
    abText = b"\n".join(abLine[21:40] for abLine in asListed)
    tRun = Run(Z80, "asm", "-o", "rom", "-", abInput=abText)
    assert tRun.returncode == 0 and open("rom", "rb").read()[:len(abRom)] == abRom


class Emulator:
    """A running stand-in in a temporary folder."""

    def __init__(self, *asArgument, sTemp):
        self.sFolder = sTemp + "/VARNEL"
        self.tProcess = subprocess.Popen([EMULATOR, *asArgument], stdin=subprocess.PIPE,
                                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                         env={**os.environ, "TEMP": sTemp}, bufsize=0)
        self.Expect("ready")
        self.sName = re.search("VARNEL-([0-9A-F]{16})-block-0", open(self.TempFile()).read())[1]

    def TempFile(self):
        return self.sFolder + "/VARNEL.tmp"

    def Expect(self, *asLine):
        for sLine in asLine:
            assert select.select([self.tProcess.stdout], [], [], 20)[0], "no " + sLine
            sGiven = self.tProcess.stdout.readline().decode().rstrip("\n")
            assert re.fullmatch(sLine, sGiven), (sLine, sGiven)

    def Do(self, sCommand, *asLine):
        self.tProcess.stdin.write(sCommand.encode() + b"\n")
        self.Expect(*asLine)

    def End(self, lStatus):
        assert self.tProcess.wait(20) == lStatus, self.tProcess.returncode
        assert self.tProcess.stdout.read() == b""
        assert os.listdir(self.sFolder) == [] and not self.Objects()

    def Objects(self):
        return [sFile for sFile in os.listdir("/dev/shm") if self.sName in sFile]


def TestEmulator():
    sTemp = tempfile.mkdtemp()
    sFile = sTemp + "/a file@x"
    with open(sFile, "wb") as tFile:
        tFile.write(b"\x3e\x05\xc9")
    colEnvironment = {**os.environ, "TEMP": sTemp}

    # Commands, and what is wrong with them.
    tEmulator = Emulator("--protect", "0-FF", "--protect", "C000-FFFF", "--icon", sFile,
                         sFile + "@fffd", sFile + "@10", sTemp=sTemp)
    asValue = open(tEmulator.TempFile()).read().split("\n")
    assert len(asValue) == 26 and asValue[0].isdecimal() and asValue[25] == ""
    assert all(re.fullmatch('"[^"]*"', sValue) for sValue in asValue[1:25])
    sIcon = tEmulator.sFolder + "/wnd_form_icon_" + asValue[0] + ".ico"
    assert open(sIcon, "rb").read() == b"\x3e\x05\xc9"
    tEmulator.Do("\r\n  dump fffe\r\ndump 10 3", "FFFE: 05 C9", "0010: 3E 05 C9")
    tEmulator.Do("load " + sFile + " 8000\ndump 8000 4", "loaded 3 bytes at 8000",
                 "8000: 3E 05 C9 00")
    tEmulator.Do("unprotect 80-C0FF\nprotect 81-81\nstatus", "unprotected 0080-C0FF",
                 "protected 0081-0081", "temp file.*", "active.*", "show address: FFFD", "break.*",
                 "protected: 0000-007F 0081-0081 C100-FFFF", "program: none")
    for sWrong in ("load %s fffe" % sFile, "load %s" % sFile, "load x 10000", "poke FFFF 1 2",
                   "poke 0 100", "dump", "dump 0 10001", "protect 5-4", "show", "bla", "quit now",
                   "dump 0" + (1 << 20) * " "):
        tEmulator.Do(sWrong, "varnel-emulator: .*")
    tEmulator.Do("dump fffd\ndump 0 1", "FFFD: 3E 05 C9", "0000: 00")
    tSecond = Run(EMULATOR, env=colEnvironment)
    assert tSecond.returncode == 2 and b"another stand-in" in tSecond.stderr, tSecond

    # An emulator that uses another folder's names keeps its temp file.
    sOther = tempfile.mkdtemp()
    os.mkdir(sOther + "/VARNEL")
    shutil.copy(tEmulator.TempFile(), sOther + "/VARNEL")
    tSecond = Run(EMULATOR, env={**colEnvironment, "TEMP": sOther})
    assert tSecond.returncode == 2 and b"an emulator runs" in tSecond.stderr, tSecond
    assert os.listdir(sOther + "/VARNEL") == ["VARNEL.tmp"]

    # Killed and started again, it leaves nothing of before; nor does any other road out.
    for lRound in range(20):
        tEmulator.tProcess.kill()
        tEmulator.tProcess.wait()
        tEmulator = Emulator(sTemp=sTemp)
    assert not os.path.exists(sIcon)
    for tSignal, lStatus in ((signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 129)):
        tEmulator.tProcess.send_signal(tSignal)
        tEmulator.End(lStatus)
        tEmulator = Emulator(sTemp=sTemp)
    tEmulator.tProcess.stdin.write(b"dump 0 1")  # the last line needs no end
    tEmulator.tProcess.stdin.close()
    tEmulator.Expect("0000: F3")
    tEmulator.tProcess.send_signal(signal.SIGQUIT)  # the end of the input has ended nothing
    tEmulator.End(131)
    tEmulator = Emulator("--", "sh", "-c", "sleep 0.3; exit 7", sTemp=sTemp)
    tEmulator.tProcess.stdin.close()  # no end while the program runs
    tEmulator.End(7)
    for asArgument in (["--", "/missing"], ["--"], ["--join"], ["--show"], ["--protect", "2-1"], ["--x", "1"],
                       [sFile], ["--icon", "/missing"], ["--sample", "FF80"]):
        tRun = Run(EMULATOR, *asArgument, env=colEnvironment)
        assert tRun.returncode == 2 and tRun.stderr.startswith(b"varnel-emulator: "), tRun
        assert os.listdir(tEmulator.sFolder) == [] and not tEmulator.Objects(), asArgument
    # A lock that cannot be had is not another stand-in.
    os.mkdir(tEmulator.sFolder + "/VARNEL-emulator.lock")
    tRun = Run(EMULATOR, env=colEnvironment)
    assert tRun.returncode == 2 and b"lock: Is a directory" in tRun.stderr, tRun
    os.rmdir(tEmulator.sFolder + "/VARNEL-emulator.lock")

    # What is closed stays closed: it is not what is opened next, the memory.
    tRun = Run("sh", "-c", 'exec "$0" <&- >&-', EMULATOR, env=colEnvironment)
    assert tRun.returncode == 2 and b"cannot write to standard output" in tRun.stderr, tRun


def TestOptions():
    """What is asked of a program itself, and what it does not know; no display is needed for that."""
    colEnvironment = {sName: sValue for sName, sValue in os.environ.items()
                      if sName not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
    for sProgram in (Z80, EMULATOR, DISASS):
        asStart = ["wine", sProgram] if sProgram.endswith(".exe") else [sProgram]
        sName = os.path.basename(sProgram).removesuffix(".exe")
        for sArguments, lStatus, sOutput, sMessage in (
                ("--help", 0, "Usage: %s .*--version.*\n" % sName, ""),
                ("-h", 0, "Usage: %s .*" % sName, ""),
                ("--version", 0, sName + r" \d+\.\d+\.\d+\n", ""),
                ("--bogus", 2, "", sName + ": .*\n"),
                ("--bogus value", 2, "", sName + ": .*\n")):
            tRun = Run(*asStart, *sArguments.split(), env=colEnvironment)
            assert tRun.returncode == lStatus, tRun
            for sPattern, abGiven in ((sOutput, tRun.stdout), (sMessage, tRun.stderr)):
                sGiven = abGiven.decode().replace("\r\n", "\n")
                assert re.fullmatch(sPattern, sGiven, re.DOTALL), (sPattern, tRun)
    if DISASS.endswith(".exe"):
        return

    # The window's program: what is Qt's is taken, and an argument must not be mistaken for a file.
    for sArguments, sForeign in (("file", "file"), ("-platform offscreen file", "file"),
                                 ("-platform offscreen -x", "-x")):
        tRun = Run(DISASS, *sArguments.split(), env=colEnvironment)
        assert tRun.returncode == 2 and sForeign in tRun.stderr.decode(), tRun
    for colDisplay in ({}, {"DISPLAY": ":nowhere"}, {"WAYLAND_DISPLAY": "nowhere"},
                       {"DISPLAY": "", "QT_QPA_PLATFORM": "nowhere"}):
        tRun = Run(DISASS, env={**colEnvironment, **colDisplay})
        assert tRun.returncode == 1, tRun
        assert tRun.stderr.decode().split("\n")[-2].startswith(
            "varnel-disass: there is no display"), tRun


globals()["Test" + sys.argv[1]]()
