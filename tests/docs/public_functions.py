"""Checks that a page names each public function, and no other: public_functions.py PAGE FOLDER...

The page has one heading "### FILE" for each header or Java file, with tables under it: the first column names
functions in backticks, the second begins with what they are on threads, one of WORDS. Functions of the same name count
as one.
"""
import os
import re
import sys

WORDS = ("thread-safe", "reentrant", "frame thread", "window thread", "once")
# Native methods under other names: the page speaks of all of them in one sentence.
LEFT_OUT = ("Calibration.java", "package-info.java")
NAMELESS = {"__attribute__", "throw", "if", "for", "while", "switch", "return", "synchronized"}


def without_comments(text):
    text = re.sub(r'"(\\.|[^"\\\n])*"', '""', text)
    text = re.sub(r"/\*.*?\*/", " ", text, flags=re.S)
    text = re.sub(r"//[^\n]*", " ", text)
    return re.sub(r"^\s*#(.*\\\n)*.*$", " ", text, flags=re.M)


def statements_of(text):
    """Each statement with the scopes around it, outermost first; a scope is [opening statement, access]."""
    scopes, statement = [], ""
    for character in text:
        if character in "{;":
            yield scopes, statement.strip()
            if character == "{":
                scopes.append([statement.strip(), ""])
            statement = ""
        elif character == "}":
            scopes.pop()
            statement = ""
        elif character == ":" and statement.strip() in ("public", "private", "protected"):
            scopes[-1][1] = statement.strip()
            statement = ""
        else:
            statement += character


def is_class(scope):
    return re.search(r"\b(class|struct|interface|enum)\b", scope[0]) and "(" not in scope[0]


def function_in(statement):
    """The name before the first parenthesis that belongs to a function."""
    if re.match(r"(using|friend|typedef|enum|class|struct)\b", statement) or statement.endswith("= delete"):
        return None
    if re.search(r"\boperator\b", statement):
        return None  # of values: they are used like numbers
    for name in re.findall(r"(~?\w+)\s*\(", re.sub(r"@\w+(\([^)]*\))?", "", statement)):
        if name not in NAMELESS:
            return name
    return None


def public_in_cpp(scopes):
    for scope in scopes:
        if scope[0].startswith("namespace"):
            continue
        if not is_class(scope) or (scope[1] or ("private" if "class" in scope[0] else "public")) != "public":
            return False
    return True


def public_in_java(scopes, statement):
    if len(scopes) != 1 or not is_class(scopes[0]) or "public" not in scopes[0][0]:
        return False
    return "interface" in scopes[0][0] or re.match(r"(@\w+(\([^)]*\))?\s*)*public\b", statement) is not None


def functions_of(path):
    with open(path, encoding="utf-8") as file:
        text = without_comments(file.read())
    names = set()
    for scopes, statement in statements_of(text):
        public = public_in_java(scopes, statement) if path.endswith(".java") else public_in_cpp(scopes)
        name = function_in(statement) if public else None
        # What is assigned at once is a value, even when a call makes it.
        if name is not None and "=" not in statement.split("(")[0]:
            names.add(name)
    return names


def named_on(page):
    """The functions by heading, and the faults of rows."""
    sections, faults, current = {}, [], None
    for line in page.splitlines():
        heading = re.match(r"#+ (.*)$", line)
        if heading:
            file = re.match(r"### (\w+\.(h|java))$", line)
            current = sections.setdefault(file[1], set()) if file else None
        elif current is not None and line.startswith("|"):
            cells = [cell.strip() for cell in line.strip("|").split("|")]
            names = re.findall(r"`(~?\w+)`", cells[0])
            current.update(names)
            if names and not cells[1].startswith(WORDS):
                faults.append(f"{cells[0]}: '{cells[1]}' begins with none of {', '.join(WORDS)}")
    return sections, faults


def faults_of(page, files):
    sections, faults = named_on(page)
    declared = {os.path.basename(path): functions_of(path) for path in files}
    for name, functions in sorted(declared.items()):
        said = sections.pop(name, set())
        faults += [f"{name}: {function} is not on the page" for function in sorted(functions - said)]
        faults += [f"{name}: there is no function {function}" for function in sorted(said - functions)]
    faults += [f"there is no {name}" for name in sections]
    return faults, sum(len(functions) for functions in declared.values())


def main(page, folders):
    files = [os.path.join(folder, name) for folder in folders for name in sorted(os.listdir(folder))
             if name.endswith((".h", ".java")) and name not in LEFT_OUT]
    with open(page, encoding="utf-8") as file:
        faults, count = faults_of(file.read(), files)
    print("\n".join(faults + [f"{count} functions of {len(files)} files, {len(faults)} faults"]))
    return 1 if faults or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2:]))
