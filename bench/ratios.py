#!/usr/bin/env python3
"""Prints median throughput of each benchmark and its time ratio to the
baseline: the last *Memchr benchmark registered before it, at the same size.
Input: Google Benchmark JSON output files (with repetitions)."""
import json
import sys


def medians(path):
    with open(path) as f:
        data = json.load(f)
    rows = []
    for b in data["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        rows.append(b)
    return rows


def size_label(size):
    if not size.isdigit():  # a scenario of its own (tunnel:1/...), not a size
        return "-"
    size = int(size)
    if size >= 1024 * 1024:
        return f"{size // (1024 * 1024)} MB"
    return f"{size // 1024} KB"


def main(paths):
    for path in paths:
        baseline_of = {}
        print(f"\n{path}")
        print(f"{'benchmark':<30} {'size':>6} {'median MB/s':>12} {'x baseline':>11}")
        for b in medians(path):
            name, _, size = b["run_name"].partition("/")
            mbs = b.get("bytes_per_second", 0) / 1e6
            if name.endswith("Memchr"):
                baseline_of[size] = b["real_time"]
                ratio = "1.00"
            elif size in baseline_of:
                ratio = f"{b['real_time'] / baseline_of[size]:.2f}"
            else:
                ratio = "-"
            print(f"{name[3:]:<30} {size_label(size):>6} {mbs:>12.0f} {ratio:>11}")


if __name__ == "__main__":
    main(sys.argv[1:])
