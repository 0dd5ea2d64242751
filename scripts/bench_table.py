#!/usr/bin/env python3
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

"""Makes one table of what qelmodb_bench measured.

    scripts/bench_table.py FILE.json...     one file for each size of device

Times are medians of the repetitions and ratios those of medians, to the limit measured in the same run. The ratio of
the shortest times stands beside, as it suffers least from what else the machine does.
"""

import json
import math
import statistics
import sys

LIBRARY, LIMIT, MEMORY = "library", "limit", "memory"

# Operation, what stands under "limit" (operation and by whom; None when there is nothing), the goal for the ratio.
ROWS = [
    ("text_load", ("text_load", LIMIT), 1.5),
    ("binary_load", ("binary_load", LIMIT), 1.5),
    ("compressed_load", ("compressed_load", LIMIT), 2.5),
    ("text_dump", ("text_dump", LIMIT), 2.5),
    ("binary_dump", ("binary_dump", LIMIT), 1.5),
    ("compressed_dump", ("compressed_dump", LIMIT), None),
    ("compress_and_dump", ("compress_and_dump", "zstd -3"), 0.4),
    ("text_check", ("text_load", LIMIT), None),
    ("binary_check", ("binary_load", LIMIT), None),
    ("compressed_check", None, None),
    ("unload", ("binary_load", LIBRARY), 0.03),
    ("traversal", ("traversal", LIMIT), 1.15),
    ("traversal_by_number", ("traversal", LIMIT), None),
    ("wire_by_name", ("wire_by_name", LIMIT), 3.0),
    ("instances_at_point", ("instances_at_point", LIMIT), None),
    ("index_build", ("binary_load", LIBRARY), 0.5),
    ("indexed_wire_by_name", ("wire_by_name", LIMIT), 1.8),
    ("indexed_point", ("instances_at_point", LIMIT), 4.0),
    ("indexed_node", ("indexed_node", LIMIT), None),
    ("grid", ("grid", LIMIT), 2.0),
    ("grid_without_gaps", ("grid_without_gaps", LIMIT), 2.0),
]
RESIDENT_GOAL = 27.0
PEAK_GOAL = 1.05


class Run:
    """The medians of one file: time in nanoseconds for one operation, and the counters."""

    def __init__(self, name):
        with open(name, encoding="utf-8") as file:
            data = json.load(file)
        self.device = data["context"].get("device", name)
        self.failures = []
        self.clock_and_processor = [0.0, 0.0]
        times, self.counters = {}, {}
        for entry in data["benchmarks"]:
            self._take(entry, times)
        self.times = {key: statistics.median(values) for key, values in times.items()}
        self.shortest = {key: min(values) for key, values in times.items()}

    def _take(self, entry, times):
        operation, by = entry["run_name"].split("/")[:2]
        if entry.get("error_occurred"):
            self.failures.append(f"{operation}, {by}: {entry.get('error_message')}")
        elif entry["run_type"] == "iteration":
            nanoseconds = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[entry["time_unit"]]
            times.setdefault((operation, by), []).append(entry["real_time"] * nanoseconds / entry.get("items", 1))
            if "dump" not in operation and by != MEMORY:
                self.clock_and_processor[0] += entry["real_time"]
                self.clock_and_processor[1] += entry["cpu_time"]
            for counter in ("items", "bytes", "wires", "resident_per_wire", "peak_per_wire"):
                if counter in entry:
                    self.counters.setdefault((operation, by, counter), []).append(entry[counter])

    def counter(self, operation, by, name):
        values = self.counters.get((operation, by, name))
        return statistics.median(values) if values else None

    def waiting(self):
        """Time by the clock over time on the processor, where nothing waits for the disk: 1 on an idle machine."""
        clock, processor = self.clock_and_processor
        return clock / processor if processor else 1.0

    def wires(self):
        """The size of the device, which every benchmark tells; 0 when all failed."""
        return max((max(values) for (_, _, name), values in self.counters.items() if name == "wires"), default=0)


def time_text(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:#.3g}".rstrip(".") + f" {unit}"
    return f"{nanoseconds:.3g} ns"


def against(value, goal):
    """A value with the goal that it is held against."""
    if goal is None:
        return ""
    return f"{goal:g} {'met' if value <= goal else 'MISSED'}"


def size_text(size):
    return "" if size is None else f" [{size / 1e6:.2f} MB]"


def peers_text(run, operation, limit, limit_key):
    texts = []
    for (peer_operation, by), time in sorted(run.times.items(), key=lambda item: item[1]):
        if peer_operation != operation or by in (LIBRARY, LIMIT, MEMORY):
            continue
        ratio = f" = {time / limit:.3g}x" if limit and (operation, by) != limit_key else ""
        texts.append(f"{by} {time_text(time)}{ratio}{size_text(run.counter(operation, by, 'bytes'))}")
    return "; ".join(texts)


def memory_text(run, operation):
    resident = run.counter(operation, MEMORY, "resident_per_wire")
    peak = run.counter(operation, MEMORY, "peak_per_wire")
    if not resident:
        return ""
    return (
        f"{resident:.1f} B/wire ({against(resident, RESIDENT_GOAL)}), "
        f"peak {peak / resident:.3f}x ({against(peak / resident, PEAK_GOAL)})"
    )


def exponent(runs, operation):
    """The slope of log time over log wires."""
    points = [(math.log(run.wires()), math.log(run.times[operation, LIBRARY])) for run in runs]
    if len({x for x, _ in points}) < 2:
        return ""
    return f"{statistics.linear_regression(*zip(*points)).slope:.2f}"


def row(run, operation, limit_key, goal, growth):
    time = run.times[operation, LIBRARY]
    limit = run.times.get(limit_key) if limit_key else None
    ratio = time / limit if limit else None
    limit_name = "" if limit_key in (None, (operation, LIMIT)) else f" ({' '.join(limit_key)})".replace("_", " ")
    return [
        operation.replace("_", " "),
        run.device,
        time_text(time) + size_text(run.counter(operation, LIBRARY, "bytes")),
        time_text(limit) + limit_name if limit else "-",
        f"{ratio:.3g}x" if ratio else "-",
        f"{run.shortest[operation, LIBRARY] / run.shortest[limit_key]:.3g}x" if ratio else "-",
        against(ratio, goal) if ratio else "",
        peers_text(run, operation, limit, limit_key),
        memory_text(run, operation),
        growth,
    ]


def rows_of(runs):
    for operation, limit_key, goal in ROWS:
        measured = [run for run in runs if (operation, LIBRARY) in run.times]
        for run in measured:
            growth = exponent(measured, operation) if run is measured[-1] else ""
            yield row(run, operation, limit_key, goal, growth)


def print_table(head, rows):
    # Columns in which nothing stands are left out.
    kept = [i for i in range(len(head)) if any(r[i] for r in rows)]
    lines = [[r[i] for i in kept] for r in [head, *rows]]
    widths = [max(len(line[i]) for line in lines) for i in range(len(kept))]
    for number, line in enumerate(lines):
        print(" | ".join(text.ljust(width) for text, width in zip(line, widths)).rstrip())
        if number == 0:
            print("-+-".join("-" * width for width in widths))


def main(names):
    runs = sorted((Run(name) for name in names), key=lambda run: run.wires())
    for run in runs:
        print(f"{run.device}: {run.wires():.0f} wires; clock over processor time {run.waiting():.2f}")
    head = ["operation", "device", "time", "limit", "ratio", "of shortest", "goal", "peers, as times of the limit"]
    head += ["memory after load", "growth"]
    print_table(head, list(rows_of(runs)))
    failures = [f"{run.device}: {failure}" for run in runs for failure in run.failures]
    for failure in dict.fromkeys(failures):
        print(f"FAILED {failure}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
