"""Source files as libclang sees them."""

import json
import pathlib
import re
import shlex

from clang import cindex
from clang.cindex import CursorKind as Kind

FUNCTIONS = {Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR, Kind.CONVERSION_FUNCTION,
             Kind.FUNCTION_TEMPLATE}
# What needs no semicolon after its closing brace.
COMPLETE = {Kind.COMPOUND_STMT, Kind.IF_STMT, Kind.FOR_STMT, Kind.CXX_FOR_RANGE_STMT, Kind.WHILE_STMT, Kind.SWITCH_STMT,
            Kind.CXX_TRY_STMT}
RECORDS = {Kind.CLASS_DECL, Kind.STRUCT_DECL, Kind.CLASS_TEMPLATE, Kind.CLASS_TEMPLATE_PARTIAL_SPECIALIZATION}


def find_libclang():
    # The package that brings the Python side names its library by version only.
    for library in sorted(pathlib.Path("/usr/lib").glob("llvm-*/lib/libclang-[0-9]*.so*"), reverse=True):
        cindex.Config.set_library_file(str(library))
        return


def read(path):
    # One character per byte, so that libclang's offsets are places in the text.
    return path.read_text(encoding="latin-1")


def write(path, text):
    if not path.exists() or read(path) != text:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="latin-1")


class Source:
    """One file: its text, and the questions about places in it."""

    def __init__(self, root, name, arguments):
        self.name = name
        self.path = root / name
        self.text = read(self.path)
        unit = cindex.Index.create().parse(str(self.path), args=arguments)
        # Plain errors only hide the nodes that they are about.
        fatal = [d for d in unit.diagnostics if d.severity >= cindex.Diagnostic.Fatal]
        if fatal:
            raise SystemExit(f"mutate: libclang cannot read {name}: {fatal[0].location.line}: {fatal[0].spelling}")
        self.unit = unit
        self.top = unit.cursor

    def is_here(self, cursor):
        file = cursor.location.file
        return file is not None and file.name == str(self.path)

    def range(self, cursor):
        """Start and end of what the cursor stands for; None where a macro or another file is behind it."""
        start, end = cursor.extent.start, cursor.extent.end
        if any(place.file is None or place.file.name != str(self.path) for place in (start, end)):
            return None
        return (start.offset, end.offset) if start.offset < end.offset else None

    def slice(self, cursor):
        place = self.range(cursor)
        return self.text[place[0]:place[1]] if place else ""

    def statement_range(self, cursor):
        """With the semicolon; None where none follows."""
        place = self.range(cursor)
        if place is None:
            return None
        last = self.text[place[1] - 1]
        if last == ";" or (last == "}" and cursor.kind in COMPLETE):
            return place
        end = re.compile(r"\s*;").match(self.text, place[1])
        return (place[0], end.end()) if end else None

    def context(self, start, end, replacement):
        """The lines around a change, before and after it, on one line each."""
        first = self.text.rfind("\n", 0, start) + 1
        last = self.text.find("\n", end)
        before, after = self.text[first:start], self.text[end:last if last >= 0 else len(self.text)]
        return one_line(before + self.text[start:end] + after), one_line(before + replacement + after)


def one_line(text):
    return re.sub(r"\s+", " ", re.sub(r"(?<!:)//[^\n]*", "", text)).strip()


def compiler_arguments(build):
    """What each file of the library is compiled with; the same for all but for its name."""
    for entry in json.loads((build / "compile_commands.json").read_text()):
        if entry["file"].endswith("signals/observed_ports.cpp"):
            words = shlex.split(entry["command"])
            kept = [w for w in words if w.startswith(("-I", "-D", "-std", "-isystem"))]
            return ["-x", "c++", *kept, "-Wno-pragma-once-outside-header"]
    raise SystemExit("mutate: the build does not compile signals/observed_ports.cpp")


def qualified_name(cursor):
    names = []
    while cursor is not None and cursor.kind != Kind.TRANSLATION_UNIT:
        if cursor.kind != Kind.NAMESPACE and cursor.spelling:
            names.append(cursor.spelling)
        cursor = cursor.semantic_parent
    return "::".join(reversed(names))
