#include "python/native/open_model.h"
#include "python/native/values.h"

PYBIND11_MODULE(_native, module) {
    using namespace ks_hmi_python;
    module.attr("version") = KS_HMI_VERSION;
    translateErrors(module);
    bindHostTurn(module);
    bindModels(module);
    bindStructure(module);
    bindMarking(module);
    bindObserving(module);
    bindFiles(module);
    bindRuns(module);
    bindHost(module);
    bindListings(module);
}
