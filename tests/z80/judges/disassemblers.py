#!/usr/bin/env python3
"""Holds the decoder against binutils for the Z80 and z80dasm, over every opcode of every prefix.

usage: disassemblers.py VARNEL-Z80

Prints the differences that are not one of the judge's known ways; exits with 1 when there are any.
"""
import re
import subprocess
import sys
import tempfile

ORIGIN = 0x1000
SLOT = 8  # each instruction, then NOPs until every disassembler is in step again
PREFIXES = ((), (0xCB,), (0xED,), (0xDD,), (0xFD,), (0xDD, 0xCB), (0xFD, 0xCB))


def instructions():
    """Every opcode behind every prefix, with a displacement of either sign."""
    for first, second in ((0x05, 0x9A), (0x85, 0x12)):
        for prefix in PREFIXES:
            for opcode in range(256):
                displacement = (first,) if len(prefix) == 2 else ()
                yield bytes((*prefix, *displacement, opcode, first, second)[:4])


def run(*command):
    return subprocess.run(command, check=True, capture_output=True).stdout.decode("latin-1")


def ours(tool, path):
    """Address to (length, text, whether marked), from columns 1-4, 6-21 and 22-40 of a listing."""
    found = {}
    for line in run(tool, "dis", "--org", f"{ORIGIN:04X}", path).split("\r\n")[:-1]:
        text = line[21:40].rstrip()
        found[int(line[:4], 16)] = (len(line[5:21].split()), text.removeprefix("* "), text[0] == "*")
    return found


def respelled(text, address):
    """A judge's text in our spelling."""
    text = text.upper().replace("SLI ", "SLL ").replace("IN F,(C)", "IN (C)")
    text = re.sub(r"\b0X([0-9A-F]+)\b", r"0\1H", text)
    text = re.sub(r"^(DJNZ |JR (?:\w+,)?)\$([-+]\d+)",
                  lambda m: f"{m[1]}{(address + int(m[2])) & 0xFFFF:04X}", text)
    text = re.sub(r"\((I[XY])([-+])(\d+|0[0-9A-F]+H)\)",
                  lambda m: "(%s + %02X)" % (m[1], int(m[2] + m[3].rstrip("H"),
                                                       16 if m[3][-1] == "H" else 10) & 0xFF), text)
    text = re.sub(r"^RST (\w+)$", lambda m: f"RST {int(m[1].rstrip('H'), 16):02X}H", text)
    # the copy of the result: "RLC (IX + 05),B" of binutils, "... & LD B,(IX + 05)" of z80dasm
    text = re.sub(r"^(.*) & LD (.),.*", r"\1,\2", text)
    text = re.sub(r"^(R[LR]C?|S[LR][AL]) (\(I.*\)),(.)$", r"\1 \3,\2", text)
    return text if text.startswith("RST") else re.sub(r"\b0([0-9A-F]{2,4})H\b", r"\1", text)


def binutils(path):
    listing = run("z80-unknown-coff-objdump", "-D", "-z", "-b", "binary", "-m", "z80",
                  f"--adjust-vma={ORIGIN}", path)
    for line in re.finditer(r"^ *([0-9a-f]+):\t((?:[0-9a-f]{2} )+) *\t(.*)", listing, re.M):
        yield int(line[1], 16), len(line[2].split()), line[3].strip(), None


def z80dasm(path):
    listing = run("z80dasm", "-t", "-a", "-g", str(ORIGIN), path)
    for line in re.finditer(r"^\t(.*?)\t*;([0-9a-f]{4})\t((?:[0-9a-f]{2} )+)", listing, re.M):
        text, undocumented = re.subn(r"^defb [^;]*\t;", "", line[1])
        yield int(line[2], 16), len(line[3].split()), text, bool(undocumented)


def is_known(code, length, text, marked, judged_length, judged):
    """Whether a difference is the judge's own way."""
    if code[0] == 0xED:  # does not decode the undocumented codes
        return marked and judged.startswith("DEFB")
    if code[0] not in (0xDD, 0xFD):
        return False
    if code[1] != 0xCB:  # nor what stands behind a prefix without effect
        return marked and judged_length in (1, 3) and re.match("DEFB|ILLEGAL", judged)
    # BIT n,(IX + d),r has no register; of the marks, SLL has none and each copy one
    return length == judged_length and (
        marked and text.startswith("BIT") and text == f"{judged},{text[-1]}" or
        text == judged and marked == text.startswith("SLL"))


def compare(name, judged, listed, codes):
    """Prints one judge's unexplained differences; returns their number."""
    unexplained = 0
    judged = {line[0]: line[1:] for line in judged}
    for slot, code in enumerate(codes):
        address = ORIGIN + slot * SLOT
        length, text, marked = listed[address]
        judged_length, judged_text, judged_marked = judged[address]
        judged_text = respelled(judged_text, address)
        if (length, text) == (judged_length, judged_text) and judged_marked in (None, marked) or \
                is_known(code, length, text, marked, judged_length, judged_text):
            continue
        unexplained += 1
        print(f"{name}: {code.hex(' ')}: {text!r} {length} {marked}, "
              f"judged {judged_text!r} {judged_length} {judged_marked}")
    print(f"{name}: {len(codes)} compared, {unexplained} differences not explained")
    return unexplained


def main():
    codes = list(instructions())
    with tempfile.NamedTemporaryFile() as image:
        image.write(b"".join(code.ljust(SLOT, b"\0") for code in codes))
        image.flush()
        listed = ours(sys.argv[1], image.name)
        judges = {"binutils": binutils(image.name), "z80dasm": z80dasm(image.name)}
        unexplained = [compare(name, lines, listed, codes) for name, lines in judges.items()]
    return 1 if any(unexplained) else 0


if __name__ == "__main__":
    sys.exit(main())
