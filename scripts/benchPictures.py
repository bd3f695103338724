"""Draws the measurements of results.json, in the folder given, as SVG: time per element against length for each family
with its limit, and the ratio of every row that has a goal."""
import html
import json
import math
import re
import statistics
import sys

COLOURS = {"native": "#1f5fa8", "kernel": "#2a9d5c", "limit": "#c0392b", "dots": "#8e6bb0", "numpy": "#e08e0b",
           "eigen": "#7f8c8d"}
WORDS = {"native": "the native, result included", "kernel": "its kernel alone", "limit": "limit", "dots": "one dot at a time",
         "numpy": "NumPy", "eigen": "Eigen"}
WIDTH, HEIGHT, LEFT, TOP, BOTTOM = 460, 300, 58, 34, 44
# Bytes per element that an operation touches, where the caches' borders make sense.
TOUCHED = {"add": 24, "divide": 24, "floor": 16, "sqrt": 16, "sin": 16, "exp": 16, "sum": 8, "sort": 8, "random": 8}


def text(x, y, words, size=11, anchor="start", extra=""):
    return (f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}" {extra}>'
            f"{html.escape(str(words))}</text>")


def curve(name, rows):
    """{part: [(length, ns per element)]} of one operation; a product counts per multiply-and-add."""
    lines = {}
    for row_name, row in rows.items():
        operation, length = row_name.rsplit("/", 1)
        if operation == name:
            work = int(length) ** (3 if name.startswith("matrix") else 1)
            for part in COLOURS:
                time = row.get("limit") if part == "limit" else statistics.median(row["parts"].get(part, [0]))
                if time:
                    lines.setdefault(part, []).append((int(length), time / work))
    return {part: sorted(points) for part, points in lines.items()}


def cache_borders(machine, operation):
    """(name, elements) where the operands of an operation outgrow each cache of one core."""
    touched = TOUCHED.get(operation)
    units = {"KiB": 1 << 10, "MiB": 1 << 20}
    found = re.findall(r"(L1d|L2|L3) ([\d.]+) (KiB|MiB) \((\d+) instance", machine["caches"]) if touched else []
    return [(name, float(size) * units[unit] / int(instances) / touched) for name, size, unit, instances in found]


def panel(x0, y0, name, rows, machine):
    lines = curve(name, rows)
    xs = [x for points in lines.values() for x, _ in points]
    ys = [y for points in lines.values() for _, y in points]
    low_x, high_x = math.log10(min(xs)), math.log10(max(xs))
    low_y, high_y = math.floor(math.log10(min(ys)) * 2) / 2, math.ceil(math.log10(max(ys)) * 2) / 2
    wide, high = WIDTH - LEFT - 12, HEIGHT - TOP - BOTTOM

    def at(x, y):
        return (x0 + LEFT + (math.log10(x) - low_x) / (high_x - low_x) * wide,
                y0 + TOP + (high_y - math.log10(y)) / (high_y - low_y) * high)
    out = [text(x0 + LEFT, y0 + 20, name, 14, extra='font-weight="bold"')]
    per = "multiply-and-add" if name.startswith("matrix") else "element"
    out.append(text(x0 + WIDTH - 12, y0 + 20, f"ns per {per}", 11, "end"))
    for power in range(math.ceil(low_y), math.floor(high_y) + 1):
        _, y = at(10 ** low_x, 10 ** power)
        out.append(f'<path d="M{x0 + LEFT} {y:.1f}h{wide}" stroke="#ddd"/>' + text(x0 + LEFT - 6, y + 4, f"{10.0 ** power:g}", 11, "end"))
    for x in sorted(set(xs)):
        out.append(text(at(x, 10 ** low_y)[0], y0 + TOP + high + 16, f"{x:g}" if x < 10000 else f"1e{math.log10(x):g}", 10, "middle"))
    for cache, elements in cache_borders(machine, name.rsplit("/", 1)[1]):
        if min(xs) < elements < max(xs):
            x, _ = at(elements, 10 ** high_y)
            out.append(f'<path d="M{x:.1f} {y0 + TOP}v{high}" stroke="#bbb" stroke-dasharray="3 3"/>' + text(x + 3, y0 + TOP + 10, cache, 9))
    for part, points in lines.items():
        path = " ".join(f"{'ML'[i > 0]}{px:.1f} {py:.1f}" for i, (px, py) in enumerate(at(*point) for point in points))
        dash = 'stroke-dasharray="6 3"' if part == "limit" else ""
        out.append(f'<path d="{path}" fill="none" stroke="{COLOURS[part]}" stroke-width="2" {dash}/>')
    x = x0 + LEFT
    for part in lines:
        label = f"limit: {rows[next(r for r in rows if r.startswith(name + '/'))]['against']}" if part == "limit" else WORDS[part]
        out.append(f'<path d="M{x} {y0 + HEIGHT - 12}h16" stroke="{COLOURS[part]}" stroke-width="3"/>' + text(x + 20, y0 + HEIGHT - 8, label, 10))
        x += 28 + 5.6 * len(label)
    return "".join(out)


def document(width, height, body, machine):
    about = (f"{machine['processor']}, {machine['cores']} cores, {machine['caches']}", f"{machine['compiler']}, {machine['flags']}")
    foot = "".join(text(8, height + 14 + 13 * i, words, 9) for i, words in enumerate(about))
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height + 36}" font-family="sans-serif">'
            f'<rect width="100%" height="100%" fill="white"/>{body}{foot}</svg>\n')


def write(path, content):
    with open(path, "w", encoding="utf-8") as file:
        file.write(content)


def ratios(rows, machine):
    judged = [(name, row) for name, row in rows.items() if row["goal"] and "ratio" in row]
    scale, bar, label = 420, 15, 230
    out = [text(8, 20, "Time over limit, as a share of the goal (the line); colour: met or missed", 13, extra='font-weight="bold"')]
    for i, (name, row) in enumerate(judged):
        y = 34 + i * bar
        share = row["ratio"] / row["goal"]
        colour = "#2a9d5c" if share <= 1 else "#c0392b"
        out.append(text(label - 6, y + 11, name, 10, "end"))
        out.append(f'<rect x="{label}" y="{y + 2}" width="{min(share, 1.9) * scale / 2:.1f}" height="{bar - 4}" fill="{colour}"/>')
        out.append(text(label + scale + 8, y + 11, f"{row['ratio']:.3f} of at most {row['goal']:.3g} x {row['against']}", 10))
    bottom = 34 + len(judged) * bar
    out.append(f'<path d="M{label + scale / 2} 30V{bottom}" stroke="black"/>')
    return document(label + scale + 270, bottom + 6, "".join(out), machine)


def main(folder):
    with open(f"{folder}/results.json", encoding="utf-8") as file:
        results = json.load(file)
    rows, machine = results["rows"], results["machine"]
    lengths = {}
    for name in rows:
        lengths.setdefault(name.rsplit("/", 1)[0], []).append(name)
    families = {}
    for operation, names in lengths.items():
        if len(names) >= 5 and "limit" in rows[names[0]]:
            families.setdefault(operation.split("/")[0], []).append(operation)
    for family, operations in families.items():
        body = "".join(panel(i % 2 * WIDTH, i // 2 * HEIGHT, operation, rows, machine) for i, operation in enumerate(operations))
        size = (max(WIDTH * min(2, len(operations)), 700), HEIGHT * math.ceil(len(operations) / 2))
        write(f"{folder}/{family}.svg", document(*size, body, machine))
    write(f"{folder}/ratios.svg", ratios(rows, machine))


main(sys.argv[1])
