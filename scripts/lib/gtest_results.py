#!/usr/bin/env python3
"""Turns the output of a GoogleTest program into result lines, one per test case.

gtest_results.py NAME LOG STATUS RESULTS appends to RESULTS and prints failures and a summary. It
reads the text output, because a program that crashes or hangs leaves no other report; the case that
was running then counts as failed.
"""
import re
import sys

RUN = re.compile(r"\[ RUN      \] (\S+)")
END = re.compile(r"\[\s+(OK|FAILED|SKIPPED)\s+\] ([^\s,]+)")
TIMED_OUT = (124, 137)


def cases(lines):
    """Yields (name, verdict, output); the verdict is None for a case that never ended."""
    name, output = None, []
    for line in lines:
        run, end = RUN.search(line), END.search(line)
        if run:
            if name:
                yield name, None, output
            name, output = run[1], []
        elif end and end[2] == name:
            yield name, end[1], output
            name = None
        elif name:
            output.append(line)
    if name:
        yield name, None, output


def main(program, log, status, results):
    with open(log, encoding="utf-8", errors="replace") as file:
        lines = [line.rstrip("\r\n") for line in file]
    counts = {"pass": 0, "fail": 0, "skip": 0}
    records = []

    def record(verdict, name, reason="", output=()):
        counts[verdict] += 1
        records.append(f"{verdict}\t{program}: {name}\t{reason}\n")
        if verdict == "fail":
            print(f"FAILED: {program}: {name}: {reason}")
            print("".join(f"    | {line}\n" for line in output[:60]), end="")

    stopped = "ran out of time" if status in TIMED_OUT else f"ended the program with status {status}"
    for name, verdict, output in cases(lines):
        if verdict == "OK":
            record("pass", name)
        elif verdict == "SKIPPED":
            reason = next((text for text in reversed(output) if text.strip()), "no reason given")
            record("skip", name, reason)
        elif verdict == "FAILED":
            record("fail", name, "failed", output)
        else:
            record("fail", name, stopped, output)
    if not records:
        record("fail", "program", f"ran no test and ended with status {status}", lines)
    elif status != 0 and counts["fail"] == 0:
        record("fail", "program", f"all tests ended well, yet its status is {status}", lines)

    with open(results, "a", encoding="utf-8") as file:
        file.writelines(records)
    print(f"{program}: {counts['pass']} passed, {counts['fail']} failed, {counts['skip']} skipped")


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2], int(sys.argv[3]), sys.argv[4])
