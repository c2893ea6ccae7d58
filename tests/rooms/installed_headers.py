"""Fails where an installed header includes what is the engine's own business: locks, threads and, but for JSON.h, the
JSON library. A planted include proves that it looks."""
import pathlib
import re
import sys

LOCKS = r"atomic|condition_variable|future|mutex|shared_mutex|thread"


def faults_of(name, text):
    expression = LOCKS if name == "JSON.h" else LOCKS + r"|nlohmann/json\.hpp"
    included = re.findall(r"^\s*#\s*include\s*<([^>]+)>", text, re.MULTILINE)
    return [f"{name} includes <{header}>" for header in included if re.fullmatch(expression, header)]


def main(folder):
    headers = sorted(pathlib.Path(folder).rglob("*.h"))
    if len(headers) < 10 or faults_of("Planted.h", "#include <mutex>\n") != ["Planted.h includes <mutex>"]:
        return "the check itself does not work"
    faults = [fault for header in headers for fault in faults_of(header.name, header.read_text(encoding="utf-8"))]
    return "\n".join(faults) or None


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
