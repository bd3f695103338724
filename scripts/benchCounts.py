"""Prints what each hot path costs per call: host operations as the host counted them, instructions and locks as
callgrind saw them."""
import collections
import glob
import json
import re
import sys


def read_dump(path):
    """Instructions by library, and the calls of pthread_mutex_lock out of the module."""
    names, instructions, locks = {}, collections.Counter(), 0
    library, callee, inclusive = "", "", False
    with open(path, encoding="utf-8") as dump:
        for text in map(str.strip, dump):
            if match := re.match(r"(c?ob|c?fn)=(\(\d+\))(?: (.*))?", text):
                kind, key = match[1], (match[1][-2:], match[2])
                names[key] = match[3] or names.get(key)
                if kind == "ob":
                    library = names[key].rsplit("/", 1)[-1]
                elif kind == "cfn":
                    callee = names[key]
            elif match := re.match(r"calls=(\d+)", text):
                inclusive = True
                if callee.startswith("pthread_mutex_lock") and library.startswith("libvesk_math"):
                    locks += int(match[1])
            elif match := re.match(r"[+*\-\d]\S* (\d+)$", text):
                if not inclusive:
                    instructions[library] += int(match[1])
                inclusive = False
    return instructions, locks


def main(folder):
    with open(f"{folder}/operations.json", encoding="utf-8") as file:
        paths = [json.loads(line) for line in file]
    dumps = sorted(glob.glob(f"{folder}/callgrind.*"), key=lambda p: int(p.rsplit(".", 1)[1]))
    assert len(dumps) == len(paths), "one dump per path"
    head = ["per call", "instructions", "module", "host", "other", "locks", "operations", "allocations", "root slots",
            "type names", "fields by name"]
    lines = []
    for path, dump in zip(paths, dumps):
        instructions, locks = read_dump(dump)
        calls = path["calls"]
        total = sum(instructions.values())
        module = sum(n for library, n in instructions.items() if library.startswith("libvesk_math"))
        host = sum(n for library, n in instructions.items() if library.startswith("libvesk_host"))
        counts = [total / calls, module / calls, host / calls, (total - module - host) / calls, locks / calls] + [
            path[key] for key in ("operations", "allocations", "rootSlots", "typeNames", "fieldAccesses")]
        lines.append([path["path"], *(f"{count:g}" for count in counts)])
    widths = [max(map(len, column)) for column in zip(head, *lines)]
    for cells in [head, *lines]:
        print("  ".join(cell.rjust(width) if i else cell.ljust(width) for i, (cell, width) in enumerate(zip(cells, widths))))


main(sys.argv[1])
