"""measure.py EMULATOR DISASS Z80: how long a start takes and how much memory windows need.

Milliseconds from starting the program until its first listing is on the screen, and kilobytes
(resident, and of these its own) with one window over all 64 KB of memory and with sixteen.
"""
import statistics
import sys
import tempfile
import time
from pathlib import Path

sys.path.append(str(Path(__file__).parents[1] / "tests/e2e"))

from Driver import TXT_START, System, Until
from Journeys import Journey

STARTS = 15


def MeasureStarts(t):
    t.Open()
    lLeft, lTop = t.frm.Place()
    lTop += t.frm.lListTop + 5
    adMilliseconds = []
    for _ in range(STARTS):
        t.frm.Close()
        t.tProgram.wait()
        assert t.tDesktop.Pixel(lLeft + 375, lTop) == t.tDesktop.Pixel(0, 1199)
        dStart = time.perf_counter()
        t.tProgram = t.tDesktop.Start(t.tSystem.Command(t.sDisass))
        # The first line is the selected one, unlike all others.
        while len({t.tDesktop.Pixel(lLeft + lX, lTop + lY)
                   for lX, lY in ((4, 50), (375, 0), (375, 50))}) < 3:
            time.sleep(0.0005)
        adMilliseconds.append((time.perf_counter() - dStart) * 1000)
        t.frm = t.tDesktop.Window()
    print("start to first listing, ms: median %.0f, from %.0f to %.0f" % (
        statistics.median(adMilliseconds), min(adMilliseconds), max(adMilliseconds)))


def MeasureMemory(t):
    for lNumber in range(1, 17):
        if lNumber > 1:
            t.frm = t.frm.OpenAnother()
        t.frm.Enter(TXT_START, "0\tffff\t")
        time.sleep(2)
        Until(t.frm.HasSelection, "the listing of 64 KB")
        if lNumber in (1, 16):
            asRollup = Path("/proc/%d/smaps_rollup" % t.tProgram.pid).read_text().split()
            lPrivate = sum(int(asRollup[asRollup.index(sName) + 1])
                           for sName in ("Private_Clean:", "Private_Dirty:"))
            print("%d windows over 64 KB, KB: %d, of these its own %d; handles: %d" % (
                lNumber, t.tSystem.Usage(t.tProgram)[0], lPrivate, t.tSystem.Usage(t.tProgram)[1]))


def Main():
    with tempfile.TemporaryDirectory() as sFolder:
        t = Journey(System(sFolder, sys.argv[1]), *sys.argv[1:4])
        try:
            t.Emulate(*sys.argv[4:])
            MeasureStarts(t)
            MeasureMemory(t)
        finally:
            t.tDesktop.End()


Main()
