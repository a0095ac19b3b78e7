"""Drives the real programs as a user does: a screen of their own, a mouse, a keyboard, and eyes."""
import mmap
import os
import queue
import re
import resource
import shutil
import signal
import struct
import subprocess
import threading
import time
from pathlib import Path

CAPTION = "Varnel - Disassembler/Assembler"
TWIPS = 15  # in a pixel, at the 96 dots per inch of the screen
# Points on the form's controls in its client area, in twips from the left and from the menu down.
TXT_START, TXT_END, CMD_DISASS = (1400, 240), (3560, 240), (5200, 250)
CHK_ALLOW, CHK_LONG, LST_DIS_TOP = (200, 600), (200, 900), 1140
PATIENCE = 30  # seconds after which what has not happened counts as never: machines may be busy


def Until(fnCondition, sWhat, dSeconds=PATIENCE):
    """Waits until a condition gives something true, and gives that."""
    dEnd = time.monotonic() + dSeconds
    while not (tResult := fnCondition()):
        assert time.monotonic() < dEnd, "waited in vain for " + sWhat
        time.sleep(0.01)
    return tResult


class LinuxSystem:
    """All that a journey must not know: how programs start, what they leave, what toolkits draw."""

    CLIENT_AT = (0, 0)  # the client area's corner in the X server's window, in pixels
    MENU_HEIGHT = 19  # of the menu bar at the top of the client area, in pixels
    FIRST_LINE = 2    # from a list's edge down to its first line, in pixels
    MENU_LEFT = {"File": 17, "Window": 60}  # a point on a menu's title, in pixels
    SAVE_DIALOG = "Save As"  # its caption
    KILLS = 25  # of either side between two looks at what must still work
    GIVES_FOCUS = True  # to a window that the program brings to the front

    def __init__(self, sFolder):
        self.sFolder, self.sTemp = sFolder, sFolder + "/temp"
        os.makedirs(self.sTemp)
        os.makedirs(sFolder + "/local")
        self.sIniFile = sFolder + "/local/VARNEL/VARNEL.ini"
        self.sTempFile = self.sTemp + "/VARNEL/VARNEL.tmp"

    def Environment(self):
        """Folders of the run's own, and no desktop settings of whoever runs it."""
        colKeep = {sName: sValue for sName, sValue in os.environ.items()
                   if not sName.startswith(("XDG_", "QT_", "DBUS_"))}
        return {**colKeep, "TEMP": self.sTemp, "LOCALAPPDATA": self.sFolder + "/local",
                "HOME": self.sFolder, "XDG_RUNTIME_DIR": self.sFolder, "QT_QPA_PLATFORM": "xcb",
                # No bus: one that a program launches for itself would outlive the run.
                "DBUS_SESSION_BUS_ADDRESS": "disabled:",
                "ASAN_OPTIONS": "quarantine_size_mb=1",
                "LSAN_OPTIONS": "print_suppressions=0:suppressions=%s/foreign-leaks.txt"
                                % os.path.dirname(os.path.abspath(__file__))}

    @staticmethod
    def Command(*asWord):
        return list(asWord)

    @staticmethod
    def Unseen(sProgram):
        """How to start it off the screen: windows that die as they come hang a window manager."""
        return ["env", "QT_QPA_PLATFORM=offscreen", sProgram]

    @staticmethod
    def NameToType(sPath):
        return sPath

    @staticmethod
    def LimitFiles(lBytes):
        """How to start a program for which the disk is full after so many bytes of a file."""
        # Python ignores the signal that would end the program then.
        return {"restore_signals": False, "preexec_fn": lambda: resource.setrlimit(
            resource.RLIMIT_FSIZE, (lBytes, lBytes))}

    @staticmethod
    def Usage(tProcess):
        """A process's memory in KB, and its handles."""
        sStatus = Path("/proc/%d/status" % tProcess.pid).read_text()
        return (int(re.search(r"VmRSS:\s+(\d+)", sStatus)[1]),
                len(os.listdir("/proc/%d/fd" % tProcess.pid)))

    def Leftovers(self, sMark=None):
        """Named objects that still stand, of this folder's emulator or with that in the name."""
        lHash = 0xCBF29CE484222325
        for bCharacter in (self.sTemp + "/VARNEL").encode():
            lHash = (lHash ^ bCharacter) * 0x100000001B3 & 0xFFFFFFFFFFFFFFFF
        return [sFile for sFile in os.listdir("/dev/shm") if (sMark or "%016X" % lHash) in sFile]

    def End(self):
        """What is left to do after all programs have ended."""


class WineSystem(LinuxSystem):
    """The Windows programs under Wine, in a copy of the prepared folder that WINEPREFIX names."""

    CLIENT_AT = (4, 22)
    MENU_HEIGHT = 20
    MENU_LEFT = {"File": 15, "Window": 55}
    KILLS = 0
    GIVES_FOCUS = False  # Wine raises it, and leaves the X server's focus to the window manager

    def __init__(self, sFolder):
        super().__init__(sFolder)
        sPrepared, self.sPrefix = os.environ["WINEPREFIX"], sFolder + "/wine"
        shutil.copytree(sPrepared, self.sPrefix, symlinks=True,
                        ignore=lambda sAt, _: ["windows"] if sAt.endswith("drive_c") else [])
        os.symlink(sPrepared + "/drive_c/windows", self.sPrefix + "/drive_c/windows")
        # Windows draws the title bars itself, and so hears what happens on them.
        with open(self.sPrefix + "/user.reg", "a") as tRegistry:
            tRegistry.write('\n[Software\\\\Wine\\\\X11 Driver]\n"Decorated"="N"\n')
        tUser = next(Path(self.sPrefix).glob("drive_c/users/*/Temp")).parent
        self.sTemp = str(tUser / "Temp")
        self.sIniFile = str(tUser / "AppData/Local/VARNEL/VARNEL.ini")
        self.sTempFile = self.sTemp + "/VARNEL/VARNEL.tmp"

    def Environment(self):
        return {**super().Environment(), "WINEPREFIX": self.sPrefix}

    @staticmethod
    def Command(*asWord):
        return ["wine", *asWord]

    @staticmethod
    def NameToType(sPath):
        return "Z:" + sPath.replace("/", "\\")

    def Leftovers(self, sMark=None):
        return []  # the system itself forgets what no process has open

    def End(self):
        subprocess.run(["wineserver", "--kill"], env=self.Environment())


def System(sFolder, sProgram):
    """The system that a program is for."""
    return (WineSystem if sProgram.endswith(".exe") else LinuxSystem)(sFolder)


class Desktop:
    """An X server and a window manager of the run's own, and all that runs on them."""

    def __init__(self, tSystem, asServer=(), asManager=("openbox", "--sm-disable"),
                 sScreen="1600x1200x24"):
        self.tSystem, self.atProcess, self.tScreen = tSystem, [], None
        self.colEnvironment = tSystem.Environment()
        lRead, lWrite = os.pipe()
        self.Start(["Xvfb", "-displayfd", str(lWrite), "-screen", "0", sScreen, "-dpi",
                    "96", "-nolisten", "tcp", "-noreset", "-fbdir", tSystem.sFolder, *asServer],
                   pass_fds=[lWrite])
        os.close(lWrite)
        with os.fdopen(lRead) as tNumber:
            self.colEnvironment["DISPLAY"] = ":" + tNumber.readline().strip()
        self.tManager = self.Start(asManager)
        Until(lambda: self.Ask("get_num_desktops"), "the window manager")

    def Start(self, asCommand, **colMore):
        colMore = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL,
                   "stderr": subprocess.DEVNULL, **colMore}
        self.atProcess.append(subprocess.Popen(asCommand, start_new_session=True,
                                               env=self.colEnvironment, **colMore))
        return self.atProcess[-1]

    @staticmethod
    def Kill(tProcess):
        tProcess.kill()
        tProcess.wait()

    def End(self):
        for tProcess in reversed(self.atProcess):
            try:  # the whole group: a program may outlive the one that started it
                os.killpg(tProcess.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            tProcess.wait()
        self.tSystem.End()

    def Ask(self, *asWord):
        """What xdotool prints; nothing when it fails, as for a window that is gone."""
        tRun = subprocess.run(["xdotool", *map(str, asWord)], capture_output=True, text=True,
                              env=self.colEnvironment, timeout=PATIENCE)
        return tRun.stdout.rstrip("\n") if tRun.returncode == 0 else ""

    def Do(self, *asWord):
        subprocess.run(["xdotool", *map(str, asWord)], check=True, stdout=subprocess.DEVNULL,
                       env=self.colEnvironment, timeout=PATIENCE)

    def Keys(self, *asKey):
        self.Do("key", "--delay", 2, *asKey)

    def Type(self, sText):
        """Types text, with Enter for a line end and Tab for a tab."""
        asWord = []
        for sPart in re.findall("[^\\n\\t]+|.|\\n", sText):
            sKey = {"\n": "Return", "\t": "Tab"}.get(sPart)
            asWord += ["key", sKey] if sKey else ["type", "--delay", 2, "--args", 1, sPart]
        if asWord:
            self.Do(*asWord)

    def Captions(self):
        """The captions of the program's windows that can be seen, except the save dialog's."""
        return self.Ask("search", "--onlyvisible", "--name", "^Varnel -",
                        "getwindowname", "%@").split("\n")

    def Focused(self):
        """The caption of the window that has the keyboard, unless nobody's has it for a moment."""
        return self.Ask("getwindowfocus", "getwindowname").replace("Openbox", "")

    def Settle(self):
        """Waits until the window manager has done what was to do, as giving on the keyboard is."""
        lDesktops = int(self.Ask("get_num_desktops")) % 2 + 1
        self.Do("set_num_desktops", lDesktops)
        Until(lambda: self.Ask("get_num_desktops") == str(lDesktops), "the window manager")

    def Rest(self):
        """Waits until no program has anything left to do, such as keys that were typed."""
        def IsAsleep(tProcess):
            sStatus = Path("/proc/%d/stat" % tProcess.pid).read_text()
            return sStatus.rpartition(")")[2].split()[0] not in "RD"

        def AllSleep():
            for _ in range(5):
                time.sleep(0.01)
                if not all(IsAsleep(tEach) for tEach in self.atProcess if tEach.poll() is None):
                    return False
            return True
        Until(AllSleep, "the programs to rest")

    def Window(self, sCaption=CAPTION, sNot=""):
        """The window with such a caption (a pattern) but this number, once it has the keyboard."""
        def Found():
            sId = self.Ask("getwindowfocus")
            sGiven = "" if sId == sNot else self.Ask("getwindowname", sId)
            return Window(self, sId) if re.fullmatch(sCaption, sGiven) else None
        return Until(Found, "%r to be in front" % sCaption)

    def Answer(self, sTitle, *asKey):
        """Waits for the message or dialog of that title, and closes it by keys."""
        frmBox = self.Window(sTitle)
        self.Keys(*asKey)
        Until(lambda: frmBox.IsGone() and self.Focused(), "%r to go" % sTitle)

    def Size(self, frm):
        """How wide and high the X server's window is."""
        sGeometry = self.Ask("getwindowgeometry", "--shell", frm.sId)
        return tuple(int(sValue) for sValue in re.findall(r"(?:WIDTH|HEIGHT)=(\d+)", sGeometry))

    def Pixel(self, lX, lY):
        """What stands on the screen there, as the server keeps it: in a file, as an XWD image."""
        if self.tScreen is None:
            with open(self.tSystem.sFolder + "/Xvfb_screen0", "rb") as tFile:
                self.tScreen = mmap.mmap(tFile.fileno(), 0, prot=mmap.PROT_READ)
        atHeader = struct.unpack(">25I", self.tScreen[:100])
        lHeader, lLineBytes, lColors = atHeader[0], atHeader[12], atHeader[19]
        lFirst = lHeader + 12 * lColors + lLineBytes * lY + 4 * lX
        return self.tScreen[lFirst:lFirst + 4]

    def Picture(self, sFile):
        subprocess.run(["import", "-window", "root", sFile], env=self.colEnvironment, check=True)


class Window:
    """A window of the program, by the X server's number."""

    def __init__(self, tDesktop, sId):
        self.tDesktop, self.sId = tDesktop, sId
        self.lLineHeight = 14  # until measured
        self.lMenuTop = 6      # of a point on the menu bar, in pixels
        self.lListTop = (tDesktop.tSystem.MENU_HEIGHT + LST_DIS_TOP // TWIPS +
                         tDesktop.tSystem.FIRST_LINE)

    def IsGone(self):
        def IsSeen():
            return self.sId in self.tDesktop.Ask("search", "--onlyvisible", "--name", ".").split()
        if IsSeen():
            return False
        self.tDesktop.Settle()
        return not IsSeen()  # a search fails that meets a window as it goes

    def Mouse(self, lX, lY, *asWord):
        lLeft, lTop = self.tDesktop.tSystem.CLIENT_AT
        self.tDesktop.Do("mousemove", "--window", self.sId, lLeft + lX, lTop + lY, *asWord)

    def Click(self, tPlace, *asWord):
        """Clicks a control, by the form's design, as long as a hand does."""
        lTop = self.tDesktop.tSystem.MENU_HEIGHT + tPlace[1] // TWIPS
        asWord = asWord or ("mousedown", 1, "sleep", 0.1, "mouseup", 1)
        self.Mouse(tPlace[0] // TWIPS, lTop, *asWord)

    def Enter(self, tField, sText=""):
        """Types over what stands in a field."""
        self.Click(tField)
        self.tDesktop.Keys("Home", "shift+End")
        self.tDesktop.Type(sText)

    def Menu(self, sMenu, lItem):
        """Chooses from a menu of the menu bar; items count from 1, separators do not."""
        lLeft, (lX, lY) = self.tDesktop.tSystem.MENU_LEFT[sMenu], self.Place()

        def BelowTitle():
            return [self.tDesktop.Pixel(lX + lLeft + lAt % 40, lY + 30 + lAt // 40)
                    for lAt in range(400)]
        aClosed = BelowTitle()
        # At another point than before: clicks on one within half a second are a double-click.
        self.lMenuTop = 19 - self.lMenuTop
        self.Mouse(lLeft, self.lMenuTop, "click", 1)
        Until(lambda: BelowTitle() != aClosed, "the menu to open")
        self.tDesktop.Keys(*["Down"] * lItem, "Return")

    def OpenAnother(self):
        """Opens a window from this one's menu, 300 twips beside it, and gives it."""
        lLeft, lTop = self.Place()
        self.Menu("Window", 1)
        frm = self.tDesktop.Window(CAPTION + " - Window .*", self.sId)
        Until(lambda: frm.Place() == (lLeft + 20, lTop + 20), "the new window's place")
        Until(frm.HasSelection, "the new window's listing")
        return frm

    def List(self, lDown, *asWord):
        """The mouse to a point of the listing, in pixels below its first line's upper edge."""
        self.Mouse(220, self.lListTop + lDown, *asWord)

    def Columns(self, lHeight=420):
        """The colours of two columns of pixels, in the margin and beside the listing's texts."""
        lLeft, lTop = self.Place()
        return [{self.tDesktop.Pixel(lLeft + lX, lTop + self.lListTop + lY)
                 for lY in range(lHeight)} for lX in (4, 375)]

    def IsListed(self):
        """Whether the list is to be seen, which it is not while a listing is made."""
        aMargin, aList = self.Columns()
        return not aMargin & aList

    def HasSelection(self):
        """Whether a line in view is selected, unlike the others; the first listing has one."""
        return self.IsListed() and len(self.Columns()[1]) > 1

    def Line(self, lRow, *asWord):
        """The mouse to a line of the listing, counted from the first one in view."""
        self.List(int((lRow + 0.5) * self.lLineHeight), *asWord)

    def Place(self):
        """Where the client area's upper left corner is on the screen."""
        lLeft, lTop = self.tDesktop.tSystem.CLIENT_AT
        sPlace = self.tDesktop.Ask("mousemove", "--window", self.sId, lLeft, lTop,
                                   "getmouselocation")
        return tuple(int(sValue) for sValue in re.findall(r"[xy]:(-?\d+)", sPlace))

    def ToFront(self):
        # Wine hands keys to whatever window is in front by the time that it comes to them.
        self.tDesktop.Rest()
        self.tDesktop.Do("windowactivate", self.sId)
        Until(lambda: self.tDesktop.Ask("getwindowfocus") == self.sId, "the window in front")

    def Close(self):
        self.ToFront()
        self.tDesktop.Keys("alt+F4")
        Until(self.IsGone, "the window to close")

    def SaveAs(self, sPath):
        """File > Save up to the end of the dialog; there is nothing to save while listing."""
        Until(self.IsListed, "a listing")
        self.Menu("File", 1)
        tDesktop, sDialog = self.tDesktop, self.tDesktop.tSystem.SAVE_DIALOG
        frmDialog = tDesktop.Window(sDialog)
        tDesktop.Type(tDesktop.tSystem.NameToType(sPath))
        dAgain = time.monotonic()
        while not frmDialog.IsGone():
            # Where a list of known names has come up under the typed one, the first Enter is its.
            if time.monotonic() >= dAgain:
                tDesktop.Keys("Return")
                dAgain = time.monotonic() + 3
        Until(tDesktop.Focused, "what follows %r" % sDialog)

    def Drag(self, lX, lY):
        """Moves the window by its title bar, no faster than a window manager can follow."""
        self.Mouse(100, -8, "mousedown", 1, "sleep", 0.1, "mousemove_relative", "--", lX // 2,
                   lY // 2, "sleep", 0.1, "mousemove_relative", "--", lX - lX // 2, lY - lY // 2,
                   "sleep", 0.1, "mouseup", 1)

    def Listing(self):
        """The lines that the window holds."""
        sPath = self.tDesktop.tSystem.sFolder + "/listing-%s.txt" % time.monotonic_ns()
        self.SaveAs(sPath)
        self.tDesktop.Answer("Varnel - Confirmation", "Return")
        return Path(sPath).read_bytes()


class Emulator:
    """A running stand-in for the emulator, and the window's program that it started, if any."""

    def __init__(self, tDesktop, *asArgument, **colMore):
        self.tProcess = tDesktop.Start(
            tDesktop.tSystem.Command(*asArgument), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            stderr=None, bufsize=0, **colMore)
        self.tLines = queue.Queue()
        threading.Thread(target=self.Listen, daemon=True).start()
        self.Expect("ready")

    def Listen(self):
        for abLine in self.tProcess.stdout:
            self.tLines.put(abLine.decode().rstrip("\r\n"))

    def Expect(self, *asPattern):
        """The next reports, the last one's match; "active program 12" may stand between any."""
        for sPattern in asPattern:
            while True:
                try:
                    sLine = self.tLines.get(timeout=PATIENCE)
                except queue.Empty:
                    raise AssertionError("no report " + sPattern) from None
                if tMatch := re.fullmatch(sPattern, sLine):
                    break
                assert sLine == "active program 12", (sLine, "instead of", sPattern)
        return tMatch

    def Do(self, sCommand, *asPattern):
        self.tProcess.stdin.write(sCommand.encode() + b"\n")
        return self.Expect(*asPattern) if asPattern else None

    def Memory(self, lFirst=0, lCount=0x10000):
        """What stands there; reports that came before are dropped."""
        self.Do("dump %X %X" % (lFirst, lCount))
        abMemory = b""
        while len(abMemory) < lCount:
            sHead = "%04X:" % (lFirst + len(abMemory))
            sLine = self.tLines.get(timeout=PATIENCE)
            if sLine.startswith(sHead) and len(sLine) == 5 + 3 * min(16, lCount - len(abMemory)):
                abMemory += bytes.fromhex(sLine[5:])
        return abMemory
