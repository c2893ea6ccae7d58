#!/usr/bin/env python3
"""Each room of the engine sees the rooms of the floors below its own, and no other.

usage: arrows.py BUILD SOURCES FLOORS     FLOORS: "foundation;documents model;...", from the lowest up

For each room the compiler is asked, with the options that the room is compiled with, which headers it finds. One
include against the order is compiled for real and has to fail.
"""
import json
import pathlib
import shlex
import subprocess
import sys


def options(build, room):
    """The compiler and its include folders for a source of the room."""
    for entry in json.loads((build / "compile_commands.json").read_text()):
        if f"/src/{room}/" in entry["file"] and f"velmora_{room}.dir" in entry["command"]:
            words = shlex.split(entry["command"])
            kept, words = [next(word for word in words if "ccache" not in word)], words[1:]
            for i, word in enumerate(words):
                if word.startswith(("-I", "-std")):
                    kept.append(word)
                elif word == "-isystem":
                    kept += words[i:i + 2]
            return kept, entry["directory"]
    sys.exit(f"no source of {room} is compiled")


def header_of(sources, room):
    return sorted(path.name for path in (sources / room).glob("*.h"))[0]


def run(command, folder, text):
    return subprocess.run(command + ["-x", "c++", "-"], cwd=folder, input=text, text=True, capture_output=True)


def seen_by(room, rooms, build, sources):
    command, folder = options(build, room)
    questions = "".join(
        f'#if __has_include("{other}/{header_of(sources, other)}")\nsees {other}\n#endif\n' for other in rooms)
    answer = run(command + ["-E", "-P"], folder, questions)
    if answer.returncode != 0:
        sys.exit(answer.stderr)
    return {line.split()[1] for line in answer.stdout.splitlines() if line.startswith("sees ")}


def compiles(room, header, build):
    command, folder = options(build, room)
    return run(command + ["-fsyntax-only"], folder, f'#include "{header}"\n').returncode == 0


def main():
    build, sources = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    floors = [floor.split() for floor in sys.argv[3].split(";")]
    rooms = [room for floor in floors for room in floor]
    faults = []
    for number, floor in enumerate(floors):
        below = {room for lower in floors[:number] for room in lower}
        for room in floor:
            seen = seen_by(room, rooms, build, sources)
            for other in sorted(seen ^ (below | {room})):
                faults.append(f"{room} {'sees' if other in seen else 'does not see'} {other}")
    if not compiles("quality", "solver/Threads.h", build):
        faults.append("quality cannot include a header of solver")
    for header in ("quality/NextPose.h", "Calibrator.h"):
        if compiles("solver", header, build):
            faults.append(f"solver can include {header}")
    print("\n".join(faults) or f"{len(rooms)} rooms on {len(floors)} floors see what is below them")
    sys.exit(1 if faults else 0)


main()
