import math

import numpy as np
import pytest

import ks_hmi
from ks_hmi import host
from ks_hmi.host import StructArray


@pytest.fixture
def echo():
    with host.function("echo", outputs=1)(lambda value: value):
        yield lambda value: host.call("echo", value)


@pytest.mark.parametrize("value", [1.5, -0.0, math.inf, True, "", "Motor \u00e4\U0001f697", "\ud800", np.float32(1.5),
                                   np.int64(2**53 + 1), np.uint8(7), [1.0, "two", [True]], [],
                                   {"a": 1.0, "b": {"c": "d"}}])
def test_values_come_back_as_they_went(echo, value):
    back = echo(value)
    if isinstance(value, dict):
        assert (back.a, back.b.c) == (1.0, "d") and isinstance(back, StructArray)
    else:
        assert back == value and type(back) is type(value)


@pytest.mark.parametrize("dtype", ["f8", "f4", "i1", "u1", "i2", "u2", "i4", "u4", "i8", "u8", "?"])
@pytest.mark.parametrize("shape", [(2, 3), (3, 1), (0, 0), (2, 1, 2)])
def test_arrays_keep_class_shape_and_order(echo, dtype, shape):
    array = np.arange(math.prod(shape)).reshape(shape).astype(dtype)
    back = echo(array[:, ::-1])
    assert back.dtype == array.dtype and back.shape == shape and np.array_equal(back, array[:, ::-1])


def test_arrays_of_objects_and_texts_are_cells(echo):
    assert echo(np.array(["a", "b"])) == ["a", "b"] and echo(np.array([1, 2], dtype="i4")).shape == (2, 1)
    cells = echo(np.array([["a", 1.0], [None, True]], dtype=object))
    assert cells.shape == (2, 2) and cells[0, 1] == 1.0 and cells[1, 0].shape == (0, 0)
    assert echo(None).shape == (0, 0)


def test_ints_are_doubles_or_refused(echo):
    assert echo(2**53) == 2.0**53 and type(echo(3)) is float
    for number in (2**53 + 1, -(2**63) - 1, 10**400):
        with pytest.raises(OverflowError, match="a double cannot hold .*give numpy.int64"):
            echo(number)


@pytest.mark.parametrize("value", [object(), {1, 2}, 1j, b"x", np.array([1j])])
def test_what_is_nothing_of_the_hosts_is_refused(echo, value):
    with pytest.raises(TypeError, match="the host has no such value"):
        echo(value)
    endless = []
    endless.append(endless)
    with pytest.raises(RecursionError):
        echo(endless)


def test_struct_arrays_have_records_and_columns(echo):
    back = echo(StructArray([{"x": 1.0, "name": "a"}, {"x": 2.0, "name": "b"}]))
    assert back.shape == (2, 1) and back.records() == [{"x": 1.0, "name": "a"}, {"x": 2.0, "name": "b"}]
    assert np.array_equal(back.columns()["x"], [1, 2]) and back.columns()["name"] == ["a", "b"]
    one = echo({"x": 1.0})
    assert one.records() == [{"x": 1.0}] and np.array_equal(one.columns()["x"], [1.0]) and one[0].x == one.x == 1.0
    assert echo(back) == back != one and "2x1: x, name" in repr(back) and "<td>b</td>" in back._repr_html_()
    with pytest.raises(AttributeError, match="2 elements; take one"):
        back.x
    with pytest.raises(ValueError, match="record 1 has the fields y, not x"):
        StructArray([{"x": 1}, {"y": 2}], ["x"])


def test_functions_in_python_are_the_hosts():
    @host.function("sums", outputs=2)
    def sums(*numbers):
        return sum(numbers), len(numbers)
    assert host.call("sums", 1, 2, 4, outputs=2) == (7.0, 3.0) and "sums" in host.functions()
    with pytest.raises(ks_hmi.HostError) as caught:
        host.call("sums", outputs=3)
    assert caught.value.identifier == "orvex:errors:TooManyOutputs"
    with host.function("sums")(lambda: None) as kept:
        assert host.call("sums") is None and kept() is None
    assert host.call("sums", 1, outputs=2) == (1.0, 1.0) and host.call("sums", 4) == 4.0
    sums.end()
    for outputs, result, first in [(2, (1, 2), 1.0), (2, [1, 2], 1.0), (None, (1, 2), 1.0), (1, (1, 2), [1.0, 2.0]),
                                   (None, [1, 2], [1.0, 2.0]), (2, (), None)]:
        with host.function("gives", outputs)(lambda: result):
            assert host.call("gives") == first
    with pytest.raises(ks_hmi.HostError, match="There is no function"):
        host.call("sums")


def test_what_a_function_raises_comes_out_of_the_host():
    def fail(kind):
        if kind == "host":
            raise ks_hmi.HostError("too hot", "plant:errors", "Hot", (90, "C"))
        if kind == "stop":
            raise KeyboardInterrupt
        return {}[kind]
    with host.function("fail")(fail):
        with pytest.raises(ks_hmi.HostError) as caught:
            host.call("fail", "host")
        assert (caught.value.identifier, caught.value.arguments, str(caught.value)) == (
            "plant:errors:Hot", (90, "C"), "too hot")
        with pytest.raises(ks_hmi.HostError, match="KeyError: 'key'") as caught:
            host.call("fail", "key")
        assert isinstance(caught.value.__cause__, KeyError) and caught.value.key == "KeyError"
        with pytest.raises(KeyboardInterrupt):
            host.call("fail", "stop")
        with pytest.raises(ks_hmi.HostError) as caught:
            host.call("nobody")
        assert caught.value.__cause__ is None


def test_what_fails_inside_the_library_warns_with_its_arguments(model):
    def refuse(*_):
        raise ks_hmi.HostError("too hot", "plant:errors", "Hot", (90, "C"))
    with host.function("validateAndRemoveUnused")(refuse), pytest.warns(ks_hmi.HostWarning, match="too hot") as caught:
        assert not model.unobserve(unused=True)
    assert (caught[0].message.identifier, caught[0].message.arguments) == ("plant:errors:Hot", (90, "C"))


def test_warnings_of_the_host_are_pythons(run_python):
    with host.function("grumble")(lambda: host.warn("too warm", "plant:warnings:Warm", (90, "\u00b0C"))):
        with pytest.warns(ks_hmi.HostWarning, match="too warm") as caught:
            host.call("grumble")
    assert (caught[0].message.identifier, caught[0].message.arguments) == ("plant:warnings:Warm", (90, "\u00b0C"))
    run_python("import ks_hmi\n"
               "from ks_hmi import host\n"
               "try: host.warn('too warm')\n"
               "except ks_hmi.HostWarning: raise SystemExit(7)\n", "-Werror", expect=7)


def test_classes_are_discovered(model):
    assert "Kestrel.HMI.InstrumentedSignals" in host.classes() and "Kestrel.HMI" in host.namespaces()
    assert "InstrumentedSignals" in dir(host.Kestrel.HMI) and "isequal" in host.functions()
    assert {"Kestrel", "call", "function"} <= set(dir(host)) and "_native" not in dir(host)
    made = host.Kestrel.HMI.InstrumentedSignals("other")
    description = host.describe("Kestrel.HMI.InstrumentedSignals")
    names = [one.name for one in [*description.properties, *description.methods]]
    assert (made.Model, made.Count) == ("other", 0) and "Model: 'other'" in repr(made)
    assert set(names) <= set(dir(made)) and description.sentence and host.describe(made) == description
    assert model.signal_set.getUUID(1) == model.signals[0].uuid  # as help(host.Object) has it
    saved = model.signal_set.Persistence
    assert isinstance(saved, StructArray) and saved.columns()["SignalName_"][0] == "speed" == saved[0].SignalName_
    assert model.signal_set == model.signal_set and model.signal_set != made
    with pytest.raises(AttributeError, match="has no 'Colour'; it has: "):
        made.Colour
    with pytest.raises(AttributeError, match="neither a namespace nor a class 'Kestrel.Other'"):
        host.Kestrel.Other
    with pytest.raises(ks_hmi.Error, match="there is no class"):
        host.new("No.Such")


def test_what_a_method_does_cannot_be_taken_over(model):
    with host.function("getUUID", outputs=1)(lambda *given: "another"):
        method = model.signal_set.getUUID
        assert method(1) == model.signals[0].uuid and host.call("getUUID", model.signal_set, 1) == "another"
        with pytest.raises(ks_hmi.HostError):
            method(1, outputs=2)
        assert "getUUID(" in repr(method) and repr(method).startswith("<method")


def test_the_set_is_the_models(model):
    signals = model.signal_set
    before = len(model.signals)
    signals.remove(1)
    assert len(model.signals) == before - 1


def test_objects_and_functions_do_not_outlive_the_host(run_python):
    run_python("import ks_hmi, os, sys\n"
               "from ks_hmi import host\n"
               "kept = [host.Kestrel.HMI.InstrumentedSignals('m'), host.function('f')(lambda: 1)]\n"
               "m = ks_hmi.open(os.environ['EXAMPLES'] + '/cruise.kestrel.json')\n"
               "kept += [m.signal_set, m.client_set]\n"
               "def fail(): raise ValueError(kept)\n"
               "with host.function('g')(fail):\n"
               "    try: host.call('g')\n"
               "    except ks_hmi.HostError as error: kept.append(error)\n"
               "ks_hmi._leave()\n"
               "try: kept[0].Model\n"
               "except ks_hmi.Error as error: print(error)\n")


def test_shapes_come_back_as_they_went():
    cells = np.array([[1.0, "a", 2.0], ["b", 3.0, "c"]], dtype=object)
    numbers = np.arange(6.0).reshape(2, 3)
    with host.function("test.echo")(lambda value: value):
        assert np.array_equal(host.call("test.echo", cells), cells)
        assert np.array_equal(host.call("test.echo", numbers), numbers)
    with pytest.raises(host.HostError):
        host.call("test.echo", 1)
    records = [{"x": 1.0}, {"x": True}]
    assert isinstance(host.StructArray(records).columns()["x"], list)
    assert host.StructArray(records) != host.StructArray(records, shape=(1, 2))
    with pytest.warns(host.HostWarning) as caught:
        host.warn("careful", "a:b:c", (1,))
    assert (caught[0].message.identifier, caught[0].message.arguments) == ("a:b:c", (1,))
