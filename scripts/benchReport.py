"""Makes the table out of the rounds of scripts/bench: per row the times of its parts, and the median of the rounds'
ratios between the time that counts and the limit. Writes results.json beside the rounds."""
import glob
import json
import os
import re
import statistics
import subprocess
import sys

# What the fixed results rule out, said where a peer is shown.
CANNOT_WIN = {
    "library": "peers approximate in vectors; these results are the library's own to the bit",
    "matrix": "peers fuse multiply and add; these products are rounded before they are added",
    "reductions/sum": "peers use several accumulators; this sum is one chain in a fixed order",
    "reductions/random": "peers draw from another generator",
    "reductions/sort": "peers sort with other algorithms",
}
UNITS = ((1e9, "s"), (1e6, "ms"), (1e3, "us"), (1, "ns"))


def load(folder):
    """{row: {"parts": {part: [ns per round]}, "goal": bound, "against": words}} in the order of measuring. Times
    are processor time: everything measured runs on one thread, and what else runs on the machine stays out."""
    rows = {}
    for path in sorted(glob.glob(f"{folder}/[0-9]*.json"), key=lambda p: (len(os.path.basename(p)), p)):
        with open(path, encoding="utf-8") as file:
            for entry in json.load(file)["benchmarks"]:
                name, part = entry["name"].rsplit("/", 1)
                row = rows.setdefault(name, {"parts": {}, "goal": 0, "against": ""})
                row["parts"].setdefault(part, []).append(entry["cpu_time"])
                if part == "native":
                    row.update(goal=entry["goal"], against=entry.get("label", ""))
    return rows


def judge(row):
    """Adds the counted part, the limit and their ratio."""
    parts = row["parts"]
    peer = row["against"] == "NumPy"
    if "kernel" in parts and not peer:
        row["counted"], counted = "kernel", parts["kernel"]
    elif "result" in parts and not peer:
        row["counted"] = "native less result"
        counted = [native - result for native, result in zip(parts["native"], parts["result"])]
    else:
        row["counted"], counted = "native", parts.get("native", [])
    limits = ["numpy"] if peer else [part for part in parts if part.startswith("limit")]
    if not counted or not limits or any(part not in parts for part in limits):
        return
    limit = [max(times) for times in zip(*(parts[part] for part in limits))]
    ratios = [time / bound for time, bound in zip(counted, limit)]
    row.update(limit=statistics.median(limit), ratio=statistics.median(ratios), spread=[min(ratios), max(ratios)])


def machine(folder):
    """What was measured, and with what."""
    def said(*command):
        return subprocess.run(command, capture_output=True, text=True, check=False).stdout
    cpu = dict(re.findall(r"^(.*?):\s+(.*)$", said("lscpu"), re.M))
    with open(os.path.join(folder, "../compile_commands.json"), encoding="utf-8") as file:
        command = next(e["command"] for e in json.load(file) if e["file"].endswith("kernels/reduceSum.cpp"))
    flags = [word for word in command.split() if re.match(r"-(O|march|mtune|ffp|fno-fast)", word)]
    caches = ", ".join(f"{level} {cpu.get(level + ' cache', '?')}" for level in ("L1d", "L2", "L3"))
    return {"processor": cpu.get("Model name", "?"), "cores": cpu.get("CPU(s)", "?"), "caches": caches,
            "compiler": said(command.split()[0], "--version").splitlines()[0], "flags": " ".join(flags)}


def spoken(nanoseconds):
    for size, unit in UNITS:
        if nanoseconds >= size or unit == "ns":
            return f"{nanoseconds / size:.3g} {unit}"


def line(name, row):
    def time(part):
        return spoken(statistics.median(row["parts"][part])) if part in row["parts"] else ""
    goal, ratio = row["goal"], row.get("ratio")
    verdict = "" if not goal else "not measured" if ratio is None else "met" if ratio <= goal else "MISSED"
    return [name, time("native"), time("kernel"), time("result"), row["against"],
            spoken(row["limit"]) if ratio else "", f"{ratio:.3f}" if ratio else "", f"{goal:.3g}" if goal else "", verdict,
            time("host"), time("domain"), time("dots"), time("numpy"), time("eigen")]


def print_table(rows):
    head = ["row", "native", "kernel", "result", "limit", "takes", "ratio", "goal", "", "host", "domain", "dots", "NumPy", "Eigen"]
    lines = [line(name, row) for name, row in rows.items() if "native" in row["parts"]]
    columns = [i for i in range(len(head)) if any(cells[i] for cells in lines)]
    widths = [max(len(cells[i]) for cells in [head, *lines]) for i in range(len(head))]
    for cells in [head, *lines]:
        aligned = (cells[i].ljust(widths[i]) if i in (0, 4, 8) else cells[i].rjust(widths[i]) for i in columns)
        print("  ".join(aligned).rstrip())


def main(folder):
    rows = load(folder)
    for row in rows.values():
        judge(row)
    about = machine(folder)
    print("\n".join(f"{key}: {value}" for key, value in about.items()))
    print("counted against the goal: the kernel where there is one, else the native less the making of its result where")
    print("that is shown, else the native; result: making it alone; host: the look-ups of an accessor; domain: its test\n")
    print_table(rows)
    if any({"numpy", "eigen"} & set(row["parts"]) for row in rows.values()):
        print("\nWhat the peers are free to do:")
        for family, words in CANNOT_WIN.items():
            print(f"  {family}: {words}")
    judged = [row for row in rows.values() if row["goal"] and "ratio" in row]
    print(f"\n{sum(row['ratio'] <= row['goal'] for row in judged)} of {len(judged)} goals met")
    with open(f"{folder}/results.json", "w", encoding="utf-8") as file:
        json.dump({"machine": about, "rows": rows}, file, indent=1)


main(sys.argv[1])
