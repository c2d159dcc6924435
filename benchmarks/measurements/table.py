"""The table of what was measured."""

import dataclasses
from typing import Optional


@dataclasses.dataclass
class Row:
    """One figure. Without a target it is there to compare with, and can't be missed."""

    what: str
    measured: str
    target: str = ""
    is_met: bool = True
    load: Optional[float] = None


def text(rows):
    cells = [("figure", "measured", "target", "", "load")]
    for row in rows:
        verdict = ("met" if row.is_met else "MISSED") if row.target else ""
        cells.append((row.what, row.measured, row.target, verdict, f"{row.load:.2f}" if row.load is not None else ""))
    widths = [max(len(line[column]) for line in cells) for column in range(5)]
    lines = ["| " + " | ".join(cell.ljust(width) for cell, width in zip(line, widths)) + " |" for line in cells]
    return "\n".join([lines[0], "|" + "|".join("-" * (width + 2) for width in widths) + "|", *lines[1:]])
