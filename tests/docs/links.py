"""Checks that pages are found: links.py SOURCE

Relative links of README.md, CONTRIBUTING.md and docs/*.md lead to files, and to headings of theirs; README.md leads to
each page.
"""
import glob
import os
import re
import sys

LINK = re.compile(r"!?\[[^\]]*\]\(([^)\s]+)\)")


def without_blocks(text):
    return re.sub(r"^\s*```.*?^\s*```", "", text, flags=re.S | re.M)


def anchors_of(text):
    """As GitHub makes them of headings."""
    titles = re.findall(r"^#+ (.*)$", without_blocks(text), re.M)
    return {re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles}


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def links_of(path):
    """Files and anchors that a page leads to."""
    for target in LINK.findall(without_blocks(read(path))):
        if not re.match(r"[a-z]+:", target):
            name, _, anchor = target.partition("#")
            yield target, os.path.normpath(os.path.join(os.path.dirname(path), name)) if name else path, anchor


def faults_of(source):
    faults = []
    pages = [source + "/README.md", source + "/CONTRIBUTING.md", *sorted(glob.glob(source + "/docs/*.md"))]
    for page in pages:
        for target, file, anchor in links_of(page):
            if not os.path.exists(file):
                faults.append(f"{page}: {target} is no file")
            elif anchor and anchor not in anchors_of(read(file)):
                faults.append(f"{page}: {target} is no heading")
    linked = {file for _, file, _ in links_of(pages[0])}
    faults += [f"README.md does not lead to {page}" for page in pages[1:] if os.path.normpath(page) not in linked]
    return faults


if __name__ == "__main__":
    wrong = faults_of(os.path.abspath(sys.argv[1]))
    print("\n".join(wrong + [f"{len(wrong)} faults"]))
    sys.exit(1 if wrong else 0)
