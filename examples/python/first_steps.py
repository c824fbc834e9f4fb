"""From a model file to marks, clients and a comparison; a cell each, for notebooks and editors that know "# %%"."""

# %% A copy of the example model, opened
import pathlib
import shutil
import tempfile

import ks_hmi

here = pathlib.Path(__file__).resolve().parent
folder = pathlib.Path(tempfile.mkdtemp())
before = pathlib.Path(shutil.copy(here.parent / "cruise.kestrel.json", folder / "cruise.json"))
model = ks_hmi.open(before)
print(f"{model.name}: {len(model.blocks)} blocks, {len(model.signals)} signals, {len(model.clients)} clients")

# %% What there is to mark
for port in model["Plant/Engine"].outputs:
    print(port)

# %% Marks, as the tool makes them: patterns, exceptions, only below a path
report = model.mark(below="Plant", except_="*:acceleration", decimation=10, skip_marked=True)
print(report)
for signal in report.added:
    print(" ", signal)

# %% The same goes by name, by port and by signal
model.set(report.added, hidden=True)
print(model.query("Plant/Engine:torque", "Plant:acceleration").answers)

# %% A client that watches what was marked, and the file
print(model.observe(report.added[0], type="ks_scope_observer", update_rate=5).added[0])
model.save_as(folder / "marked.json")

# %% What has changed
difference = ks_hmi.diff(before, folder / "marked.json")
print(difference)
print(sorted(f"{one.block}:{one.port}" for one in difference.signals.added))

# %% What cannot be done says why
try:
    model.mark("Plant/Engin:torque")
except ks_hmi.Error as error:
    print(error)

# %% What may go wrong with the file: the example has a client whose signal is gone
checked = ks_hmi.check(folder / "marked.json")
print(checked)
for finding in checked.findings:
    print(finding.text)
    print(" ", finding.call)
model.close()
shutil.rmtree(folder)
