import os

import numpy as np
import pytest

import ks_hmi

CSV = 'time,speed,"gear (2)"\n0,1.5,"first"\n0.5,2.5,\n1,3.5,"second"\n'


@pytest.fixture
def run(tmp_path):
    path = tmp_path / "run.csv"
    path.write_text(CSV)
    return ks_hmi.read_run(path)


def test_columns_are_arrays(run):
    assert run.titles == ["speed", "gear (2)"] and "speed" in run and len(run) == 2
    speed = run["speed"]
    assert speed.values.dtype == np.float64 and np.array_equal(speed.times, [0, 0.5, 1])
    assert np.array_equal(speed.values, [1.5, 2.5, 3.5]) and repr(speed).startswith("<Column 'speed': 3 samples")
    assert list(run[1].values) == ["first", "second"] and np.array_equal(run[1].times, [0, 1])
    with pytest.raises(KeyError, match="there are: speed"):
        run["sped"]
    assert "2 columns" in repr(run) and "gear (2)" in run._repr_html_()


def test_columns_find_their_signals(run, model):
    found = model.read_run(run.file)
    assert (found["speed"].block, found["speed"].port) == ("cruise/Sensors/Speed", 1)
    assert found["speed"].signal == model.signals[0].uuid and found[1].signal is None


def test_frames_have_a_row_for_each_time(run):
    pytest.importorskip("pandas")
    frame = run.to_frame()
    assert list(frame.columns) == run.titles and list(frame.index) == [0, 0.5, 1] and frame.index.name == "time"


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
        assert report and report.samples == 5 and "record: done at t = 2" in repr(report)
        run = model.read_run(tmp_path / output)
        assert len(run) == len(model.signals) and {column.signal for column in run} == {
            signal.uuid for signal in model.signals}
        assert np.array_equal(run[0].times, [0, 0.5, 1, 1.5, 2])
        with pytest.raises(ks_hmi.Error, match="nosuch"):
            model.record(tmp_path / "other.csv", unit=os.environ["KS_HMI_EXAMPLE_UNIT"], values={"nosuch": True})
