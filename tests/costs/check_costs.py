"""Counts what a request, a clock read and a field take, and holds them against budgets.

    check_costs.py COST_STEPS optimised|debug

Each is done 1000 times more in one run than in another; the difference over 1000 is its cost.
System calls are counted by strace, instructions by valgrind; each count is left out, in words,
where its tool is missing or not allowed. Ends with 77 when nothing could be counted.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile

FEW, MANY = 200, 1200

# Per one: system calls, and instructions of an optimised build; with what they are made of.
BUDGETS = {
    # Wake and wait on two queues, a poll for the owner's life, yields. Valgrind knows no pidfd, so
    # half of the instructions that it counts read of that life in /proc instead.
    "request": (12.0, 24_000),
    "clock": (0.1, 2_000),  # none but a look at the registry's file each tick of the host's clock
    "field": (0.01, 400),  # one read for some thousand fields
}


def run(command, log):
    """Whether the command ran to its end; what it says goes to the log."""
    environment = {**os.environ, "ZELTO_SPIN_US": "0"}
    with open(log, "w", encoding="utf-8") as said:
        return subprocess.run(
            command, env=environment, stdout=said, stderr=said, timeout=120, check=False
        ).returncode == 0


def system_calls(program, what, times, log):
    if not run(["strace", "-c", "-o", log, program, what, str(times)], log + ".said"):
        return None
    total = re.search(r"^\s*100\.00\s+\S+\s+(?:\S+\s+)?(\d+)\s+(?:\d+\s+)?total$",
                      open(log, encoding="utf-8").read(), re.MULTILINE)
    return int(total[1]) if total else None


def instructions(program, what, times, log):
    command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", "--log-file=" + log,
               program, what, str(times)]
    if not run(command, log + ".said"):
        return None
    total = re.search(r"Collected : (\d+)", open(log, encoding="utf-8").read())
    return int(total[1]) if total else None


def cost(count, program, what, budget):
    """The least of three, since a waiting side looks more often on a busy machine."""
    least = None
    for _ in range(3):
        found = measured(count, program, what)
        if found is None or found <= budget:
            return found
        least = found if least is None else min(least, found)
    return least


def measured(count, program, what):
    with tempfile.TemporaryDirectory() as folder:
        log = os.path.join(folder, "log")
        few = count(program, what, FEW, log)
        many = count(program, what, MANY, log)
    return None if few is None or many is None else (many - few) / (MANY - FEW)


def main():
    program, build = sys.argv[1:]
    counters = [("system calls", "strace", system_calls, 0)]
    if build == "optimised":
        counters.append(("instructions", "valgrind", instructions, 1))
    else:
        print("instructions: not counted, the build is not optimised")
    counted, exceeded = 0, 0
    for name, tool, count, place in counters:
        for what, budgets in BUDGETS.items():
            budget = budgets[place]
            found = cost(count, program, what, budget) if shutil.which(tool) else None
            if found is None:
                print(f"{name} of a {what}: not counted, {tool} is missing or may not trace here")
                continue
            counted += 1
            exceeded += found > budget
            print(f"{name} of a {what}: {found:g}, budget {budget:g}")
    if counted == 0:
        sys.exit(77)
    sys.exit(1 if exceeded else 0)


if __name__ == "__main__":
    main()
