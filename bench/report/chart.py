"""A horizontal bar chart as SVG, without any library."""
from xml.sax.saxutils import escape

COLOURS = ["#4477aa", "#ee6677", "#228833", "#bbbbbb", "#ccbb44", "#66ccee", "#aa3377"]
MOST_BINS = 64
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
    total = max(LABEL + WIDTH + 70, x)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{total}" height="{y + 10}" '
            f'viewBox="0 0 {total} {y + 10}">\n'
            '<style>text{font:12px sans-serif;fill:#222}.n{font-size:9px}.t{font-size:14px;font-weight:bold}</style>\n'
            f'<rect width="{total}" height="{y + 10}" fill="white"/>\n'
            f'<text x="{LABEL}" y="20" class="t">{escape(title)}</text>\n'
            + "\n".join(legend) + "\n" + "\n".join(parts) + "\n"
            + f'<line x1="{mark:.1f}" y1="50" x2="{mark:.1f}" y2="{y}" stroke="#222" stroke-dasharray="3 3"/>\n</svg>\n')


def frame(title, width, height, body):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}">\n'
            '<style>text{font:12px sans-serif;fill:#222}.n{font-size:10px}.t{font-size:14px;font-weight:bold}</style>\n'
            f'<rect width="{width}" height="{height}" fill="white"/>\n<text x="60" y="20" class="t">{escape(title)}</text>\n'
            + "\n".join(body) + "\n</svg>\n")


def axes(left, top, width, height, highest, unit):
    parts = []
    for step in range(5):
        y = top + height - height * step / 4
        parts.append(f'<line x1="{left}" y1="{y:.1f}" x2="{left + width}" y2="{y:.1f}" stroke="#ddd"/>')
        parts.append(f'<text x="{left - 6}" y="{y + 4:.1f}" text-anchor="end" class="n">{highest * step / 4:.4g}</text>')
    parts.append(f'<text x="{left}" y="{top - 8}" class="n">{escape(unit)}</text>')
    return parts


def lines(title, series, unit, label):
    """series: [(name, [(x, y)])], with the same xs, which stand at equal distances."""
    left, top, width, height = 60, 60, 520, 220
    places = [x for x, _ in series[0][1]]
    highest = max(y for _, points in series for _, y in points) * 1.1
    parts = axes(left, top, width, height, highest, unit)

    def at(index):
        return left + 20 + (width - 40) * index / max(len(places) - 1, 1)

    for index, place in enumerate(places):
        parts.append(f'<text x="{at(index):.1f}" y="{top + height + 16}" text-anchor="middle" class="n">{place:g}</text>')
    parts.append(f'<text x="{left + width / 2}" y="{top + height + 34}" text-anchor="middle">{escape(label)}</text>')
    for number, (name, points) in enumerate(series):
        colour = COLOURS[number % len(COLOURS)]
        path = " ".join(f"{at(i):.1f},{top + height - y / highest * height:.1f}" for i, (_, y) in enumerate(points))
        parts.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        parts.append(f'<text x="{left + 10 + 170 * number}" y="38" style="fill:{colour}">{escape(name)}</text>')
    return frame(title, left + width + 30, top + height + 50, parts)


def histogram(title, series, width_of_bin, label):
    """series: [(name, [value])]. What lies beyond the 99th percentile is counted in the last bin; where it lies so far
    out that bars would become hairs, bins are twice as wide, or four times..."""
    left, top, width, height = 60, 60 + 14 * ((len(series) - 1) // 2), 520, 180  # the legend has two in a row
    everything = sorted(value for _, values in series for value in values)
    most = everything[int(len(everything) * 0.99)]
    while (most - everything[0]) / width_of_bin > MOST_BINS:
        width_of_bin *= 2
    lowest = int(everything[0] // width_of_bin)
    count = int(most // width_of_bin) + 1 - lowest
    counts = []
    for name, values in series:
        bins = [0] * count
        for value in values:
            bins[min(int(value // width_of_bin) - lowest, count - 1)] += 1
        counts.append((name, [100 * n / len(values) for n in bins]))
    highest = max(max(bins) for _, bins in counts) * 1.1
    parts = axes(left, top, width, height, highest, "% of the frames")
    step = width / count
    bar = step * 0.9 / len(counts)
    for number, (name, bins) in enumerate(counts):
        colour = COLOURS[number % len(COLOURS)]
        for index, share in enumerate(bins):
            if not share:
                continue
            tall = share / highest * height
            parts.append(f'<rect x="{left + index * step + number * bar:.1f}" y="{top + height - tall:.1f}" '
                         f'width="{bar:.1f}" height="{tall:.1f}" fill="{colour}"/>')
        parts.append(f'<text x="{left + 10 + 260 * (number % 2)}" y="{38 + 14 * (number // 2)}" style="fill:{colour}">{escape(name)}</text>')
    for index in range(0, count + 1, max(count // 8, 1)):
        parts.append(f'<text x="{left + index * step:.1f}" y="{top + height + 16}" text-anchor="middle" class="n">'
                     f'{(lowest + index) * width_of_bin:g}</text>')
    parts.append(f'<text x="{left + width / 2}" y="{top + height + 34}" text-anchor="middle">{escape(label)}</text>')
    return frame(title, left + width + 30, top + height + 50, parts)
