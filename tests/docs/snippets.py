"""Checks the fenced blocks of a page: snippets.py SOURCE BUILD PAGE...

Every fenced block is either a diagram or sample (```text), or has a comment in the line before it that says how it is
known to be true:

    <!-- from FILE -->       the block is an excerpt of a file that is built or run by the tests; lines of the form
                             "// ..." or "# ..." stand for what is left out
    <!-- run -->             the commands are run (```sh), and print what the page says where they begin with "$ "
                             (```console): numbers may differ, "..." stands for any lines
    <!-- needs a camera -->  the commands are run with cameras and streams that do not exist, and complain of nothing
                             else
    <!-- scripts -->         the first word of each line is a program of the project, or is built by it
    <!-- like FILE -->       a JSON text with the keys and types of a file that an earlier command wrote

A comment that begins with "prepare:" holds commands that the reader does not see. All commands of a page run in one
temporary folder, in their order, with build, docs, examples, share and src as in the
project.
"""
import json
import os
import re
import shlex
import subprocess
import sys
import tempfile
import textwrap

GAP = re.compile(r"\s*(//|#) \.\.\.\s*$")
NUMBER = re.compile(r"-?\d[\d.]*(e-?\d+)?")
# Hashes of files, which other versions of a library may write in another way.
HASH = re.compile(r"[0-9a-f]{16}")
PATIENCE = 120  # seconds
# Numbers that mean a size, a state or a type, and so are the same everywhere.
EXACT = {"rows", "cols", "columns", "type", "depth", "sensor", "imgWidth", "imgHeight", "width", "height", "count",
         "ii"}
NO_CAMERA = 60  # added to the numbers of cameras
CAMERA_MISSED = re.compile(r"cannot open (webcam|GStreamer stream)|[Cc]annot open .*camera|"
                           r"[Cc]annot (open video|identify) device '?/dev/video")


class Fault(Exception):
    pass


class Block:
    def __init__(self, language, text, marker, line):
        self.language, self.text, self.marker, self.line = language, text, marker, line


def blocks_of(page):
    """The fenced blocks and the hidden preparations, in order."""
    blocks, marker, fence, hidden = [], "", None, None
    for number, line in enumerate(page.splitlines(), 1):
        if fence is not None:
            if line.strip() == "```":
                blocks.append(Block(fence[0], textwrap.dedent("\n".join(fence[1])), marker, fence[2]))
                fence, marker = None, ""
            else:
                fence[1].append(line)
        elif hidden is not None:
            if line.strip() == "-->":
                blocks.append(Block("prepare", "\n".join(hidden[0]), "prepare", hidden[1]))
                hidden = None
            else:
                hidden[0].append(line)
        elif line.strip().startswith("```"):
            fence = (line.strip()[3:], [], number)
        elif line.strip() == "<!-- prepare:":
            hidden = ([], number)
        elif line.strip().startswith("<!--"):
            marker = line.strip()[4:-3].strip()
        elif line.strip():
            marker = ""
    if fence is not None or hidden is not None:
        raise Fault("a block does not end")
    return blocks


def lines_of(text):
    return [line.strip() for line in text.splitlines() if line.strip()]


def find(wanted, lines, start):
    for i in range(start, len(lines) - len(wanted) + 1):
        if lines[i:i + len(wanted)] == wanted:
            return i + len(wanted)
    raise Fault("these lines are not in the file:\n" + "\n".join(wanted))


def check_excerpt(block, path, source):
    """Lines are compared without indentation; blank ones do not count."""
    if not os.path.isfile(os.path.join(source, path)):
        raise Fault(f"there is no file {path}")
    if not is_tested(path, source):
        raise Fault(f"no CMakeLists.txt names {path}: it is neither built nor run")
    with open(os.path.join(source, path), encoding="utf-8") as file:
        lines = lines_of(file.read())
    pieces, found = [[]], 0
    for line in lines_of(block.text):
        if GAP.match(line):
            pieces.append([])
        else:
            pieces[-1].append(line)
    for piece in pieces:
        found = find(piece, lines, found)


def is_tested(path, source):
    """Whether the build file beside a file, above it, or among the tests names it; build files are their own proof."""
    name = os.path.basename(path)
    if name == "CMakeLists.txt":
        return is_tested(os.path.dirname(path), source)
    for folder in ("examples", "java", "tests"):
        for root, _, files in os.walk(os.path.join(source, folder)):
            for file in files:
                if file in ("CMakeLists.txt", "tests.cmake"):
                    with open(os.path.join(root, file), encoding="utf-8") as text:
                        if re.search(r"(^|[\s/\"])" + re.escape(name) + r"($|[\s)\"])", text.read(), re.M):
                            return True
    return False


class Workshop:
    """The folder in which the commands of a page run."""

    def __init__(self, folder, source, build):
        self.folder = folder
        os.symlink(build, self.path("build"))
        for name in ("docs", "examples", "share", "src"):
            os.symlink(os.path.join(source, name), self.path(name))

    def path(self, name):
        return os.path.join(self.folder, name)

    def run(self, commands):
        environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
        # Debian's Python, which has its cv2, before whatever else is on the path.
        environment["PATH"] = "/usr/bin:" + environment["PATH"]
        done = subprocess.run(["bash", "-e", "-c", commands], cwd=self.folder, env=environment,
                              capture_output=True, text=True, timeout=PATIENCE, stdin=subprocess.DEVNULL, check=False)
        return done.returncode, done.stdout, done.stderr


def run_commands(block, workshop):
    status, out, err = workshop.run(block.text)
    if status != 0:
        raise Fault(f"the commands end with status {status}:\n{out}{err}")


def sessions_of(text):
    """Pairs of a command and the lines that it is said to print."""
    sessions = []
    for line in text.splitlines():
        if line.startswith("$ "):
            sessions.append([line[2:], []])
        elif sessions and sessions[-1][0].endswith("\\"):
            sessions[-1][0] += "\n" + line
        elif sessions:
            sessions[-1][1].append(line)
        else:
            raise Fault("a console block begins with a command")
    return sessions


def same_line(said, printed):
    words = re.compile(r"\s+")
    return words.sub(" ", NUMBER.sub("0", said)).strip() == words.sub(" ", NUMBER.sub("0", printed)).strip()


def compare_output(said, printed):
    """Lines in their order; numbers stand for any number, "..." for any lines."""
    at, skipping = 0, False
    for line in said:
        if line.strip() == "...":
            skipping = True
            continue
        while skipping and at < len(printed) and not same_line(line, printed[at]):
            at += 1
        if at >= len(printed) or not same_line(line, printed[at]):
            raise Fault(f"the page says:\n{line}\nprinted is:\n" + "\n".join(printed))
        at, skipping = at + 1, False
    if said and not skipping and any(line.strip() for line in printed[at:]):
        raise Fault("more is printed than the page says:\n" + "\n".join(printed[at:]))


def run_sessions(block, workshop):
    for command, said in sessions_of(block.text):
        status, out, err = workshop.run(command)
        if status != 0:
            raise Fault(f"{command} ends with status {status}:\n{out}{err}")
        while said and not said[-1].strip():
            said.pop()
        compare_output(said, out.splitlines())


def run_without_camera(block, workshop):
    """Programs read all of their options before they ask for a camera."""
    commands = [command for command, _ in sessions_of(block.text)]
    settings = "\n".join(command for command in commands if re.match(r"[A-Z]+=", command))
    count = 0
    for command in commands:
        if re.match(r"[A-Z]+=", command):
            continue
        text = settings + "\n" + command
        text = re.sub(r"(--webcam\S* |/dev/video)(\d+)", lambda m: f"{m[1]}{int(m[2]) + NO_CAMERA}", text)
        status, out, err = workshop.run(text)
        if status == 0 or not CAMERA_MISSED.search(out + err):
            raise Fault(f"{command} fails for another reason than the camera:\n{out}{err}")
        count += 1
    if count == 0:
        raise Fault("no command is there")


def check_scripts(block, source, build):
    for line in lines_of(block.text):
        words = shlex.split(line, comments=True)
        program = words[0] if words else ""
        if program.startswith("build/"):
            program = os.path.join(build, program[len("build/"):])
        else:
            program = os.path.join(source, program)
        if not os.access(program, os.X_OK):
            raise Fault(f"there is no program {words[:1]}")


def kind_of(value):
    if isinstance(value, bool):
        return "truth"
    if isinstance(value, (int, float)):
        return "number"
    return type(value).__name__


def compare_json(said, real, where):
    """The same keys and kinds; the same texts, but for numbers in them and for hashes; lists may be shortened, but not emptied."""
    if kind_of(said) != kind_of(real):
        raise Fault(f"{where} is said to be {said!r} and is {real!r}")
    if isinstance(said, dict):
        if set(said) != set(real):
            raise Fault(f"{where} has the keys {sorted(real)}, said are {sorted(said)}")
        for key in said:
            compare_json(said[key], real[key], f"{where}.{key}")
            if key in EXACT and said[key] != real[key]:
                raise Fault(f"{where}.{key} is said to be {said[key]} and is {real[key]}")
    elif isinstance(said, list):
        if len(said) > len(real) or bool(said) != bool(real):
            raise Fault(f"{where} has {len(real)} elements, said are {len(said)}")
        for i, element in enumerate(said):
            compare_json(element, real[i], f"{where}[{i}]")
    elif isinstance(said, str) and said.startswith("{"):
        json.loads(real)  # a document within a text
    elif isinstance(said, str) and HASH.fullmatch(said) and HASH.fullmatch(real):
        pass
    elif isinstance(said, str) and NUMBER.sub("0", said) != NUMBER.sub("0", real):
        raise Fault(f"{where} is said to be {said!r} and is {real!r}")


def check_json(block, name, workshop):
    with open(workshop.path(name), encoding="utf-8") as file:
        compare_json(json.loads(block.text), json.load(file), name)


def check_block(block, workshop, source, build):
    marker, language = block.marker, block.language
    if language == "prepare":
        run_commands(block, workshop)
    elif language == "text":
        if re.search(r"^\s*\$ ", block.text, re.M):
            raise Fault("a text block holds commands")
    elif marker.startswith("from "):
        check_excerpt(block, marker[5:].strip(), source)
    elif marker == "run" and language == "sh":
        run_commands(block, workshop)
    elif marker == "run" and language == "console":
        run_sessions(block, workshop)
    elif marker == "needs a camera" and language == "console":
        run_without_camera(block, workshop)
    elif marker == "scripts" and language == "sh":
        check_scripts(block, source, build)
    elif marker.startswith("like ") and language == "json":
        check_json(block, marker[5:].strip(), workshop)
    else:
        raise Fault(f"nothing says how this block of '{language}' is checked (comment before it: '{marker}')")


def faults_of(page, source, build):
    """What is wrong with a page's text, and how many blocks were looked at."""
    faults, blocks = [], blocks_of(page)
    with tempfile.TemporaryDirectory(prefix="velmora-docs-") as folder:
        workshop = Workshop(folder, source, build)
        for block in blocks:
            try:
                check_block(block, workshop, source, build)
            except (Fault, ValueError, OSError, subprocess.TimeoutExpired) as fault:
                faults.append(f"line {block.line}: {fault}")
    return faults, len(blocks)


def main(source, build, pages):
    wrong = 0
    for path in pages:
        with open(path, encoding="utf-8") as file:
            faults, count = faults_of(file.read(), source, build)
        for fault in faults:
            print(f"{path}, {fault}")
        print(f"{path}: {count} blocks, {len(faults)} wrong")
        wrong += len(faults)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2]), sys.argv[3:]))
