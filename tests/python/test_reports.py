import contextlib
import json
import os
import re
import subprocess
from pathlib import Path

import pytest

import ks_hmi

ROOT = Path(__file__).resolve().parents[2]
UNIT = os.environ["KS_HMI_EXAMPLE_UNIT"]


def tool(*arguments):
    if "KS_HMI_TOOL" not in os.environ:
        pytest.skip("the tool is not built")
    return subprocess.run([os.environ["KS_HMI_TOOL"], *map(str, arguments), "--json"], capture_output=True, text=True,
                          check=False).stdout


def every_report(model, folder):
    """Of each method that answers with one."""
    yield from [model.mark("Plant", "Sensors/Speed:1"), model.set("Plant:1", "Plant:2", hidden=True, decimation=3),
                model.query(all="*"), model.observe("Plant:1", type="ks_scope_observer"),
                model.set_clients("Plant:1", channel=2), model.unmark("Plant:1"), model.unobserve(states="dangling"),
                model.unobserve(unused=True), model.add_port("Plant", "last"),
                model.rename_port("Plant", "last", "end"), model.renumber("Plant", [2, 1]), model.remove_port("Plant", "end"), model.move("Plant", "Car/Plant"),
                model.rename_block("Car", "Vehicle"), model.add_state("Control/Mode", "New"),
                model.add_datum("Control/Mode", "count"), model.rename_item("Control/Mode/New", "Newer"),
                model.remove_item("Control/Mode/Newer"), model.rename("car"), model.check(),
                model.remove_block("Vehicle", below=True, unmark=True)]
    path, bare = model.path, folder / "bare.json"
    model.close()
    bare.write_text(json.dumps({**json.loads(Path(path).read_text()), "signals": [], "clients": []}))
    yield from [ks_hmi.check(path), ks_hmi.prune(path), ks_hmi.diff(path, path), ks_hmi.report(path, folder / "p.html"),
                ks_hmi.merge(path, path, path, folder / "merged.json"),
                ks_hmi.carry(path, bare, folder / "carried.json")]
    with ks_hmi.import_model(UNIT, folder / "unit.json") as unit:
        unit.mark(all="*")
        yield from [unit.import_report, unit.record(folder / "run.csv", unit=UNIT, until=0.1)]


def test_texts_are_what_json_md_says(model, tmp_path):
    jsonschema = pytest.importorskip("jsonschema")
    schema = jsonschema.Draft202012Validator(json.loads((ROOT / "docs/kshmi-output.schema.json").read_text()))
    commands = set()
    for report in every_report(model, tmp_path):
        commands.add(report.command)
        assert not [error.message for error in schema.iter_errors(json.loads(report.text))], report.text
        assert report.text.endswith("}\n") and repr(report) and "<p>" in report._repr_html_()
    assert len(commands) == 26


def test_texts_are_what_the_tool_prints(model, cruise, tmp_path):
    assert model.query(all="Sensors/*", activity=None).text == tool("query", cruise, "--all", "Sensors/*")
    contents = json.loads(cruise.read_text())
    contents["signals"][0]["UUID"] = contents["signals"][1]["UUID"]
    (tmp_path / "twice.json").write_text(json.dumps(contents))
    assert ks_hmi.check(tmp_path / "twice.json").text == tool("check", tmp_path / "twice.json")
    text = model.set("Sensors/Speed:1", name="v").text
    assert text.replace('"saved": false', '"saved": true') == tool("set", cruise, "Sensors/Speed:1", "--name", "v")
    source, path = ROOT / "examples/import/vehicle.ssd", tmp_path / "car.json"
    with ks_hmi.import_model(source, path) as car:
        assert car.import_report.text == tool("import", source, "-o", path)


def test_what_an_import_leaves_out_is_named(tmp_path, model):
    with ks_hmi.import_model(UNIT, tmp_path / "unit.json", "unit") as unit:
        report = unit.import_report
        assert report.blocks == len(unit.blocks) and report.ports == len(unit.ports) and not report
        assert all(note["count"] == len(note.names) and note.text for note in report.dropped)
        assert f"left out: {report.dropped[0]['count']} {report.dropped[0].text}" in repr(report)
    assert model.import_report is None


def test_findings_say_what_to_call(cruise):
    contents = json.loads(cruise.read_text())
    contents["blocks"][1]["outputs"].reverse()
    contents["signals"][0]["markedName"] = "speed"
    contents["signals"][2]["UUID"] = contents["signals"][1]["UUID"]
    cruise.write_text(json.dumps(contents))
    findings = ks_hmi.check(cruise).findings
    calls = {one.kind: one.call for one in findings}
    assert calls["uuids"] == f"ks_hmi.check({str(cruise)!r}, mend='uuids')"
    assert all("kshmi" not in one.call.split("(")[0] for one in findings) and findings[0].client is None
    assert len(eval(calls["uuids"], {"ks_hmi": ks_hmi}).settled) == 1


def test_entries_are_tables_and_frames_wherever_they_are(model):
    pandas = pytest.importorskip("pandas")
    report = model.mark("Sensors/Pedal", "Sensors/Speed:1")
    for entries in (report.added, model.signals[:2], model.signals[::2][:2], model.query(all="*").observed[1:]):
        assert isinstance(entries, ks_hmi.Entries) and "<table>" in entries._repr_html_()
        frame = entries.to_frame()
        assert isinstance(frame, pandas.DataFrame) and len(frame) == len(entries) and frame["port"].dtype == "Int64"
    assert list(model.signals[:0].to_frame().columns) == list(model.signals.to_frame().columns)
    mixed = model.move("Plant", "Car").changed.to_frame()
    assert {"block", "signal"} <= set(mixed["kind"])
    assert model.set(report.unchanged, hidden=True) and model.mark(model.add_port("Car", "new").added)


def test_the_examples_of_the_page_run(cruise, tmp_path, monkeypatch):
    pytest.importorskip("pandas")
    monkeypatch.chdir(tmp_path)
    (tmp_path / "run.csv").write_text("time,speed\n0,1.5\n0.5,2.5\n")
    examples = re.findall(r"```python\n(.*?)```", (ROOT / "docs/python.md").read_text(), re.DOTALL)
    names = {}
    for example in examples:
        with ks_hmi.open(cruise) if example is examples[-1] else contextlib.nullcontext() as names["model"]:
            exec(example, names)
    assert len(examples) == 3 and names["host"].call("plantSpeed", "cold") == 12.5
    names["plant_speed"].end()
