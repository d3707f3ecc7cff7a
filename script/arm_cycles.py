# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

"""Finds the inner loop of each kernel in the assembly of a folder and prints llvm-mca's estimate."""

import re
import subprocess
import sys
from pathlib import Path

PROCESSORS = ["neoverse-n2", "cortex-a55"]
ROUNDS = 200

# Kernels by source, with the pixels or elements of one turn of the inner loop.
KERNELS = {
    "simd_neon_bgr": {
        "SwapRedBlue": 16,
        "SplitThreePlanes": 16,
        "MergeThreePlanes": 16,
        "SplitTwoPlanes": 16,
        "MergeTwoPlanes": 16,
        "ConvertBgrToGray": 16,
        "ExpandGrayToBgr": 16,
    },
    "simd_neon_bgr_to_yuv": {
        "ConvertBgrToI420": 32,
        "ConvertBgrToNv12": 32,
        "ConvertBgrToYuv444": 16,
    },
    "simd_neon_yuv_to_bgr": {
        "ConvertI420ToBgr": 32,
        "ConvertI420ToRgb": 32,
        "ConvertYuv444ToBgr": 16,
        "ConvertNv12ToBgr": 32,
        "ConvertNv12ToBgrDirectly": 32,
    },
    "simd_neon_floats": {
        "ScaleBytesToFloats": 4,
        "ScaleFloatsToBytes": 16,
        "FloatsToHalves": 4,
        "HalvesToFloats": 4,
        "AddConstantFloats": 4,
        "AccumulateScaledFloats": 4,
        "MultiplyFloats": 4,
    },
}


def function_lines(assembly, name):
    """The instructions and labels of a kernel's routine for the instruction set."""
    start = re.search(rf"^(_ZN4Simd4Neon6N_NEON\w*{len(name)}{name}E\w*):$", assembly, re.MULTILINE)
    if start is None:
        sys.exit(f"no function {name}")
    end = assembly.index(f".size\t{start.group(1)},", start.end())
    lines = [line.strip() for line in assembly[start.end():end].splitlines()]
    return [line for line in lines if line.startswith(".L") or (line and not line.startswith("."))]


def inner_loop(lines):
    """The longest run of instructions that ends in a branch to its start and has no loop inside."""
    label_at = {line[:-1]: i for i, line in enumerate(lines) if line.endswith(":")}
    loops = []
    for i, line in enumerate(lines):
        branch = re.match(r"(?:b\.?\w*|cbn?z|tbn?z)\b.*?(\.L\w+)$", line)
        if branch and label_at.get(branch.group(1), len(lines)) < i:
            loops.append((label_at[branch.group(1)], i))
    inner = [a for a in loops if not any(a != b and a[0] <= b[0] and b[1] <= a[1] for b in loops)]
    first, last = max(inner, key=lambda loop: loop[1] - loop[0])
    return [line for line in lines[first:last + 1] if not line.endswith(":")]


def cycles_a_turn(loop, processor):
    report = subprocess.run(
        ["llvm-mca-16", "-mtriple=aarch64-linux-gnu", f"-mcpu={processor}",
         f"-iterations={ROUNDS}", "-instruction-info=false", "-resource-pressure=false", "-"],
        input="\n".join(loop) + "\n", capture_output=True, text=True, check=True).stdout
    return int(re.search(r"Total Cycles:\s+(\d+)", report).group(1)) / ROUNDS


def main():
    folder = Path(sys.argv[1])
    print(f"{'cycles a pixel':<30}" + "".join(f"{name:>14}" for name in PROCESSORS))
    for source, kernels in KERNELS.items():
        assembly = (folder / f"{source}.s").read_text()
        for kernel, pixels in kernels.items():
            loop = inner_loop(function_lines(assembly, kernel))
            estimates = [cycles_a_turn(loop, processor) / pixels for processor in PROCESSORS]
            print(f"{kernel:<30}" + "".join(f"{estimate:14.2f}" for estimate in estimates))


main()
