#!/usr/bin/env python3
"""What a change of the program's speed is worth: processor time for the same trees, old over new.

  tools/pair_speed.py [--depth D] [--pairs N] [--hash MB] OLD NEW

Both programs search twenty middle-game positions to the depth with one thread, from cleared tables.
They take turns, and who begins changes with every pair. Only the searches count, without start-up
and without the clearing of tables, in processor time: what other processes take is left out, as far
as they don't take the caches too. Different node counts are an error: then the trees differ, and
the times say nothing about speed. Linux only.

Printed are the lowest, the median and the highest ratio of a pair, and that of the sums. Two copies
of one program tell how large the noise is.
"""

import argparse
import os
import pathlib
import sys
from statistics import median

from positions import MIDDLEGAMES
from uci_client import Engine


def processor_time(pid):
    """Seconds that the process has used, outside the system."""
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return int(fields[11]) / os.sysconf("SC_CLK_TCK")


def measure(program, depth, megabytes):
    """(seconds, nodes) of all positions."""
    seconds, nodes = 0.0, 0
    with Engine(program, {"Threads": 1, "Hash": megabytes, "OwnBook": "false"}) as engine:
        # No time limit, whatever the program takes for one when only a depth is given.
        limits = f"depth {depth} movetime 3600000"
        for fen in MIDDLEGAMES:
            engine.clear()
            before = processor_time(engine.process.pid)
            answer = engine.go(limits, "fen " + fen, 3600)
            seconds += processor_time(engine.process.pid) - before
            nodes += answer.last("nodes")
    return seconds, nodes


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("old")
    parser.add_argument("new")
    parser.add_argument("--depth", type=int, default=10)
    parser.add_argument("--pairs", type=int, default=10)
    parser.add_argument("--hash", type=int, default=64, help="megabytes")
    args = parser.parse_args()

    ratios, sums = [], [0.0, 0.0]
    for pair in range(args.pairs):
        results = [None, None]
        for which in ((0, 1), (1, 0))[pair % 2]:
            results[which] = measure((args.old, args.new)[which], args.depth, args.hash)
        (old, old_nodes), (new, new_nodes) = results
        if old_nodes != new_nodes:
            print(f"the trees differ: {old_nodes} and {new_nodes} nodes")
            return 1
        sums[0] += old
        sums[1] += new
        ratios.append(old / new)
        print(f"{old:.2f} s, {new:.2f} s: {ratios[-1]:.3f}", flush=True)
    low, middle, high = min(ratios), median(ratios), max(ratios)
    print(f"old/new {low:.3f} / {middle:.3f} / {high:.3f}, of the sums {sums[0] / sums[1]:.3f}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
