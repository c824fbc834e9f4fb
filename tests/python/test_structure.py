import pytest

import ks_hmi


def things(entries):
    return [(one.kind, one.get("portName", one.get("item", one.get("block", one.get("name"))))) for one in entries]


@pytest.fixture
def plant(tmp_path):
    """One block with two marked outputs, the second one watched, and a chart with a marked state."""
    with ks_hmi.new(tmp_path / "plant.json") as made:
        made.add_block("Plant/Engine", ["torque", "speed"])
        made.add_block("Mode", chart=True)
        made.add_state("Mode", "On")
        made.add_state("Mode", "On/Fast", ssid=7)
        made.mark("Plant/Engine")
        made.mark("Mode/On/Fast", activity="Self")
        made.observe("Plant/Engine:speed", type="ks_scope_observer")
        made.save()
        yield made


@pytest.mark.parametrize("change", [
    lambda m: m.move("Plant", "Car/Drive"),
    lambda m: m.rename_block(m["Plant/Engine"], "Motor"),
])
def test_marks_and_clients_follow_their_blocks(plant, change):
    report = change(plant)
    moved = report.changed[0]
    assert report and (moved.kind, moved["from"]) == ("block", "plant/Plant/Engine")
    assert [one.kind for one in report.changed] == ["block", "signal", "signal", "client"]
    assert all(one.block == moved.block for one in plant.signals[:2]) and plant.query(moved.block)
    assert plant.clients[0].state == "watching" and ks_hmi.check(plant.path).findings == []


def test_marks_follow_their_ports(plant):
    report = plant.add_port("Plant/Engine", "raw", at=1)
    assert report.command == "port add" and things(report.added) == [("port", "raw")]
    assert [(one.port, one["from"]) for one in report.changed if one.kind == "port"] == [(2, 1), (3, 2)]
    assert [one.port for one in plant.signals[:2]] == [2, 3] and not plant.query("Plant/Engine:raw")
    assert plant.rename_port("Plant/Engine", 3, "rpm") and not plant.rename_port("Plant/Engine", "rpm", "rpm")
    with pytest.raises(ks_hmi.Error, match="unmark=True"):
        plant.remove_port("Plant/Engine", "rpm")
    with pytest.warns(ks_hmi.ModelWarning, match="left without a signal"):
        gone = plant.remove_port("Plant/Engine", "rpm", unmark=True)
    assert things(gone.removed) == [("port", "rpm"), ("signal", "rpm")] and gone.changed[0].state == "dangling"
    swapped = plant.renumber("Plant/Engine", [2, 1])
    assert swapped.command == "renumber" and plant.signals[0].port == 1 and plant.signals[0].portName == "torque"
    with pytest.raises(ks_hmi.Error):
        plant.renumber("Plant/Engine", [1, 1])


def test_charts_are_edited(plant):
    assert things(plant.add_datum("Mode", "count").added) == [("item", "count")]
    renamed = plant.rename_item("Mode/On", "Active")
    assert [(one["item"], one["from"]) for one in renamed.changed if one.kind == "item"] == [
        ("Active", "On"), ("Active/Fast", "On/Fast")]
    assert plant.signals[2]["item"] == "Active/Fast"
    for options, words in [({}, "below=True"), ({"below": True}, "unmark=True")]:
        with pytest.raises(ks_hmi.Error, match=words):
            plant.remove_item("Mode/Active", **options)
    removed = plant.remove_item("Mode/Active", below=True, unmark=True)
    assert [one.kind for one in removed.removed] == ["item", "item", "signal"]
    assert things(plant.remove_item("Mode", ssid=plant["Mode"].chart[-1].ssid).removed) == [("item", "count")]
    assert plant.remove_block(plant["Mode"]) and len(plant.blocks) == 1


def test_models_are_renamed(plant):
    report = plant.rename("car")
    assert plant.name == "car" and (report.changed[0].name, report.changed[0]["from"]) == ("car", "plant")
    assert plant.clients[0].sourceModel == "car" and not plant.rename("car")
    with pytest.raises(ks_hmi.Error):
        plant.rename("a/b")


def test_clients_that_are_not_needed_are_dropped(plant):
    with pytest.warns(ks_hmi.ModelWarning, match="deprecated"):
        plant.observe("Plant/Engine:1", type="hmi_web_widget_observer")
    dropped = plant.unobserve(unused=True)
    assert [one.type for one in dropped.removed] == ["hmi_web_widget_observer"] and len(plant.clients) == 1
    with pytest.raises(ks_hmi.Error, match="give it alone"):
        plant.unobserve(types="x", unused=True)


def test_what_is_excepted_stays_whatever_else_is_said(plant):
    kept = plant.clients[0]
    assert not plant.unobserve(all="Plant/*", except_="Plant/*", types=kept.type)
    assert not plant.set_clients(below="Mode", types=kept.type, update_rate=9) and plant.clients[0] == kept
    assert plant.unobserve(clients=kept)


def test_files_are_pruned(plant):
    plant.remove_port("Plant/Engine", 2, unmark=True)
    plant.save()
    assert plant.check().findings[0].kind == "dangling"
    path = plant.path
    plant.close()
    assert repr(ks_hmi.prune(path, dry_run=True)) == "<prune: 1 removal>" == repr(ks_hmi.prune(path))
    assert not ks_hmi.prune(path) and ks_hmi.check(path).findings == []
    with pytest.raises(ks_hmi.Error, match="kinds=: there is no kind"):
        ks_hmi.prune(path, kinds="everything")


def test_changes_of_two_people_are_merged(plant, tmp_path):
    base = plant.path
    for name, change in [("ours", lambda: plant.set(signals=1, decimation=2, hidden=True)),
                         ("theirs", lambda: plant.set(signals=[1, plant.signals[1]], decimation=3, hidden=False))]:
        change()
        plant.save_as(tmp_path / name)
    merged = ks_hmi.merge(base, tmp_path / "ours", tmp_path / "theirs", tmp_path / "merged")
    assert not merged and [one.field for one in merged.conflicts] == ["Decimation_"]
    plant.close()
    with ks_hmi.open(tmp_path / "merged") as model:
        assert [signal.decimation for signal in model.signals] == [2, 3, 1]
    assert ks_hmi.merge(None, base, base, tmp_path / "same") and "3 signals" in repr(
        ks_hmi.merge(base, base, base, tmp_path / "none", dry_run=True)) and not (tmp_path / "none").exists()
    assert ks_hmi.comparable(base) == ks_hmi.comparable(tmp_path / "same")
