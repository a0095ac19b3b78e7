"""Journeys.py JOURNEY EMULATOR DISASS Z80: what users do with the programs.

Each journey is one user's session on a screen of its own. What the emulator reports, what stands in
its memory and what the program saves is the proof. "Stress ... --minutes 60" goes on for an hour.
"""
import configparser
import fcntl
import itertools
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from Driver import (CAPTION, CHK_ALLOW, CHK_LONG, CMD_DISASS, TXT_END, TXT_START, Desktop, Emulator,
                    System, Until)

ERROR, QUESTION, CONFIRMATION, PROTECTED, LONGER = (
    "Varnel - Error", "Varnel - Question", "Varnel - Confirmation",
    "Varnel - Protected RAM warning", "Varnel - Assembler warning")
DEFAULT, OTHER, ESC = ("Return",), ("Tab", "space"), ("Escape",)  # keys that answer a question


class Journey:
    """The programs of one run, with its folder and its screen."""

    def __init__(self, tSystem, sEmulator, sDisass, sZ80):
        self.tSystem, self.sEmulator, self.sDisass, self.sZ80 = tSystem, sEmulator, sDisass, sZ80
        self.tDesktop = Desktop(tSystem)
        self.tEmulator = self.tProgram = self.frm = None

    def Emulate(self, *asArgument):
        self.tEmulator = Emulator(self.tDesktop, self.sEmulator, *asArgument)

    def Open(self, **colMore):
        """Starts the window's program, beside the emulator."""
        self.tProgram = self.tDesktop.Start(self.tSystem.Command(self.sDisass), stderr=None,
                                            **colMore)
        self.Listed()

    def Start(self, *asArgument):
        """Starts the emulator, and that starts the window's program."""
        self.Emulate(*asArgument, "--", self.sDisass)
        self.Listed()

    def Listed(self):
        self.frm = self.tDesktop.Window()
        Until(self.frm.HasSelection, "the first listing")

    def End(self):
        """Closes the last window; the programs end in peace and leave nothing."""
        self.frm.Close()
        self.tEmulator.Expect("program 12 closed")
        if self.tProgram:
            assert self.tProgram.wait(20) == 0, self.tProgram.returncode
            self.tEmulator.Do("quit")
        assert self.tEmulator.tProcess.wait(20) == 0, self.tEmulator.tProcess.returncode
        assert not self.tSystem.Leftovers()

    def Z80(self, *asArgument, abInput):
        return subprocess.run(self.tSystem.Command(self.sZ80, *asArgument), input=abInput,
                              stdout=subprocess.PIPE, env=self.tDesktop.colEnvironment,
                              check=True).stdout

    def Disassembled(self, lFirst, lLast):
        """What a window must hold of the memory as it is now."""
        return self.Z80("dis", "--start", "%X" % lFirst, "--end", "%X" % lLast, "-",
                        abInput=self.tEmulator.Memory())

    def Assembled(self, sProgram, lAddress):
        sPath = self.tSystem.sFolder + "/program"
        self.Z80("asm", "--org", "%X" % lAddress, "-o", sPath, "-", abInput=sProgram.encode())
        return Path(sPath).read_bytes()

    def ExpectListing(self, lFirst, lLast, frm=None):
        """Waits until a window shows that range as it is."""
        abExpected = self.Disassembled(lFirst, lLast)
        Until(lambda: (frm or self.frm).Listing() == abExpected, "the listing of %X" % lFirst)

    def Edit(self, sText, *asChange):
        """Types an instruction and Enter; these bytes must arrive in the emulator."""
        self.tDesktop.Type(sText + "\n")
        self.tEmulator.Expect("ram changed", *asChange)

    def Show(self, sAddress):
        self.tEmulator.Do("show " + sAddress, "showing " + sAddress)
        time.sleep(1)  # a window looks every 100 ms, and a listing takes far less

    def MeasureLines(self, lFirst):
        """Learns how high a line is, of a listing that stands at its first line."""
        lDown = 400
        self.frm.List(lDown, "click", 3)
        self.tDesktop.Keys("Down", "Return")
        sAddress = self.tEmulator.Expect("breakpoint (....)")[1].encode()
        lRow = Addresses(self.Disassembled(lFirst, lFirst + 400)).index(sAddress)
        self.frm.lLineHeight = round(lDown / (lRow + 0.5))


def Addresses(abListing):
    return re.findall(rb"(?:^|\r\n)([0-9A-F]{4}) ", abListing)


def Start(t):
    t.Start("--sample", "8000")
    t.ExpectListing(0x8000, 0xA000)
    # An address that is shown as a line is only selected, and Enter edits it.
    t.Show("8003")
    t.tDesktop.Keys("Return")
    t.Edit("ld sp,1234", "8004: 34 12")
    t.tDesktop.Keys("Escape")
    t.ExpectListing(0x8000, 0xA000)
    t.Show("8005")
    t.ExpectListing(0x8005, 0xA005)
    t.Show("FFFFFFFF")  # no address
    t.Show("FF00")
    t.ExpectListing(0xFF00, 0xFFFF)
    # What the emulator changes by itself is seen when it is asked for.
    abBefore = t.frm.Listing()
    t.tEmulator.Do("poke FF80 3E 41 C9", "poked.*")
    assert t.frm.Listing() == abBefore
    t.frm.Click(CMD_DISASS)
    t.ExpectListing(0xFF00, 0xFFFF)
    t.End()


def Range(t):
    t.Start("--sample", "0")
    # The list has the keyboard, and after it comes the first field again.
    t.tDesktop.Keys("Tab")
    t.tDesktop.Type("g-c 0\t00ff\t")
    t.ExpectListing(0xC0, 0xFF)
    t.tDesktop.Keys("Tab", "BackSpace", "Tab", "Tab")  # an empty start; the end that is proposed
    t.ExpectListing(0, 0x2000)
    t.tDesktop.Keys("Tab")
    t.tDesktop.Type("8000\t7fff\t")
    t.tDesktop.Answer(ERROR, *DEFAULT)
    t.tDesktop.Type("f000\t\t")  # the start field has the keyboard again
    t.ExpectListing(0xF000, 0xFFFF)
    # Pasted text, an address first; one that is none gives way to the address in force.
    for sText in ("f010", "wxyz"):
        t.tDesktop.Keys("Return")
        t.tDesktop.Type(sText)
        t.tDesktop.Keys("ctrl+a", "ctrl+c", "Escape")
        for tField in (TXT_START, TXT_END):
            t.frm.Enter(tField)
            t.tDesktop.Do("click", 3)
            for sKey in ("p", "Tab"):
                time.sleep(0.5)  # until the menu has the keys, and until it has given them back
                t.tDesktop.Keys(sKey)
        t.ExpectListing(0xF010, 0xF010)
    # The press that leaves a field also counts for what it is on.
    t.frm.Enter(TXT_START, "8000\t8100")
    t.frm.Click(CHK_LONG)
    t.ExpectListing(0x8000, 0x8100)
    t.frm.Enter(TXT_START, "8000\t8110")
    t.frm.Click(CHK_ALLOW, "click", 1)  # faster than any hand
    t.ExpectListing(0x8000, 0x8110)
    t.tEmulator.Do("protect 8000-8000", "protected.*")
    t.frm.Line(0, "click", "--repeat", 2, 1)
    t.Edit("ld bc,1234", "8000: 01 34 12")
    t.End()


PROGRAM = """ld sp,f000;LD HL,9100;ld de,9101;LD BC,00ff;LD (HL),00;LDIR;ld ix,9100;LD (IX + 05),3c
ld a,(ix + 05);BIT 7,(IX + FE);set 0,(iy + 01);ADD IX,DE;ex af,af';EXX;ex (sp),hl;IM 2;in a,(a8)
OUT (C),B;RST 38H;jp (hl);CP 2a;SBC HL,SP;sll b;* IN (C);LD IXH,A;RLC B,(IX + 05);LD (9100),BC
LD IY,(9100);push iy;POP AF;ld i,a;RRD;NEG;OTDR;RETI;DJNZ {0:X};JR NZ,{0:X};JP PO,{0:x};call m,{0:x}
RET PE
""".replace(";", "\n")


def Editing(t, lRounds=5):
    """A program of 200 instructions typed by keyboard alone, into empty memory, line after line."""
    lLength = len(t.Assembled(PROGRAM.format(0x9003), 0x9003))
    sProgram = "".join(PROGRAM.format(0x9003 + lRound * lLength) for lRound in range(lRounds))
    t.Start("--sample", "8000", "--show", "9000")
    t.MeasureLines(0x9000)
    t.frm.Click(CHK_LONG)
    t.frm.Line(3, "click", "--repeat", 2, 1)
    t.tDesktop.Type(sProgram)
    t.tDesktop.Keys("Escape")
    abProgram = t.Assembled(sProgram, 0x9003)
    Until(lambda: t.tEmulator.Memory(0x9003, len(abProgram)) == abProgram, "the typed program")
    t.ExpectListing(0x9000, 0xB000)
    # A shorter instruction is filled up, and typing goes on behind it.
    t.Show("8006")
    t.tDesktop.Keys("Return")
    t.Edit("inc a", "8006: 3C 00 00")
    t.Edit("halt", "8009: 76 00 00")
    # Up and Down write nothing; nor does Esc, nor Enter on what stands there already.
    abMemory = t.tEmulator.Memory()
    t.tDesktop.Type("nop")
    t.tDesktop.Keys("Up", "Down", "Escape", "Return")
    t.tDesktop.Type("ld b,c")
    t.tDesktop.Keys("Escape", "Return", "Return", "Up", "Up")
    assert t.tEmulator.Memory() == abMemory
    t.Edit("dec a", "800B: 3D")
    # What cannot be assembled is said, and stays for correction.
    t.tDesktop.Type("ld a,hl\n")
    t.tDesktop.Answer(ERROR, *DEFAULT)
    t.Edit("ld (1234),hl", "800D: 34 12")
    # The wheel moves the editor with its line, until the line leaves the view.
    t.frm.Line(12, "click", 5)
    t.Edit("ld hl,5678", "800F: 21 78 56")
    t.frm.Line(12, "click", "--repeat", 40, 5)
    t.tDesktop.Type("inc hl")
    t.ExpectListing(0x8006, 0xA006)
    t.End()


def Questions(t):
    """Both questions answered both ways, and the boxes that suppress them."""
    t.Start("--sample", "8000", "--show", "9000", "--protect", "9002-9002")
    t.MeasureLines(0x9000)

    def Ask(sText, *atQuestion):
        t.tDesktop.Type(sText + "\n")
        for sTitle, asKey in atQuestion:
            t.tDesktop.Answer(sTitle, *asKey)

    abMemory = t.tEmulator.Memory()
    t.frm.Line(0, "click", "--repeat", 2, 1)
    Ask("ld bc,1234", (PROTECTED, DEFAULT))
    Ask("", (PROTECTED, OTHER), (LONGER, DEFAULT))  # the text has stayed
    t.tDesktop.Type("\n")
    t.tDesktop.Window(PROTECTED)
    t.frm.Click(CMD_DISASS, "click", 1)  # a click behind the box leaves it its keys
    time.sleep(0.5)
    t.tDesktop.Answer(PROTECTED, *ESC)
    assert t.tEmulator.Memory() == abMemory
    t.Edit("ld b,c", "9000: 41")
    Ask("ld a,12", (PROTECTED, OTHER), (LONGER, OTHER))
    t.tEmulator.Expect("ram changed", "9001: 3E 12")
    Ask("ld a,34", (LONGER, DEFAULT))
    t.frm.Click(CHK_LONG)
    t.frm.Line(3, "click", 1)  # by two bytes at 9001, this is 9004
    t.Edit("ld a,34", "9004: 3E 34")
    t.tEmulator.Do("protect 0-FFFF", "protected.*")
    Ask("inc b", (PROTECTED, DEFAULT))
    t.frm.Click(CHK_ALLOW)
    t.frm.Line(5, "click", 1)
    t.Edit("inc b", "9007: 04")
    # The last address: the instruction goes on at the first one, and nothing is left to edit.
    t.tDesktop.Keys("Escape")
    t.Show("FFF0")
    t.tDesktop.Keys("End", "Return")
    t.Edit("jp 1234", "0000: 34 12", "FFFF: C3")
    t.tDesktop.Type("inc c")
    t.ExpectListing(0xFFF0, 0xFFFF)
    t.End()


def Mouse(t):
    """Breakpoints, the editor moved by the mouse, and what counts as activity."""
    t.Emulate("--sample", "8000")
    t.Open()
    t.MeasureLines(0x8000)
    asAddress = [sAddress.decode() for sAddress in Addresses(t.Disassembled(0x8000, 0x8100))]
    for lRow in (0, 7, 25):
        t.frm.Line(lRow, "click", 3)
        t.tDesktop.Keys("Down", "Return")
        sBreakpoint = asAddress[lRow]
        t.tEmulator.Expect("breakpoint " + sBreakpoint)
    t.frm.Line(3, "click", 3)
    t.tDesktop.Keys("Escape")  # no breakpoint, but the line is selected
    time.sleep(0.5)  # a menu that goes swallows keys of a few milliseconds, faster than any hand
    t.tDesktop.Keys("Return")
    t.Edit("xor c", asAddress[3] + ": A9 00 00")
    # With the editor open, either button takes it to another line, and what was typed is gone.
    for lRow, lButton in ((14, 1), (21, 3)):
        sAddress = Addresses(t.Disassembled(0x8000, 0x8100))[lRow].decode()
        t.tDesktop.Type("halt")
        t.frm.Line(lRow, "click", lButton)
        t.Edit("inc a", sAddress + ": 3C.*")
    t.tDesktop.Keys("Escape")
    # Below the last line there is nothing to set a breakpoint at.
    t.tDesktop.Keys("Tab")
    t.tDesktop.Type("8000\t8000\t")
    t.ExpectListing(0x8000, 0x8000)
    t.frm.Line(9, "click", 3)
    t.tDesktop.Keys("Down", "Return", "Escape")
    t.tEmulator.Do("status", "temp file.*", "active program: 12", "show.*",
                   "breakpoint address: " + sBreakpoint, "protected:", "program: none")

    # A press anywhere on the window is activity, its frame's as far as it can be told.
    for fnPress in (lambda: t.frm.Line(0, "click", 1), lambda: t.frm.Drag(60, 30),
                    lambda: t.frm.Click(CHK_LONG), lambda: t.tDesktop.Keys("Down")):
        t.tDesktop.Kill(t.tEmulator.tProcess)
        t.Emulate("--sample", "8000")
        t.frm.Line(3, "click", 5)
        time.sleep(1)  # what follows from the window's own doing is over
        t.tEmulator.Do("status", "temp file.*", "active program: 0", *[".*"] * 4)
        fnPress()
        t.tEmulator.Expect("active program 12")
    t.End()


def Keyboard(t):
    """What the mouse does, by keys alone."""
    t.Start("--sample", "8000")
    asAddress = [sAddress.decode() for sAddress in Addresses(t.Disassembled(0x8000, 0xA000))]
    sFirst9 = next(sAddress for sAddress in asAddress if sAddress.startswith("9"))
    for asKey, sAddress in (((*["Down"] * 3, "Menu"), asAddress[3]),
                            (("Down", "shift+F10"), asAddress[4]),
                            (("9", "Menu"), sFirst9),  # to the next line that begins with it
                            (("8", "Menu"), "8000")):
        t.tDesktop.Keys(*asKey)
        time.sleep(0.5)
        t.tDesktop.Keys("Down", "Return")
        t.tEmulator.Expect("breakpoint " + sAddress)
        time.sleep(0.5)  # a menu that goes swallows keys of a few milliseconds, faster than any hand
    # Lists again; from the end field that was edited, its range.
    t.tEmulator.Do("poke 8000 C9", "poked.*")
    t.tDesktop.Keys("F5")
    t.ExpectListing(0x8000, 0xA000)
    t.tDesktop.Keys("Tab")
    t.tDesktop.Type("8000\t8080")
    t.tDesktop.Keys("F5")
    t.ExpectListing(0x8000, 0x8080)
    t.tDesktop.Keys("ctrl+s")
    t.tDesktop.Answer(t.tSystem.SAVE_DIALOG, *ESC)
    # A new window by its key, from the editor, too, and from a menu that Alt opens.
    for asKey in (("ctrl+n",), ("Return", "ctrl+n"), ("alt+w", "Down", "Return")):
        for sKey in asKey:
            t.tDesktop.Keys(sKey)
            time.sleep(0.5)
        frm = t.tDesktop.Window(CAPTION + " - Window 2")
        Until(frm.HasSelection, "the new window's listing")
        frm.Close()
        t.frm.ToFront()
        t.tDesktop.Keys("Escape")
    t.End()


def Saving(t):
    t.Emulate("--sample", "8000")
    t.Open(**t.tSystem.LimitFiles(0x10000))
    t.tDesktop.Keys("Tab")
    t.tDesktop.Type("8000\t80ff\t")
    t.ExpectListing(0x8000, 0x80FF)
    abListing = t.Disassembled(0x8000, 0x80FF)
    tFolder = Path(t.tSystem.sFolder, "a folder")
    tFile = tFolder / "a listing"  # and no ".txt" comes behind it
    tFolder.mkdir()
    t.frm.SaveAs(str(tFile))
    t.tDesktop.Answer(CONFIRMATION, *DEFAULT)
    assert tFile.read_bytes() == abListing
    t.frm.Menu("File", 1)
    t.tDesktop.Answer(t.tSystem.SAVE_DIALOG, *ESC)
    # The same file again: nothing happens to it before the answer, nor after a Cancel.
    tFile.write_bytes(b"old")
    for asKey in (ESC, OTHER, DEFAULT):
        t.frm.SaveAs(str(tFile))
        t.tDesktop.Window(QUESTION)
        assert tFile.read_bytes() == b"old"
        t.tDesktop.Answer(QUESTION, *asKey)
    t.tDesktop.Answer(CONFIRMATION, *DEFAULT)
    assert tFile.read_bytes() == abListing
    # A folder that goes away while the question stands.
    t.frm.SaveAs(str(tFile))
    t.tDesktop.Window(QUESTION)
    shutil.rmtree(tFolder)
    t.tDesktop.Answer(QUESTION, *DEFAULT)
    t.tDesktop.Answer(ERROR, *DEFAULT)
    # A disk that is full half-way: the old file stays, and nothing beside it.
    tFolder.mkdir()
    tFile.write_bytes(b"old")
    t.Show("9000")
    t.frm.SaveAs(str(tFile))
    t.tDesktop.Answer(QUESTION, *DEFAULT)
    t.tDesktop.Answer(ERROR, *DEFAULT)
    assert tFile.read_bytes() == b"old" and list(tFolder.iterdir()) == [tFile]
    t.tDesktop.Keys("Return")
    t.Edit("halt", "9000: 76")
    t.End()


def Windows(t):
    """Sixteen windows from the menu, and what they have of each other."""
    t.Start("--sample", "8000")
    tDesktop, lMost, afrm = t.tDesktop, 16, [t.frm]
    for lNumber in range(2, lMost + 1):
        afrm.append(afrm[-1].OpenAnother())
        assert tDesktop.Focused() == "%s - Window %d" % (CAPTION, lNumber)
    assert sorted(tDesktop.Captions()) == sorted(
        "%s - Window %d" % (CAPTION, lNumber + 1) for lNumber in range(lMost))
    afrm[-1].Menu("Window", 1)
    tDesktop.Answer(ERROR, *DEFAULT)
    assert len(tDesktop.Captions()) == lMost
    # Each menu leads to each window, and an instruction typed in one is in all.
    for lFrom, lTo in ((15, 2), (2, 0), (0, 9)):
        afrm[lFrom].Menu("Window", 2 + lTo)
        sCaption = "%s - Window %d" % (CAPTION, lTo + 1)
        Until(lambda: tDesktop.Captions()[-1] == sCaption, "the chosen window to be on top")
        if not t.tSystem.GIVES_FOCUS:
            afrm[lTo].ToFront()
        assert tDesktop.Window(sCaption).sId == afrm[lTo].sId
    tDesktop.Type("\nld a,(1234)\n")
    tDesktop.Answer(LONGER, *OTHER)
    t.tEmulator.Expect("ram changed", "8000: 3A 34 12")
    for lSlot in (0, 2, 15):
        afrm[lSlot].ToFront()
        t.ExpectListing(0x8000, 0xA000, afrm[lSlot])
    # Closed in any order, the lowest window left takes requests, and numbers are used again.
    random.seed(lMost)
    afrmOther = random.sample(afrm[3:], lMost - 3)
    for frm in [afrm[1], afrm[0], *afrmOther[:6]]:
        frm.Close()
    t.frm = afrm[2]
    t.Show("C000")
    t.frm.ToFront()
    t.ExpectListing(0xC000, 0xE000)
    afrmOther[-1].ToFront()
    t.ExpectListing(0x8000, 0xA000, afrmOther[-1])
    afrmOther.append(afrmOther[-1].OpenAnother())
    assert tDesktop.Focused() == CAPTION + " - Window 1"
    for frm in afrmOther[6:]:
        frm.Close()
    t.tEmulator.Do("status", "temp file.*", *[".*"] * 4, "program: running")
    assert tDesktop.Captions() == [CAPTION]
    t.End()


def Placement(t):
    """The place that a window is left at is kept, in a file that others use, too."""
    t.Emulate()
    tIniFile = Path(t.tSystem.sIniFile)
    tIniFile.parent.mkdir()
    asForeign = ["[OTHER]", "; a remark", "key=a value", "[GENERAL]", "window_3_top=77"]
    tIniFile.write_bytes("\r\n".join([*asForeign, ""]).encode())
    t.Open()
    tPlace = t.frm.Place()
    assert 610 < tPlace[0] < 630, tPlace  # 9195 twips, and a frame

    def Restart():
        t.frm.Close()
        t.tEmulator.Expect("program 12 closed")
        assert t.tProgram.wait(20) == 0
        t.Open()

    t.frm.Drag(-300, 90)
    tPlace = (tPlace[0] - 300, tPlace[1] + 90)
    Until(lambda: t.frm.Place() == tPlace, "the window to move")
    for _ in range(2):  # and it does not wander
        Restart()
        Until(lambda: t.frm.Place() == tPlace, "the window where it was left")
        asLine = tIniFile.read_bytes().decode().split("\r\n")
        assert all(sLine in asLine for sLine in asForeign), asLine
        asKey = [sLine.split("=")[0] for sLine in asLine if sLine.startswith("window_12_")]
        assert sorted(asKey) == ["window_12_" + sName for sName in
                                 ("height", "left", "top", "width", "windowstate")], asLine
    # A second window opens beside the first, and the one closed last is remembered.
    frmSecond = t.frm.OpenAnother()
    tPlace = frmSecond.Place()
    t.frm.Close()
    t.frm = frmSecond
    Restart()
    Until(lambda: t.frm.Place() == tPlace, "the last window's place")
    # A size at which nothing could be seen is not kept to.
    for sSize in ("0", "-500", "14", "30"):
        t.frm.Close()
        t.tEmulator.Expect("program 12 closed")
        assert t.tProgram.wait(20) == 0
        sSettings = re.sub(r"(window_12_(?:width|height))=.*", r"\1=" + sSize,
                           tIniFile.read_bytes().decode().replace("\r", ""))
        tIniFile.write_bytes(sSettings.replace("\n", "\r\n").encode())
        t.tProgram = t.tDesktop.Start(t.tSystem.Command(t.sDisass), stderr=None)
        t.frm = t.tDesktop.Window()
        Until(lambda: min(t.tDesktop.Size(t.frm)) >= 160, "a window of use")
        t.frm.Click(CMD_DISASS, "mousemove_relative", "--", -40, 0, "click", 1)
    t.End()


def BadStart(t):
    """What the program says when it cannot start, and that any sound file lets it."""
    sMark = os.path.basename(t.tSystem.sFolder)
    asValue = ["1", *('"%s a,b/c %d"' % (sMark, lName) for lName in range(24))]
    tTempFile = Path(t.tSystem.sTempFile)
    tTempFile.parent.mkdir()
    for abFile in (None, b"", bytes(range(256)) * 9, "\n".join(asValue[:24]).encode(),
                   "\n".join(["x", *asValue[1:]]).encode(),
                   "\n".join(["1", "x" * 40000, *asValue[2:]]).encode()):
        if abFile is not None:
            tTempFile.write_bytes(abFile)
        tProgram = t.tDesktop.Start(t.tSystem.Command(t.sDisass), stderr=None)
        t.tDesktop.Window(ERROR)
        assert t.tDesktop.Captions() == [ERROR]
        t.tDesktop.Keys("Return")
        assert tProgram.wait(20) == 1, (tProgram.returncode, abFile)
    tTempFile.write_bytes(",".join(asValue).encode())
    t.Open()
    assert t.frm.Listing() == t.Z80("dis", "--end", "2000", "-", abInput=bytes(0x2001))
    t.frm.Close()
    assert t.tProgram.wait(20) == 0
    assert not t.tSystem.Leftovers(sMark)


def Crashes(t):
    """Either side killed and started again under the other, which goes on."""
    t.Emulate("--sample", "F000")
    t.Open()
    for lFirst in range(0x3000, 0xF000, 0x3000):
        for _ in range(t.tSystem.KILLS):  # each at any moment of the other's start
            t.tDesktop.Kill(t.tEmulator.tProcess)
            t.Emulate()
            t.tDesktop.Kill(t.tProgram)
            t.tProgram = t.tDesktop.Start(t.tSystem.Unseen(t.sDisass))
            time.sleep(random.random() / 4)
        t.tDesktop.Kill(t.tProgram)
        t.Open()
        t.tDesktop.Kill(t.tEmulator.tProcess)
        t.Emulate("--sample", "%X" % lFirst)
        t.ExpectListing(lFirst, lFirst + 0x2000)
        t.tDesktop.Keys("Return")
        t.Edit("xor a", "%X: AF" % lFirst)
        t.tDesktop.Kill(t.tProgram)
        t.Open()
        t.ExpectListing(lFirst, lFirst + 0x2000)
        t.tDesktop.Keys("Return")
        t.Edit("ei", "%X: FB" % lFirst)
        t.tDesktop.Keys("Escape")
    t.End()


def ThingsToHaveOpen(t):
    """What may be open in a window when it is closed: ways to open it."""
    def Nothing():
        pass

    def Error():
        t.frm.Enter(TXT_START, "8000\t7fff\t")
        t.tDesktop.Window(ERROR)

    def Question():
        t.tDesktop.Type("\nld a,(1234)\n")
        t.tDesktop.Window(LONGER)

    def SaveDialog():
        t.frm.Menu("File", 1)
        return t.tDesktop.Window(t.tSystem.SAVE_DIALOG)

    def PopupMenu():
        t.frm.Line(3, "click", 3)
        time.sleep(0.5)

    def WindowMenu():
        t.frm.Mouse(t.tSystem.MENU_LEFT["Window"], 6, "click", 1)
        time.sleep(0.5)

    def Editor():
        t.tDesktop.Type("\nxor a")

    def Listing():
        t.frm.Enter(TXT_START, "0\tffff\t")
        time.sleep(random.random() / 5)

    def OtherWindows():
        frmOther = t.frm.OpenAnother()
        t.frm.ToFront()
        Error()
        frmOther.ToFront()
        frmOther.OpenAnother()
        Question()

    def SaveDialogWithError():
        frmDialog = SaveDialog()
        t.tDesktop.Type(t.tSystem.NameToType("/nowhere/at all.txt") + "\n")
        t.tDesktop.Window(t.tSystem.SAVE_DIALOG + "|", frmDialog.sId)  # Wine's has no caption

    return (Nothing, Error, Question, SaveDialog, SaveDialogWithError, PopupMenu, WindowMenu,
            Editor, Listing, OtherWindows)


def NoMemory(t):
    """A listing that memory runs out for is said to be missing, and stands there once it suffices."""
    t.Emulate("--sample", "8000")
    t.Open()
    sStatus = Path("/proc/%d/status" % t.tProgram.pid).read_text()
    lBytes = int(re.search(r"VmSize:\s+(\d+)", sStatus)[1]) * 1024 + 1000000
    resource.prlimit(t.tProgram.pid, resource.RLIMIT_AS, (lBytes, resource.RLIM_INFINITY))
    t.frm.Enter(TXT_START, "0\tffff\t")
    t.tDesktop.Answer(ERROR, *DEFAULT)
    resource.prlimit(t.tProgram.pid, resource.RLIMIT_AS, (resource.RLIM_INFINITY,) * 2)
    t.tDesktop.Keys("F5")
    t.ExpectListing(0, 0xFFFF)
    t.End()


def Signals(t):
    """A signal closes the windows as their user would, whatever is open in them."""
    tIniFile = Path(t.tSystem.sIniFile)
    sElsewhere = t.tSystem.sFolder + "/elsewhere"  # where no emulator runs
    os.mkdir(sElsewhere)
    t.Emulate("--sample", "8000")
    abMemory = t.tEmulator.Memory()

    def Closes(*aeSignal):
        """Whether that is what the signals do."""
        for eSignal in aeSignal:
            t.tProgram.send_signal(eSignal)
        assert t.tProgram.wait(20) == 0, t.tProgram.returncode
        t.tEmulator.Expect("program 12 closed")
        t.tEmulator.Do("status", "temp file.*", "active program: 0", *[".*"] * 4)
        return "window_12_top=" in tIniFile.read_text()

    for eSignal, fnOpen in zip(itertools.cycle((signal.SIGTERM, signal.SIGINT, signal.SIGHUP)),
                               ThingsToHaveOpen(t)):
        t.Open()
        fnOpen()
        assert Closes(eSignal), (eSignal, fnOpen)
        tIniFile.unlink()
    assert t.tEmulator.Memory() == abMemory

    # Two at once are one, as a terminal sends them when it closes; nohup keeps its word.
    t.Open()
    assert Closes(signal.SIGHUP, signal.SIGTERM)
    t.Open(preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
    t.tProgram.send_signal(signal.SIGHUP)
    t.ExpectListing(0x8000, 0xA000)
    assert Closes(signal.SIGTERM)
    # In a message at the start: one that ends the program, and one that it goes on after.
    t.tProgram = t.tDesktop.Start(["env", "TEMP=" + sElsewhere, t.sDisass])
    t.tDesktop.Window(ERROR)
    t.tProgram.send_signal(signal.SIGTERM)
    assert t.tProgram.wait(20) == 1, t.tProgram.returncode
    with open(tIniFile, "r+") as tLocked:
        fcntl.lockf(tLocked, fcntl.LOCK_EX)
        t.tProgram = t.tDesktop.Start([t.sDisass])
        t.tDesktop.Window(ERROR)
        assert Closes(signal.SIGTERM)
    # A second signal ends a program that takes its time, here for the settings.
    t.Open()
    with open(tIniFile, "r+") as tLocked:
        fcntl.lockf(tLocked, fcntl.LOCK_EX)
        t.tProgram.send_signal(signal.SIGTERM)
        time.sleep(0.5)
        t.tProgram.send_signal(signal.SIGINT)
        assert t.tProgram.wait(20) == -signal.SIGINT, t.tProgram.returncode
    # At any moment of the start, before the program listens or after.
    for _ in range(20):
        t.tProgram = t.tDesktop.Start(t.tSystem.Unseen(t.sDisass))
        time.sleep(random.random() / 4)
        t.tProgram.send_signal(signal.SIGTERM)
        assert t.tProgram.wait(20) in (0, -signal.SIGTERM), t.tProgram.returncode
    t.Open()
    t.End()


def OtherPrograms(t):
    """What other programs of the system do with the windows: close them, read them, end all."""
    t.Emulate("--sample", "8000")

    def Probe(*asArgument, **colMore):
        sProbe = os.path.join(os.path.dirname(t.sDisass), "../tests/e2e/varnel-window-probe.exe")
        return t.tDesktop.Start(t.tSystem.Command(sProbe, *asArgument), stdout=subprocess.PIPE,
                                text=True, **colMore)

    def Said(*asArgument):
        return Probe(*asArgument).communicate(timeout=60)[0].splitlines()

    def Ends():
        assert t.tProgram.wait(20) == 0, t.tProgram.returncode
        t.tEmulator.Expect("program 12 closed")

    # A screen reader: the lines, and which of them it hears of when an instruction is typed.
    t.Open()
    lCount, lSelected, lMiddle, *asLine = Said("lines")
    sListing = t.Disassembled(0x8000, 0xA000).decode("latin-1").rstrip("\r\n")
    asExpected = re.sub("[\x00-\x09\x0B\x0C\x0E-\x1F\x7F-\x9F\xAD]", "\xB7", sListing).split("\r\n")
    assert asLine == asExpected, next(tPair for tPair in zip(asLine, asExpected)
                                      if tPair[0] != tPair[1])
    assert int(lCount) == len(asLine) and lSelected == "1" and 10 < int(lMiddle) < 30, lMiddle
    tReader = Probe("renamed")
    assert tReader.stdout.readline() == "watching\n"
    t.tDesktop.Keys("Return")
    t.Edit("xor a", "8000: AF")
    assert "XOR A" in tReader.stdout.readline()

    for fnOpen in ThingsToHaveOpen(t):
        for sEnd in ("close", "end-session"):
            if t.tProgram.poll() is not None:
                t.Open()
            fnOpen()
            Said(sEnd)
            Ends()
    # Four windows whose settings another program holds: the system waits for all of them once.
    t.Open()
    t.frm.OpenAnother().OpenAnother().OpenAnother()
    tHolder = Probe("hold", t.tSystem.NameToType(t.tSystem.sIniFile), stdin=subprocess.PIPE)
    assert tHolder.stdout.readline() == "held\n"
    lMilliseconds, = Said("end-session")
    assert int(lMilliseconds) < 4000, lMilliseconds
    tHolder.stdin.close()
    Ends()
    t.Open()
    t.End()


def DoubleClick(t):
    """What the Windows package is started by; the programs are the package's own."""
    sCommand = os.path.join(os.path.dirname(t.sDisass), "Try Varnel.cmd")
    t.tProgram = t.tDesktop.Start(t.tSystem.Command("start", "/wait", "/unix", sCommand))
    t.Listed()
    assert t.frm.Listing().startswith(b"8000 ")
    t.frm.Close()
    assert t.tProgram.wait(20) == 0, t.tProgram.returncode


def DesktopEntry(t):
    """The package's desktop entry and its action, as a desktop starts them: nobody types or reads."""
    tEntry = configparser.RawConfigParser()
    tEntry.read(Path(__file__).parents[2] / "packaging/varnel-disass.desktop")
    t.tDesktop.colEnvironment["PATH"] = ":".join(
        [*(os.path.dirname(sProgram) for sProgram in (t.sEmulator, t.sDisass)), os.environ["PATH"]])

    def Launch(sGroup):
        t.tProgram = t.tDesktop.Start(tEntry[sGroup]["Exec"].split())
        t.Listed()

    Launch("Desktop Entry")
    assert t.frm.Listing().startswith(b"8000 ")
    t.frm.Close()
    assert t.tProgram.wait(20) == 0 and not os.path.exists(t.tSystem.sTempFile)
    # Where an emulator runs, both lead to it.
    t.Emulate("--sample", "C000")
    Launch("Desktop Action window")
    t.ExpectListing(0xC000, 0xE000)
    t.frm.Close()
    t.tEmulator.Expect("program 12 closed")
    Launch("Desktop Entry")
    t.ExpectListing(0xC000, 0xE000)
    t.End()


def Stress(t, dMinutes=0.25):
    """Windows, ranges, edits and requests at random, at a flat use of memory and handles."""
    random.seed(dMinutes)
    t.Emulate("--sample", "0")
    t.Open()
    t.frm.Click(CHK_LONG)
    tDesktop, afrm, atUsage, lMost = t.tDesktop, [t.frm], [], 6
    asLine = PROGRAM.lower().split("\n")[:30]

    def OpenWindow(frm):
        if len(afrm) < lMost:
            lLeft, lTop = frm.Place()
            if lLeft > 900 or lTop > 400:  # each new window stands a little farther off
                frm.Drag(100 - lLeft, 100 - lTop)
                Until(lambda: frm.Place() == (100, 100), "the window to move")
            afrm.append(frm.OpenAnother())
            afrm[-1].Click(CHK_LONG)

    def CloseWindow(frm):
        if len(afrm) > 1:
            afrm.remove(frm)
            frm.Close()

    def SetRange(frm):
        lFirst = random.choice((0, 0xFFF0, random.randrange(0x10000)))
        frm.Enter(TXT_START, "%x\t%x\t" % (lFirst, random.randint(lFirst, 0xFFFF)))

    def TypeLines(frm):
        frm.Line(random.randrange(25), "click", 1)
        tDesktop.Type("\n" + "\n".join(random.choices(asLine, k=3)) + "\n")
        tDesktop.Keys("Escape")

    def Show(_frm):
        t.tEmulator.Do("show %X" % random.randrange(0x10000))

    def Wheel(frm):
        frm.Line(5, "click", "--repeat", 9, random.choice((4, 5)))

    def Again(frm):
        frm.Click(CMD_DISASS)

    def Measure():
        while len(afrm) > 1:
            CloseWindow(afrm[-1])
        atUsage.append(t.tSystem.Usage(t.tProgram))
        print("KB, handles:", *atUsage[-1], flush=True)

    # As many windows and lines as there will ever be, for what is kept for good.
    for _ in range(lMost):
        afrm[-1].Enter(TXT_START, "0\tffff\t")
        Until(afrm[-1].HasSelection, "a listing")
        OpenWindow(afrm[-1])
    Measure()
    dEnd = time.monotonic() + 60 * dMinutes
    while time.monotonic() < dEnd:
        dRound = time.monotonic() + max(5, 2 * dMinutes)
        while time.monotonic() < dRound:
            frm = random.choice(afrm)
            frm.ToFront()
            Until(frm.IsListed, "a listing")
            random.choice((OpenWindow, OpenWindow, CloseWindow, CloseWindow, SetRange, SetRange,
                           TypeLines, TypeLines, TypeLines, Show, Wheel, Again))(frm)
        Measure()
    assert atUsage[-1][0] < atUsage[0][0] + 4096 and atUsage[-1][1] <= atUsage[0][1], atUsage
    t.frm = afrm[0]
    t.frm.Listing()  # behind all that was typed and clicked
    t.tEmulator.Memory(0, 16)  # whatever was reported has been read then
    t.Show("0000")
    t.frm.Enter(TXT_START, "0\tffff\t")
    t.ExpectListing(0, 0xFFFF)
    t.End()


def Main():
    sJourney, *asProgram = sys.argv[1:5]
    adMinutes = [float(sMinutes) for sMinutes in sys.argv[6:7]]
    with tempfile.TemporaryDirectory() as sFolder:
        t = Journey(System(sFolder, asProgram[0]), *asProgram)
        try:
            globals()[sJourney](t, *adMinutes)
        except BaseException:
            print("captions:", t.tDesktop.Captions(), "focus:", t.tDesktop.Focused())
            t.tDesktop.Picture("failed-%s.png" % sJourney)
            raise
        finally:
            t.tDesktop.End()


if __name__ == "__main__":
    Main()
