"""ScreenReader.py EMULATOR DISASS Z80: the window as who works with a screen reader knows it.

Such a user has the keyboard, and hears what is told of the control that gets the focus. A bus of
accessibility of the run's own tells this program the same. It also asks what no user asks for by
hand, but a screen reader may at any time: every text for every part of it, thousands of lines, and
things that are gone.
"""
import os
import re
import sys
import tempfile

from Driver import System, Until
from Journeys import Journey

try:
    import gi
    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi, GLib
except (ImportError, ValueError) as tMissing:
    sys.exit("%s: this test needs Debian's python3-gi and gir1.2-atspi-2.0" % tMissing)
if not os.path.exists("/usr/libexec/at-spi-bus-launcher"):
    sys.exit("no bus of accessibility: this test needs Debian's at-spi2-core")

ANSWER_TIME = 5000  # milliseconds that a window may take for an answer before it counts as frozen
PARTS = list(Atspi.TextBoundaryType.__enum_values__.values())


class Reader:
    """Hears what a screen reader hears, and asks what it asks."""

    def __init__(self, tDesktop):
        tBus = tDesktop.Start(["dbus-daemon", "--session", "--nofork", "--print-address"],
                              stdout=-1)
        tDesktop.colEnvironment.update({
            "DBUS_SESSION_BUS_ADDRESS": tBus.stdout.readline().decode().strip(),
            # Whole stacks, to know Qt's own leaks by.
            "ASAN_OPTIONS": tDesktop.colEnvironment["ASAN_OPTIONS"] + ":fast_unwind_on_malloc=0",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            # Qt reports each question for what is gone, and many are asked here.
            "QT_LOGGING_RULES": "qt.accessibility.atspi=false"})
        os.environ.clear()  # whoever runs this may have a bus of accessibility and a screen
        os.environ.update(tDesktop.colEnvironment)
        self.asHeard, self.asRenamed, self.asTyped = [], [], []
        assert Atspi.init() in (0, 1)
        Atspi.set_timeout(ANSWER_TIME, ANSWER_TIME)
        self.tListener = Atspi.EventListener.new(self.Hear)
        for sEvent in ("object:state-changed:focused", "object:property-change:accessible-name",
                       "object:text-changed", "object:text-caret-moved"):
            self.tListener.register(sEvent)

    def Hear(self, tEvent):
        try:
            if tEvent.type.startswith("object:property-change"):
                self.asRenamed.append(tEvent.source.get_name())
            elif tEvent.type.startswith("object:text"):
                self.asTyped.append(tEvent.type)
            elif tEvent.detail1:
                self.asHeard.append(Spoken(tEvent.source))
        except GLib.Error:
            pass  # it is gone already

    def Wait(self, fnCondition, sWhat):
        def Look():
            while GLib.MainContext.default().iteration(False):
                pass
            return fnCondition()
        return Until(Look, sWhat)

    def Expect(self, sPattern):
        """Waits until the last that was heard is that."""
        try:
            self.Wait(lambda: self.asHeard and re.fullmatch(sPattern, self.asHeard[-1]), sPattern)
        except AssertionError:
            raise AssertionError("heard %r, but not %r" % (self.asHeard, sPattern)) from None
        self.asHeard.clear()

    def Find(self, sRole, sName=".*"):
        """What is to be seen of that role and name, found from the desktop down, when it is there."""
        def Found():
            try:
                return next((tNode for tNode in Tree(Atspi.get_desktop(0))
                             if tNode.get_role_name() == sRole and Shows(tNode)
                             and re.fullmatch(sName, tNode.get_name())), None)
            except GLib.Error:
                return None  # something went while it was looked at
        return self.Wait(Found, "%s %r" % (sRole, sName))


def Tree(tNode):
    yield tNode
    if tNode.get_role_name() != "table":  # whose lines are thousands
        for lChild in range(tNode.get_child_count()):
            if tChild := tNode.get_child_at_index(lChild):
                yield from Tree(tChild)


def Has(tNode, eState):
    tNode.clear_cache()
    return tNode.get_state_set().contains(eState)


def Shows(tNode):
    return Has(tNode, Atspi.StateType.SHOWING)


def Contents(tNode):
    return Atspi.Text.get_text(tNode, 0, Atspi.Text.get_character_count(tNode))


def Spoken(tNode):
    """What a screen reader says of something that gets the focus."""
    tNode.clear_cache()
    asPart = [tNode.get_role_name(), *tNode.get_name().split()]
    if "Text" in tNode.get_interfaces():
        asPart.append(repr(Contents(tNode)))
    for eState in (Atspi.StateType.SELECTED, Atspi.StateType.CHECKED):
        if Has(tNode, eState):
            asPart.append(eState.value_nick)
    return " ".join(asPart)


def AskEveryPart(tNode):
    """Asks a text for what stands before, at and after each place of it, and behind its end."""
    sAll = Contents(tNode)
    for lAt in range(-2, len(sAll) + 3):
        for ePart in PARTS:
            atPart = [fnAsk(tNode, lAt, ePart) for fnAsk in (Atspi.Text.get_text_before_offset,
                                                             Atspi.Text.get_text_at_offset,
                                                             Atspi.Text.get_text_after_offset)]
            sCase = (sAll, lAt, ePart, [(t.content, t.start_offset, t.end_offset) for t in atPart])
            for tPart in atPart:
                assert 0 <= tPart.start_offset <= tPart.end_offset <= len(sAll), sCase
                assert tPart.content == sAll[tPart.start_offset:tPart.end_offset], sCase
            assert atPart[0].end_offset == atPart[1].start_offset, sCase
            assert atPart[1].end_offset == atPart[2].start_offset, sCase
            if 0 <= lAt < len(sAll):
                assert atPart[1].start_offset <= lAt < atPart[1].end_offset, sCase
    if sAll:
        tWhole = Atspi.Text.get_text_at_offset(tNode, 0, Atspi.TextBoundaryType.LINE_START)
        assert tWhole.content == sAll, (sAll, tWhole.content)


def Round(t, tReader):
    """All that there is to do: range, listing, instruction, breakpoint, save."""
    Keys, Type, Expect = t.tDesktop.Keys, t.tDesktop.Type, tReader.Expect
    t.Emulate("--sample", "8000")
    t.Open()
    Expect("table cell 8000 F3 DI ó selected")
    Keys("Tab")
    Expect("text Start address '8000'")
    Type("8001\t")
    Expect("text End address 'A001'")
    Type("8100\t")
    Expect("table cell 8001 ED 56 IM 1 .* selected")
    Keys("shift+Tab")
    Expect("check box Suppress overwrite warnings .*")
    Keys("Tab")
    Expect("table cell 8001 .* selected")  # again, after the focus was elsewhere
    Keys("Down")
    Expect("table cell 8003 31 00 00 LD SP,0000 .* selected")

    # The editor, which keeps the focus from line to line; what it shows nobody has typed.
    tReader.asTyped.clear()
    Keys("Return")
    Expect("text Instruction at 8003 'LD SP,0000'")
    Keys("Up")
    Expect("text Instruction at 8001 'IM 1'")
    assert not tReader.asTyped, tReader.asTyped
    tLine = tReader.Find("table", "Listing").get_child_at_index(0)
    assert Spoken(tLine) == "table cell 8001 ED 56 IM 1 í V selected"
    assert not Has(tLine, Atspi.StateType.FOCUSED), "the editor has the focus, not its line"
    Type("xor a\n")
    Expect(r"text Written at 8001: XOR A\. Instruction at 8003 'LD SP,0000'")
    t.tEmulator.Expect("ram changed", "8001: AF 00")
    tReader.Wait(lambda: any(sName.startswith("8001 AF ") for sName in tReader.asRenamed),
                 "the written line to be told of")
    Type("foo\n")
    Expect("push button OK")
    tReader.Find("label", "Wrong instruction: FOO")
    Keys("Return")
    Expect("text Instruction at 8003 'FOO'")
    Type("ld (1234),bc\n")
    Expect("push button .*No")
    tReader.Find("alert", "Varnel - Assembler warning")
    Keys("Return")
    Expect(r"text Instruction at 8003 'LD \(1234\),BC'")
    Keys("Escape")
    Expect("table cell 8003 .* selected")

    # The pop-up menu, and what it does.
    Keys("shift+F10")
    Expect("popup menu Disassembler")
    tMenu = tReader.Find("popup menu", "Disassembler")
    assert tMenu.get_parent().get_role_name() == "application"
    assert tMenu.get_parent().get_child_at_index(tMenu.get_index_in_parent()) == tMenu
    Keys("Down")
    Expect("menu item Set breakpoint here")
    Keys("Return")
    t.tEmulator.Expect("breakpoint 8003")
    Expect("table cell 8003 .* selected")

    # The save dialog, whose name field has words.
    sPath = t.tSystem.sFolder + "/the listing.txt"
    Keys("F10", "Down", "Return")
    Expect("text File name: ''")
    Type(sPath)
    tName = tReader.Find("text", "File name:")
    assert Contents(tName) == sPath
    AskEveryPart(tName)
    tWord = Atspi.Text.get_text_at_offset(tName, sPath.index("sting"),
                                          Atspi.TextBoundaryType.WORD_START)
    assert tWord.content == "listing.", (sPath, tWord.content)
    Keys("Return")
    Expect("push button .*OK")
    tReader.Find("label", "File saved")
    Keys("Return")
    Expect("table cell 8003 .* selected")
    assert open(sPath, "rb").read().startswith(b"8001 AF ")


def Fields(t, tReader):
    """Every text field, empty, short and full."""
    tReader.asHeard.clear()
    t.tDesktop.Keys("Return")
    tReader.Expect("text Instruction at 8003 'LD SP,0000'")
    for sText in ("LD (IX+05),'", "A", "", "    "):
        t.tDesktop.Keys("ctrl+a", "BackSpace")
        t.tDesktop.Type(sText)
        tEditor = tReader.Find("text", "Instruction at 8003")
        tReader.Wait(lambda: Contents(tEditor) == sText, "%r in the editor" % sText)
        AskEveryPart(tEditor)
    t.tDesktop.Keys("Escape")
    for sName in ("Start address", "End address"):
        AskEveryPart(tReader.Find("text", sName))
    t.tDesktop.Keys("Tab")
    tReader.Expect("text Start address '8001'")


def Lines(t, tReader):
    """As many lines as there can be, asked for one by one; nothing is kept for those asked for."""
    t.tDesktop.Type("0\tffff\t")
    tReader.Expect("table cell 8000 .* selected")  # which the emulator asked for
    tList = tReader.Find("table", "Listing")
    lCount = tList.get_child_count()
    assert lCount > 60000, lCount
    atKept, alUsage = [], []
    for lFirst in (0, 1):  # what the window itself needs first, to draw and to answer, it has then
        for lLine in range(lFirst, lCount, 4):
            tLine = tList.get_child_at_index(lLine)
            if lLine % 1024 == 0:
                atKept.append(tLine)
        alUsage.append(t.tSystem.Usage(t.tProgram)[0])
    lGrown = alUsage[1] - alUsage[0]
    assert lGrown < 1024, "%d KB for lines that were asked for" % lGrown
    assert tLine.get_name().startswith("FFF"), tLine.get_name()
    # A list of one line, asked for the others still.
    t.tDesktop.Type("\tffff\t\t")
    tReader.Expect("table cell FFFF .* selected")
    assert tList.get_child_count() == 1
    AskInVain(atKept + [tLine, tList])
    return tList


def AskInVain(atNode):
    """What is gone may answer anything or nothing, but the window must live."""
    for tNode in atNode:
        for fnAsk in (Spoken, Atspi.Accessible.get_parent, Atspi.Accessible.get_index_in_parent,
                      lambda tGone: tGone.get_child_at_index(0),
                      lambda tGone: Atspi.Component.get_extents(tGone, Atspi.CoordType.SCREEN),
                      Contents):
            try:
                fnAsk(tNode)
            except GLib.Error:
                pass


def Gone(t, tReader, tList):
    """Things of a window that was closed."""
    frmOther = t.frm.OpenAnother()
    tFrame = tReader.Find("frame", ".* - Window 2")
    atNode = [tNode for tNode in Tree(tFrame)]
    atNode += [tNode.get_child_at_index(0) for tNode in atNode if tNode.get_role_name() == "table"]
    frmOther.Close()
    AskInVain(atNode)
    assert tList.get_child_at_index(0).get_name().startswith("FFFF ")


def Main():
    with tempfile.TemporaryDirectory() as sFolder:
        t = Journey(System(sFolder, sys.argv[1]), *sys.argv[1:])
        try:
            tReader = Reader(t.tDesktop)
            Round(t, tReader)
            Fields(t, tReader)
            Gone(t, tReader, Lines(t, tReader))
            t.End()
        except BaseException:
            print("captions:", t.tDesktop.Captions(), "focus:", t.tDesktop.Focused())
            t.tDesktop.Picture("failed-ScreenReader.png")
            raise
        finally:
            t.tDesktop.End()


if __name__ == "__main__":
    Main()
