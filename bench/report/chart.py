"""A horizontal bar chart as SVG, without any library."""
from xml.sax.saxutils import escape

COLOURS = ["#4477aa", "#ee6677", "#228833", "#bbbbbb", "#ccbb44", "#66ccee", "#aa3377"]
LABEL = 250   # pixels for the group's name
WIDTH = 560   # pixels for the longest bar
BAR = 11
GAP = 8


def bars(title, groups, series, unit="", reference=1.0):
    """groups: [(label, [(series name, value)])]. A line marks the reference value."""
    longest = max((value for _, values in groups for _, value in values), default=1)
    # Few long bars must not press the others to nothing: beyond the limit a bar is cut and carries its number.
    limit = min(longest, 12.0) if unit == "x" else longest
    scale = WIDTH / limit
    parts = []
    y = 56
    for label, values in groups:
        top = y
        for name, value in values:
            colour = COLOURS[series.index(name) % len(COLOURS)]
            length = min(value, limit) * scale
            parts.append(f'<rect x="{LABEL}" y="{y}" width="{length:.1f}" height="{BAR - 1}" fill="{colour}"/>')
            parts.append(f'<text x="{LABEL + length + 4:.1f}" y="{y + BAR - 2}" class="n">{value:.2f}{unit}</text>')
            y += BAR
        middle = (top + y) / 2 + 4
        parts.append(f'<text x="{LABEL - 8}" y="{middle:.1f}" text-anchor="end">{escape(label)}</text>')
        y += GAP
    mark = LABEL + reference * scale
    legend = []
    x = LABEL
    for name in series:
        colour = COLOURS[series.index(name) % len(COLOURS)]
        legend.append(f'<rect x="{x}" y="32" width="10" height="10" fill="{colour}"/>'
                      f'<text x="{x + 14}" y="41">{escape(name)}</text>')
        x += 30 + 8 * len(name)
    total = LABEL + WIDTH + 70
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{total}" height="{y + 10}" '
            f'viewBox="0 0 {total} {y + 10}">\n'
            '<style>text{font:12px sans-serif;fill:#222}.n{font-size:9px}.t{font-size:14px;font-weight:bold}</style>\n'
            f'<rect width="{total}" height="{y + 10}" fill="white"/>\n'
            f'<text x="{LABEL}" y="20" class="t">{escape(title)}</text>\n'
            + "\n".join(legend) + "\n" + "\n".join(parts) + "\n"
            + f'<line x1="{mark:.1f}" y1="50" x2="{mark:.1f}" y2="{y}" stroke="#222" stroke-dasharray="3 3"/>\n</svg>\n')
