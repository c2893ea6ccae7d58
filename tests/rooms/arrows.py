#!/usr/bin/env python3
"""Each room of the engine sees the rooms of the floors below its own, and no other; each program sees what programs
share and no other program; neither they nor the synthetic world see what is inside the engine.

usage: arrows.py BUILD PROJECT FLOORS     FLOORS: "foundation;documents model;...", from the lowest up

For each of them the compiler is asked, with the options that it is compiled with, which headers it finds. One include
against the order is compiled for real and has to fail.
"""
import json
import pathlib
import shlex
import subprocess
import sys


# What programs see beside what is published: themselves, what they share and, where they render or compare, the
# synthetic world.
SHARED = "common"
RENDERERS = {"compare", "poses", "render"}
# Names that only the synthetic world and the published headers have.
OF_SYNTHETIC, PUBLISHED = "RigRenderer.h", "Calibrator.h"


def options_of(entry):
    """The compiler and its include folders."""
    words = shlex.split(entry["command"])
    kept, words = [next(word for word in words if "ccache" not in word)], words[1:]
    for i, word in enumerate(words):
        if word.startswith(("-I", "-std")):
            kept.append(word)
        elif word == "-isystem":
            kept += words[i:i + 2]
    return kept, entry["directory"]


def commands(build):
    return json.loads((build / "compile_commands.json").read_text())


def options(build, room):
    """Those for a source of the room."""
    for entry in commands(build):
        if f"/src/{room}/" in entry["file"] and f"velmora_{room}.dir" in entry["command"]:
            return options_of(entry)
    sys.exit(f"no source of {room} is compiled")


def all_options(build, folder):
    """Those for the sources in the folder, each once: not all of them belong to the same library."""
    every = {}
    for entry in commands(build):
        if pathlib.Path(entry["file"]).parent == folder:
            command, directory = options_of(entry)
            every[tuple(command)] = (command, directory)
    return list(every.values())


def header_of(sources, room):
    return sorted(path.name for path in (sources / room).glob("*.h"))[0]


def run(command, folder, text):
    return subprocess.run(command + ["-x", "c++", "-"], cwd=folder, input=text, text=True, capture_output=True)


def seen(command, folder, headers):
    """Of these, by name, those that are found."""
    questions = "".join(
        f'#if __has_include("{header}")\nsees {name}\n#endif\n' for name, header in headers.items())
    answer = run(command + ["-E", "-P"], folder, questions)
    if answer.returncode != 0:
        sys.exit(answer.stderr)
    return {line[len("sees "):] for line in answer.stdout.splitlines() if line.startswith("sees ")}


def headers_of(sources, folders):
    return {folder: f"{folder}/{header_of(sources, folder)}" for folder in folders}


def faults_of_programs(build, project, rooms):
    """Programs that see what they must not, or do not see what they need."""
    programs = sorted(path.name for path in (project / "programs").iterdir() if any(path.glob("*.h")))
    inside = headers_of(project / "src/Calibration/src", rooms)
    all_headers = {**headers_of(project / "programs", programs), **inside, "synthetic": OF_SYNTHETIC}
    if not all_options(build, project / "programs" / SHARED):
        sys.exit("no source that programs share is compiled")
    for program in sorted(path.name for path in (project / "programs").iterdir() if path.is_dir()):
        allowed = {program, SHARED} | ({"synthetic"} if program in RENDERERS else set())
        for command, folder in all_options(build, project / "programs" / program):
            found = seen(command, folder, all_headers)
            for other in sorted(found - allowed):
                yield f"program {program} sees {other}"
            for other in sorted((allowed & all_headers.keys()) - {SHARED} - found):
                yield f"program {program} does not see {other}"
    for command, folder in all_options(build, project / "synthetic"):
        for other in sorted(seen(command, folder, {**all_headers, "published headers": PUBLISHED}) - {"synthetic"}):
            yield f"the synthetic world sees {other}"


def compiles(room, header, build):
    command, folder = options(build, room)
    return run(command + ["-fsyntax-only"], folder, f'#include "{header}"\n').returncode == 0


def main():
    build, project = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    sources = project / "src/Calibration/src"
    floors = [floor.split() for floor in sys.argv[3].split(";")]
    rooms = [room for floor in floors for room in floor]
    faults = []
    for number, floor in enumerate(floors):
        below = {room for lower in floors[:number] for room in lower}
        for room in floor:
            found = seen(*options(build, room), headers_of(sources, rooms))
            for other in sorted(found ^ (below | {room})):
                faults.append(f"{room} {'sees' if other in found else 'does not see'} {other}")
    if not compiles("quality", "solver/Threads.h", build):
        faults.append("quality cannot include a header of solver")
    for header in ("quality/NextPose.h", "Calibrator.h"):
        if compiles("solver", header, build):
            faults.append(f"solver can include {header}")
    faults += faults_of_programs(build, project, rooms)
    print("\n".join(faults) or
          f"{len(rooms)} rooms on {len(floors)} floors see what is below them, programs what they share")
    sys.exit(1 if faults else 0)


main()
