import pytest

import ks_hmi


def test_sequences_tell_what_the_model_has(model):
    assert (model.name, len(model.blocks), len(model.signals)) == ("cruise", 10, 6)
    assert model.blocks[1].path == "cruise/Sensors/Speed" and model.blocks[-1].path == "cruise/Plant/Brakes"
    assert [model.signals[-back].position for back in (1, 2, 6)] == [6, 5, 1]
    assert [port.portName for port in model["Sensors/Speed"].outputs] == ["speed", "valid"]
    assert [item.item for item in model["Control/Mode"].chart] == ["", "Off", "Engaged", "Engaged/Holding", "target"]
    assert [port.block for port in model.ports].count("cruise/Sensors/Speed") == 2 and len(model.ports) == sum(
        len(block.outputs) for block in model.blocks)
    assert model.ports["Sensors/Speed:valid"] == model["Sensors/Speed"].outputs[1] == model.ports[4]
    with pytest.raises(ks_hmi.Error, match="is not one port"):
        model.ports["Sensors/Speed"]
    signal = model.signals[0]
    assert (signal.uuid, signal.position, signal.visualType) == ("51670000-0000-4000-8000-000000000001", 1, "dial")
    assert model.signals[signal.uuid] == signal and list(model.signals)[0] == signal == model.signals[0:1][0]
    with pytest.raises(IndexError, match="no signal 6; there are 6"):
        model.signals[6]
    with pytest.raises(AttributeError, match="has no 'colour'"):
        signal.colour


def test_sequences_are_asked_by_name(model):
    speed = model.signals[0]
    assert model.signals["Sensors/Speed:1"] == model.signals["cruise/Sensors/Speed:speed"] == speed
    assert model.signals["Sensors/Speed"] == speed and model.signals[model.signals[-1].reference] == model.signals[-1]
    watched = model.clients[0]
    assert model.clients[watched.uuid] == watched and model.signals[watched.signal.uuid].reference in model.clients
    model.mark("Control/Mode/Engaged", activity="Child")
    model.mark("Control/Mode/Engaged", activity="Leaf")
    with pytest.raises(ks_hmi.Error, match="there are . signals on it; take one by its UUID: .*, ") as caught:
        model.signals["Control/Mode/Engaged"]
    assert not isinstance(caught.value, KeyError)
    for sequence, there, others in [
            (model.blocks, ["Sensors/Speed", model.blocks[1]], ["Sensors/Sped", model.ports[0], 1]),
            (model.ports, ["Sensors/Speed:1", model.ports[2]], ["Sensors/Speed:9", "", "Control/Mode/Engaged"]),
            (model.signals, [speed.uuid, "Sensors/Speed:1", "Control/Mode/Engaged", speed], ["1", "Sensors/Pedal:1"]),
            (model.clients, [watched.uuid, watched], ["1", "Sensors/Pedal:1", speed.uuid])]:
        for one in there:
            assert one in sequence
        for one in others:
            assert one not in sequence
        for text in (one for one in others if isinstance(one, str) and sequence is not model.ports):
            with pytest.raises((KeyError, ks_hmi.Error)) as caught:
                sequence[text]
    with pytest.raises(ks_hmi.NotFound, match="no signal has this UUID, and as a reference: .*model.signals lists"):
        model.signals["x"]
    with pytest.raises(KeyError, match='did you mean "Sensors/Speed"'):
        model["Sensors/Sped"]


def test_what_there_is_not_is_none(model):
    charts = [block.block for block in model.blocks if block.chart]
    assert charts == ["cruise/Control/Mode"] and model["Sensors/Speed"].chart is None
    assert {signal.item is None for signal in model.signals} == {signal.port is None for signal in model.signals} == {
        True, False}
    assert "chart" not in model["Sensors/Speed"] and model["Control/Mode"].chart[0].port is None
