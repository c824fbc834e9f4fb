import numpy as np
import pytest

import ks_hmi
from ks_hmi import host


@pytest.mark.parametrize("work, code, words", [
    (lambda model: model.mark("Sensors/Sped:1"), "request", 'did you mean "Sensors/Speed"'),
    (lambda model: model.mark("Sensors/*"), "request", "give a pattern as all="),
    (lambda model: model.mark(all="nothing*"), "noMatch", "nothing"),
    (lambda model: model.mark(), "request", "nothing to work on"),
    (lambda model: model.mark("Sensors/Speed:1", decimation=5), "request", "is marked already; set"),
    (lambda model: model.set("Sensors/Speed:1"), "request", "nothing to set"),
    (lambda model: model.set("Sensors/Speed:1", decimation=0), "request", "give a whole number from 1 to 2147483647"),
    (lambda model: model.mark("Plant:1", decimation=2**31), "request", "from 1 to 2147483647"),
    (lambda model: model.mark("Plant:1", max_points=2**70), "request", "max_points= is 1180591620717411303424"),
    (lambda model: model.observe("Sensors/Speed:1", type="x", update_rate=-1), "request", "from 0 to 4294967295"),
    (lambda model: model.record("run.csv"), "request", "unit= names the .fmu"),
    (lambda model: model.query("Plant:1", activity="Self"), "request", "only charts have activities and SSIDs"),
    (lambda model: model.query(below="Plant", kinds="prot"), "request", "there are: port, chart, state, datum"),
    (lambda model: model.add_state("Control/Mode", "New", ssid=-1), "request", "ssid= is -1; give a whole number"),
    (lambda model: model.add_datum("Control/Mode", "new", ssid=2**40), "request", "from 0 to 4294967295"),
    (lambda model: model.add_port("Plant", "new", at=2**40), "request", "at= is 1099511627776; give a whole number"),
    (lambda model: model.renumber("Plant", [-1, 2]), "request", "numbers= is -1; give a whole number from 0"),
    (lambda model: model.read_run("run.csv", number=0), "request", "number= is 0; give a whole number from 1"),
])
def test_what_cannot_be_is_an_error_that_says_what_to_do(model, work, code, words):
    before = model.text()
    with pytest.raises(ks_hmi.Error) as caught:
        work(model)
    assert words in str(caught.value) and caught.value.code == code and model.text() == before


@pytest.mark.parametrize("work, words", [
    (lambda model: model.mark("Plant:1", decimation="10"), "is '10'; give a whole number, as in decimation=10"),
    (lambda model: model.mark("Plant:1", decimation=True), "decimation= is True; give a whole number"),
    (lambda model: model.mark("Plant:1", hidden="no"), "hidden= is 'no'; give True or False"),
    (lambda model: model.mark("Plant:1", again="no"), "again= is 'no'; give True or False"),
    (lambda model: model.set("Plant:1", name=3), 'name= is 3; give a text, as in name="speed"'),
    (lambda model: model.record("run.csv", until="soon"), "until= is 'soon'; give a number, as in until=10.0"),
    (lambda model: model.record("run.csv", values={1: 2}), "values= is {1: 2}; give a dictionary"),
    (lambda model: model.record("run.csv", log=1), "log= is 1; give a function"),
    (lambda model: model.record(3), "output= is 3; give a path"),
    (lambda model: model.mark(3), "3 is not a text, block, port"),
    (lambda model: model.mark(model.clients[0]), "is not a text, block, port"),
    (lambda model: model.query(all=3), 'all= is 3; give a text or a list of texts, as in all=["a", "b"]'),
    (lambda model: model.query(all="*", kinds=[3]), "kinds= has 3; give texts"),
    (lambda model: model.unmark(signals=1.5), "signals= has 1.5, which is not a UUID, position"),
    (lambda model: model.unmark(signals=[True]), "signals= has True, which is not"),
    (lambda model: model.renumber("Sensors/Speed", ["a"]), "is ['a']; give whole numbers, as in numbers=[2, 1]"),
    (lambda model: model.remove_port("Sensors/Speed", None), "port= is None; give a port's number or name"),
    (lambda model: model.remove_block(["Plant", "Control"]), "is ['Plant', 'Control']; give a text, block, port"),
    (lambda model: model.move([["Plant", "Control"]], "New"), "is not one thing but 2"),
    (lambda model: model.add_port(None, "new"), 'block= is None; give a text, block, port or chart item, as in block="'),
    (lambda model: model.mark(b"Plant"), "b'Plant' is not a text"),
    (lambda model: host.warn("warm", arguments=90), "is 90; give texts and whole numbers, as in arguments=(90,"),
    (lambda model: model.rename(3), "name= is 3; give a text"),
    (lambda model: model.observe("Plant", type="x", params={"a": {1}}), "params= has {1}; give texts, numbers"),
    (lambda model: model.observe("Plant"), "'type'"),
    (lambda model: model.signals[1.5], "signals[1.5]: give a number from 0, a slice"),
    (lambda model: model.blocks[[0, 1]], "blocks[[0, 1]]: give a number from 0"),
    (lambda model: ks_hmi.open(3), "path= is 3; give a path, as in path=\"cruise.json\""),
    (lambda model: ks_hmi.read_run("run.csv", number="1"), "number= is '1'; give a whole number"),
    (lambda model: ks_hmi.prune(model.path, dry_run=None), "dry_run= is None; give True or False"),
    (lambda model: host.call("isequal", 1, 1, outputs="2"), "outputs= is '2'; give a whole number"),
    (lambda model: host.describe(3), "name= is 3; give the name of a class"),
])
def test_arguments_of_another_kind_are_type_errors(model, work, words):
    with pytest.raises(TypeError) as caught:
        work(model)
    assert words in str(caught.value) and "_native" not in str(caught.value)


@pytest.mark.parametrize("work", [
    lambda model: model.set("Plant", name="\ud83d"), lambda model: model.add_block("\ud800"),
    lambda model: model.mark("a\udc00"), lambda model: model.query(all="\ud800"), lambda model: model.signals["\ud800"],
    lambda model: model.add_block("A", outputs=["\ud800"]), lambda model: model.remove_port("Plant", "\ud800"),
    lambda model: model.unmark(signals="\ud800"), lambda model: ks_hmi.open("\ud800"),
    lambda model: host.describe("\ud800"), lambda model: model["\ud800"],
])
def test_half_a_character_is_refused(model, work):
    with pytest.raises(ks_hmi.Error, match="half of a surrogate pair"):
        work(model)


def test_numpy_has_numbers_truths_and_arrays_that_do(model):
    added = model.mark("Sensors/Pedal:1", decimation=np.int32(5), hidden=np.bool_(True)).added[0]
    assert (added.decimation, added.hidden) == (5, True)
    params = {"limits": np.array([1.5, 2.0]), "ticks": np.arange(2), "top": np.float32(0.5), "on": np.bool_(True)}
    client = model.observe("Sensors/Pedal:1", type="ks_scope_observer", params=params).added[0]
    assert client.params == {"limits": [1.5, 2], "ticks": [0, 1], "top": 0.5, "on": True}
    assert [one.uuid for one in model.unmark(signals=np.array([1, added.position])).removed][1] == added.uuid
    assert model.ports[np.int64(2)] == model.ports[2]
