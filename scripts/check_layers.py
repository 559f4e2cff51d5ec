#!/usr/bin/env python3
"""The folder graph points one way: a source file includes headers of its own
folder's layer or of layers below it. Lists every include that points up and
is no listed exception; exits 1 if there is one.

Usage: check_layers.py [repository root]"""
import os
import re
import subprocess
import sys

# Lowest first; folders of one rank are one layer and may include each other.
RANK = {
    "platform": 0, "foundation": 1, "reflection": 2, "serial": 3, "app": 4, "jobs": 5,
    "resource": 6, "render": 6, "unit": 7, "input": 7, "tool": 8, "ui": 8,
    "sequencer": 9, "animation": 10, "host": 11,
}

# Folder pairs the design forces: ReferenceObject and MemoryManager derive from
# ObjectBase; objects write themselves to XML and the XML reader builds objects.
ALLOWED_FOLDERS = {("foundation", "reflection"), ("serial", "reflection"), ("reflection", "serial")}

# The plain value types are the vocabulary of every layer, the platform's included.
ALLOWED_HEADERS = {("platform", "foundation/types.h")}

# The coordinate unit lives with the units but puts editing handles into the
# scene through the tools and the widgets.
ALLOWED_FILES = {"unit/coordinateunit.h": {"ui", "tool"}, "unit/coordinateunit.cpp": {"ui", "tool"}}

INCLUDE = re.compile(r'\s*#\s*include\s+"([a-z]+)/([^"]+)"')


def upward_includes(root):
    listed = subprocess.run(["git", "-C", root, "ls-files", "--cached", "--others", "--exclude-standard"],
                            capture_output=True, text=True, check=True).stdout.split()
    found = []
    for name in sorted(set(listed)):
        folder = name.split("/")[0]
        if folder not in RANK or not name.endswith((".h", ".cpp")):
            continue
        path = os.path.join(root, name)
        if not os.path.exists(path):
            continue
        with open(path, errors="ignore") as source:
            for number, line in enumerate(source, 1):
                match = INCLUDE.match(line)
                if not match or match.group(1) not in RANK:
                    continue
                target = match.group(1)
                if RANK[target] <= RANK[folder]:
                    continue
                if (folder, target) in ALLOWED_FOLDERS or (folder, target + "/" + match.group(2)) in ALLOWED_HEADERS:
                    continue
                if target in ALLOWED_FILES.get(name, ()):
                    continue
                found.append("%s:%d includes %s/%s from a layer above" % (name, number, target, match.group(2)))
    return found


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
    found = upward_includes(root)
    for line in found:
        print(line)
    if found:
        print("check_layers: %d upward include(s)" % len(found))
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
