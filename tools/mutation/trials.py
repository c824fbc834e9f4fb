"""Runs the tests: once to learn what each one comes across, then for each change those that come across it."""

import os
import pathlib
import re
import resource
import struct
import subprocess
import tempfile
from collections import Counter
from dataclasses import dataclass, field

MEMORY, OUTPUT = 6 << 30, 1 << 28  # bytes
QUICK, SLOW = 0.3, 0.5  # seconds: below the one, tests are run together; above the other, `--quick` leaves them out
TOGETHER = 40
NO_SHRINKING = {"KS_HMI_RANDOM_SHRINKING": "0"}  # that a sequence fails is enough


@dataclass
class Test:
    program: str
    name: str
    seconds: float = 0.0
    reached: set = field(default_factory=set)

    def as_told(self):
        return f"{self.program} {self.name}"


def run(program, names, environment, seconds):
    """Which test fails or does not end, given so many seconds of processor time; None when all pass."""
    limits = ["prlimit", f"--cpu={int(2 + seconds)}", f"--as={MEMORY}", f"--fsize={OUTPUT}", "--core=0"]
    with tempfile.TemporaryFile() as output:
        try:
            done = subprocess.run([*limits, program, "--gtest_fail_fast", f"--gtest_filter={':'.join(names)}"],
                                  stdout=output, stderr=subprocess.DEVNULL, env={**os.environ, **NO_SHRINKING, **environment},
                                  check=False, timeout=20 + 10 * seconds)
            if done.returncode == 0:
                return None
        except subprocess.TimeoutExpired:
            pass
        output.seek(0)
        said = output.read().decode(errors="replace")
    failed, begun = (re.findall(rf"^\[ *{word} *\] ([\w./]+)", said, re.M) for word in ("FAILED", "RUN"))
    return (failed or begun[-1:] or names)[0]


class Tests:
    def __init__(self, directory, programs):
        self.directory, self.programs = directory, programs
        self.tests = []
        self.noticed = Counter()  # by which test how many changes were noticed

    def path(self, program):
        return self.directory / "tests" / program

    def names(self, program):
        listed = subprocess.run([self.path(program), "--gtest_list_tests"], capture_output=True, text=True, check=True)
        suite = ""
        for line in listed.stdout.split("\n"):
            if line.startswith("  "):
                yield suite + line.split("#")[0].strip()
            elif line.strip():
                suite = line.split("#")[0].strip()

    def learn(self, tell):
        """Runs each test alone and keeps which changes it comes across."""
        for program in self.programs:
            for name in self.names(program):
                self.tests.append(self.learned(Test(program, name)))
        for test in [t for t in self.tests if t.seconds < 0]:
            tell(f"left out, as it fails without a change: {test.as_told()}")
            self.tests.remove(test)
        tell(f"{len(self.tests)} tests, {sum(t.seconds for t in self.tests):.0f} s of processor time")
        self.try_together()

    def try_together(self):
        """Tests that do not bear each other in one run would notice everything."""
        for program in self.programs:
            together = [t.name for t in self.tests if t.program == program and t.seconds < QUICK]
            failed = run(self.path(program), together, {}, 60) if together else None
            if failed is not None:
                raise SystemExit(f"mutate: beside other tests this one fails without a change: {program} {failed}")

    def learned(self, test):
        with tempfile.TemporaryDirectory() as folder:
            record = pathlib.Path(folder) / "record"
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            failed = run(self.path(test.program), [test.name], {"KS_MUTATION_RECORD": str(record)}, 1200)
            after = resource.getrusage(resource.RUSAGE_CHILDREN)
            spent = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
            test.seconds = -1.0 if failed is not None else max(spent, 0.005)
            data = record.read_bytes() if record.exists() else b""
            test.reached = set(struct.unpack(f"{len(data) // 4}i", data))
        return test

    def stages(self, number, earlier):
        """The tests that come across the change, in groups that are run one after the other: first those that
        noticed its neighbours, then the quick ones together, then each slow one, that which notices most first."""
        # What has no number is changed in the text, and any test may come across it.
        left = sorted((t for t in self.tests if number is None or number in t.reached), key=lambda t: t.seconds)
        first = [t for t in left if t.as_told() in earlier]
        quick = [t for t in left if t not in first and t.seconds < QUICK]
        slow = [[t] for t in left if t not in first and t.seconds >= QUICK]
        slow.sort(key=lambda group: -self.noticed[group[0].as_told()])
        for group in [first, *(quick[i:i + TOGETHER] for i in range(0, len(quick), TOGETHER)), *slow]:
            for program in self.programs:
                together = [t for t in group if t.program == program]
                if together:
                    yield program, together

    def notices(self, number, earlier, is_quick):
        """Which test notices the change; "" when none does, None when none comes across it."""
        environment = {"KS_MUTATION": str(number)} if number is not None else {}
        came_across = False
        for program, tests in self.stages(number, earlier):
            seconds = sum(t.seconds for t in tests)
            if is_quick and seconds > SLOW:
                continue
            came_across = True
            failed = run(self.path(program), [t.name for t in tests], environment, 1 + 10 * seconds)
            if failed is not None:
                self.noticed[f"{program} {failed}"] += 1
                return f"{program} {failed}"
        return "" if came_across else None


def processor_time():
    spent = [resource.getrusage(who) for who in (resource.RUSAGE_CHILDREN, resource.RUSAGE_SELF)]
    return sum(s.ru_utime + s.ru_stime for s in spent)
