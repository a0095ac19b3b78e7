"""WindowManagers.py EMULATOR DISASS Z80 MANAGER...: whether the window stands where it was left.

Under each window manager: four starts in a row, then maximized, full-screen, minimized and tiled, and
back. What the X server says of the window, and what the settings keep of it, is the proof; of weston,
a Wayland compositor in a window, the settings alone.

openbox metacity icewm xfwm4 kwin mutter fluxbox i3 weston, of Debian's packages, are known.
"""
import os
import re
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from Driver import CAPTION, TWIPS, Desktop, Emulator, LinuxSystem, Until

OWN_BUS = ("dbus-run-session", "--")
MANAGERS = {
    "openbox": ("openbox", "--sm-disable"),
    "metacity": (*OWN_BUS, "metacity", "--sm-disable"),
    "icewm": ("icewm",),
    "xfwm4": (*OWN_BUS, "xfwm4", "--compositor=off"),
    "kwin": (*OWN_BUS, "kwin_x11"),
    "mutter": (*OWN_BUS, "mutter", "--x11", "--sm-disable"),
    "fluxbox": ("fluxbox",),
    "i3": ("i3", "-c", "/etc/i3/config"),
    "weston": ("openbox", "--sm-disable"),  # around its window
}
# What the settings hold at first, in twips: top, left, height and width.
STORED = {"top": 1500, "left": 3000, "height": 9000, "width": 6000}
TILES = {"i3"}  # which gives every window its place itself
MAXIMIZED = "maximized_vert,maximized_horz"
REST = 1.5  # seconds after which what the window manager does about a window is done


class Run:
    """A window under one window manager."""

    def __init__(self, sFolder, asProgram, sManager):
        self.sManager, (self.sEmulator, self.sDisass, _) = sManager, asProgram
        self.tSystem = LinuxSystem(sFolder)
        self.tDesktop = Desktop(self.tSystem, asManager=MANAGERS[sManager],
                                sScreen="1920x1200x24")
        self.tIniFile = Path(self.tSystem.sIniFile)
        self.tIniFile.parent.mkdir()
        self.Store()
        self.tEmulator = Emulator(self.tDesktop, self.sEmulator, "--sample", "8000")
        self.tProgram = self.frm = None

    def Store(self):
        """Has the next start find the first place again."""
        self.tIniFile.write_text("[GENERAL]\r\n" + "".join(
            "window_12_%s=%d\r\n" % tKey for tKey in STORED.items()))

    def Stored(self):
        """What the settings hold now: the place and the state."""
        colStored = dict(re.findall(r"window_12_(\w+)=(-?\d+)", self.tIniFile.read_text()))
        return tuple(int(colStored[sName]) for sName in STORED), int(colStored["windowstate"])

    def Open(self, bBusy=False):
        """Starts the window, before a window manager that is too busy to frame it at once."""
        lManager = self.tDesktop.tManager.pid
        if bBusy:
            os.killpg(lManager, signal.SIGSTOP)
        self.tProgram = self.tDesktop.Start([self.sDisass], stderr=None)
        if bBusy:
            time.sleep(REST)
            os.killpg(lManager, signal.SIGCONT)
        self.frm = self.tDesktop.Window(CAPTION)
        time.sleep(REST)

    def Close(self):
        """Closes the window as its manager's close button does; gives the place that it leaves."""
        subprocess.run(["wmctrl", "-i", "-c", self.frm.sId], check=True,
                       env=self.tDesktop.colEnvironment)
        assert self.tProgram.wait(20) == 0
        return self.Stored()

    def State(self, sChange):
        """Has the window manager change the window's state, as its own buttons and keys do."""
        subprocess.run(["wmctrl", "-i", "-r", self.frm.sId, "-b", sChange], check=True,
                       env=self.tDesktop.colEnvironment)
        time.sleep(REST)

    def Client(self):
        """The client area as the X server has it: left, top, width and height in pixels."""
        sInfo = subprocess.run(["xwininfo", "-id", self.frm.sId], check=True, text=True,
                               capture_output=True, env=self.tDesktop.colEnvironment).stdout
        return tuple(int(re.search(sName + r":\s+(-?\d+)", sInfo)[1]) for sName in (
            "Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))

    def ListFills(self):
        """Whether the list reaches to its margin at the right and at the bottom, and no farther."""
        lLeft, lTop, lWidth, lHeight = self.Client()

        def Pixel(lX, lY):
            return self.tDesktop.Pixel(lLeft + lX, lTop + lY)
        abMargin, lMiddle = Pixel(4, 100), (lHeight + 100) // 2
        return (Pixel(lWidth - 4, lMiddle) == abMargin == Pixel(lWidth // 2, lHeight - 4) and
                abMargin not in (Pixel(lWidth - 40, lMiddle), Pixel(lWidth - 40, lHeight - 14)))


def Try(t):
    """What was seen, and what is wrong with it."""
    asSeen, asFault = [], []

    def Expect(bHolds, sWhat, tSeen):
        asSeen.append("%s %s" % (sWhat, tSeen))
        if not bHolds:
            asFault.append("%s: %s: %s" % (t.sManager, sWhat, tSeen))

    bTiles = t.sManager in TILES
    atStored = []
    for bBusy in (False, True, False, True):
        t.Open(bBusy)
        atStored.append(t.Close()[0])
    tWanted = tuple(STORED.values())
    Expect(len(set(atStored)) == 1 if bTiles else all(
        all(abs(lIs - lWas) < TWIPS for lIs, lWas in zip(tPlace, tWanted)) for tPlace in atStored),
        "four starts", atStored)

    t.Open()
    tBefore = t.Client()
    Expect(t.ListFills(), "list fills", tBefore)
    for sName, sState in (("maximized", MAXIMIZED), ("full-screen", "fullscreen"),
                          ("minimized", "hidden"), ("tiled", "maximized_vert")):
        if sName == "minimized":
            t.tDesktop.Do("windowminimize", t.frm.sId)
            time.sleep(REST)
            tIn = t.Client()
            t.tDesktop.Do("windowactivate", t.frm.sId)
            time.sleep(REST)
        else:
            t.State("add," + sState)
            tIn = t.Client()
            bGrew = tIn[3] > tBefore[3] or bTiles
            Expect(bGrew and t.ListFills(), sName, tIn)
            t.State("remove," + sState)
        Expect(t.Client() == tBefore and t.ListFills(), sName + " and back", t.Client())
    # Wider than the limit, as a user drags it.
    if not bTiles:
        t.tDesktop.Do("windowsize", t.frm.sId, 700, tBefore[3])
        time.sleep(REST)
        lLimit = 425
        Expect(lLimit - 30 < t.Client()[2] <= lLimit, "dragged to 700", t.Client())
        t.tDesktop.Do("windowsize", t.frm.sId, tBefore[2], tBefore[3])
        time.sleep(REST)
    tPlace, lState = t.Close()
    Expect(lState == 0 and (bTiles or tPlace[2:] == atStored[0][2:]), "stored in the end", tPlace)
    return asSeen, asFault


def TryWayland(t):
    """As Try, on weston, whose own keys change a window's state."""
    asSeen, asFault = [], []
    sSocket = t.tSystem.sFolder + "/wayland-test"
    os.chmod(t.tSystem.sFolder, 0o700)
    t.tDesktop.Start(["weston", "--backend=x11-backend.so", "--width=1600", "--height=1000",
                      "--idle-time=0", "--socket=wayland-test"])
    Until(lambda: os.path.exists(sSocket), "weston")
    t.tDesktop.colEnvironment.update(WAYLAND_DISPLAY="wayland-test", QT_QPA_PLATFORM="wayland")
    tWanted = tuple(STORED.values())
    sMaximize, sFill = "super+shift+m", "super+shift+f"
    for sName, asKey, lState in (*[("start", (), 0)] * 4, ("maximized", (sMaximize,), 2),
                                 ("maximized and back", (sMaximize, sMaximize), 0),
                                 ("full-screen", (sFill,), 2),
                                 ("full-screen and back", (sFill, sFill), 0)):
        tProgram = t.tDesktop.Start([t.sDisass], stderr=None)
        time.sleep(2 * REST)
        for sKey in asKey:
            t.tDesktop.Keys(sKey)
            time.sleep(REST)
        tProgram.send_signal(signal.SIGTERM)
        assert tProgram.wait(20) == 0
        tPlace, lStored = t.Stored()
        asSeen.append("%s %s, state %d" % (sName, tPlace, lStored))
        if lStored != lState or (lState == 0 and tPlace != tWanted):
            asFault.append("weston: " + asSeen[-1])
        t.Store()
    return asSeen, asFault


def Main():
    asProgram, asManager = sys.argv[1:4], sys.argv[4:]
    asAllFault = []
    for sManager in asManager:
        with tempfile.TemporaryDirectory() as sFolder:
            t = Run(sFolder, asProgram, sManager)
            try:
                asSeen, asFault = (TryWayland if sManager == "weston" else Try)(t)
            except BaseException:
                t.tDesktop.Picture("failed-%s.png" % sManager)
                raise
            finally:
                t.tDesktop.End()
        print("\n".join(["== " + sManager, *asSeen]), flush=True)
        asAllFault += asFault
    assert not asAllFault, "\n".join(asAllFault)


if __name__ == "__main__":
    Main()
