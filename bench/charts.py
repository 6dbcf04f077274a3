"""The charts of docs/cost.md, drawn by gnuplot: without a background and in colours that show on a light
and on a dark page alike."""

import subprocess
from typing import NamedTuple

from measure import PROJECT

INK = "#767676"  # as far from white as from black
COLOURS = ["#1b7fbd", "#d95f02", "#1f9a6f"]


class Line(NamedTuple):
    title: str
    points: list  # of (x, y)


class Chart(NamedTuple):
    file: str
    x_label: str
    y_label: str
    lines: list
    logarithmic: str = ""  # axes, as in gnuplot's "set logscale"
    ticks: str = ""        # further settings


def draw(chart):
    blocks, plots = [], []
    for number, line in enumerate(chart.lines):
        points = "\n".join(f"{x} {y}" for x, y in line.points)
        blocks.append(f"$line{number} << END\n{points}\nEND\n")
        plots.append(f"$line{number} with linespoints lw 2 pt 7 ps 0.5"
                     f" lc rgb '{COLOURS[number]}' title '{line.title}'")
    script = f"""
{''.join(blocks)}
set terminal svg size 720,400 font 'sans-serif,13'
set format y '%.0f'
unset mytics
set border 3 lc rgb '{INK}'
set tics nomirror textcolor rgb '{INK}'
set grid lc rgb '{INK}' lw 0.3
set key top left reverse Left textcolor rgb '{INK}'
set xlabel '{chart.x_label}' textcolor rgb '{INK}'
set ylabel '{chart.y_label}' textcolor rgb '{INK}'
set yrange [0:*]
{'set logscale ' + chart.logarithmic if chart.logarithmic else ''}
{chart.ticks}
plot {', '.join(plots)}
"""
    drawn = subprocess.run(["gnuplot"], input=script, stdout=subprocess.PIPE, text=True, check=True).stdout
    lines = [line.rstrip() for line in drawn.splitlines()]
    (PROJECT / "docs" / chart.file).write_text("\n".join(line for line in lines if line) + "\n")
