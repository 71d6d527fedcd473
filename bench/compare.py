#!/usr/bin/env python3
"""Prints one table of the effects beside the fastest other library, and the rows in which the library is faster.

Usage: bench/compare.py OURS PEERS   (what both benchmark programs wrote with --benchmark_out=FILE)
Every figure is the cold one, in units of the in-place pass. Exits with 1 if a row is behind a peer.
"""

import json
import sys

LAYOUTS = ("packed", "planar")


def figures(path):
    """The counters of every row and layout that was measured."""
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    return {tuple(run["name"].split("/")[:2]): run for run in runs if "cold" in run}


def best_peers(path):
    """For every row and layout the fastest library's figure and name, which is the last word of a peer's row."""
    best = {}
    for (row, layout), run in figures(path).items():
        effect, library = row.rsplit(" ", 1)
        best[effect, layout] = min(best.get((effect, layout), (float("inf"), "")), (run["cold"], library))
    return best


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    ours, peers = figures(sys.argv[1]), best_peers(sys.argv[2])
    print("| Row | | cold x | goal | best peer | | ours / peer |\n|---|---|---|---|---|---|---|")
    behind = []
    for row, layout in sorted(ours, key=lambda key: LAYOUTS.index(key[1])):
        run = ours[row, layout]
        line = f"| {row} | {layout} | {run['cold']:.2f} | {run['goal']:.2f} |"
        if (row, layout) in peers:
            peer, library = peers[row, layout]
            line += f" {peer:.2f} | {library} | {run['cold'] / peer:.2f} |"
            if run["cold"] > peer:
                behind.append(f"{row}/{layout}")
        else:
            line += " | | |"
        print(line)
    print(f"\nbehind a peer: {', '.join(behind) or 'none'}")
    return 1 if behind else 0


if __name__ == "__main__":
    sys.exit(main())
