#include "memory_host/orvex/calls/call_by_name.h"

#include <boost/container/small_vector.hpp>

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <new>
#include <utility>

#include "host/services.h"
#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/account/local_scope.h"
#include "memory_host/orvex/account/scope_of_value.h"
#include "memory_host/orvex/calls/diagnostics.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/calls/function_table.h"
#include "memory_host/orvex/calls/functions.h"
#include "memory_host/orvex/objects/class_members.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {
namespace {

using faults::Outcome;

// Scripts that call themselves for ever are stopped while there is stack left.
constexpr int kGreatestDepth = 500;
// Inputs and outputs that a call seldom has more of.
constexpr std::size_t kFew = 4;

// A call's inputs: each lives until the call ends, with the objects in it, even if the caller's script
// drops them meanwhile. A missing one is an empty array to the function.
class PinnedInputs {
public:
    explicit PinnedInputs(std::span<const hvArray* const> ins) {
        m_pins.reserve(ins.size());
        m_inputs.reserve(ins.size());
        for (const hvArray* input : ins) pin(input);
    }

    std::span<const hvArray* const> inputs() const noexcept { return m_inputs; }

private:
    using Pin = boost::intrusive_ptr<const hvArray>;

    void pin(const hvArray* input) {
        m_pins.push_back(input ? Pin(input) : Pin(makeEmpty("a missing input").release(), /*add_ref=*/false));
        m_inputs.push_back(m_pins.back().get());
    }

    boost::container::small_vector<Pin, kFew> m_pins;
    boost::container::small_vector<const hvArray*, kFew> m_inputs;
};

void requireOutputs(const FunctionEntry& entry, const Call& call) {
    if (entry.outputs == kAnyNumberOfOutputs || call.nOut <= entry.outputs) return;
    raise("TooManyOutputs", "Too many outputs for \"" + std::string(call.name) + "\": " + std::to_string(call.nOut) +
                                " asked for, at most " + std::to_string(entry.outputs) + " returned.");
}

// Where a name is looked for.
enum class Among : std::uint8_t { everything, classMembers };

void dispatch(Call& call, Among among) {
    const auto entry = among == Among::everything ? findFunction(call.name) : nullptr;
    if (entry) {
        requireOutputs(*entry, call);
        entry->function(call);
        return;
    }
    if (invokeClassMember(call.name, call)) return;
    std::string text = "There is no function, class or method \"" + std::string(call.name) + "\"";
    if (!call.ins.empty()) text += " for a first input of class \"" + std::string(hvGetClassName(call.ins[0])) + "\"";
    raise("UndefinedFunction", text + ".");
}

// What a function throws is a failure of the call, whatever its type.
void dispatchAsHost(Call& call, Among among) {
    try {
        dispatch(call, among);
    } catch (const kssvIException&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& failure) {
        raise("UnexpectedException", failure.what());
    }
}

std::size_t slotsFor(int nOut) { return nOut > 0 ? static_cast<std::size_t>(nOut) : 1; }

void substitute(Outcome outcome, std::span<HvArrayPtr> results) {
    for (HvArrayPtr& result : results) result = faults::substitute(outcome);
}

// The caller's from here on; the outermost call's result is nobody else's business any more.
void handBack(hvArray* result) noexcept { hostCallDepth() > 1 ? handOut(result) : leaveScopes(result); }

// `results` has `slotsFor(nOut)` slots, made by the caller: once the function has run, no memory is needed any more.
void run(std::string_view name, std::span<const hvArray* const> ins, int nOut, Outcome outcome,
         std::span<HvArrayPtr> results, Among among = Among::everything) {
    if (outcome == Outcome::refuse)
        raise("InjectedFault", "A fault was injected: the call of \"" + std::string(name) + "\" was refused.");
    if (outcome != Outcome::proceed) return substitute(outcome, results);
    if (hostCallDepth() >= kGreatestDepth)
        raise("CallDepth",
              "\"" + std::string(name) + "\" was called more than " + std::to_string(kGreatestDepth) + " calls deep.");
    const HostCall running(name);
    const PinnedInputs pinned(ins);
    Call call{nOut, results, pinned.inputs(), name};
    try {
        dispatchAsHost(call, among);
    } catch (...) {
        // What it had given ends with the call.
        for (HvArrayPtr& result : results) result.reset();
        throw;
    }
    for (const HvArrayPtr& result : results) handBack(result.get());
}

struct Request {
    std::string_view name;
    std::span<const hvArray* const> ins;
    int nOut;
    hvArray** outs;
};

Request checked(int nOut, hvArray** outs, int nIn, const hvArray* const* ins, const char* name) {
    if (!name || !*name) raise("InvalidArgument", "A call by name needs a name.");
    if (nOut < 0 || nIn < 0 || (nOut > 0 && !outs) || (nIn > 0 && !ins))
        raise("InvalidArgument", "The inputs or outputs for \"" + std::string(name) + "\" are missing.");
    return {name, {ins, static_cast<std::size_t>(nIn)}, nOut, outs};
}

void carryOut(const Request& request, Outcome outcome) {
    boost::container::small_vector<HvArrayPtr, kFew> results(slotsFor(request.nOut));
    run(request.name, request.ins, request.nOut, outcome, results);
    for (int i = 0; i < request.nOut; ++i) request.outs[i] = results[static_cast<std::size_t>(i)].release();
}

kssvDiagnosticImpl* attempt(const Request& request, bool captureErrors, const void* reserved, const Site& site) {
    if (!captureErrors || reserved) raise("InvalidArgument", "A call without exceptions captures its errors.");
    // Outside the try block: a fault of the call itself is no failure of the called function.
    const Outcome outcome = faults::point(faults::Operation::callByName);
    try {
        carryOut(request, outcome);
        return nullptr;
    } catch (const kssvIException& failure) {
        return new kssvDiagnosticImpl(failure.messageId(), failure.what(), site);
    }
}

std::vector<HvArrayPtr> called(std::string_view name, std::span<const hvArray* const> ins, int nOut, Among among) {
    if (name.empty()) raise("InvalidArgument", "A call by name needs a name.");
    std::vector<HvArrayPtr> results(slotsFor(nOut));
    run(name, ins, nOut, faults::point(faults::Operation::callByName), results, among);
    return results;
}

}  // namespace

std::vector<HvArrayPtr> callByName(std::string_view name, std::span<const hvArray* const> ins, int nOut) {
    return called(name, ins, nOut, Among::everything);
}

std::vector<HvArrayPtr> callMember(std::string_view name, std::span<const hvArray* const> ins, int nOut) {
    return called(name, ins, nOut, Among::classMembers);
}

}  // namespace orvex

void kssvFEVAL(int nOut, hvArray** outs, int nIn, const hvArray* const* ins, const char* functionName) {
    const auto request = orvex::checked(nOut, outs, nIn, ins, functionName);
    orvex::carryOut(request, orvex::faults::point(orvex::faults::Operation::callByName));
}

kssvDiagnosticImpl* kssvFEVAL_NoThrow(int nOut, hvArray** outs, int nIn, const hvArray* const* ins,
                                      const char* functionName, bool captureErrors, void* reserved) {
    return orvex::attempt(orvex::checked(nOut, outs, nIn, ins, functionName), captureErrors, reserved,
                          "kssvFEVAL_NoThrow");
}

kssvDiagnosticImpl* kssvFEVAL_NoThrow(int nOut, hvArray** outs, int nIn, const hvArray* const* ins,
                                      const char* functionName, void* context, bool captureErrors, void* reserved) {
    if (context) orvex::raise("InvalidArgument", "A call by name takes no context.");
    return orvex::attempt(orvex::checked(nOut, outs, nIn, ins, functionName), captureErrors, reserved,
                          "kssvFEVAL_NoThrow");
}

void utFree(void* storage) noexcept { std::free(storage); }
