#!/usr/bin/env python3
"""Draws the export time against the entity count as an SVG, from the "Threads and floors"
tables that tavrel_bench prints (one or more outputs, each given with a label):

    plot_export.py out.svg tmpfs=bench_shm.txt disk=bench_disk.txt

Log-log axes: a straight line of slope 1 is a linear cost."""

import math
import sys

COLUMNS = {"cold ms": 3, "cold, one thread ms": 4, "cp -r ms": 5, "unchanged ms": 7, "read every file ms": 9}
COLOURS = ["#1f77b4", "#d62728", "#2ca02c", "#9467bd", "#ff7f0e", "#8c564b"]


def read_table(path):
    rows, inside = [], False
    with open(path, encoding="utf-8") as f:
        for line in f:
            if line.startswith("Threads and floors"):
                inside = True
            elif inside and line.startswith("| ") and not line.startswith("| N "):
                cells = [c.strip() for c in line.strip().strip("|").split("|")]
                rows.append(cells)
            elif inside and rows and not line.startswith("|"):
                break
    return rows


def value(cell):
    """The figure of a cell, without the processor time that may follow it in brackets."""
    return float(cell.split()[0].replace(",", ""))


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    series = []
    for arg in sys.argv[2:]:
        label, _, path = arg.partition("=")
        rows = read_table(path)
        for name in ("cold ms", "cp -r ms", "unchanged ms", "read every file ms"):
            pts = [(int(r[0].replace(",", "")), value(r[COLUMNS[name]])) for r in rows if value(r[COLUMNS[name]]) > 0]
            if pts:
                series.append((label + ": " + name.replace(" ms", ""), pts))
    xs = [x for _, pts in series for x, _ in pts]
    ys = [y for _, pts in series for _, y in pts]
    x0, x1 = math.log10(min(xs)), math.log10(max(xs))
    y0, y1 = math.floor(math.log10(min(ys))), math.ceil(math.log10(max(ys)))
    w, h, left, top, plot_w, plot_h = 760, 460, 70, 20, 440, 380

    def px(x):
        return left + (math.log10(x) - x0) / max(x1 - x0, 1e-9) * plot_w

    def py(y):
        return top + plot_h - (math.log10(y) - y0) / max(y1 - y0, 1e-9) * plot_h

    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{w}" height="{h}" font-family="sans-serif" font-size="12">',
           f'<rect width="{w}" height="{h}" fill="white"/>',
           f'<rect x="{left}" y="{top}" width="{plot_w}" height="{plot_h}" fill="none" stroke="#444"/>']
    for e in range(int(y0), int(y1) + 1):
        y = py(10 ** e)
        out.append(f'<line x1="{left}" y1="{y:.1f}" x2="{left + plot_w}" y2="{y:.1f}" stroke="#ddd"/>')
        out.append(f'<text x="{left - 6}" y="{y + 4:.1f}" text-anchor="end">{10 ** e:g} ms</text>')
    for x in sorted(set(xs)):
        out.append(f'<line x1="{px(x):.1f}" y1="{top}" x2="{px(x):.1f}" y2="{top + plot_h}" stroke="#eee"/>')
        out.append(f'<text x="{px(x):.1f}" y="{top + plot_h + 16}" text-anchor="middle">{x:,}</text>')
    out.append(f'<text x="{left + plot_w / 2}" y="{h - 8}" text-anchor="middle">entities (log scale)</text>')
    for i, (label, pts) in enumerate(series):
        colour = COLOURS[(i // 4) % len(COLOURS)] if len(sys.argv) > 3 else COLOURS[i % len(COLOURS)]
        dash = ["", "4,3", "1,3", "8,3"][i % 4]
        path = " ".join(f"{px(x):.1f},{py(y):.1f}" for x, y in pts)
        out.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2" stroke-dasharray="{dash}"/>')
        for x, y in pts:
            out.append(f'<circle cx="{px(x):.1f}" cy="{py(y):.1f}" r="3" fill="{colour}"/>')
        ly = top + 10 + i * 18
        out.append(f'<line x1="{left + plot_w + 14}" y1="{ly}" x2="{left + plot_w + 40}" y2="{ly}" stroke="{colour}" stroke-width="2" stroke-dasharray="{dash}"/>')
        out.append(f'<text x="{left + plot_w + 46}" y="{ly + 4}">{label}</text>')
    out.append("</svg>")
    with open(sys.argv[1], "w", encoding="utf-8") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
