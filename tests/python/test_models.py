import json
import os
import pickle
import threading

import pytest

import ks_hmi


def places(entries):
    return [entry.reference for entry in entries]


def test_two_versions_of_a_model_are_open_side_by_side(model, cruise, tmp_path):
    other = tmp_path / "after.json"
    other.write_bytes(cruise.read_bytes())
    with pytest.raises(ks_hmi.Error, match=r"open already .close\(\) it first, or rename\(\) it"):
        ks_hmi.open(other)
    model.rename("before")
    with ks_hmi.open(other) as after:
        assert after.unmark("Sensors/Speed:1") and model.query("Sensors/Speed:1")
        assert [one.state for one in model.clients] == ["watching"] * 3 + [model.clients[3].state]


def test_marks_are_made_changed_and_removed_and_saved(model, cruise):
    report = model.mark(all="Sensors/*", except_="*:valid", decimation=10, skip_marked=True)
    assert report and [one.decimation for one in report.added] == [10]
    assert places(report.added) == ["cruise/Sensors/Pedal:1"] and "cruise/Sensors/Speed:1" in places(
        ks_hmi.Signal(one) for one in report.skipped)
    assert not model.mark("Sensors/Pedal:position") and model.query("Sensors/Pedal:1")
    changed = model.set(model["Sensors/Pedal"].outputs[0], name="pedal", hidden=True).changed
    assert [(one.name, one.hidden, one.decimation) for one in changed] == [("pedal", True, 10)]
    assert not model.set("Sensors/Pedal:1", name="pedal")
    model.save()
    with pytest.raises(ks_hmi.Error, match="open already"):
        ks_hmi.open(cruise)
    assert json.loads(cruise.read_text())["signals"][-1]["SignalName_"] == "pedal" == json.loads(
        model.text())["signals"][-1]["SignalName_"]
    assert places(model.unmark("Sensors/Pedal").removed) == ["cruise/Sensors/Pedal:1"]
    assert not model.query("Sensors/Pedal:1")


@pytest.mark.parametrize("selection, expected", [
    (dict(below="Plant"), ["Plant:1", "Plant:2", "Plant/Engine:1", "Plant/Engine:2", "Plant/Brakes:1"]),
    (dict(below="Plant", all="*:torque"), ["Plant/Engine:1"]),
    (dict(kinds=["datum"]), ["Control/Mode/target"]),
    (dict(all=["Sensors/*"], except_=["*:speed", "*:position"]), ["Sensors/Speed:2", "Sensors/Pedal:2"]),
])
def test_selections_mean_what_they_do_in_the_tool(model, selection, expected):
    assert places(model.query(**selection)) == ["cruise/" + place for place in expected]


def test_chart_items_are_marked_by_activity(model):
    added = model.mark("Control/Mode/Engaged", activity="Child").added
    assert [(one["item"], one.activity) for one in added] == [("Engaged", "Child")]
    assert model.query("Control/Mode/Engaged", activity="Child")
    assert not model.query("Control/Mode/Engaged", activity="Leaf")


def test_clients_watch_signals(model):
    model.mark("Plant")
    before = len(model.clients)
    added = model.observe("Plant", type="ks_scope_observer", params={"max": 180.5}, update_rate=3).added
    assert [(one.type, one.updateRate, one.params) for one in added] == [("ks_scope_observer", 3, {"max": 180.5})] * 2
    assert model.set_clients(clients=[added[0].uuid], channel=2).changed[0].channel == 2
    with pytest.warns(ks_hmi.ModelWarning, match=r"left without a signal: client 5 .*; unobserve\(states=") as warned:
        lost = model.unmark("Plant:1").changed
    assert warned[0].filename == __file__
    assert [one.state for one in lost] == ["dangling"] and model.clients[lost[0].uuid].state == "dangling"
    assert model.unobserve(states="dangling", types="ks_scope_observer").removed[0].uuid == added[0].uuid
    with pytest.raises(ks_hmi.Error, match="is not marked; mark it first"):
        model.observe("Sensors/Pedal:1", type="ks_scope_observer")
    assert len(model.clients) == before + 1


def test_errors_of_files_name_the_place(tmp_path):
    broken = tmp_path / "broken.json"
    broken.write_text('{\n  "kestrelModel": 1,\n  "name": "m",\n  "blocks": [{"path": 3}]\n}\n')
    with pytest.raises(ks_hmi.Error) as caught:
        ks_hmi.open(broken)
    error = caught.value
    assert (error.code, error.file, error.line, error.pointer) == ("format", str(broken), 4, "/blocks/0/path")
    with pytest.raises(ks_hmi.Error) as caught:
        ks_hmi.open(tmp_path / "none.json")
    assert caught.value.code == "file" and caught.value.line is None


def test_ten_thousand_ports_are_marked_in_one_call(tmp_path):
    blocks = [{"path": f"S/B{i}", "eid": str(i), "outputs": [f"y{k}" for k in range(10)]} for i in range(1000)]
    path = tmp_path / "large.json"
    path.write_text(json.dumps({"kestrelModel": 1, "name": "large", "blocks": blocks}))
    with ks_hmi.open(path) as model:
        references = [port for block in model.blocks for port in block.outputs]
        assert repr(model.mark(references)) == "<mark: 10000 added>"
        assert len(model.signals) == 10_000 and model.query(all="*")
        assert len(model.unmark(signals=model.signals).removed) == 10_000 and not model.signals


def test_files_are_checked_compared_and_carried(cruise, tmp_path):
    other = tmp_path / "next.json"
    contents = json.loads(cruise.read_text())
    contents["blocks"][1]["outputs"].reverse()
    other.write_text(json.dumps({**contents, "signals": [], "clients": []}))
    report = ks_hmi.carry(cruise, other, tmp_path / "carried.json")
    assert report and report.counts.renumbered == 1 and "renumbered" in repr(report)
    swapped = json.loads(json.dumps({**contents, "signals": [], "clients": []}))
    one, two = (block for block in swapped["blocks"] if block["path"] in ("Sensors/Speed", "Sensors/Pedal"))
    one["eid"], two["eid"] = two["eid"], one["eid"]
    (tmp_path / "swapped.json").write_text(json.dumps(swapped))
    for match in ("path", "id"):
        report = ks_hmi.carry(cruise, tmp_path / "swapped.json", tmp_path / f"{match}.json", match=match)
        assert bool(report) == (match == "path")
    assert ks_hmi.diff(cruise, cruise).same and not ks_hmi.diff(cruise, cruise)
    assert ks_hmi.diff(cruise, tmp_path / "carried.json").signals.changed
    other.write_text(json.dumps(contents))
    with pytest.warns(ks_hmi.ModelWarning, match="1 mark does not stand where it was made"):
        ks_hmi.open(other).close()
    contents["signals"][0]["UUID"] = contents["signals"][1]["UUID"]
    other.write_text(json.dumps(contents))
    checked = ks_hmi.check(other)
    assert not checked and "KS" in checked.findings[0].code and checked.findings[0].line
    log = json.loads(ks_hmi.sarif(cruise, other))["runs"][0]["results"]
    assert [one["ruleId"] for one in log] == [one.code for one in ks_hmi.check(cruise).findings + checked.findings]
    assert len(ks_hmi.check(other, mend=["uuids", "names"]).settled) == 2 and ks_hmi.check(other)
    with pytest.raises(ks_hmi.Error, match="mend=: there is no kind \"everything\""):
        ks_hmi.check(other, mend="everything")


def test_models_are_made_and_imported(tmp_path, cruise):
    with ks_hmi.new(tmp_path / "fresh.json") as fresh:
        assert fresh.name == "fresh" and not fresh.blocks
        made = fresh.add_block("Plant/Engine", ["torque", "speed"])
        fresh.mark(made.outputs[1])
        with pytest.raises(ks_hmi.Error, match="unmark=True"):
            fresh.remove_block("Plant/Engine")
        removed = fresh.remove_block("Plant", below=True, unmark=True).removed
        assert [(one.kind, one.block) for one in removed] == [("block", made.block), ("signal", made.block)]
        fresh.add_block("Mode", chart=True)
        fresh.save()
        assert not fresh.signals and fresh.mark("Mode", activity="Self")
    with pytest.raises(ks_hmi.Error, match="exists already"):
        ks_hmi.new(cruise)
    source = cruise.parent / "car.ssd"
    from conftest import EXAMPLES
    source.write_bytes((EXAMPLES / "import" / "vehicle.ssd").read_bytes())
    with ks_hmi.import_model(source, tmp_path / "car.json", name="car") as car:
        assert car.origin.kind == "ssd" and car.mark(all="*")
        car.save()
        car.save_as(tmp_path / "copy.json")
        assert car.path.endswith("copy.json")
        with pytest.raises(ks_hmi.Error, match="could end up on other ports .*carry"):
            ks_hmi.import_model(source, tmp_path / "car.json", update=True)
        assert car.unmark(all="*")
        car.save_as(tmp_path / "car.json", replace=True)
    with pytest.raises(ks_hmi.Error, match="exists already; give another name .update=True"):
        ks_hmi.import_model(source, tmp_path / "car.json")
    before = (tmp_path / "car.json").read_text()
    with ks_hmi.import_model(source, tmp_path / "car.json", update=True) as car:
        assert car.name == "car" and not car.signals
        car.save()
    assert (tmp_path / "car.json").read_text() == before


def test_dry_runs_and_files_that_are_there_change_nothing(cruise, tmp_path):
    contents = json.loads(cruise.read_text())
    following, out, proposal = (tmp_path / name for name in ("next.json", "out.json", "map.csv"))
    following.write_text(json.dumps({**contents, "signals": [], "clients": []}))
    bare = following.read_text()
    assert ks_hmi.carry(cruise, following, propose=proposal, dry_run=True) and following.read_text() == bare
    assert proposal.exists() and ks_hmi.carry(cruise, following, out, map=proposal) and following.read_text() == bare
    contents["signals"][0]["UUID"] = contents["signals"][1]["UUID"]
    following.write_text(json.dumps(contents))
    twice = following.read_text()
    assert ks_hmi.check(following, mend="uuids", dry_run=True).settled and following.read_text() == twice
    with pytest.raises(ks_hmi.Error, match="exists already"):
        ks_hmi.import_model(os.environ["KS_HMI_EXAMPLE_UNIT"], out)
    with ks_hmi.open(cruise) as model:
        with pytest.raises(ks_hmi.Error, match="exists already"):
            model.save_as(out)
        model.save_as(out, replace=True)
        model.mark("Plant:1")
        out.write_text(out.read_text() + " ")
        with pytest.raises(ks_hmi.Error) as caught:
            model.save()
        assert caught.value.code == "inUse" and caught.value.file == str(out)


def test_what_is_gone_moved_or_not_saved_is_told(cruise, tmp_path):
    contents = json.loads(cruise.read_text())
    contents["signals"][1].update(BlockPath_="Gone", EID_="gone", markedName="x")
    contents["blocks"][1]["outputs"].reverse()
    contents["signals"][0]["markedName"] = "speed"
    (tmp_path / "gone.json").write_text(json.dumps(contents))
    with pytest.warns(ks_hmi.ModelWarning, match="1 mark does not stand"):
        model = ks_hmi.open(tmp_path / "gone.json", dangling=True)
    with model:
        assert not model.set(signals=2, confirm=True), "there is nothing to confirm it by"
        assert len(model.set(signals=1, confirm=True).changed) == 1
        with pytest.raises(ks_hmi.Error, match=r"signal 2 is on .*Gone.*; unmark\(dangling=True\) removes"):
            model.save()
        assert [one.position for one in model.unmark(dangling=True).removed] == [2]
        assert [one.position for one in model.mark("Sensors/Pedal", excluded_from_save=True).added] == [6, 7]
        with pytest.warns(ks_hmi.ModelWarning, match="2 signals excluded from saving"):
            model.save()


def test_what_is_named_is_what_is_meant(model):
    assert places(model.query("Sensors/Speed:1", "Plant:1", below="Plant")) == ["cruise/Plant:1"]
    assert model.query("Sensors/Speed:1") and not model.query("Sensors/Speed:1", "Sensors/Pedal:1")
    signal = model.signals[2]
    model.unmark(signals=1)
    assert model.unmark(signals=signal).removed[0].uuid == signal.uuid
    assert model.add_port("Sensors/Speed", "last").added[0].port == 3
    assert repr(model.ports).count("<") == 4 and "and 10 more" in ks_hmi._data.table([{"a": 1}] * 70)
    assert ks_hmi._data.table([{"a": 1}] * 70).count("<td>") == 60
    assert str(ks_hmi.Error("no", file="f", line=3, column=5)) == "f:3:5: no"
    error = pickle.loads(pickle.dumps(ks_hmi.HostError("no", "a", "b", (1, "c"))))
    assert (error.text, error.identifier, error.arguments) == ("no", "a:b", (1, "c"))


def test_closed_models_and_other_threads_are_refused(model, cruise):
    caught = []

    def elsewhere():
        try:
            model.query("Plant:1")
        except ks_hmi.Error as error:
            caught.append(str(error))
    thread = threading.Thread(target=elsewhere)
    thread.start()
    thread.join()
    assert "another thread's" in caught[0]
    model.close()
    assert repr(model) == "<Model, closed>"
    with pytest.raises(ks_hmi.Error, match="was closed"):
        model.query("Plant:1")
    with pytest.raises(ZeroDivisionError), ks_hmi.open(cruise) as another:
        1 / 0
    assert not another.is_open


def test_what_is_shown_informs_and_is_no_markup(tmp_path, model):
    assert repr(model).startswith("<Model 'cruise' of ") and "10 blocks, 6 signals" in repr(model)
    assert "51670000" not in repr(model.signals) and "Sensors/Speed:1" in repr(model.signals)
    assert "observed" in repr(model["Sensors/Speed"]) and "<td>" in model.signals._repr_html_()
    model.set("Sensors/Speed:1", name="<script>")
    shown = [model, model.signals, model.blocks, model.clients, model["Sensors/Speed"], model.query(all="*"),
             model.mark("Plant")]
    for one in shown:
        assert "<script" not in one._repr_html_() and repr(one)


def test_nothing_is_left_at_exit_and_nothing_works_after(run_python):
    run_python("import ks_hmi, os, atexit\n"
               "m = ks_hmi.open(os.environ['EXAMPLES'] + '/cruise.kestrel.json')\n"
               "kept = [m, m.mark('Plant'), m.signals]\n")
    done = run_python("import atexit, os, ks_hmi\n"
                      "path = os.environ['EXAMPLES'] + '/cruise.kestrel.json'\n"
                      "m = ks_hmi.open(path)\n"
                      "ks_hmi._leave()\n"
                      "try: ks_hmi.open(path)\n"
                      "except ks_hmi.HostError as error: print(error.identifier, error)\n")
    assert done.stdout.startswith("orvex:errors:HostLeft The host was left")


def test_warnings_are_pythons_and_can_be_errors(model, run_python):
    with pytest.warns(ks_hmi.ModelWarning, match="leaves nothing out") as caught:
        model.query(all="Plant*", except_="none")
    assert caught[0].filename == __file__
    run_python("import ks_hmi, os\n"
               "m = ks_hmi.open(os.environ['EXAMPLES'] + '/cruise.kestrel.json')\n"
               "try: m.query(all='Plant*', except_='none')\n"
               "except ks_hmi.ModelWarning: raise SystemExit(7)\n", "-Werror", expect=7)
