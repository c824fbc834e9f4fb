"""The copy of the tree that has the changes in it, and its build."""

import os
import re
import shutil
import subprocess

from . import schemata
from .changes import PLAIN, plain_text
from .source import read, write

PLACE = re.compile(r"^([^:\s]+):(\d+):(\d+):(.*)$")
CONSTANT_NEEDED = re.compile(r"constant|was not declared .constexpr|not usable|template argument|array|"
                             r"does not name a type")


class Tree:
    def __init__(self, root, work, programs, jobs):
        self.root, self.tree, self.build_dir = root, work / "tree", work / "build"
        self.programs, self.jobs = programs, jobs

    def copy(self, rendered):
        """As the checkout is, with `rendered` (name to text) in place of its files; only differences are written."""
        listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=self.root, capture_output=True,
                                text=True, check=True).stdout.split("\n")
        files = {name for name in listed if name and (self.root / name).is_file()}
        for there in list(self.tree.rglob("*")):
            if there.is_file() and str(there.relative_to(self.tree)) not in files | {"mutation/mutating.h"}:
                there.unlink()
        for name in files - set(rendered):
            target = self.tree / name
            if not target.exists() or (self.root / name).read_bytes() != target.read_bytes():
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(self.root / name, target)
        write(self.tree / "mutation" / "mutating.h", read(self.root / "tools" / "mutation" / "mutating.h"))
        for name, text in rendered.items():
            write(self.tree / name, text)

    def configure(self):
        launcher = "ccache" if shutil.which("ccache") else ""
        settings = {"CMAKE_BUILD_TYPE": "Debug", "CMAKE_CXX_FLAGS_DEBUG": "-O1", "CMAKE_CXX_FLAGS": "-w",
                    "CMAKE_CXX_COMPILER_LAUNCHER": launcher, "KS_HMI_BUILD_TOOL": "OFF"}
        subprocess.run(["cmake", "-S", self.tree, "-B", self.build_dir, "-G", "Ninja",
                        *(f"-D{name}={value}" for name, value in settings.items())], stdout=subprocess.DEVNULL, check=True)

    def build(self, *targets, keep_going=True):
        """Whether it went well, and what the compiler said."""
        command = ["ninja", "-C", self.build_dir, "-j", str(self.jobs), "-k", "0" if keep_going else "1", *targets]
        done = subprocess.run(command, capture_output=True, text=True, errors="replace", check=False,
                              env={**os.environ, "LC_ALL": "C"})
        return done.returncode == 0, done.stdout

    def build_with(self, sources, changes, dropped, tell):
        """Builds all changes in; those that do not compile so join `dropped` (their numbers)."""
        numbered = list(enumerate(changes, 1))
        self.dropped = dropped
        for targets in (["ks_hmi_foundation"], self.programs):
            while True:
                rendered = self.render(sources, numbered, dropped)
                self.copy(rendered)
                went_well, said = self.build(*targets)
                if went_well:
                    break
                blamed = self.blamed(said, rendered, dict(numbered), self.constants(sources)) - dropped
                if not blamed:
                    raise SystemExit(f"mutate: the build fails, for no change:\n{said[-4000:]}")
                dropped |= blamed
                tell(f"{len(blamed)} changes do not compile together with the others ({len(dropped)} in all)")

    def render(self, sources, numbered, dropped):
        rendered = {}
        for source, found in sources:
            here = [(n, c) for n, c in numbered if c.file == source and n not in dropped and c.form != PLAIN]
            if here:
                rendered[source] = schemata.rendered(read(self.root / source), here, found)
        return rendered

    def constants(self, sources):
        """Of the constants that are made ones of the program: name to [(file, start)]."""
        named = {}
        for file, demotions in sources:
            for start, (name, _) in demotions.items():
                named.setdefault(name, set()).add((file, start))
        return named

    def blamed(self, said, rendered, changes, constants):
        blames = {name: schemata.Blame(text) for name, text in rendered.items()}
        numbers = set()
        for places in errors_in(said, self.build_dir, str(self.tree) + "/"):
            needed = {constant for name, line, _, text in places if CONSTANT_NEEDED.search(text)
                      for word in re.findall(r"\bk\w+", read(self.tree / name).split("\n")[line - 1] + text)
                      for constant in constants.get(word, ())}
            demoted = {n for n, c in changes.items() if (c.file, c.demoted) in needed}
            if demoted - self.dropped:
                numbers |= demoted
                continue
            ours = [(name, line, column) for name, line, column, _ in places if name in blames]
            if ours:
                name, line, column = ours[0]
                numbers |= blames[name].of(line, column)
        return numbers

    def try_plainly(self, change):
        """Whether the library and its tests can be built with just this change in the text."""
        original = read(self.root / change.file)
        write(self.tree / change.file, plain_text(original, change))
        return self.build(*self.programs, keep_going=False)[0]


def errors_in(said, directory, tree):
    """For each error its places in the tree, as (name, line, column, what is said there), the error's own first."""
    errors, before, after = [], [], None
    for text in said.split("\n"):
        match = PLACE.match(text)
        if match is None:
            continue
        file = os.path.normpath(directory / match[1])
        place = [(file[len(tree):], int(match[2]), int(match[3]), match[4])] if file.startswith(tree) else []
        if "error:" in match[4]:
            after = place + before[::-1]
            errors.append(after)
            before = []
        elif "required from" in match[4] or "In instantiation" in match[4]:
            before, after = before + place, None
        elif after is not None:
            after += place
    return errors
