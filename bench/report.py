#!/usr/bin/python3
"""Writes what picture_bench measured as pages: docs/speed.md with its chart, or docs/growth.md.

    bench/report.py speed BENCH_JSON DOCS
    bench/report.py growth BENCH_JSON DOCS
"""

import html
import json
import pathlib
import re
import subprocess
import sys

LARGE = (4000, 3000)
SETS = {"avx512": "AVX-512", "avx2": "AVX2", "baseline": "SSE2"}

SPEED_INTRO = """# Speed

Nanoseconds per pixel of each operation, beside what memory alone takes and what the fastest library takes that does
the same. Written by `script/bench`; figures of another machine differ, ratios less so.

{machine}

How to read it:

- **ns/pixel** is the registered function called through the plug-in's own table by the embedded host, with its result
  in memory that is there already. **Whole call** is the same with a picture that the host makes for the call, which
  includes filling it with its first colour.
- **Limit** is the least that the memory traffic alone takes, on the same buffers: copying a picture, reading it, moving
  it in place, reading two and writing one. Beside it the ratio, and what it is to be at most.
- **Library** is the fastest of those compared with, and how many times as fast the plug-in is. `~` marks one whose
  result isn't the same to the last bit. Beside it what the ratio is to be at least.
- All of them take turns on the same buffers, in one thread; a figure is the median of the rounds, a ratio the median of
  the ratios within a round, in processor time. Before an operation is timed, its whole result is compared with a plain
  restatement of its rule, and it isn't timed when a pixel differs.
- Where memory is slow, not even a plain copy would be as many times as fast as a library that keeps memory busy, too.
  A goal that is missed for that reason alone says *memory* instead of **no**.
- Goals are for large pictures. For icons, what counts is what a call costs besides its pixels: there the limit is the
  same calls of the host without any pixel work, and a whole call is to take at most 1.5 times as long.
"""

GROWTH_INTRO = """# Growth

Nanoseconds per pixel for pictures of 0.25 to 64 megapixels, among them the worst that are known for the search and for
the rectangle mask. Written by `script/bench --growth`.

{machine}

Results lie in memory that is there already. Small pictures gain from caches, so the last column compares the largest
picture with the one of 4 megapixels, less what memory alone takes more there: *flat* is at most 1.2. One picture that
is made to be hard for the rectangle mask isn't: *bars* are a pixel wide and as high as the picture, so that each of
their pixels lies in a cache line of its own, and the lines of the largest exceed the cache.

"""


def machine(results):
    """What was measured on, without anything that dates or names it."""
    info = pathlib.Path("/proc/cpuinfo").read_text()
    model = re.search(r"model name\s*: (.*)", info).group(1).strip()
    flags = re.search(r"flags\s*: (.*)", info).group(1).split()
    known = ["sse2", "ssse3", "sse4_2", "avx", "avx2", "fma", "avx512f", "avx512bw", "avx512vl"]
    cores = info.count("processor\t:")
    caches = [line.split() for line in subprocess.check_output(["getconf", "-a"], text=True).splitlines()]
    sizes = {words[0]: int(words[1]) for words in caches if len(words) == 2 and words[1].isdigit()}
    levels = [("L1", "LEVEL1_DCACHE_SIZE"), ("L2", "LEVEL2_CACHE_SIZE"), ("L3", "LEVEL3_CACHE_SIZE")]
    cache = ", ".join(f"{name} {sizes[key] // 1024} KB" for name, key in levels if sizes.get(key))
    lines = [
        f"{model}, {cores} cores ({', '.join(flag for flag in known if flag in flags)}); {cache}; "
        f"g++ {results['compiler']}. The plug-in used {SETS[results['instruction_set']]}."
    ]
    if results.get("peers_present"):
        lines.append(f"Compared with {results['peers_present']}.")
    if results.get("peers_absent"):
        lines.append(f"Not there to compare with: {results['peers_absent']}.")
    return " ".join(lines)


def size_of(figures):
    return figures["width"], figures["height"]


def best_peer(figures):
    return min(figures["peers"], key=lambda peer: peer["time"], default=None)


def limit_cell(figures):
    if not figures["limit"]:
        return "–"
    goal = f" (≤ {figures['limit_goal']:.2f})" if figures["limit_goal"] else ""
    return f"{figures['limit_ratio']:.2f} {figures['limit']}{goal}"


def peer_cell(figures):
    best = best_peer(figures)
    if best is None:
        return "–"
    goal = f" (≥ {figures['peer_goal']:.2f})" if figures["peer_goal"] else ""
    same = "" if best["same_result"] else " ~"
    return f"{best['ratio']:.2f} {best['library']}{same}{goal}"


def beyond_memory(figures):
    """Whether only the library's goal is missed, and the limit itself would miss it as well."""
    best = best_peer(figures)
    if figures.get("goal_met") is not False or best is None or not (figures["peer_goal"] and figures["limit_goal"]):
        return False
    limit_met = figures["limit_ratio"] <= figures["limit_goal"]
    return limit_met and best["time"] / figures["limit_time"] < figures["peer_goal"]


def goal_cell(figures):
    if beyond_memory(figures):
        return "memory"
    return {True: "yes", False: "**no**", None: "–"}[figures.get("goal_met")]


def table(rows):
    lines = [
        "| operation | ns/pixel | whole call | limit | library | goal met |",
        "| --- | ---: | ---: | --- | --- | --- |",
    ]
    for figures in rows:
        name = figures["operation"] + ("" if figures["per"] == "pixel" else f", per {figures['per']}")
        lines.append(
            f"| {name} | {figures['plugin']:.3f} | {figures['whole_call']:.3f} | "
            f"{limit_cell(figures)} | {peer_cell(figures)} | {goal_cell(figures)} |"
        )
    return "\n".join(lines)


def limits_table(limits):
    names = list(dict.fromkeys(entry["limit"] for entry in limits))
    sizes = list(dict.fromkeys(size_of(entry) for entry in limits))
    times = {(entry["limit"], size_of(entry)): entry["time"] for entry in limits}
    lines = ["| ns/pixel | " + " | ".join(f"{w} × {h}" for w, h in sizes) + " |"]
    lines.append("| --- |" + " ---: |" * len(sizes))
    for name in names:
        lines.append(f"| {name} | " + " | ".join(f"{times[name, size]:.3f}" for size in sizes) + " |")
    return "\n".join(lines)


def chart(rows):
    """Bars for the plug-in, with marks for the limit and the best library, on a logarithmic scale."""
    label, scale, top, step, width = 330, 150, 56, 20, 1010
    first, last = 0.05, 500.0

    def x(value):
        from math import log10

        return label + scale * (log10(min(max(value, first), last)) - log10(first))

    height = top + step * len(rows) + 20
    out = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
        'font-family="sans-serif" font-size="12">',
        "<title>Nanoseconds per pixel of each operation, of its memory limit and of the best library</title>",
        f'<rect width="{width}" height="{height}" fill="#fff"/>',
        f'<text x="{label}" y="16" fill="#222">ns per pixel at {LARGE[0]} × {LARGE[1]}, logarithmic</text>',
    ]
    key = [("plug-in", "#2a7f8e"), ("memory limit", "#222"), ("fastest library", "#e0812f")]
    at = label + 330
    for text, colour in key:
        out.append(f'<rect x="{at}" y="7" width="10" height="10" fill="{colour}"/>')
        out.append(f'<text x="{at + 14}" y="16" fill="#222">{text}</text>')
        at += 115
    for value in (0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 200, 500):
        out.append(f'<line x1="{x(value):.1f}" x2="{x(value):.1f}" y1="42" y2="{height - 12}" stroke="#ddd"/>')
        out.append(f'<text x="{x(value):.1f}" y="36" text-anchor="middle" fill="#666">{value:g}</text>')
    for i, figures in enumerate(rows):
        y = top + step * i
        out.append(f'<text x="{label - 8}" y="{y + 4}" text-anchor="end" fill="#222">'
                   f'{html.escape(figures["operation"])}</text>')
        end = x(figures["plugin"])
        out.append(f'<rect x="{label}" y="{y - 5}" width="{end - label:.1f}" height="10" fill="#2a7f8e"/>')
        if figures["limit"]:
            at = x(figures["limit_time"])
            out.append(f'<rect x="{at - 1:.1f}" y="{y - 8}" width="2.5" height="16" fill="#222"/>')
        best = best_peer(figures)
        if best is not None:
            out.append(f'<circle cx="{x(best["time"]):.1f}" cy="{y}" r="4.5" fill="#e0812f"/>')
    out.append("</svg>\n")
    return "\n".join(out)


def write_speed(results, docs):
    figures = results["figures"]
    large = [row for row in figures if size_of(row) == LARGE]
    slow_memory = [row["operation"] for row in large if beyond_memory(row)]
    missed = [row["operation"] for row in large if row.get("goal_met") is False and not beyond_memory(row)]
    parts = [SPEED_INTRO.format(machine=machine(results))]
    parts.append(f"![Chart of the first table](pictures/speed.svg)\n\n## {LARGE[0]} × {LARGE[1]}\n\n{table(large)}\n")
    parts.append("Goals missed: " + (", ".join(missed) if missed else "none") + ".\n")
    if slow_memory:
        parts.append("Out of reach of this memory: " + ", ".join(slow_memory) + ".\n")
    for size in dict.fromkeys(size_of(row) for row in figures):
        if size != LARGE:
            rows = [row for row in figures if size_of(row) == size]
            parts.append(f"## {size[0]} × {size[1]}\n\n{table(rows)}\n")
    parts.append("## Memory\n\n" + limits_table(results["limits"]) + "\n")
    (docs / "speed.md").write_text("\n".join(parts))
    (docs / "pictures" / "speed.svg").write_text(chart(large))
    print(f"{docs / 'speed.md'}, {docs / 'pictures/speed.svg'}; goals missed: {', '.join(missed) or 'none'}")


def write_growth(results, docs):
    sizes = [entry["pixels"] for entry in max((row["times"] for row in results["growth"]), key=len)]
    lines = ["| ns/pixel, by megapixels | " + " | ".join(f"{size / 1e6:g}" for size in sizes) + " | largest to 4 |"]
    lines.append("| --- |" + " ---: |" * len(sizes) + " --- |")
    for row in results["growth"]:
        times = {entry["pixels"]: f"{entry['time']:.3f}" for entry in row["times"]}
        cells = " | ".join(times.get(size, "–") for size in sizes)
        verdict = "flat" if row["flat"] else "**grows**"
        lines.append(f"| {row['operation']} | {cells} | {row['growth']:.2f} {verdict} |")
    text = GROWTH_INTRO.format(machine=machine(results)) + "\n".join(lines) + "\n"
    (docs / "growth.md").write_text(text)
    print(docs / "growth.md")


def main():
    what, source, docs = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    results = json.loads(source.read_text())
    {"speed": write_speed, "growth": write_growth}[what](results, docs)


main()
