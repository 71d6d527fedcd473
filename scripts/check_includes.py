#!/usr/bin/env python3
"""Reports every include that runs against scripts/rooms, and every source in these folders without a header of its name.

Usage: scripts/check_includes.py [FOLDER]   (of the sources; else the one that this script belongs to)
"""
import pathlib
import re
import sys

# Sources that nothing else calls by name: programs, and what a library exports.
ENTRY_POINTS = {"main", "module", "plugin", "filter", "source", "minimal_host", "avbase", "tarvoglobal",
                "image_converter"}
# What a fuzzer's program calls in its one source.
FUZZER = "int LLVMFuzzerTestOneInput("


def read_rooms(path):
    rooms = {}
    for line in path.read_text().splitlines():
        if not line or line.startswith("#"):
            continue
        room, _, allowed = line.partition(":")
        allowed = allowed.split()
        later = [name for name in allowed if name not in rooms]
        if later:
            sys.exit(f"{path}: {room} includes {', '.join(later)}, which stands below it; order the rooms anew")
        rooms[room] = set(allowed)
    return rooms


def room_of(path, rooms):
    return next((str(folder) for folder in pathlib.PurePath(path).parents if str(folder) in rooms), None)


def main():
    root = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent
    rooms = read_rooms(root / "scripts/rooms")
    faults = []
    for top in sorted({room.split("/")[0] for room in rooms}):
        for path in sorted((root / top).rglob("*.*")):
            if path.suffix not in (".h", ".cpp"):
                continue
            name = path.relative_to(root)
            room = room_of(name, rooms)
            if room is None or room != str(name.parent):
                faults.append(f"{name}: its folder is not in scripts/rooms; add it there")
                continue
            text = path.read_text()
            is_entry = path.suffix == ".h" or path.stem in ENTRY_POINTS or FUZZER in text
            if not is_entry and not path.with_suffix(".h").exists():
                faults.append(f"{name}: has no header of its own name; declare there what it offers")
            for number, line in enumerate(text.splitlines(), 1):
                match = re.match(r'#include "([^"]+)"', line)
                target = room_of(match[1], rooms) if match else room
                if target != room and target not in rooms[room]:
                    faults.append(f"{name}:{number}: {room} may not include {match[1]}; see scripts/rooms")
    print(*faults, sep="\n", end="\n" if faults else "")
    return 1 if faults else 0


sys.exit(main())
