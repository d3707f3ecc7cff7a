# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

"""Finds the inner loops in the assembly of a folder and prints llvm-mca's estimates of them."""

import re
import subprocess
import sys
from pathlib import Path

PROCESSORS = ["neoverse-n2", "cortex-a55"]
ROUNDS = 200
REGISTER_BYTES = {"q": 16, "d": 8, "s": 4, "h": 2, "b": 1, "x": 8, "w": 4}


def functions(assembly):
    """The vector routines: plain name, instructions and labels."""
    for start in re.finditer(r"^(_Z\w*N_NEON\w*):$", assembly, re.MULTILINE):
        end = assembly.find(f".size\t{start.group(1)},", start.end())
        lines = [line.strip() for line in assembly[start.end():end].splitlines()]
        yield plain_name(start.group(1)), [
            line for line in lines if line.startswith(".L") or (line and not line.startswith("."))]


def plain_name(symbol):
    name = subprocess.run(["c++filt", symbol], capture_output=True, text=True, check=True).stdout
    name = re.sub(r"(ox::rows|Simd::Neon|Simd)::|\(anonymous namespace\)::|N_NEON::|\(ox::\w+::\w+\)",
                  "", name.strip())
    name = re.sub(r"^(void|bool|unsigned long) ", "", name)
    return re.split(r"\((?!\w+\)\d)", name)[0]


def inner_loop(lines):
    """The longest run of instructions that ends in a branch to its start and has no loop inside."""
    label_at = {line[:-1]: i for i, line in enumerate(lines) if line.endswith(":")}
    loops = []
    for i, line in enumerate(lines):
        branch = re.match(r"(?:b\.?\w*|cbn?z|tbn?z)\b.*?(\.L\w+)$", line)
        if branch and label_at.get(branch.group(1), len(lines)) < i:
            loops.append((label_at[branch.group(1)], i))
    inner = [a for a in loops if not any(a != b and a[0] <= b[0] and b[1] <= a[1] for b in loops)]
    if not inner:
        return []
    first, last = max(inner, key=lambda loop: loop[1] - loop[0])
    return [line for line in lines[first:last + 1] if not line.endswith(":")]


def stored_bytes(line):
    listed = re.match(r"st([1-4])\s+\{(.*)\}, \[", line)
    if listed and "[" not in listed.group(2):
        registers = listed.group(2)
        ends = [int(number) for number in re.findall(r"v(\d+)\.", registers)]
        count = (ends[1] - ends[0]) % 32 + 1 if "-" in registers else len(ends)
        return count * (16 if re.search(r"\.(16b|8h|4s|2d)", registers) else 8)
    single = re.match(r"st(p|r|ur)(b|h)?\s+([a-z])\d+", line)
    if not single:
        return 0
    bytes_each = {"b": 1, "h": 2}.get(single.group(2)) or REGISTER_BYTES[single.group(3)]
    return bytes_each * (2 if single.group(1) == "p" else 1)


def addresses_apart(loop):
    """The models let a moved address wait for what is loaded or stored; processors don't."""
    for line in loop:
        moved = re.match(r"((?:ld|st)[1-4]\s.*\[(x\d+)\]), (\d+)$", line)
        yield from [moved.group(1), f"add {moved.group(2)}, {moved.group(2)}, {moved.group(3)}"] \
            if moved else [line]


def cycles_a_turn(loop, processor):
    report = subprocess.run(
        ["llvm-mca-16", "-mtriple=aarch64-linux-gnu", f"-mcpu={processor}",
         f"-iterations={ROUNDS}", "-instruction-info=false", "-resource-pressure=false", "-"],
        input="\n".join(addresses_apart(loop)) + "\n", capture_output=True, text=True, check=True).stdout
    return int(re.search(r"Total Cycles:\s+(\d+)", report).group(1)) / ROUNDS


def main():
    print("| source | inner loop | instructions | bytes | " + " | ".join(PROCESSORS) + " |")
    print("|---|---|---|---|---|---|")
    for source in sorted(Path(sys.argv[1]).glob("*.s")):
        for name, lines in functions(source.read_text()):
            loop = inner_loop(lines)
            written = sum(stored_bytes(line) for line in loop)
            # Others sum in registers, or set something up.
            if written >= 16 and not re.search("compile|fill|plan|Windows", name):
                estimates = [cycles_a_turn(loop, processor) / written for processor in PROCESSORS]
                print(f"| {source.stem} | `{name}` | {len(loop)} | {written} | "
                      + " | ".join(f"{estimate:.2f}" for estimate in estimates) + " |")


main()
