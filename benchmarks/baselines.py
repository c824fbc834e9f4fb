"""What one does with a model file where there is no tool for it: usage: baselines.py count|change|mark|show FILE [OUT]"""

import json
import sys
import uuid


def load(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def save(model, path):
    with open(path, "w", encoding="utf-8") as file:
        json.dump(model, file, indent=2)


def signal_of(block, port, name):
    path = block["path"]
    return {
        "UUID": str(uuid.uuid4()), "BlockPath_": path, "EID_": block["eid"], "SubPath_": "",
        "OutputPortIndex_": port, "LogicalPortIndex_": 0, "SignalName_": name,
        "SubSysPath_": path.rpartition("/")[0], "Decimation_": 1, "MaxPoints_": 0, "TargetBufferedStreaming_": 0,
        "IsFrameBased_": 0, "HideInPLV_": 0, "DomainType_": "", "DomainParams_": {}, "VisualType_": "",
        "markedName": name,
    }


def main(what, path, out=None):
    model = load(path)
    signals = model["signals"]
    if what == "count":
        print(len(signals))
    elif what == "change":
        del signals[0]
        save(model, out)
    elif what == "mark":
        for block in model["blocks"]:
            for port, name in enumerate(block["outputs"], 1):
                signals.append(signal_of(block, port, name))
        save(model, out)
    else:
        json.dump(model, sys.stdout, indent=2)


main(*sys.argv[1:])
