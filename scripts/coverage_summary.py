#!/usr/bin/env python3
"""Prints totals per folder from gcovr's JSON file, and writes the lines that have not run to another file."""

import collections
import json
import sys


def ranges(numbers):
    """3, 4, 5, 9 as "3-5 9"."""
    spans = []
    for number in sorted(numbers):
        if spans and spans[-1][1] == number - 1:
            spans[-1][1] = number
        else:
            spans.append([number, number])
    return " ".join(str(first) if first == last else f"{first}-{last}" for first, last in spans)


def main():
    counts_path, uncovered_path = sys.argv[1:]
    with open(counts_path, encoding="utf-8") as file:
        files = json.load(file)["files"]
    totals = collections.defaultdict(lambda: [0, 0, 0, 0])
    uncovered = []
    for entry in sorted(files, key=lambda entry: entry["file"]):
        folder = entry["file"].split("/")[0]
        lines = [line for line in entry["lines"] if not line.get("gcovr/noncode")]
        branches = [branch for line in lines for branch in line["branches"]]
        missed = [line["line_number"] for line in lines if line["count"] == 0]
        figures = (
            len(lines) - len(missed),
            len(lines),
            sum(branch["count"] > 0 for branch in branches),
            len(branches),
        )
        for name in (folder, "total"):
            totals[name] = [sum(pair) for pair in zip(totals[name], figures)]
        if missed:
            uncovered.append(f"{entry['file']}: {ranges(missed)}")
    for name, (run, lines, taken, branches) in totals.items():
        print(
            f"   {name:10} {run:5} of {lines:5} lines ({100 * run / max(1, lines):5.1f} %)"
            f" {taken:5} of {branches:5} branches ({100 * taken / max(1, branches):5.1f} %)"
        )
    with open(uncovered_path, "w", encoding="utf-8") as file:
        file.writelines(line + "\n" for line in uncovered)
    print(f"   {len(uncovered)} files have lines that have not run")


main()
