"""Runs the benchmark programs and writes what they measured as a page and a picture."""

import json
import math
import os
import pathlib
import platform
import re
import subprocess
import sys

BUILD = "build/release/bench"
PAGE = pathlib.Path("docs/performance.md")
PICTURE = pathlib.Path("docs/performance.svg")
NOTES = pathlib.Path("docs/performance-notes.md")
SHORT = "binary|written|NowLocal|registry|request|date|appending characters|32 units|1 KiB"

# Program, environment, what stands above its rows. In the order in which users feel them.
PROGRAMS = [
    ("files/files_bench", {}, "Record files"),
    ("text/string_bench", {}, "Strings"),
    ("time/time_bench", {}, "Clock, registry, dates"),
    ("request/request_bench", {"ZELTO_SPIN_US": "0"}, "Requests, sleeping"),
    ("request/request_bench", {"ZELTO_SPIN_US": "50"}, "Requests, spinning"),
    ("text/text_bench", {}, "Conversions"),
]


def run(program, environment, pattern):
    command = [f"{BUILD}/{program}", "--benchmark_format=json", f"--benchmark_filter={pattern}"]
    result = subprocess.run(
        command, env={**os.environ, **environment}, capture_output=True, text=True, check=False
    )
    if result.returncode != 0 or not result.stdout:
        sys.exit(f"bench: {program} failed:\n{result.stderr}")
    return json.loads(result.stdout)["benchmarks"]


def contestants(row):
    names = [key[: -len(" ratio")] for key in row if key.endswith(" ratio")]
    return sorted(names, key=lambda name: name != "ours")


def time_text(nanoseconds):
    for limit, unit in ((1e3, "ns"), (1e6, "µs"), (1e9, "ms")):
        if nanoseconds < limit:
            return f"{nanoseconds / (limit / 1e3):.3g} {unit}"
    return f"{nanoseconds / 1e9:.3g} s"


def goal_of(row):
    """The goal as text, and whether it was reached (None without one)."""
    match = re.fullmatch(r"([\d.]+) (.+)", row.get("label", ""))
    if not match:
        return "", None
    limit, against = float(match[1]), match[2]
    if against == "ns":
        return f"≤ {time_text(limit)}", row["ours"] <= limit
    return f"≤ {limit:g} × {against}", row[f"{against} ratio"] <= limit


def page_row(row):
    name = row["name"].split("/iterations:")[0]
    if row.get("error_occurred"):
        return f"| {name} | failed: {row['error_message']} | | | |"
    spread = f"{time_text(row['ours low'])} – {time_text(row['ours high'])}"
    peers = "; ".join(
        f"{peer} {time_text(row[peer])} (**{row[peer + ' ratio']:.2f}**)"
        for peer in contestants(row)[1:]
    )
    goal, reached = goal_of(row)
    verdict = {True: "yes", False: "**no**", None: ""}[reached]
    return f"| {name} | {time_text(row['ours'])} ({spread}) | {peers} | {goal} | {verdict} |"


def machine():
    model = "unknown"
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            model = line.split(":", 1)[1].strip()
            break
    load = os.getloadavg()[0]
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True, check=True)
    return (
        f"{os.cpu_count()} processors ({model}), {platform.system()} {platform.release()}, "
        f"{compiler.stdout.splitlines()[0]}, release preset. "
        f"Other programs kept the machine at a load of {load:.1f} when it ended."
    )


def picture(rows):
    """A bar a row: our time over that of whom the goal names, on a scale of powers of two."""
    bars = []
    for row in rows:
        goal, _ = goal_of(row)
        match = re.fullmatch(r"≤ ([\d.]+) × (.+)", goal)
        if match and not row.get("error_occurred"):
            bars.append((row["name"].split("/iterations:")[0], match[2], float(match[1]),
                         row[match[2] + " ratio"]))
    height, left, width = 16, 330, 420

    def place(ratio):
        return left + width / 2 * (1 + max(-1, min(1, math.log2(ratio) / 4)))

    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + width + 190}" '
        f'height="{height * (len(bars) + 2)}" font-family="sans-serif" font-size="11">',
        '<rect width="100%" height="100%" fill="white"/>',
    ]
    for power in range(-4, 5):
        x = place(2.0**power)
        parts.append(f'<line x1="{x}" y1="14" x2="{x}" y2="{height * (len(bars) + 1)}" '
                     f'stroke="{"black" if power == 0 else "#ddd"}"/>')
        parts.append(f'<text x="{x}" y="11" text-anchor="middle">{2.0**power:g}</text>')
    for index, (name, peer, limit, ratio) in enumerate(bars):
        y = height * (index + 1)
        ends = sorted((place(1), place(ratio)))
        colour = "#2a7f3f" if ratio <= limit else "#b5432a"
        parts.append(f'<text x="{left - 6}" y="{y + 12}" text-anchor="end">{_escape(name)}</text>')
        parts.append(f'<rect x="{ends[0]:.1f}" y="{y + 4}" width="{max(1, ends[1] - ends[0]):.1f}" '
                     f'height="8" fill="{colour}"/>')
        parts.append(f'<line x1="{place(limit):.1f}" y1="{y + 2}" x2="{place(limit):.1f}" '
                     f'y2="{y + 14}" stroke="blue"/>')
        parts.append(f'<text x="{left + width + 6}" y="{y + 12}">{ratio:.2f} × '
                     f'{_escape(peer)}</text>')
    return "\n".join(parts + ["</svg>", ""])


def _escape(text):
    return text.replace("&", "&amp;").replace("<", "&lt;")


def main(short):
    page = [
        "# Performance",
        "",
        "Written by `scripts/bench`, which builds the release preset and runs every row in one "
        "sitting; only the last part is written by hand, in `docs/performance-notes.md`. In each "
        "of seven rounds the contestants of a row take turns, another one first each time. A "
        "figure is the median of the rounds for one unit (a field, a line, a call, a request, a "
        "UTF-16 unit or byte of the source; for `FileCrc32` and appending a file, a character), "
        "ours with its lowest and highest; the number in bold is the median of the rounds' ratios, "
        "our time over that one's: **below 1 we are faster**. Times are those of the thread alone, of "
        "requests those on the wall. Rows that we lose stay in.",
        "",
        f"Machine: {machine() if not short else 'short form'}",
        "",
        "![Our time over that of the peer that a goal names](performance.svg)",
        "",
        "A bar to the left of the line at 1 is faster than the peer; the blue mark is the goal.",
    ]
    everything = []
    for program, environment, title in PROGRAMS:
        settings = "".join(f"{name}={value} " for name, value in environment.items())
        rows = run(program, environment, SHORT if short else ".")
        everything += rows
        page += [
            "",
            f"## {title}",
            "",
            f"`{settings}{BUILD}/{program} --benchmark_filter=ROW`",
            "",
            "| row | ours (lowest – highest) | peers and floors | goal | reached |",
            "|---|---|---|---|---|",
        ]
        page += [page_row(row) for row in rows]
        print(f"bench: {title}: {len(rows)} rows", file=sys.stderr)
    if NOTES.exists():
        page += ["", NOTES.read_text().rstrip()]
    text = "\n".join(page) + "\n"
    if short:
        print(text)
        return
    PAGE.write_text(text)
    PICTURE.write_text(picture(everything))
    print(f"bench: wrote {PAGE} and {PICTURE}", file=sys.stderr)


if __name__ == "__main__":
    main("--short" in sys.argv)
