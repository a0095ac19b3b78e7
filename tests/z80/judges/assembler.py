#!/usr/bin/env python3
"""Holds the assembler against binutils for the Z80, over every form of every instruction.

usage: assembler.py VARNEL-Z80

Prints what was compared; exits with 1 when a difference is not one of the known ways of the judge.
"""
import itertools
import re
import subprocess
import sys
import tempfile

FIELDS = {
    "r": "B C D E H L (HL) A", "q": "B C D E H L A", "g": "B C D E A", "p": "BC DE HL SP",
    "s": "BC DE HL AF", "o": "IX BC DE SP", "h": "IXH IXL", "i": "(IX+00) (IX+7F) (IX+80)",
    "c": "NZ Z NC C PO PE P M", "j": "NZ Z NC C", "n": "00 05 9A FF", "w": "0005 1234 FEDC",
    "b": "0 1 2 3 4 5 6 7", "e": "0000 0041 0081 FFB0", "v": "00 08 10 18 20 28 30 38",
    "rot": "RLC RRC RL RR SLA SRA SLL SRL", "set": "BIT RES SET",
    "alu": "ADD A,;ADC A,;SBC A,;SUB ;AND ;XOR ;OR ;CP ",
}
FORMS = """
NOP;RLCA;RRCA;RLA;RRA;DAA;CPL;SCF;CCF;HALT;EXX;DI;EI;NEG;RETN;RETI;RRD;RLD;LDI;CPI;INI;OUTI;LDD;CPD;
IND;OUTD;LDIR;CPIR;INIR;OTIR;LDDR;CPDR;INDR;OTDR;LD {q},{r};LD (HL),{q};LD {r},{n};LD {q},{i};
LD {i},{q};LD {i},{n};LD A,(BC);LD A,(DE);LD (BC),A;LD (DE),A;LD A,({w});LD ({w}),A;LD A,I;LD A,R;
LD I,A;LD R,A;LD {p},{w};LD {p},({w});LD ({w}),{p};LD IX,{w};LD IX,({w});LD ({w}),IX;LD SP,HL;
LD SP,IX;LD {h},{g};LD {g},{h};LD {h},{h};LD {h},{n};PUSH {s};POP {s};PUSH IX;POP IX;EX DE,HL;
EX AF,AF';EX (SP),HL;EX (SP),IX;{alu}{r};{alu}{n};{alu}{i};{alu}{h};INC {r};DEC {r};INC {p};DEC {p};
INC IX;DEC IX;INC {h};DEC {h};INC {i};DEC {i};ADD HL,{p};ADC HL,{p};SBC HL,{p};ADD IX,{o};{rot} {r};
{rot} {i};{rot} {q},{i};{set} {b},{r};{set} {b},{i};{set} {b},{i},{q};JP {w};JP {c},{w};JP (HL);
JP (IX);JR {e};JR {j},{e};DJNZ {e};CALL {w};CALL {c},{w};RET;RET {c};RST {v};IN A,({n});IN {q},(C);
IN (C);OUT ({n}),A;OUT (C),{q};OUT (C),0;IM 0;IM 1;IM 2"""


def texts():
    """Every form in our spelling, relative jumps first, where their targets are close."""
    found = {}
    for form in FORMS.replace("\n", "").split(";"):
        fields = [FIELDS[name] for name in re.findall(r"{(\w+)}", form)]
        for chosen in itertools.product(*(re.split(";" if ";" in f else " ", f) for f in fields)):
            text = re.sub(r"{\w+}", "%s", form) % chosen
            found[text] = found[text.replace("IX", "IY")] = None
    return sorted(found, key=lambda text: not text.startswith(("JR", "DJNZ")))


def respelled(text, address):
    """One of our texts as the judge reads it: numbers marked, distances signed, a copy last."""
    text = re.sub(r"(?<![A-Z+\d])(\d[\dA-F]|FF|\d{4}|F[A-F][\dA-F]{2})(?![\dA-F])", r"0x\1", text)
    text = re.sub(r"(I[XY])\+(\w\w)", lambda m: "%s%+d" % (m[1], (int(m[2], 16) ^ 128) - 128), text)
    text = re.sub(r"^(JR .*|DJNZ )0x(\w+)", lambda m: "%s$%+d" % (
        m[1], ((int(m[2], 16) - address) & 0xFFFF ^ 0x8000) - 0x8000), text)
    text = re.sub(r"^(R[LR]C?|S[LR][AL]) (.),(\(I.*)", r"\1 \3,\2", text)
    return text.replace("IN (C)", "IN F,(C)")


def assembled(lines, line, *command):
    """What a program's listing holds of each line, and what it said about the lines it rejects."""
    with tempfile.NamedTemporaryFile("w", encoding="ascii") as source:
        source.write("\n".join(lines) + "\n")
        source.flush()
        result = subprocess.run((*command, source.name), capture_output=True, encoding="latin-1")
    made = re.findall(line, result.stdout, re.M)
    if len(made) != len(lines):
        sys.exit(f"{command[0]}: {len(lines)} lines, {len(made)} listed\n{result.stderr}")
    return made, result.stderr


def main():
    forms = texts()
    listed, _ = assembled(forms, r"^([0-9A-F]{4}) ((?:[0-9A-F]{2} )+)", sys.argv[1], "asm")
    asked = [respelled(form, int(line[0], 16)) for form, line in zip(forms, listed)]
    judged, errors = assembled(asked, r"^ *\d+ [?0-9a-f]{4} ((?:[0-9A-F]{2} )+)",
                               "z80-unknown-coff-as", "-march=z80+full", "-aln", "-o", "/dev/null")
    rejected = {int(number) for number in re.findall(r":(\d+): Error", errors)}
    explained = unexplained = 0
    for number, (form, (_, ours), theirs) in enumerate(zip(forms, listed, judged), 1):
        if number in rejected and re.match(r"BIT .,\(I.*\),.", form):
            explained += 1
        elif number in rejected or ours != theirs:
            unexplained += 1
            print(f"{form}: {ours}, judged {'wrong' if number in rejected else theirs}")
    print(f"binutils: {len(forms)} compared, {len(forms) - explained - unexplained} equal\n"
          f"  {explained} with a copy of BIT, which the judge does not know\n"
          f"  {unexplained} NOT EXPLAINED")
    return 1 if unexplained else 0


if __name__ == "__main__":
    sys.exit(main())
