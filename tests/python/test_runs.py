import os

import numpy as np
import pytest

import ks_hmi
from ks_hmi._model import _start_value

CSV = 'time,speed,"gear (2)"\n0,1.5,"first"\n0.5,2.5,\n1,3.5,"second"\n'
EVENT = "1,4.5,\n"  # what is as it was right before, at the same time


@pytest.fixture
def run(tmp_path):
    path = tmp_path / "run.csv"
    path.write_text(CSV)
    return ks_hmi.read_run(path)


def test_columns_are_arrays(run):
    assert run.titles == ["speed", "gear (2)"] and "speed" in run and len(run) == 2
    speed = run["speed"]
    assert speed.items == {} and speed.values.dtype == np.float64 and np.array_equal(speed.times, [0, 0.5, 1])
    assert np.array_equal(speed.values, [1.5, 2.5, 3.5]) and repr(speed).startswith("<Column 'speed': 3 samples")
    assert run["gear (2)"] is run[1] and list(run[1].values) == ["first", "second"] and np.array_equal(run[1].times, [0, 1])
    with pytest.raises(KeyError, match="there are: speed"):
        run["sped"]
    assert "2 columns" in repr(run) and "gear (2)" in run._repr_html_()


def test_columns_find_their_signals(run, model):
    found = model.read_run(run.file)
    assert (found["speed"].block, found["speed"].port) == ("cruise/Sensors/Speed", 1)
    assert found["speed"].signal == model.signals[0].uuid and found[1].signal is None


def test_frames_have_a_row_for_each_time(run, tmp_path):
    pandas = pytest.importorskip("pandas")
    (tmp_path / "events.csv").write_text(CSV + EVENT)
    frame = ks_hmi.read_run(tmp_path / "events.csv").to_frame()
    assert list(frame.columns) == run.titles and list(frame.index) == [0, 0.5, 1] and frame.index.name == "time"
    assert list(frame["speed"]) == [1.5, 2.5, 4.5] and frame["speed"].dtype == np.float64
    assert list(frame["gear (2)"].dropna()) == ["first", "second"]
    (tmp_path / "none.csv").write_text("time\n")
    assert isinstance(ks_hmi.read_run(tmp_path / "none.csv").to_frame(), pandas.DataFrame)


def test_what_a_model_has_goes_into_frames(model):
    pytest.importorskip("pandas")
    signals, clients, blocks = (listing.to_frame() for listing in (model.signals, model.clients, model.blocks))
    row, signal = signals.iloc[0], model.signals[0]
    assert (row.signal, row.position, row.block, row.port) == (signal.uuid, 1, signal.block, 1)
    assert signals["port"].dtype == "Int64" and signals["item"].notna().sum() == signals["ssid"].notna().sum() == 1
    assert set(clients["signal"]) & set(signals["signal"]) and blocks["outputs"][1] == ["speed", "valid"]
    columns = list(signals.columns)
    assert columns[:3] == ["signal", "position", "block"]
    model.unmark(all="*")
    assert list(model.signals.to_frame().columns) == columns and len(model.signals.to_frame()) == 0
    saved = model.signal_set.Persistence
    assert list(saved.to_frame().columns) == saved.fields
    frame = ks_hmi.StructArray([{"x": 1.0, "a": np.arange(3)}, {"x": 2.0, "a": np.arange(2)}]).to_frame()
    assert list(frame["x"]) == [1, 2] and np.array_equal(frame["a"][1], [0, 1])


def test_a_model_and_its_run_become_a_page(run, model, tmp_path):
    path = model.path
    model.close()
    page = tmp_path / "page.html"
    report = ks_hmi.report(path, page, run=run.file)
    assert report and (report.bytes, report.recorded) == (page.stat().st_size, 2) and "6 signals" in repr(report)
    assert ks_hmi.report(path, page).bytes < report.bytes
    with pytest.raises(ks_hmi.Error, match="is not a page"):
        ks_hmi.report(path, path)


def test_what_is_no_run_is_an_error(tmp_path):
    with pytest.raises(ks_hmi.Error) as caught:
        ks_hmi.read_run(tmp_path / "none.csv")
    assert caught.value.code == "file"


@pytest.mark.parametrize("output", ["run.csv", "runs.db"])
def test_a_unit_is_recorded_and_its_run_read(tmp_path, output):
    with ks_hmi.import_model(os.environ["KS_HMI_EXAMPLE_UNIT"], tmp_path / "unit.json") as model:
        model.mark(all="*")
        model.save()
        told = []
        report = model.record(tmp_path / output, unit=os.environ["KS_HMI_EXAMPLE_UNIT"], until=2.0, step=0.5,
                              progress=lambda *times: told.append(times))
        if output.endswith(".csv"):
            with pytest.raises(ks_hmi.Error, match="exists already"):
                model.record(tmp_path / output, until=0)
            model.record(tmp_path / output, until=2, step=0.5, replace=True)
        assert [one[:2] for one in told][-1] == (2.0, 2.0)  # also of a run that is over at once
        assert {one[1] for one in told} == {2.0}
        assert report and report.samples == 5 and "record: done at t = 2" in repr(report)
        run = model.read_run(tmp_path / output)
        assert len(run) == len(model.signals) and {column.signal for column in run} == {
            signal.uuid for signal in model.signals}
        assert np.array_equal(run[0].times, [0, 0.5, 1, 1.5, 2])
        with pytest.raises(ks_hmi.Error, match="nosuch"):
            model.record(tmp_path / "other.csv", unit=os.environ["KS_HMI_EXAMPLE_UNIT"], values={"nosuch": True})


def test_what_ends_early_is_not_true_and_truths_are_start_values():
    assert not ks_hmi.RecordReport('{"outcome": "interrupted"}')
    assert [_start_value(value) for value in (True, 1.5, "eco")] == ["true", "1.5", "eco"]
